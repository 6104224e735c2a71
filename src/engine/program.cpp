// Making and running of programs.
#include "engine/program.h"

#include "engine/call.h"
#include "engine/operator.h"
#include "engine/operator_context.h"

namespace qumel {

namespace {

/** Statuses up to this one do not end a complex run. */
constexpr long kLastIgnoredStatus = 999;

}  // namespace

// ---- the ends of steps ----

SQMStep const* EndCall(CQMCall const& call, SQMFrame& frame, long status) {
  SQMStep const* const next = call.NextAfter(status);
  if (status != Status::Done) {
    frame.status = status;
    frame.position = next - frame.begin;
    return nullptr;
  }
  frame.program->Refresh();  // the operator may have moved storage that steps refer to
  return next;
}

SQMStep const* EndComplexCall(CQMCall const& call, SQMFrame& frame, long status) {
  frame.status = status == Status::NeedsComplex ? Status::Done : status;
  if (frame.status > kLastIgnoredStatus) {
    frame.position = call.NextAfter(status) - frame.begin;
    return nullptr;
  }
  return call.NextAfter(Status::Done);
}

SQMStep const* RunEnd(SQMStep const* step, SQMFrame& frame, double) {
  frame.position = step - frame.begin;
  return nullptr;
}

SQMStep const* RunDetachedEnd(SQMStep const*, SQMFrame&, double) { return nullptr; }

SQMStep const* RunNothing(SQMStep const* step, SQMFrame& frame, double) { return GoOn(step + 1, frame, 0.0); }

SQMStep const* Refuse(SQMStep const* step, SQMFrame& frame, long status) {
  NumberAt(step->result) = 0.0;
  frame.position = step - frame.begin;
  frame.status = status;
  return nullptr;
}

SQMStep const* RefuseCarried(SQMStep const* step, SQMFrame& frame, double carried, long status) {
  NumberAt((step - 1)->result) = carried;
  return Refuse(step, frame, status);
}

// ---- making ----

CQMStepMaker::CQMStepMaker(std::span<CQMOperator* const> operators, std::vector<SQMStep>& steps,
                           CQMExpression const& expression, double const& toRadians, EQMWay way,
                           std::vector<SQMSlot>* slots)
    : m_operators(operators),
      m_steps(steps),
      m_slots(slots),
      m_expression(expression),
      m_toRadians(toRadians),
      m_way(way) {}

CQMOperatorContext const& CQMStepMaker::GetContext() const { return m_expression.GetContext(); }

bool CQMStepMaker::MakeAll() {
  bool isQuiet = true;
  m_steps.resize(m_operators.size() + 1);
  for (std::size_t i = 0; i < m_operators.size(); ++i) {
    CQMOperator& op = *m_operators[i];
    m_position = static_cast<long>(i);
    m_takesCarried = false;
    m_before = m_current;
    m_current = {};
    SQMStep& step = m_steps[i];
    step = {};
    if (m_way != EQMWay::Complex && op.MakeStep(*this, step)) {
      if (m_takesCarried) m_steps[i - 1].function = m_before.handingOn;
      continue;
    }
    isQuiet = false;
    m_current = {};
    step = {};
    step.operands = op.GetOperandList().data();
    step.operandCount = op.GetOperandCount();
    step.resultDatum = op.GetResultOperand();
    op.PrepareStep(*this, step);
    SQMWays const ways = op.GetWays();
    step.function = m_way == EQMWay::Complex ? ways.inComplex : ways.inReal;
  }
  m_steps.back() = {};
  m_steps.back().function = IsDetached() ? &RunDetachedEnd : &RunEnd;
  return isQuiet;
}

bool CQMStepMaker::IsResultOfStepBefore(CQMDatum const& operand) const {
  return m_way == EQMWay::Joined && m_position > 0 &&
         m_operators[static_cast<std::size_t>(m_position) - 1]->GetResultOperand() == &operand;
}

bool CQMStepMaker::FindNumber(long index, bool mayCarry, SQMStepOperand& operand) {
  CQMDatum* const datum = Current().GetOperandByIndex(index);
  if (datum == nullptr || datum->IsPending() || datum->IsArray()) return false;
  if (datum->GetType() != EQMDataType::Number && datum->GetType() != EQMDataType::Real) return false;
  if (datum->GetValue() == nullptr) return false;
  datum->FinalTarget().SetBound();
  if (datum->IsProxy()) {
    operand = {PlaceOf(*datum), EQMSource::Indirect};
  } else if (mayCarry && m_before.handingOn != nullptr && IsResultOfStepBefore(*datum)) {
    m_takesCarried = true;
    operand = {PlaceOf(*datum), EQMSource::Carried};
  } else {
    operand = {PlaceOf(*datum), EQMSource::Direct};
  }
  return true;
}

bool CQMStepMaker::FindBoolean(long index, std::byte*& address) {
  CQMDatum* const datum = Current().GetOperandByIndex(index);
  bool const isThere = datum != nullptr && !datum->IsPending() && !datum->IsArray() && !datum->IsProxy() &&
                       datum->IsBoolean() && datum->GetValue() != nullptr;
  if (!isThere) return false;
  datum->SetBound();
  address = PlaceOf(*datum);
  return true;
}

bool CQMStepMaker::FindResult(EQMDataType type, std::byte*& address) {
  CQMDatum* const result = Current().GetResultOperand();
  bool const isOwn = result != nullptr && result->GetType() == type && !result->IsArray() &&
                     !result->IsProxy() && result->GetValue() != nullptr;
  if (isOwn) address = PlaceOf(*result);
  return isOwn;
}

// ---- where values stand ----

SQMSlot& CQMStepMaker::NextSlot() { return m_slots->emplace_back(); }

/** The slot that stands for datum, which is made when it is asked for first. */
SQMSlot& CQMStepMaker::SlotOf(CQMDatum& datum) {
  if (datum.GetSlot() == CQMDatum::kNoSlot) {
    datum.SetSlot(static_cast<std::int32_t>(m_slots->size()));
    SQMSlot& slot = NextSlot();
    if (datum.IsProxy()) slot.element = datum.Current();
    else if (datum.IsBoolean()) slot.boolean = *datum.Current();
    else slot.number = datum.Real();
  }
  return (*m_slots)[static_cast<std::size_t>(datum.GetSlot())];
}

std::byte* CQMStepMaker::PlaceOf(CQMDatum& datum) {
  bool const isOwn = datum.GetOwningExpression() == &m_expression;
  if (m_slots != nullptr && isOwn) return reinterpret_cast<std::byte*>(&SlotOf(datum));
  return datum.IsProxy() ? reinterpret_cast<std::byte*>(datum.CurrentPlace()) : datum.Current();
}

SQMBlock* CQMStepMaker::PlaceBlock(CQMOperator const& opener) {
  m_needsObjects = true;
  return opener.GetBlock();
}

// ---- functions ----

bool CQMStepMaker::Use(SQMStepFunctions const& functions) {
  auto const position = static_cast<std::size_t>(m_position);
  // nobody reads what a statement in the midst of the text comes to
  bool const isUnread = m_way == EQMWay::Joined && functions.handingOn != nullptr &&
                        Current().EndsStatement() && position + 1 < m_operators.size();
  m_current = functions;
  m_steps[position].function = isUnread ? functions.handingOn : functions.storing;
  return true;
}

void CQMStepMaker::JoinWithComparison() {
  if (m_before.branching == nullptr || !IsResultOfStepBefore(*Current().GetOperandByIndex(0))) return;
  auto const position = static_cast<std::size_t>(m_position);
  SQMStep& comparison = m_steps[position - 1];
  comparison.function = m_before.branching;
  comparison.whenTrue = m_steps[position].whenTrue;
  comparison.whenFalse = m_steps[position].whenFalse;
}

// ---- programs ----

void CQMProgram::Make(std::span<CQMOperator* const> operators, CQMExpression& expression, EQMWay way) {
  m_operators = operators;
  m_expression = &expression;
  m_way = way;
  Remake();
}

void CQMProgram::Clear() {
  m_operators = {};
  m_steps.clear();
  m_isQuiet = false;
}

std::uint32_t CQMProgram::CurrentEpoch() { return CQMDatum::StorageEpoch(); }

void CQMProgram::Remake() {
  m_epoch = CurrentEpoch();
  m_isQuiet = CQMStepMaker(m_operators, m_steps, *m_expression, m_toRadians, m_way).MakeAll();
}

long CQMProgram::Run(long& position) {
  Refresh();
  m_toRadians = m_expression->GetContext().GetAngleFactorToRadians();
  SQMFrame frame(m_steps.data());
  frame.program = this;
  frame.expression = m_expression;
  SQMStep const* step = frame.begin + position;  // never beyond the step of the end
#if QUMEL_STEPS_RETURN
  while (step != nullptr) step = step->function(step, frame, frame.carried);
#else
  step->function(step, frame, 0.0);
#endif
  position = frame.position;
  return frame.status;
}

}  // namespace qumel
