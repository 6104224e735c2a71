// Operators that hosts define: by an expression, by a recursive expression, or by a callback.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/call.h"
#include "engine/operator.h"
#include "language/operator_definition.h"

namespace qumel {

class CQMExpression;

/** Bodies of host operators may nest this deep, at compilation and at run time, before OutOfMemory; less deep
 * where the thread's stack is small. */
constexpr int kMostNestedBodies = 1000;

/** What all three kinds share: counts and types by the definition, which lives as long as they do. */
class CQMDefinedOperator : public CQMOperator {
 public:
  explicit CQMDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition);
  long GetOperandsNeeded() override { return static_cast<long>(m_definition->parameters.size()); }
  EQMDataType GetReturnType() override { return m_definition->returnType; }
  CQMOperator* MakeTwin(CQMArena& arena) override;
  void PrepareStep(CQMStepMaker&, SQMStep& step) override { step.object = this; }

 protected:
  /** Counts, presence, pending names and declared types of the operands. */
  long CheckParameters();
  SQMOperatorDefinition const& Definition() const { return *m_definition; }
  /** The operator in whose place this one stands in a copy of the expression; null in the original. */
  CQMDefinedOperator* GetOriginal() const { return m_original; }
  /** A body bound to the operands, compiled; a copy of original where there is one. Its error state tells how
   * it went. */
  std::unique_ptr<CQMExpression> CompileBody(CQMExpression* original);
  /** Runs body and copies its result by the return type. */
  long RunBody(CQMExpression& body, CQMCall& call);
  std::vector<EQMDataType> OperandTypes() const;

  std::vector<EQMDataType> m_verifiedTypes;  // of the operands

 private:
  /** Lends the operands to a body while it lives. */
  class CQMLoan;

  long StoreBodyResult(CQMDatum* value);

  std::shared_ptr<SQMOperatorDefinition const> m_definition;
  CQMDefinedOperator* m_original = nullptr;
};

/** Compiles its body once, when it is verified, and keeps it. Complex operands ask for no complex evaluation.
 */
class CQMExpressionOperator final : public CQMDefinedOperator {
 public:
  using CQMDefinedOperator::CQMDefinedOperator;
  ~CQMExpressionOperator() override;
  long VerifyOperands() override;
  SQMWays GetWays() const override { return kWays<&Do>; }
  CQMExpression* GetBody() const override { return m_body.get(); }

 private:
  static long Do(CQMCall& call);

  std::unique_ptr<CQMExpression> m_body;
};

/** Compiles a fresh body at every run, so that each level of a recursion has its own bindings. */
class CQMRecursiveOperator final : public CQMDefinedOperator {
 public:
  using CQMDefinedOperator::CQMDefinedOperator;
  long VerifyOperands() override;
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call);
};

class CQMCallbackOperator;

/** What the handle stands for that a callback is given: a place in an expression, the same in all its runs.
 */
class CQMCallbackPlace final : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kOperator;

  explicit CQMCallbackPlace(CQMCallbackOperator& op) : m_answering(&op) { SetTypeTag(kTypeTag); }

  /** The operator that reads and writes for the host: of an expression that is evaluated while it runs, the
   * one whose callback was called last and has not returned. */
  CQMCallbackOperator*& Answering() { return m_answering; }

 private:
  CQMCallbackOperator* m_answering;
};

/** Calls a function of the host, which reads the operands and sets the result through the handle that it is
 * given. */
class CQMCallbackOperator final : public CQMDefinedOperator {
 public:
  using CQMDefinedOperator::CQMDefinedOperator;
  long VerifyOperands() override;
  SQMWays GetWays() const override { return kWays<&Do>; }

  // ---- for the host, while the callback runs; parameters count from 0 ----
  // An index out of range makes the context's last error NotEnoughOperands, a wrong type TypeMismatch; the
  // answer is then 0, false, null, or 'X' for a type. Texts live until the same parameter is asked for again.
  long GetParameterCount() const { return GetOperandCount(); }
  /** One letter an operand, as they are now. */
  char const* GetParameterSignature();
  char GetParameterType(long index);
  double GetRealParameter(long index);
  double GetImaginaryParameter(long index);
  bool GetBooleanParameter(long index);
  char const* GetStringParameter(long index);
  // 0, TypeMismatch when the result is of another kind, or OutOfMemory.
  long SetNumericResult(double value);
  long SetRealResult(double value);
  long SetImaginaryResult(double value);
  long SetBooleanResult(bool value);
  long SetStringResult(char const* value);
  /** A read or a result failed for want of memory: so does the operation, whatever the host makes of it. */
  void NoteOutOfMemory();

 private:
  static long Do(CQMCall& call);
  long Run(CQMCall& call);
  CQMDatum* Parameter(long index);
  void Report(long code);
  bool HasNumericResult() const;
  long CallHost();
  long StatusOfComplexResult(long status);

  std::unique_ptr<CQMCallbackPlace> m_place;  // of the original, from the first call on
  Handle m_handle = 0;                        // of the place
  bool m_isOutOfMemory = false;               // during this run
  std::string m_signature;
  std::vector<std::string> m_texts;
};

}  // namespace qumel
