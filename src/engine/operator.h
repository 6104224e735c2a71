// The base of all operators: operands, result, links, and the contract of verification. An operator object
// serves the compilation; what runs are the steps that it makes.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "base/arena.h"
#include "base/errors.h"
#include "base/operator_ids.h"
#include "values/datum.h"

namespace qumel {

class CQMExpression;
class CQMOperatorContext;
class CQMStepMaker;
struct SQMBlock;
struct SQMStep;
struct SQMWays;

/** One occurrence of an operator in one expression. Made by the factory, then, in this order:
 * CreateOperandList, AssignOperand once an operand, SetResultOperand, VerifyOperands (perhaps again),
 * Optimize, Finalize, links set, steps made. */
class CQMOperator {
 public:
  static constexpr long kNoLink = -1;

  CQMOperator() = default;
  virtual ~CQMOperator() = default;
  CQMOperator(CQMOperator const&) = delete;
  CQMOperator& operator=(CQMOperator const&) = delete;

  // ---- what each operator class supplies ----
  /** The steps that do the operator's work on operands of any kind, in real and in complex evaluation. */
  virtual SQMWays GetWays() const = 0;
  /** Gives such a step what it needs besides operands and result. */
  virtual void PrepareStep(CQMStepMaker& maker, SQMStep& step);
  /** Makes step one that does the same in real evaluation on numbers and booleans at fixed addresses. False
   * where there is none for operands like these. */
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
  /** Makes datum (for null a fresh one in arena) the result, gives it the return type and zeroes it. */
  virtual CQMDatum* SetResultOperand(CQMArena& arena, CQMDatum* datum = nullptr);
  virtual EQMDataType GetReturnType() { return EQMDataType::Number; }
  virtual EQMTypeClass GetReturnClass() { return GetTypeClass(GetReturnType()); }
  /** Whether the operator declares names, so that it must be verified as soon as it is compiled. */
  virtual bool VerifiesImmediately() const { return false; }
  virtual void CreateOperandList(CQMArena& arena, long count);
  /** For the same place in a copy of the expression; null where one that the factory makes will do. */
  virtual CQMOperator* MakeTwin(CQMArena&) { return nullptr; }
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
  std::span<CQMDatum* const> GetOperandList() const { return m_operands; }
  std::uint32_t GetReadAlone() const { return m_readAlone; }
  CQMDatum* GetResultOperand() const { return m_result; }
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
  CQMOperatorContext& GetContext() const;

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
  /** Of a loop or a select: what it remembers during a run. */
  SQMBlock* GetBlock() const { return m_block; }
  void SetBlock(SQMBlock* block) { m_block = block; }
  /** Of "do": whether the loop goes on while its condition holds, or until it does. */
  bool LoopsWhile() const { return m_loopsWhile; }
  void SetLoopsWhile(bool loopsWhile) { m_loopsWhile = loopsWhile; }
  long GetCaseCount() const { return m_caseCount; }
  void SetCaseCount(long count) { m_caseCount = count; }

 protected:
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
  CQMDatum* KeepResultOperand(CQMDatum* datum) { return m_result = datum; }
  /** Asks for the operator id in this one's place. */
  long SubstituteBy(long id) {
    m_substituteId = id;
    return Error::UseSubstitute;
  }

  CQMDatum& Operand(long index) const { return *m_operands[static_cast<std::size_t>(index)]; }
  double Real(long index) const { return Operand(index).Real(); }
  CQMDatum& Result() const { return *m_result; }
  /** Stores a folded value; an imaginary part becomes 0. */
  void StoreReal(double value) {
    m_result->SetReal(value);
    m_result->ClearImaginary();
  }

 private:
  static constexpr long kMostReadAlone = 32;

  std::span<CQMDatum*> m_operands;
  long m_assigned = 0;
  std::uint32_t m_readAlone = 0;  // a bit an operand
  CQMDatum* m_result = nullptr;
  CQMExpression* m_expression = nullptr;
  CQMOperator* m_topLinkOperator = nullptr;
  long m_id = 0;
  long m_substituteId = 0;
  long m_topLink = kNoLink;
  long m_skipLink = kNoLink;
  long m_trueLink = kNoLink;
  long m_falseLink = kNoLink;
  long m_caseCount = 0;  // of a select
  SQMBlock* m_block = nullptr;
  bool m_loopsWhile = true;
  bool m_endsStatement = false;
  bool m_verified = false;
  bool m_finalized = false;
};

}  // namespace qumel
