// Making and running of programs.
#include "engine/program.h"

#include "engine/operator.h"
#include "engine/operator_context.h"

namespace qumel {

namespace {

/** Leaves the work to the operator, which may move the position, and storage that steps refer to. */
SQMStep const* RunObject(SQMStep const* step, SQMFrame& frame, double) {
  frame.position = step - frame.begin;
  frame.status = step->object->DoOperation(frame.position);
  if (frame.status != Status::Done) return nullptr;
  frame.program->Refresh();
  return GoOn(frame.begin + frame.position, frame, 0.0);
}

SQMStep const* RunEnd(SQMStep const* step, SQMFrame& frame, double) {
  frame.position = step - frame.begin;
  return nullptr;
}

}  // namespace

SQMStep const* Refuse(SQMStep const* step, SQMFrame& frame, long status) {
  NumberAt(step->result) = 0.0;
  frame.position = step - frame.begin;
  frame.status = status;
  return nullptr;
}

SQMStep const* RunNothing(SQMStep const* step, SQMFrame& frame, double) { return GoOn(step + 1, frame, 0.0); }

SQMStep const* RefuseCarried(SQMStep const* step, SQMFrame& frame, double carried, long status) {
  NumberAt((step - 1)->result) = carried;
  return Refuse(step, frame, status);
}

// ---- making ----

CQMStepMaker::CQMStepMaker(std::span<std::unique_ptr<CQMOperator> const> operators,
                           std::vector<SQMStep>& steps, CQMOperatorContext const& context,
                           double const& toRadians, EQMJoining joining)
    : m_operators(operators),
      m_steps(steps),
      m_context(context),
      m_toRadians(toRadians),
      m_joining(joining) {}

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
    if (op.MakeStep(*this, step)) {
      if (m_takesCarried) m_steps[i - 1].function = m_before.handingOn;
    } else {
      isQuiet = false;
      m_current = {};
      step = {};
      step.function = &RunObject;
      step.object = &op;
    }
  }
  m_steps.back() = {};
  m_steps.back().function = &RunEnd;
  return isQuiet;
}

bool CQMStepMaker::IsResultOfStepBefore(CQMDatum const& operand) const {
  return m_joining == EQMJoining::Carrying && m_position > 0 &&
         m_operators[static_cast<std::size_t>(m_position) - 1]->GetResultOperand() == &operand;
}

bool CQMStepMaker::FindNumber(CQMOperator const& op, long index, bool mayCarry, SQMStepOperand& operand) {
  CQMDatum* const datum = op.GetOperandByIndex(index);
  if (datum == nullptr || datum->IsPending() || datum->IsArray()) return false;
  if (datum->GetType() != EQMDataType::Number && datum->GetType() != EQMDataType::Real) return false;
  if (datum->GetValue() == nullptr) return false;
  datum->FinalTarget().SetBound();
  if (datum->IsProxy()) {
    operand = {reinterpret_cast<std::byte*>(datum->CurrentPlace()), EQMSource::Indirect};
  } else if (mayCarry && m_before.handingOn != nullptr && IsResultOfStepBefore(*datum)) {
    m_takesCarried = true;
    operand = {datum->Current(), EQMSource::Carried};
  } else {
    operand = {datum->Current(), EQMSource::Direct};
  }
  return true;
}

bool CQMStepMaker::FindBoolean(CQMOperator const& op, long index, std::byte*& address) {
  CQMDatum* const datum = op.GetOperandByIndex(index);
  bool const isThere = datum != nullptr && !datum->IsPending() && !datum->IsArray() && !datum->IsProxy() &&
                       datum->IsBoolean() && datum->GetValue() != nullptr;
  if (!isThere) return false;
  datum->SetBound();
  address = datum->Current();
  return true;
}

namespace {

bool HasOwnResult(CQMOperator const& op, EQMDataType type) {
  CQMDatum const* const result = op.GetResultOperand();
  return result != nullptr && result->GetType() == type && !result->IsArray() && !result->IsProxy() &&
         result->GetValue() != nullptr;
}

}  // namespace

bool CQMStepMaker::HasNumberResult(CQMOperator const& op) { return HasOwnResult(op, EQMDataType::Number); }

bool CQMStepMaker::HasBooleanResult(CQMOperator const& op) { return HasOwnResult(op, EQMDataType::Boolean); }

bool CQMStepMaker::Use(SQMStepFunctions const& functions) {
  auto const position = static_cast<std::size_t>(m_position);
  // nobody reads what a statement in the midst of the text comes to
  bool const isUnread = m_joining == EQMJoining::Carrying && functions.handingOn != nullptr &&
                        m_operators[position]->EndsStatement() && position + 1 < m_operators.size();
  m_current = functions;
  m_steps[position].function = isUnread ? functions.handingOn : functions.storing;
  return true;
}

void CQMStepMaker::JoinWithComparison(CQMOperator const& op) {
  if (m_before.branching == nullptr || !IsResultOfStepBefore(*op.GetOperandByIndex(0))) return;
  auto const position = static_cast<std::size_t>(m_position);
  SQMStep& comparison = m_steps[position - 1];
  comparison.function = m_before.branching;
  comparison.whenTrue = m_steps[position].whenTrue;
  comparison.whenFalse = m_steps[position].whenFalse;
}

SQMStep const* CQMStepMaker::StepAt(long position) const { return m_steps.data() + position; }

// ---- programs ----

void CQMProgram::Make(std::span<std::unique_ptr<CQMOperator> const> operators,
                      CQMOperatorContext const& context, EQMJoining joining) {
  m_operators = operators;
  m_context = &context;
  m_joining = joining;
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
  m_isQuiet = CQMStepMaker(m_operators, m_steps, *m_context, m_toRadians, m_joining).MakeAll();
}

long CQMProgram::Run(long& position) {
  Refresh();
  m_toRadians = m_context->GetAngleFactorToRadians();
  SQMFrame frame{m_steps.data(), this};
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
