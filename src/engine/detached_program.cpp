// Making detached programs, and undoing it.
#include "engine/detached_program.h"

#include "engine/expression.h"
#include "engine/operator.h"

namespace qumel {

namespace {

/** One for its result, and one for each operand that may be a literal: no step on numbers takes more. */
constexpr std::size_t kMostSlotsAnOperator = 5;

/** Operators and literals have no slots yet. */
void ForgetSlots(std::span<CQMOperator* const> operators) {
  for (CQMOperator const* const op : operators) {
    if (op->GetResultOperand() != nullptr) op->GetResultOperand()->SetSlot(CQMDatum::kNoSlot);
    for (CQMDatum* const operand : op->GetOperandList()) {
      if (operand != nullptr) operand->SetSlot(CQMDatum::kNoSlot);
    }
  }
}

}  // namespace

std::unique_ptr<CQMDetachedProgram> CQMDetachedProgram::Make(std::span<CQMOperator* const> operators,
                                                             CQMExpression& expression, CQMDatum& result) {
  EQMDataType const type = result.GetType() == EQMDataType::Real ? EQMDataType::Number : result.GetType();
  bool const isPlain = (type == EQMDataType::Number || type == EQMDataType::Boolean) && !result.IsArray() &&
                       !result.IsProxy() && result.GetValue() != nullptr;
  if (!isPlain) return nullptr;
  std::unique_ptr<CQMDetachedProgram> made(new CQMDetachedProgram);
  made->m_epoch = CQMDatum::StorageEpoch();
  // Once to count, and once with all values where they will stay.
  std::vector<SQMSlot> counted;
  counted.reserve(kMostSlotsAnOperator * operators.size() + 1);
  for (std::vector<SQMSlot>* slots : {&counted, &made->m_slots}) {
    made->m_slots.reserve(counted.size());
    ForgetSlots(operators);
    result.SetSlot(CQMDatum::kNoSlot);
    CQMStepMaker maker(operators, made->m_steps, expression,
                       expression.GetContext().GetAngleFactorToRadians(), EQMWay::Joined, slots);
    if (!maker.MakeAll() || maker.NeedsObjects()) return nullptr;
    made->m_result = maker.PlaceOf(result);
  }
  made->m_frame.begin = made->m_steps.data();
  made->m_frame.expression = &expression;
  result.SetBound();
  made->m_type = type;
  return made;
}

// What steps take for granted of a variable: its type, and where its elements stand.
std::uint64_t CQMDetachedProgram::SignatureOf(CQMItemList const& items) {
  constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15;
  std::uint64_t signature = 0;
  auto const add = [&signature](std::uint64_t word) {
    signature = (signature ^ word) * kStep + (signature >> 29);
  };
  for (SQMItem const& item : items.GetItems()) {
    if (item.kind != EQMItem::Name) continue;
    CQMDatum const& variable = *static_cast<CQMDatum const*>(item.bound);
    add(reinterpret_cast<std::uintptr_t>(variable.GetValue()));
    add(static_cast<std::uint64_t>(Code(variable.GetType())) << 8 |
        static_cast<std::uint64_t>(variable.GetDimensionCount()));
  }
  return signature;
}

bool CQMDetachedProgram::RemainsCurrent(CQMItemList const& items) {
  std::uint32_t const epoch = CQMDatum::StorageEpoch();
  if (SignatureOf(items) != m_signature) return false;
  m_epoch = epoch;
  return true;
}

SQMResultView CQMDetachedProgram::GetResult() const {
  SQMResultView view{m_type, true, true};
  if (HasNumber()) view.real = GetNumber();
  else view.boolean = BooleanAt(m_result) != 0;
  return view;
}

void CQMDetachedProgram::HandOver(std::span<CQMOperator* const> operators, CQMExpression const& expression) {
  // Steps are made in the same order from the same operators, so that the slots have the same numbers.
  ForgetSlots(operators);
  std::vector<SQMStep> steps;
  std::vector<SQMSlot> slots;
  slots.reserve(kMostSlotsAnOperator * operators.size() + 1);
  CQMStepMaker(operators, steps, expression, expression.GetContext().GetAngleFactorToRadians(),
               EQMWay::Joined, &slots)
      .MakeAll();
  for (CQMOperator const* const op : operators) {
    CQMDatum* const result = op->GetResultOperand();
    if (result == nullptr || result->GetSlot() == CQMDatum::kNoSlot) continue;
    SQMSlot const& slot = m_slots[static_cast<std::size_t>(result->GetSlot())];
    if (result->IsProxy()) result->ShowElement(slot.element);
    else if (result->IsBoolean()) result->SetBoolean(slot.boolean != std::byte{0});
    else result->SetReal(slot.number);
  }
}

}  // namespace qumel
