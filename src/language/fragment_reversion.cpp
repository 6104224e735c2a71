// Reading postfix text into fragments: which operands each operator takes.
#include "language/fragment_reversion.h"

#include <algorithm>

#include "base/operator_ids.h"

namespace qumel {

namespace {

bool IsScopeWord(long id) { return id >= OpId::CosmicScope && id <= OpId::ComplexWord; }

}  // namespace

CQMFragmentReversion::CQMFragmentReversion(SQMReadingRules const& rules, std::span<SQMReversionItem const> items)
    : m_rules(rules) {
  for (SQMReversionItem const& item : items) Add(item);
  FoldWords(m_open, false);
  m_statement = MakePart(m_open);
}

void CQMFragmentReversion::Add(SQMReversionItem const& item) {
  if (item.op != nullptr) {
    AddOperator(*item.op, item.operandCount);
    return;
  }
  SQMFragment fragment;
  fragment.item = item.item;
  m_open.push_back(Add(std::move(fragment)));
}

void CQMFragmentReversion::AddOperator(SQMOperator const& op, std::int32_t count) {
  CQMOpInfo const& info = *op.info;
  SQMFragment fragment;
  fragment.op = &op;
  fragment.leavesValue = !LeavesNothing(info.id) || IsTypeWord(info.id);
  fragment.beginsAnew = LetsGo(info.fix);
  bool const isInfix = info.fix == EQMFix::Infix;
  std::vector<Index> left, right;
  if (info.HasVariableOperands()) {
    right = TakeWeight(count - (isInfix ? 1 : 0));
    if (isInfix) left = TakeOperands(1);
  } else {
    if (isInfix) TakeSides(count, left, right);
    else right = TakeOperands(count);
    bool const standsAtOperand = info.fix == EQMFix::Prefix && info.rightContext == ContextBit::kOperand;
    if (standsAtOperand) SplitWord(right);
  }
  fragment.weight = std::max(WeightOf(left) + WeightOf(right) - count, 0) + 1;
  switch (info.fix) {
    case EQMFix::Infix: fragment.shape = info.token == "[" ? EQMShape::Index : EQMShape::Between; break;
    case EQMFix::Prefix:
    case EQMFix::MarkedPrefix: fragment.shape = EQMShape::Before; break;
    case EQMFix::Postfix:
    case EQMFix::MarkedPostfix: fragment.shape = EQMShape::Behind; break;
    default: fragment.shape = right.empty() ? EQMShape::Alone : EQMShape::Listed;
  }
  if (fragment.shape == EQMShape::Behind || fragment.shape == EQMShape::Listed) std::swap(left, right);
  fragment.beginsAnew = fragment.beginsAnew || fragment.shape == EQMShape::Listed;
  FoldWords(left, true);
  FoldWords(right, isInfix || count == 1);
  fragment.left = MakePart(left);
  fragment.right = MakePart(right);
  m_open.push_back(Add(std::move(fragment)));
}

std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeFrom(std::size_t begin) {
  std::vector<Index> taken(m_open.begin() + static_cast<std::ptrdiff_t>(begin), m_open.end());
  m_open.resize(begin);
  return taken;
}

/** The last values, as many as there are up to count, with all that lies between and behind them. */
std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeOperands(std::int32_t count) {
  std::size_t begin = m_open.size();
  for (std::size_t i = begin; i > 0 && count > 0; --i) {
    if (!m_fragments[m_open[i - 1]].leavesValue) continue;
    begin = i - 1;
    --count;
  }
  return TakeFrom(begin);
}

/** Operands of an infix operator: the last value, and what follows it, on the right. A value that is the only
 * one has a word without a value on its left, or else stands there itself. */
void CQMFragmentReversion::TakeSides(std::int32_t count, std::vector<Index>& left, std::vector<Index>& right) {
  right = TakeOperands(count);
  auto const isValue = [this](Index i) { return m_fragments[i].leavesValue; };
  auto const values = std::ranges::count_if(right, isValue);
  if (values < std::min(count, 2) && !m_open.empty()) left = TakeFrom(m_open.size() - 1);
  if (values < 2 && left.empty()) {
    std::swap(left, right);
  } else if (values >= 2) {
    auto const split = std::find_if(right.rbegin(), right.rend(), isValue).base() - 1;
    left.assign(right.begin(), split);
    right.erase(right.begin(), split);
  }
}

std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeWeight(std::int32_t weight) {
  std::size_t begin = m_open.size();
  while (begin > 0 && weight > 0) weight -= m_fragments[m_open[--begin]].weight;
  return TakeFrom(begin);
}

std::int32_t CQMFragmentReversion::WeightOf(std::vector<Index> const& fragments) const {
  std::int32_t weight = 0;
  for (Index const i : fragments) weight += m_fragments[i].weight;
  return weight;
}

/** A sign whose operand must be next to it may have a word without an operand behind that: "-x if then". Its
 * operand is taken back from the word, where operands do not begin with one of their own. */
void CQMFragmentReversion::SplitWord(std::vector<Index>& operands) {
  bool const beginsWithOperand = !operands.empty() &&
                                 m_fragments[operands.front()].first.itemClass != EQMItemClass::Operator &&
                                 m_fragments[operands.front()].first.itemClass != EQMItemClass::OpenParen;
  if (beginsWithOperand) return;
  m_open.insert(m_open.end(), operands.begin(), operands.end());
  auto const isWord = [this](Index i) {
    return m_fragments[i].shape == EQMShape::Before &&
           m_fragments[i].op->info->leftContext == ContextBit::kAnywhere;
  };
  std::size_t begin = m_open.size();
  while (begin > 0 && isWord(m_open[begin - 1]) && m_fragments[m_open[begin - 1]].right.count == 0) --begin;
  SQMPart const part =
      begin > 0 && isWord(m_open[begin - 1]) ? m_fragments[m_open[begin - 1]].right : SQMPart{};
  if (part.count != 1 || m_fragments[m_parts[part.begin]].shape != EQMShape::Operand) {
    operands = TakeFrom(m_open.size() - operands.size());
    return;
  }
  SQMFragment word;
  word.op = m_fragments[m_open[begin - 1]].op;
  word.shape = EQMShape::Before;
  word.leavesValue = m_fragments[m_open[begin - 1]].leavesValue;
  operands = TakeFrom(begin);
  m_open.back() = m_parts[part.begin];
  operands.insert(operands.begin(), {m_open.back(), Add(std::move(word))});
  m_open.pop_back();
}

bool CQMFragmentReversion::IsLoneWord(Index fragment) const {
  SQMFragment const& word = m_fragments[fragment];
  return word.shape == EQMShape::Alone && word.op->info->fix == EQMFix::StatementKeyword;
}

// Words that stand before their operand in the text stand behind it in postfix text.
void CQMFragmentReversion::FoldWords(std::vector<Index>& fragments, bool all) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < fragments.size(); ++i) {
    Index const fragment = fragments[i];
    if (kept > 0 && IsLoneWord(fragment) && m_fragments[fragments[kept - 1]].leavesValue) {
      long const id = m_fragments[fragment].op->info->id;
      if (all || IsScopeWord(id) || (IsModeOperator(id) && i + 1 == fragments.size())) {
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
  folded.weight = m_fragments[operand].weight + m_fragments[word].weight;
  folded.right = MakePart({operand});
  return Add(std::move(folded));
}

CQMFragmentReversion::SQMPart CQMFragmentReversion::MakePart(std::vector<Index> const& fragments) {
  SQMPart const part{static_cast<Index>(m_parts.size()), static_cast<Index>(fragments.size())};
  m_parts.insert(m_parts.end(), fragments.begin(), fragments.end());
  return part;
}

CQMFragmentReversion::Index CQMFragmentReversion::Add(SQMFragment&& fragment) {
  Arrange(fragment);
  m_fragments.push_back(std::move(fragment));
  return static_cast<Index>(m_fragments.size() - 1);
}

}  // namespace qumel
