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

/** What the token is for the one behind it. */
EQMItemClass CQMFragmentReversion::ClassBefore(SQMEdge const& token) {
  return token.op != nullptr ? AddedClass(*token.op->info) : token.itemClass;
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
  CQMOpInfo const* const chosen = CQMOperatorSearch::Choose(token.op->rows, previous, next);
  return chosen != nullptr && chosen->id == token.op->info->id;
}

bool CQMFragmentReversion::Multiplies(SQMEdge const& last, SQMEdge const& first) const {
  static SQMOperatorToken const kNoRows;
  return m_rules.impliedMultiplication &&
         EndsFactor(last.itemClass, last.op != nullptr ? last.op->rows : kNoRows) &&
         BeginsFactor(first.itemClass, first.op != nullptr ? first.op->rows : kNoRows);
}

// ---- what may stand without parentheses ----

/** The fragment whose operator comes next on the right edge of a text, or null. */
CQMFragmentReversion::SQMFragment const* CQMFragmentReversion::NextOnRight(
    SQMFragment const& fragment) const {
  switch (fragment.shape) {
    case EQMShape::Before:
    case EQMShape::Between: return BareFragment(fragment.right);
    case EQMShape::Within: return BareFragment(fragment.left);
    case EQMShape::Sign:
      return fragment.behind.count == 0 ? &m_fragments[FragmentsOf(fragment.right).back()] : nullptr;
    default: return nullptr;
  }
}

CQMFragmentReversion::SQMFragment const* CQMFragmentReversion::NextOnLeft(SQMFragment const& fragment) const {
  switch (fragment.shape) {
    case EQMShape::Between:
    case EQMShape::Behind:
    case EQMShape::Index:
    case EQMShape::Within: return BareFragment(fragment.left);
    default: return nullptr;
  }
}

/** Every operator that still waits at the end of the fragment must be let go when by is read. */
bool CQMFragmentReversion::MayStandLeft(SQMFragment const& fragment, SQMOperator const& by) const {
  for (SQMFragment const* at = &fragment; at != nullptr && at->op != nullptr; at = NextOnRight(*at)) {
    bool const waits = !ClosesItself(at->op->info->fix);
    if (waits && BindsTighter(*by.info, by.precedence, *at->op->info, at->op->precedence)) return false;
  }
  return true;
}

/** No operator of the fragment that is compared with by may let it go. */
bool CQMFragmentReversion::MayStandRight(SQMFragment const& fragment, SQMOperator const& by) const {
  if (fragment.beginsAnew) return false;
  for (SQMFragment const* at = &fragment; at != nullptr && at->op != nullptr; at = NextOnLeft(*at)) {
    if (!BindsTighter(*at->op->info, at->op->precedence, *by.info, by.precedence)) return false;
  }
  return true;
}

// ---- arranging ----

void CQMFragmentReversion::Arrange(SQMFragment& fragment) {
  if (fragment.op == nullptr || fragment.shape == EQMShape::Sign || PlaceWithin(fragment)) return;
  bool suits = ArrangeParts(fragment);
  if (!suits && fragment.shape == EQMShape::Between && fragment.right.count == 0) {
    std::swap(fragment.left, fragment.right);
    suits = ArrangeParts(fragment);
  }
  SQMFragment const* const left = NextOnLeft(fragment);
  if (left != nullptr) {
    fragment.beginsAnew |= left->beginsAnew;
    fragment.unplaced = left->unplaced;
  }
  bool const mayStandWithin = fragment.shape == EQMShape::Behind || fragment.shape == EQMShape::Between;
  if (!suits && mayStandWithin && fragment.unplaced == kNone) {
    fragment.unplaced = static_cast<Index>(m_fragments.size());  // its own
  }
}

/** Chooses the parentheses; false when none serve. */
bool CQMFragmentReversion::ArrangeParts(SQMFragment& fragment) const {
  bool const hasLeft = fragment.shape == EQMShape::Between || fragment.shape == EQMShape::Behind ||
                       fragment.shape == EQMShape::Index;
  bool const hasRight = fragment.shape == EQMShape::Between || fragment.shape == EQMShape::Before;
  fragment.left.isEnclosed = fragment.right.isEnclosed = false;
  SQMFragment const* const left = BareFragment(fragment.left);
  SQMFragment const* const right = BareFragment(fragment.right);
  bool const leftMayBeBare = !hasLeft || (left != nullptr && MayStandLeft(*left, *fragment.op));
  bool const rightMayBeBare = !hasRight || (right != nullptr && MayStandRight(*right, *fragment.op));
  bool const leftMustBeBare = !hasLeft || (leftMayBeBare && left->unplaced != kNone);
  bool const prefersEnclosed = fragment.shape == EQMShape::Before && fragment.op->info->enclose;
  for (bool const enclosesLeft : {false, true}) {
    for (bool const tries : {false, true}) {
      bool const enclosesRight = prefersEnclosed ? !tries : tries;
      bool const isAllowed =
          (enclosesLeft ? !leftMustBeBare : leftMayBeBare) && (enclosesRight ? hasRight : rightMayBeBare);
      if (!isAllowed) continue;
      fragment.left.isEnclosed = enclosesLeft;
      fragment.right.isEnclosed = enclosesRight;
      if (Suits(fragment)) return true;
    }
  }
  fragment.left.isEnclosed = !leftMayBeBare;
  fragment.right.isEnclosed = hasRight && !rightMayBeBare;
  return false;
}

/** Places the token of a postfix operator within its operand, where another token lacks one to follow. */
bool CQMFragmentReversion::PlaceWithin(SQMFragment& fragment) {
  SQMFragment const* const left = BareFragment(fragment.left);
  if (fragment.shape != EQMShape::Behind || left == nullptr || left->unplaced == kNone) return false;
  SQMFragment& within = m_fragments[left->unplaced];
  SQMOperator const& wedge = *fragment.op;
  for (SQMFragment const* at = left;; at = NextOnLeft(*at)) {
    if (!BindsTighter(*at->op->info, at->op->precedence, *wedge.info, wedge.precedence)) return false;
    if (at == &within) break;
  }
  SQMEdge const before = LastOf(within.left);
  SQMEdge const own{EQMItemClass::Operator, &wedge}, behind{EQMItemClass::Operator, within.op};
  bool const hasRight = within.shape == EQMShape::Between;
  EQMItemClass const next = hasRight ? FirstOf(within.right).itemClass : EQMItemClass::Separator;
  bool const isRead = IsChosen(before, before.inner, EQMItemClass::Operator) &&
                      IsChosen(own, ClassBefore(before), EQMItemClass::Operator) &&
                      IsChosen(behind, AddedClass(*wedge.info), next) && !Multiplies(before, own) &&
                      !Multiplies(own, behind);
  if (!isRead) return false;
  within.wedge = &wedge;
  within.last.inner = hasRight ? within.last.inner : AddedClass(*wedge.info);
  fragment.shape = EQMShape::Within;
  fragment.beginsAnew = left->beginsAnew;
  return true;
}

// ---- signs ----

/** True of signs that are read as themselves before an operand only. */
bool CQMFragmentReversion::NeedsOperand(SQMOperator const& op) const {
  SQMEdge const own{EQMItemClass::Operator, &op};
  return op.info->fix == EQMFix::Prefix && !IsChosen(own, EQMItemClass::Comma, EQMItemClass::OpenParen) &&
         IsChosen(own, EQMItemClass::Comma, EQMItemClass::Name);
}

/** How many of the fragments may stand behind a sign without parentheses, where the others may stand in some
 * behind them; 0 when the sign cannot stand there. */
std::size_t CQMFragmentReversion::CountBareBehindSign(SQMOperator const& sign,
                                                      std::span<Index const> fragments) const {
  if (fragments.empty()) return 0;
  SQMFragment const& operand = m_fragments[fragments.front()];
  bool const isOperand = operand.first.op == nullptr && operand.first.itemClass != EQMItemClass::OpenParen;
  if (!isOperand || !MayStandRight(operand, sign)) return 0;
  std::size_t count = 1;
  while (count < fragments.size() &&
         MayFollow(m_fragments[fragments[count - 1]], m_fragments[fragments[count]], sign)) {
    ++count;
  }
  if (count == fragments.size()) return count;
  bool const endsWithIt = operand.op == nullptr && !Multiplies(operand.last, {EQMItemClass::OpenParen});
  return endsWithIt ? 1 : 0;
}

/** Whether next lets everything go that waits in previous, but not the sign in front of both. */
bool CQMFragmentReversion::MayFollow(SQMFragment const& previous, SQMFragment const& next,
                                     SQMOperator const& sign) const {
  SQMEdge const& first = next.first;
  if (first.op == nullptr || !MayStandRight(next, sign) || !MayStandLeft(previous, *first.op)) return false;
  SQMEdge last = previous.last;
  if (MayBeOpenEnded(previous)) {
    SQMEdge const before = LastOf(previous.left);
    last = {EQMItemClass::Operator, previous.op, ClassBefore(before)};
  }
  return IsChosen(first, ClassBefore(last), first.inner) &&
         IsChosen(last, last.inner, EQMItemClass::Operator) && !Multiplies(last, first);
}

/** A sign in front of the next operand stands where the missing operand would. */
bool CQMFragmentReversion::MayBeOpenEnded(SQMFragment const& fragment) {
  return fragment.shape == EQMShape::Between && fragment.right.count == 0 && !IsImplied(*fragment.op->info);
}

/** Whether the tokens of a fragment are read as they are meant, seen from within. */
bool CQMFragmentReversion::Suits(SQMFragment const& fragment) const {
  SQMOperator const& op = *fragment.op;
  SQMEdge const own{EQMItemClass::Operator, &op};
  SQMEdge const left = LastOf(fragment.left), right = FirstOf(fragment.right);
  EQMItemClass const added = AddedClass(*op.info);
  EQMItemClass const before = ClassBefore(left);
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
    fragment.first = fragment.last = {ItemClassOfOperand(fragment.item->kind)};
    return;
  }
  if (fragment.shape == EQMShape::Within) {
    fragment.first = FirstOf(fragment.left);
    fragment.last = LastOf(fragment.left);
    return;
  }
  SQMEdge own{EQMItemClass::Operator, fragment.op};
  if (fragment.shape == EQMShape::Sign) {
    own.inner = FirstOf(fragment.right).itemClass;
    fragment.first = own;
    fragment.last = LastOf(fragment.behind.count > 0 ? fragment.behind : fragment.right);
    return;
  }
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
    fragment.last.inner = ClassBefore(left);
  }
}

/** Neighbours of a list need a comma where no word keeps them apart by itself. */
bool CQMFragmentReversion::NeedsComma(Index left, Index right, bool inList) const {
  SQMEdge const& last = m_fragments[left].last;
  SQMEdge const& first = m_fragments[right].first;
  EQMItemClass const before = ClassBefore(last);
  EQMFix const lastFix = last.op != nullptr ? last.op->info->fix : EQMFix::None;
  if (!IsChosen(first, before, first.inner) || !IsChosen(last, last.inner, first.itemClass)) return true;
  if (ClosesItself(lastFix)) return false;
  if (first.op == nullptr) return true;
  if (LetsGo(first.op->info->fix)) return inList && !LetsGo(lastFix);
  return lastFix != EQMFix::StatementKeyword ||
         BindsTighter(*first.op->info, first.op->precedence, *last.op->info, last.op->precedence);
}

}  // namespace qumel
