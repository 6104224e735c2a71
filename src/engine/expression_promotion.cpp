// What a compiled expression does about variables that became complex since it was verified. A number becomes
// complex where anybody stores a complex value in it: the host, a callback, a body, another expression, this
// one. A process-wide count tells that some variable did. Expressions look at it when a run begins, and
// behind each call that leaves them; only when it has moved do they look at their own variables, and verify
// again what is still to run: that ends with the code that a text with such variables would end with, or goes
// on in complex evaluation, which complex operands need no permission for.
#include <algorithm>

#include "engine/expression.h"

namespace qumel {

namespace {

bool IsComplex(CQMDatum const* operand) { return operand != nullptr && operand->IsComplex(); }

bool IsInTable(CQMDatum& variable) {
  char const scope = variable.FinalTarget().GetScope();
  return scope == Scope::kGlobal || scope == Scope::kCosmic;
}

}  // namespace

long CQMExpression::CountComplexParameters() const {
  return static_cast<long>(std::count_if(m_parameters.begin(), m_parameters.end(), &IsComplex));
}

// A variable that is complex stays so. It counts once for each place where it stands in the text. Results of
// operators may change back; they have no names, and those lent to a body count as its parameters.
CQMExpression::SQMComplexCounts CQMExpression::CountComplex() const {
  SQMComplexCounts counts{0, 0, CountComplexParameters()};
  for (CQMDatum* const operand : m_compilation->operands) {
    if (IsComplex(operand) && !operand->Name().empty())
      ++(IsInTable(*operand) ? counts.inTables : counts.others);
  }
  return counts;
}

CQMExpression::EQMPromoted CQMExpression::FindPromoted() const {
  SQMComplexCounts const counts = CountComplex();
  if (counts.inTables > m_complexCounts.inTables) return EQMPromoted::TableVariable;
  bool const hasOther =
      counts.others > m_complexCounts.others || counts.parameters > m_complexCounts.parameters;
  return hasOther ? EQMPromoted::Other : EQMPromoted::Nothing;
}

long CQMExpression::VerifyBeforeRun() {
  std::uint32_t const count = CQMDatum::GetPromotionCount();
  if (count == m_promotionsBeforeRun) return Error::None;
  EQMPromoted const promoted = std::max(FindPromoted(), m_promotedWithinRun);
  long code = Error::None;
  if (promoted != EQMPromoted::Nothing) {
    code = VerifyAnew(0, promoted);
  } else {
    auto const& bodies = m_compilation->bodies;
    for (auto body = bodies.begin(); body != bodies.end() && code == Error::None; ++body) {
      code = (*body)->VerifyBeforeRun();
    }
  }
  if (code != Error::None) return code;  // and again in the next run, as long as nothing changes
  m_promotionsBeforeRun = m_promotions = count;
  m_promotedWithinRun = EQMPromoted::Nothing;
  m_complexCounts = CountComplex();
  return Error::None;
}

// What the run itself made complex was verified as a number, as it is in a text, and is not looked at again.
void CQMExpression::AcceptPromotions() {
  std::uint32_t const count = CQMDatum::GetPromotionCount();
  if (!m_complexMode || count == m_promotions) return;
  m_promotions = count;
  m_complexCounts = CountComplex();
}

long CQMExpression::FollowCall(long status, long next) {
  std::uint32_t const count = CQMDatum::GetPromotionCount();
  if (count == m_promotions && CountComplexParameters() == m_complexCounts.parameters) return status;
  EQMPromoted const promoted = FindPromoted();
  // the next run verifies also what stands before this place
  m_promotedWithinRun = std::max(promoted, m_promotedWithinRun);
  bool const goesOn = status == Status::Done || status == Status::NeedsComplex;
  if (goesOn && promoted != EQMPromoted::Nothing) {
    if (long const code = VerifyAnew(FirstThatMayFollow(next), promoted); code != Error::None) return code;
  }
  m_promotions = count;
  m_complexCounts = CountComplex();
  return status;
}

/** The first position that a run which goes on at position next may come to: jumps lead back. */
long CQMExpression::FirstThatMayFollow(long next) const {
  long first = next;
  auto const mayLeadTo = [&first](long link) {
    if (link != CQMOperator::kNoLink) first = std::min(first, link);
  };
  for (long i = GetOperatorCount() - 1; i >= first; --i) {
    CQMOperator const& op = *GetOperatorByIndex(i);
    mayLeadTo(op.GetSkipLink());
    mayLeadTo(op.GetTrueLink());
    mayLeadTo(op.GetFalseLink());
    // the end of a select may lead back to its default
    if (op.GetId() == OpId::End && op.GetTopLinkOperator()->GetId() == OpId::Select) {
      mayLeadTo(op.GetTopLinkOperator()->GetFalseLink());
    }
  }
  return first;
}

// Codes count where the variable stands in a table: there a text finds it complex before it runs. Variables
// of the expression, and what is lent to a body, are numbers to every text until it runs.
long CQMExpression::VerifyAnew(long first, EQMPromoted promoted) {
  bool becomesComplex = false;
  long code = Error::None;
  for (long i = first; i < GetOperatorCount() && code == Error::None; ++i) {
    CQMOperator& op = *GetOperatorByIndex(i);
    if (CQMExpression* const body = op.GetBody(); body != nullptr) {
      code = body->VerifyBeforeRun();
      continue;
    }
    code = op.VerifyOperands();
    bool const isPassed = code == Error::None || AsksForComplex(code);
    becomesComplex |= code != Error::None;  // a fault, too, can only come of complex operands
    if (isPassed || promoted != EQMPromoted::TableVariable) code = Error::None;
  }
  m_nextScope = Scope::kDefault;
  m_nextComplexity = Complexity::kDefault;
  if (code == Error::None && becomesComplex && !m_complexMode) EnterComplexMode();
  return code;
}

}  // namespace qumel
