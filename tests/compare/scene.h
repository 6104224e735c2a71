// What a text may refer to: variables with their types, operators of the host, and how the context reads.
#pragma once

#include <string>
#include <vector>

#include "compare/operator_forms.h"
#include "compare/program.h"
#include "compare/random.h"

namespace qumel::compare {

struct Variable {
  std::string name;
  Type type = Type::Number;
  std::vector<int> extents{};  // of an array; empty for a scalar
  bool isTarget = true;        // counters of loops are only read
};

struct HostOperator {
  std::string name, fix;
  Type returns = Type::Number;
  std::vector<Type> parameters;
};

struct Scene {
  OperatorForms const& forms;
  Random& random;
  Settings const& settings;
  bool usesComplex = false;  // complex results are allowed or forced
  std::vector<Variable> variables{};
  std::vector<HostOperator> operators{};
  int counters = 0, labels = 0;  // made so far, which makes their names unique

  /** A scalar, or with dimensions an array of so many, of that type; null when there is none. */
  Variable const* Find(Type type, std::size_t dimensions, bool mustBeTarget = false);
  /** Adds a variable unless its name is there. */
  void Add(Variable const& variable);
};

inline bool IsNumeric(Type type) { return type == Type::Number || type == Type::Complex; }

/** The word of the language that declares a variable of that type. */
char const* TypeWord(Type type);

}  // namespace qumel::compare
