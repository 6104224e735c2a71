// How operators are written: the forms that docs/operators.md gives for each, such as "root(n, x)", with the
// types of their operands and of their value.
#pragma once

#include <string>
#include <vector>

namespace qumel::compare {

enum class Type { Number, Complex, Text, Boolean };

/** A piece of a form: text as it stands, or an operand. */
struct FormPart {
  std::string text;
  char operand = 0;  // the letter that stands for it in the document; 0 for text
};

struct OperatorForm {
  std::string token;
  std::vector<FormPart> parts;
  Type returns = Type::Number;
  bool isList = false;  // further operands may follow the last one

  bool IsInfix() const { return parts.size() == 3 && parts[1].operand == 0 && parts[0].operand != 0; }
};

struct OperatorForms {
  std::vector<OperatorForm> operators;  // all that compute, but for assignments
  std::vector<OperatorForm> assignments;
  std::vector<std::string> modeWords;
  std::vector<std::string> examples;  // expressions and programs that stand beside the forms
  std::vector<std::string> tokens;    // of every operator that is documented
};

/** Reads the document at path. Throws std::runtime_error when it cannot be read or holds no forms. */
OperatorForms ReadOperatorForms(std::string const& path);

}  // namespace qumel::compare
