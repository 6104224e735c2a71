// The base of all operator objects: operands, result, links, and the contract of verification and execution.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/errors.h"
#include "base/operator_ids.h"
#include "values/datum.h"

namespace qumel {

class CQMExpression;
class CQMOperatorContext;
class CQMStepMaker;
struct SQMStep;

/** One occurrence of an operator in one expression. Made by the factory, then, in this order:
 * CreateOperandList, AssignOperand once an operand, SetResultOperand, VerifyOperands (perhaps again),
 * Optimize, Finalize, links set, DoOperation or DoComplexOperation any number of times. */
class CQMOperator : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kOperator;
  static constexpr long kNoLink = -1;

  CQMOperator();
  ~CQMOperator() override;

  // ---- what each operator class supplies ----
  /** Writes the result and moves position (normally by Advance). Returns 0, an error code, or a Status. */
  virtual long DoOperation(long& position) = 0;
  virtual long DoComplexOperation(long& position) { return DoOperation(position); }
  /** Makes step one that does in real evaluation what DoOperation does, without the operator. False where
   * there is none for operands like these; then the program calls DoOperation. */
  virtual bool MakeStep(CQMStepMaker& maker, SQMStep& step);
  virtual long GetOperandsNeeded() = 0;
  virtual long GetOperandsMaximum() { return GetOperandsNeeded(); }
  /** 0, UseSubstitute (after SetSubstituteId), OptimizeAgain, or an error code. Literal operands may be
   * folded. */
  virtual long Optimize() { return Error::None; }
  virtual long Finalize();
  /** 0; VerifyAgain to be asked in a later pass; UseSubstitute; ComplexOperandFound or ResultIsComplex to ask
   * for complex evaluation; any other code fails the compilation. The base asks for operands of the result's
   * class. */
  virtual long VerifyOperands();
  /** Takes ownership of datum (a fresh one for null), gives it the return type and zeroes it. */
  virtual CQMDatum* SetResultOperand(std::unique_ptr<CQMDatum> datum);
  virtual EQMDataType GetReturnType() { return EQMDataType::Number; }
  virtual EQMTypeClass GetReturnClass() { return GetTypeClass(GetReturnType()); }
  /** Whether the operator declares names, so that it must be verified as soon as it is compiled. */
  virtual bool VerifiesImmediately() const { return false; }
  virtual void CreateOperandList(long count);
  /** For the same place in a copy of the expression; null where one that the factory makes will do. */
  virtual std::unique_ptr<CQMOperator> MakeTwin() { return nullptr; }
  /** The compiled expression that the operator runs and keeps; null for most. */
  virtual CQMExpression* GetBody() const { return nullptr; }

  // ---- operands and result ----
  /** Fills the slots from the last to the first; TooManyOperands when none is left. */
  long AssignOperand(CQMDatum* operand);
  CQMDatum* GetOperandByIndex(long index) const;
  /** The operand is a result of another operator that nobody but this one reads. */
  void SetOnlyReader(long index) {
    if (index < kMostReadAlone) m_readAlone |= 1U << index;
  }
  bool IsOnlyReader(long index) const { return index < kMostReadAlone && (m_readAlone >> index & 1U) != 0; }
  long GetOperandCount() const { return static_cast<long>(m_operands.size()); }
  CQMDatum** GetOperandList() { return m_operands.data(); }
  CQMDatum* GetResultOperand() const { return m_result.get(); }
  std::unique_ptr<CQMDatum> ReleaseResultOperand() { return std::move(m_result); }
  static EQMTypeClass GetTypeClass(EQMDataType type) { return OperandClassOf(type); }

  // ---- identity and state, kept by the factory and the expression ----
  long GetId() const { return m_id; }
  void SetId(long id) { m_id = id; }
  long GetSubstituteId() const { return m_substituteId; }
  bool IsVerified() const { return m_verified; }
  void SetVerified(bool verified) { m_verified = verified; }
  bool IsFinalized() const { return m_finalized; }
  void SetFinalized(bool finalized) { m_finalized = finalized; }
  bool EndsStatement() const { return m_endsStatement; }
  void SetEndsStatement(bool ends) { m_endsStatement = ends; }
  CQMExpression* GetExpression() const { return m_expression; }
  void SetExpression(CQMExpression* expression) { m_expression = expression; }
  /** The context that the operator's expression runs in; null for an operator on its own. */
  CQMOperatorContext* GetContext() const;

  // ---- flow, set by linking ----
  void SetTopLink(long position) { m_topLink = position; }
  void SetSkipLink(long position) { m_skipLink = position; }
  void SetTrueLink(long position) { m_trueLink = position; }
  void SetFalseLink(long position) { m_falseLink = position; }
  void SetTopLinkOperator(CQMOperator* top) { m_topLinkOperator = top; }
  long GetTopLink() const { return m_topLink; }
  long GetSkipLink() const { return m_skipLink; }
  long GetTrueLink() const { return m_trueLink; }
  long GetFalseLink() const { return m_falseLink; }
  CQMOperator* GetTopLinkOperator() const { return m_topLinkOperator; }
  bool GetFirstFlag() const { return m_firstFlag; }
  void SetFirstFlag(bool flag) { m_firstFlag = flag; }
  bool& FirstFlag() { return m_firstFlag; }
  bool GetSecondFlag() const { return m_secondFlag; }
  void SetSecondFlag(bool flag) { m_secondFlag = flag; }
  long GetCaseCount() const { return m_caseCount; }
  void SetCaseCount(long count) { m_caseCount = count; }
  long GetCountdown() const { return m_countdown; }
  void SetCountdown(long count) { m_countdown = count; }
  /** Forgets what an earlier run left in an opener. */
  void ResetBlock() {
    m_firstFlag = false;
    m_countdown = 0;
  }

 protected:
  static long Advance(long& position) {
    ++position;
    return Error::None;
  }
  /** NotEnoughOperands or TooManyOperands by the counts and the unfilled slots, else 0. */
  long CheckOperandCounts();
  /** NotEnoughOperands for a missing operand, NotDefined for a name never declared or untyped, else 0. */
  static long CheckDefined(CQMDatum const* operand);
  /** CheckOperandCounts, then CheckDefined of every operand: names that nobody knows come before any check of
   * type. */
  long CheckOperands();
  bool HasComplexOperand() const;
  /** ComplexOperandFound when an operand is complex, else 0: how a check that passed ends. */
  long ComplexStatus() const { return HasComplexOperand() ? Error::ComplexOperandFound : Error::None; }
  /** Gives the result type, with storage as a fresh datum of that type has it: the few bytes of a number are
   * no buffer for a text. Changes nothing when it has the type already. */
  void TypeResult(EQMDataType type) {
    if (m_result->GetType() != type) m_result->BecomeScalar(type);
  }
  /** Makes datum the result as it is, without the return type and the zeroing of SetResultOperand. */
  CQMDatum* KeepResultOperand(std::unique_ptr<CQMDatum> datum) {
    m_result = std::move(datum);
    return m_result.get();
  }
  /** Asks for the operator id in this one's place. */
  long SubstituteBy(long id) {
    m_substituteId = id;
    return Error::UseSubstitute;
  }

  CQMDatum& Operand(long index) const { return *m_operands[static_cast<std::size_t>(index)]; }
  double Real(long index) const { return Operand(index).Real(); }
  double Imaginary(long index) const { return Operand(index).Imaginary(); }
  CQMDatum& Result() const { return *m_result; }
  /** Stores a real result; an imaginary part left from an earlier run becomes 0. */
  void StoreReal(double value) {
    m_result->SetReal(value);
    m_result->ClearImaginary();
  }
  void StoreComplex(double real, double imaginary) { m_result->SetComplex(real, imaginary); }

 private:
  static constexpr long kMostReadAlone = 32;

  std::vector<CQMDatum*> m_operands;
  long m_assigned = 0;
  std::uint32_t m_readAlone = 0;  // a bit an operand
  std::unique_ptr<CQMDatum> m_result;
  CQMExpression* m_expression = nullptr;
  CQMOperator* m_topLinkOperator = nullptr;
  long m_id = 0;
  long m_substituteId = 0;
  long m_topLink = kNoLink;
  long m_skipLink = kNoLink;
  long m_trueLink = kNoLink;
  long m_falseLink = kNoLink;
  long m_caseCount = 0;  // of a select
  long m_countdown = 0;  // of a select: cases not yet tested
  bool m_firstFlag = false;
  bool m_secondFlag = true;
  bool m_endsStatement = false;
  bool m_verified = false;
  bool m_finalized = false;
};

}  // namespace qumel
