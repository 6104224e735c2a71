// Where the fragments of a reverted text need parentheses, so that it converts back to what it came from.
#include "base/operator_ids.h"
#include "language/fragment_reversion.h"

namespace qumel {

namespace {

/** The class that the converter remembers of an operator that it added. */
EQMItemClass AddedClass(CQMOpInfo const& info) {
  return ClosesItself(info.fix) ? EQMItemClass::Start : ItemClassOf(info.fix);
}

bool IsImplied(CQMOpInfo const& info) { return info.id == OpId::ImpliedMultiplication; }

}  // namespace

// ---- parts and their edges ----

std::span<CQMFragmentReversion::Index const> CQMFragmentReversion::FragmentsOf(SQMPart const& part) const {
  return std::span(m_parts).subspan(static_cast<std::size_t>(part.begin),
                                    static_cast<std::size_t>(part.count));
}

CQMFragmentReversion::SQMFragment const* CQMFragmentReversion::BareFragment(SQMPart const& part) const {
  return !part.isEnclosed && part.count == 1 ? &m_fragments[m_parts[part.begin]] : nullptr;
}

CQMFragmentReversion::SQMEdge CQMFragmentReversion::FirstOf(SQMPart const& part) const {
  if (part.isEnclosed || part.count == 0) return {EQMItemClass::OpenParen};
  return m_fragments[FragmentsOf(part).front()].first;
}

CQMFragmentReversion::SQMEdge CQMFragmentReversion::LastOf(SQMPart const& part) const {
  if (part.isEnclosed || part.count == 0) return {EQMItemClass::CloseParen};
  return m_fragments[FragmentsOf(part).back()].last;
}

bool CQMFragmentReversion::NeedsLeadingComma(SQMPart const& part) const {
  if (part.count == 0) return false;
  SQMEdge const& first = m_fragments[FragmentsOf(part).front()].first;
  return !IsChosen(first, EQMItemClass::OpenParen, first.inner);
}

bool CQMFragmentReversion::NeedsTrailingComma(SQMPart const& part) const {
  if (part.count == 0) return false;
  SQMEdge const& last = m_fragments[FragmentsOf(part).back()].last;
  return !IsChosen(last, last.inner, EQMItemClass::CloseParen);
}

/** What follows the bracket of an index. */
EQMItemClass CQMFragmentReversion::InsideBrackets(SQMPart const& part) const {
  if (part.count == 0 || NeedsLeadingComma(part)) return EQMItemClass::OpenParen;
  return m_fragments[FragmentsOf(part).front()].first.itemClass;
}

/** True of operands and parentheses; of an operator, whether its token is read as this operator there. */
bool CQMFragmentReversion::IsChosen(SQMEdge const& token, EQMItemClass previous, EQMItemClass next) const {
  if (token.op == nullptr) return true;
  SQMFoundOperator const found =
      CQMOperatorSearch::Choose(token.op->rows, previous, next, m_rules.hierarchical);
  return found.info != nullptr && found.info->id == token.op->info->id;
}

bool CQMFragmentReversion::Multiplies(SQMEdge const& last, SQMEdge const& first) const {
  static SQMOperatorToken const kNoRows;
  return m_rules.impliedMultiplication &&
         EndsFactor(last.itemClass, last.op != nullptr ? last.op->rows : kNoRows) &&
         BeginsFactor(first.itemClass, first.op != nullptr ? first.op->rows : kNoRows);
}

// ---- what may stand without parentheses ----

/** Every operator that still waits at the end of the part must be let go when by is read. */
bool CQMFragmentReversion::MayStandLeft(SQMPart const& part, SQMOperator const& by) const {
  if (part.count != 1) return false;
  for (SQMFragment const* at = &m_fragments[m_parts[part.begin]]; at != nullptr && at->op != nullptr;) {
    bool const waits = !ClosesItself(at->op->info->fix);
    if (waits && BindsTighter(*by.info, by.precedence, *at->op->info, at->op->precedence)) return false;
    bool const goesOn = at->shape == EQMShape::Before || at->shape == EQMShape::Between;
    at = goesOn ? BareFragment(at->right) : nullptr;
  }
  return true;
}

/** No operator of the part that is compared with by may let it go. */
bool CQMFragmentReversion::MayStandRight(SQMPart const& part, SQMOperator const& by) const {
  if (part.count != 1 || m_fragments[m_parts[part.begin]].beginsAnew) return false;
  for (SQMFragment const* at = &m_fragments[m_parts[part.begin]]; at != nullptr && at->op != nullptr;) {
    if (!BindsTighter(*at->op->info, at->op->precedence, *by.info, by.precedence)) return false;
    bool const goesOn =
        at->shape == EQMShape::Between || at->shape == EQMShape::Behind || at->shape == EQMShape::Index;
    at = goesOn ? BareFragment(at->left) : nullptr;
  }
  return true;
}

// ---- arranging ----

void CQMFragmentReversion::Arrange(SQMFragment& fragment) const {
  if (fragment.op != nullptr) {
    bool const hasLeft = fragment.shape == EQMShape::Between || fragment.shape == EQMShape::Behind ||
                         fragment.shape == EQMShape::Index;
    bool const hasRight = fragment.shape == EQMShape::Between || fragment.shape == EQMShape::Before;
    bool const leftMayBeBare = hasLeft && MayStandLeft(fragment.left, *fragment.op);
    bool const rightMayBeBare = hasRight && MayStandRight(fragment.right, *fragment.op);
    bool const prefersEnclosed = fragment.shape == EQMShape::Before && fragment.op->info->enclose;
    bool suits = false;
    for (bool const enclosesLeft : {false, true}) {
      for (bool const tries : {false, true}) {
        bool const enclosesRight = prefersEnclosed ? !tries : tries;
        bool const isAllowed = (enclosesLeft ? hasLeft : leftMayBeBare || !hasLeft) &&
                               (enclosesRight ? hasRight : rightMayBeBare || !hasRight);
        if (suits || !isAllowed) continue;
        fragment.left.isEnclosed = enclosesLeft;
        fragment.right.isEnclosed = enclosesRight;
        suits = Suits(fragment);
      }
    }
    SQMFragment const* const left = BareFragment(fragment.left);
    if (hasLeft && left != nullptr && left->beginsAnew) fragment.beginsAnew = true;
  }
  SetEdges(fragment);
}

/** Whether the tokens of a fragment are read as they are meant, seen from within. */
bool CQMFragmentReversion::Suits(SQMFragment const& fragment) const {
  SQMOperator const& op = *fragment.op;
  SQMEdge const own{EQMItemClass::Operator, &op};
  SQMEdge const left = LastOf(fragment.left), right = FirstOf(fragment.right);
  EQMItemClass const added = AddedClass(*op.info);
  EQMItemClass const before = left.op != nullptr ? AddedClass(*left.op->info) : left.itemClass;
  switch (fragment.shape) {
    case EQMShape::Before:
      return IsChosen(own, EQMItemClass::Separator, right.itemClass) && IsChosen(right, added, right.inner);
    case EQMShape::Behind:
      return IsChosen(own, before, EQMItemClass::Separator) &&
             IsChosen(left, left.inner, EQMItemClass::Operator) && !Multiplies(left, own);
    case EQMShape::Index:
      return IsChosen(own, before, InsideBrackets(fragment.right)) &&
             IsChosen(left, left.inner, EQMItemClass::Operator);
    case EQMShape::Between:
      if (!IsChosen(right, added, right.inner)) return false;
      if (IsImplied(*op.info)) return Multiplies(left, right) && IsChosen(left, left.inner, right.itemClass);
      return IsChosen(own, before, right.itemClass) && IsChosen(left, left.inner, EQMItemClass::Operator) &&
             !Multiplies(left, own);
    default: return true;
  }
}

void CQMFragmentReversion::SetEdges(SQMFragment& fragment) const {
  if (fragment.op == nullptr) {
    fragment.first = fragment.last = {ItemClassOfOperand(fragment.item.mark)};
    return;
  }
  SQMEdge own{EQMItemClass::Operator, fragment.op};
  bool const hasLeft = fragment.shape != EQMShape::Before && fragment.shape != EQMShape::Alone;
  bool const hasRight = fragment.shape == EQMShape::Before || fragment.shape == EQMShape::Between;
  SQMEdge const left = LastOf(fragment.left), right = FirstOf(fragment.right);

  fragment.first = own;
  if (hasLeft) {
    fragment.first = FirstOf(fragment.left);
    SQMFragment const* const bare = BareFragment(fragment.left);
    if (bare != nullptr && bare->shape == EQMShape::Alone) {
      fragment.first.inner = IsImplied(*fragment.op->info) ? right.itemClass : EQMItemClass::Operator;
    }
  } else if (fragment.shape == EQMShape::Before) {
    fragment.first.inner = right.itemClass;
  }

  fragment.last = own;
  if (hasRight) {
    fragment.last = LastOf(fragment.right);
    SQMFragment const* const bare = BareFragment(fragment.right);
    if (bare != nullptr && bare->shape == EQMShape::Alone)
      fragment.last.inner = AddedClass(*fragment.op->info);
  } else if (fragment.shape == EQMShape::Index) {
    fragment.last = {EQMItemClass::CloseBracket};
  } else if (fragment.shape == EQMShape::Behind) {
    fragment.last.inner = left.op != nullptr ? AddedClass(*left.op->info) : left.itemClass;
  }
}

/** Neighbours of a list need a comma where no word keeps them apart by itself. */
bool CQMFragmentReversion::NeedsComma(Index left, Index right, bool inList) const {
  SQMEdge const& last = m_fragments[left].last;
  SQMEdge const& first = m_fragments[right].first;
  EQMItemClass const before = last.op != nullptr ? AddedClass(*last.op->info) : last.itemClass;
  EQMFix const lastFix = last.op != nullptr ? last.op->info->fix : EQMFix::None;
  if (!IsChosen(first, before, first.inner) || !IsChosen(last, last.inner, first.itemClass)) return true;
  if (ClosesItself(lastFix)) return false;
  if (first.op == nullptr) return true;
  if (LetsGo(first.op->info->fix)) return inList && !LetsGo(lastFix);
  return lastFix != EQMFix::StatementKeyword ||
         BindsTighter(*first.op->info, first.op->precedence, *last.op->info, last.op->precedence);
}

}  // namespace qumel
