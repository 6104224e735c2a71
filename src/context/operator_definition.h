// Definition of operators by hosts: by an expression, from a file, or by a callback; and their deletion.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "context/executor.h"
#include "language/operator_definition.h"

namespace qumel {

/** The declaration of an operator as a host gives it; any text may be null. */
struct SQMOperatorDeclaration {
  char scope;  // 'C' for the process-wide list, any other for that of the context
  char const* name;
  char const* fixWord;
  char const* returnWord;
  char const* parameters;
  char const* precedenceOperator;
};

/** The operations, on one context. Each returns 0 or an error code, which also becomes the context's last
 * error. */
class CQMOperatorDefiner {
 public:
  static constexpr std::size_t kLargestFile = 64UL << 20;  // bytes of an operator file; more is OutOfMemory

  explicit CQMOperatorDefiner(CQMExecutor& context) : m_context(context) {}

  /** Without a text (null or empty) the operator awaits its body. */
  long Define(SQMOperatorDeclaration const& declaration, char const* text);
  /** Gives an operator its body that was declared without one. */
  long DefineBody(char scope, char const* name, char const* text);
  /** As Define and DefineBody with the text of a file; NotFound when it cannot be read. */
  long Read(SQMOperatorDeclaration const& declaration, char const* path);
  long ReadBody(char scope, char const* name, char const* path);
  long Attach(SQMOperatorDeclaration const& declaration, OperatorCallback callback);
  long Delete(char scope, char const* name);

 private:
  struct SQMChecked;  // a declaration that has passed all checks
  CQMOperatorList& ListOf(char scope) const;
  long Check(SQMOperatorDeclaration const& declaration, SQMChecked& checked) const;
  long ParseParameters(char const* text, std::vector<SQMOperatorParameter>& parameters) const;
  long GiveBody(SQMOperatorDefinition& definition, char const* text);
  long Load(SQMOperatorDeclaration const& declaration, SQMChecked&& checked);
  long Conclude(long code);

  CQMExecutor& m_context;
};

}  // namespace qumel
