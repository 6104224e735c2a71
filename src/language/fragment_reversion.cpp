// Reading items into fragments: which operands each operator takes.
#include "language/fragment_reversion.h"

#include <algorithm>
#include <utility>

#include "base/operator_ids.h"

namespace qumel {

namespace {

bool IsScopeWord(long id) { return id >= OpId::CosmicScope && id <= OpId::ComplexWord; }
bool StandsBeforeStatement(long id) {
  return IsModeOperator(id) || id == OpId::Default || id == OpId::Otherwise;
}

}  // namespace

CQMFragmentReversion::CQMFragmentReversion(SQMReadingRules const& rules,
                                           std::span<SQMReversionItem const> items, EQMStyle style)
    : m_rules(rules), m_style(style) {
  for (SQMReversionItem const& item : items) {
    if (item.op != nullptr) {
      AddOperator(*item.op, item.item->operandCount);
    } else {
      SQMFragment operand;
      operand.item = item.item;
      operand.items = {.left = 1};
      operand.valueCount = 1;
      Open(std::move(operand));
    }
  }
  FoldWords(m_open);
  m_statement = MakePart(m_open);
}

// ---- counting ----

CQMFragmentReversion::SQMItemCount CQMFragmentReversion::SQMItemCount::Before(
    SQMItemCount const& next) const {
  std::int64_t const taken = std::min(left, next.wanted);
  return {left - taken + next.left, wanted + next.wanted - taken};
}

CQMFragmentReversion::SQMItemCount CQMFragmentReversion::SQMItemCount::TakenBy(std::int32_t count) const {
  return Before({.left = 1, .wanted = count});
}

/** How many values stand behind op when it takes so many of those in front of it. */
std::int32_t CQMFragmentReversion::CountValuesBehind(SQMOperator const& op, std::int32_t count,
                                                     std::int32_t values) {
  long const id = op.info->id;
  bool const handsOn = IsTypeWord(id) && values > 0;
  return std::max(values - count, 0) + (handsOn || !LeavesNothing(id) ? 1 : 0);
}

/** Where the last values begin among the open fragments, as many as there are up to count. */
std::size_t CQMFragmentReversion::BeginOfValues(std::int32_t count) const {
  auto const found = std::min(m_values.size(), static_cast<std::size_t>(std::max(count, 0)));
  if (found == 0) return m_open.size();
  std::size_t const begin = m_values[m_values.size() - found];
  return std::min(begin, m_fragments[m_open[begin]].reach);
}

/** As late as can be, so that most is left for operators outside of the list. */
std::size_t CQMFragmentReversion::BeginOfItems(std::int32_t count) const {
  std::size_t begin = m_open.size();
  for (SQMItemCount items; begin > 0 && items.left < count;) {
    items = m_fragments[m_open[--begin]].items.Before(items);
  }
  return begin;
}

// ---- operators ----

void CQMFragmentReversion::AddOperator(SQMOperator const& op, std::int32_t count) {
  CQMOpInfo const& info = *op.info;
  SQMFragment fragment;
  fragment.op = &op;
  fragment.beginsAnew = LetsGo(info.fix);
  switch (info.fix) {
    case EQMFix::Infix: fragment.shape = info.token == "[" ? EQMShape::Index : EQMShape::Between; break;
    case EQMFix::Prefix:
    case EQMFix::MarkedPrefix: fragment.shape = EQMShape::Before; break;
    case EQMFix::Postfix:
    case EQMFix::MarkedPostfix: fragment.shape = EQMShape::Behind; break;
    default: fragment.shape = EQMShape::Alone;
  }
  if (info.HasVariableOperands()) {
    TakeList(fragment, count);
  } else if (fragment.shape != EQMShape::Before || !TakeBehindSign(fragment, count)) {
    TakeOperands(fragment, count);
  }
  Open(std::move(fragment));
}

/** A list holds what the converter counts; what the compiler takes beyond that stands on the left. */
void CQMFragmentReversion::TakeList(SQMFragment& fragment, std::int32_t count) {
  bool const isInfix = fragment.op->info->fix == EQMFix::Infix;
  std::size_t begin = BeginOfItems(isInfix ? count - 1 : count);
  auto const first = std::ranges::lower_bound(m_values, begin);
  if (!isInfix && first != m_values.end()) begin = std::min(begin, m_fragments[m_open[*first]].reach);
  std::int32_t const listed = TakeValues(begin);
  std::int32_t onLeft = 0;
  std::vector<Index> right = TakeFrom(begin, fragment);
  fragment.items = SQMItemCount().TakenBy(isInfix ? 1 : 0);
  if (isInfix) {
    begin = BeginOfValues(count - listed);
    onLeft = TakeValues(begin);
    TakeLeft(begin, onLeft, fragment);
  }
  fragment.valueCount = CountValuesBehind(*fragment.op, count, listed + onLeft);
  FoldWords(right);
  fragment.right = MakePart(right);
}

void CQMFragmentReversion::TakeOperands(SQMFragment& fragment, std::int32_t count) {
  std::size_t begin = BeginOfValues(count);
  std::size_t const split = SplitOperands(fragment, count, begin);
  std::int32_t const onRight = TakeValues(split), onLeft = TakeValues(begin);
  fragment.valueCount = CountValuesBehind(*fragment.op, count, onLeft + onRight);
  std::vector<Index> right = TakeFrom(split, fragment);
  fragment.items = fragment.items.TakenBy(count);
  TakeLeft(begin, onLeft, fragment);
  FoldWords(right);
  fragment.right = MakePart(right);
}

/** Where those of the open fragments from begin on stand that go to the right of the operator. */
std::size_t CQMFragmentReversion::SplitOperands(SQMFragment const& fragment, std::int32_t count,
                                                std::size_t& begin) const {
  std::size_t const end = m_open.size();
  if (fragment.shape == EQMShape::Before) return begin;
  if (fragment.shape != EQMShape::Between || begin == end) return end;
  std::size_t const last = BeginOfValues(1);
  if (last > begin || count == 1) return last;
  if (m_style == EQMStyle::Flat) return end;
  if (std::size_t const value = m_values.back(); value + 1 < end) return value + 1;
  if (begin == 0) return end;
  --begin;  // "if a>b" compares "if a"
  return begin + 1;
}

/** Operands stand beside the token. Where there is more among them, all stays open, and the token stands
 * behind that alone. */
void CQMFragmentReversion::TakeLeft(std::size_t begin, std::int32_t values, SQMFragment& fragment) {
  constexpr std::size_t kMostWords = 4;  // that one operand has in front of it
  std::size_t const most = m_style == EQMStyle::Flat ? 1 : 1 + kMostWords;
  std::size_t const count = m_open.size() - begin;
  bool const isPure = std::cmp_equal(count, values);
  fragment.reach = std::min(fragment.reach, begin);
  if (fragment.shape == EQMShape::Alone || (!isPure && count > most)) return;
  std::vector<Index> left(m_open.begin() + static_cast<std::ptrdiff_t>(begin), m_open.end());
  FoldWords(left);
  if (!isPure && left.size() != 1) return;
  TakeFrom(begin, fragment);
  fragment.left = MakePart(left);
}

/** A sign that stands directly before an operand must not be let go before its turn. False when the usual
 * arrangement serves, or none. */
bool CQMFragmentReversion::TakeBehindSign(SQMFragment& fragment, std::int32_t count) {
  constexpr std::size_t kMostTries = 8;  // of beginnings further in front: the operand may be one of others
  if (!NeedsOperand(*fragment.op)) return false;
  std::size_t const last = BeginOfValues(count);
  for (std::size_t tries = 0; tries < kMostTries && tries <= last; ++tries) {
    std::size_t const begin = last - tries;
    std::size_t const bare = CountBareBehindSign(*fragment.op, std::span(m_open).subspan(begin));
    if (bare == 0) continue;
    if (begin + 1 == m_open.size()) return false;
    fragment.shape = EQMShape::Sign;
    fragment.valueCount = CountValuesBehind(*fragment.op, count, TakeValues(begin));
    std::vector<Index> behind = TakeFrom(begin + bare, fragment);
    std::vector<Index> const right = TakeFrom(begin, fragment);
    fragment.items = fragment.items.TakenBy(count);
    for (std::size_t i = 0; i + 1 < right.size(); ++i) {
      m_fragments[right[i]].isOpenEnded = MayBeOpenEnded(m_fragments[right[i]]);
    }
    fragment.right = MakePart(right);
    FoldWords(behind);
    fragment.behind = MakePart(behind);
    fragment.behind.isEnclosed = true;
    return true;
  }
  return false;
}

// ---- fragments ----

void CQMFragmentReversion::Open(SQMFragment&& fragment) {
  fragment.reach = std::min(fragment.reach, m_open.size());
  m_values.insert(m_values.end(), static_cast<std::size_t>(fragment.valueCount), m_open.size());
  m_open.push_back(Add(std::move(fragment)));
}

/** Takes the open fragments from begin on into fragment, in front of what that holds. */
std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeFrom(std::size_t begin,
                                                                        SQMFragment& fragment) {
  std::vector<Index> taken(m_open.begin() + static_cast<std::ptrdiff_t>(begin), m_open.end());
  m_open.resize(begin);
  SQMItemCount items;
  for (Index const i : taken) {
    items = items.Before(m_fragments[i].items);
    if (m_fragments[i].valueCount > 0) fragment.reach = std::min(fragment.reach, m_fragments[i].reach);
  }
  fragment.items = items.Before(fragment.items);
  return taken;
}

/** Takes the values that begin at begin or behind it, and answers how many there were. */
std::int32_t CQMFragmentReversion::TakeValues(std::size_t begin) {
  std::size_t const before = m_values.size();
  while (!m_values.empty() && m_values.back() >= begin) m_values.pop_back();
  return static_cast<std::int32_t>(before - m_values.size());
}

bool CQMFragmentReversion::IsLoneWord(Index fragment) const {
  SQMFragment const& word = m_fragments[fragment];
  return word.shape == EQMShape::Alone && word.op->info->fix == EQMFix::StatementKeyword;
}

// Words that stand before their operand in the text stand behind it in postfix text.
void CQMFragmentReversion::FoldWords(std::vector<Index>& fragments) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < fragments.size(); ++i) {
    Index const fragment = fragments[i];
    if (kept > 0 && IsLoneWord(fragment) && m_fragments[fragments[kept - 1]].valueCount > 0) {
      long const id = m_fragments[fragment].op->info->id;
      if (IsScopeWord(id) || (StandsBeforeStatement(id) && i + 1 == fragments.size())) {
        fragments[kept - 1] = FoldWord(fragments[kept - 1], fragment);
        continue;
      }
    }
    fragments[kept++] = fragment;
  }
  fragments.resize(kept);
}

CQMFragmentReversion::Index CQMFragmentReversion::FoldWord(Index operand, Index word) {
  SQMFragment folded;
  folded.op = m_fragments[word].op;
  folded.shape = EQMShape::Before;
  folded.beginsAnew = true;
  folded.valueCount = m_fragments[operand].valueCount;
  folded.items = m_fragments[operand].items.Before(m_fragments[word].items);
  folded.right = MakePart(std::span(&operand, 1));
  return Add(std::move(folded));
}

CQMFragmentReversion::SQMPart CQMFragmentReversion::MakePart(std::span<Index const> fragments) {
  SQMPart const part{static_cast<Index>(m_parts.size()), static_cast<Index>(fragments.size())};
  m_parts.insert(m_parts.end(), fragments.begin(), fragments.end());
  return part;
}

CQMFragmentReversion::Index CQMFragmentReversion::Add(SQMFragment&& fragment) {
  Arrange(fragment);
  SetEdges(fragment);
  m_fragments.push_back(std::move(fragment));
  return static_cast<Index>(m_fragments.size() - 1);
}

}  // namespace qumel
