// Operands, results and the common verification of operators.
#include "engine/operator.h"

#include "engine/expression.h"
#include "engine/step.h"

namespace qumel {

void CQMOperator::PrepareStep(CQMStepMaker&, SQMStep&) {}

bool CQMOperator::MakeStep(CQMStepMaker&, SQMStep&) { return false; }

long CQMOperator::Finalize() {
  m_finalized = true;
  return Error::None;
}

void CQMOperator::CreateOperandList(CQMArena& arena, long count) {
  m_assigned = 0;
  m_readAlone = 0;
  m_operands = arena.MakeArray<CQMDatum*>(count > 0 ? static_cast<std::size_t>(count) : 0);
}

long CQMOperator::AssignOperand(CQMDatum* operand) {
  long const nextFree = GetOperandCount() - 1 - m_assigned;
  if (nextFree < 0) return Error::TooManyOperands;
  m_operands[static_cast<std::size_t>(nextFree)] = operand;
  ++m_assigned;
  return Error::None;
}

CQMDatum* CQMOperator::GetOperandByIndex(long index) const {
  return index >= 0 && index < m_assigned ? m_operands[static_cast<std::size_t>(index)] : nullptr;
}

CQMDatum* CQMOperator::SetResultOperand(CQMArena& arena, CQMDatum* datum) {
  m_result = datum != nullptr ? datum : arena.Make<CQMDatum>();
  TypeResult(GetReturnType());
  m_result->ClearValue();
  return m_result;
}

CQMOperatorContext& CQMOperator::GetContext() const { return m_expression->GetContext(); }

long CQMOperator::CheckOperandCounts() {
  if (GetOperandCount() < GetOperandsNeeded()) return Error::NotEnoughOperands;
  if (GetOperandCount() > GetOperandsMaximum()) return Error::TooManyOperands;
  return m_assigned < GetOperandCount() ? Error::NotEnoughOperands : Error::None;
}

long CQMOperator::CheckDefined(CQMDatum const* operand) {
  if (operand == nullptr) return Error::NotEnoughOperands;
  return operand->IsPending() || operand->GetType() == EQMDataType::Untyped ? Error::NotDefined : Error::None;
}

long CQMOperator::CheckOperands() {
  if (long const code = CheckOperandCounts(); code != Error::None) return code;
  for (CQMDatum const* operand : m_operands) {
    if (long const code = CheckDefined(operand); code != Error::None) return code;
  }
  return Error::None;
}

bool CQMOperator::HasComplexOperand() const {
  for (CQMDatum const* operand : m_operands) {
    if (operand->IsComplex()) return true;
  }
  return false;
}

long CQMOperator::VerifyOperands() {
  if (long const code = CheckOperands(); code != Error::None) return code;
  for (CQMDatum const* operand : m_operands) {
    if (GetTypeClass(operand->GetType()) != GetReturnClass()) return Error::TypeMismatch;
  }
  return ComplexStatus();
}

}  // namespace qumel
