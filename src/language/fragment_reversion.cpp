// Reading postfix text into fragments: which operands each operator takes.
#include "language/fragment_reversion.h"

#include <algorithm>

#include "base/operator_ids.h"

namespace qumel {

namespace {

bool IsScopeWord(long id) { return id >= OpId::CosmicScope && id <= OpId::ComplexWord; }
bool StandsBeforeStatement(long id) {
  return IsModeOperator(id) || id == OpId::Default || id == OpId::Otherwise;
}

}  // namespace

CQMFragmentReversion::CQMFragmentReversion(SQMReadingRules const& rules,
                                           std::span<SQMReversionItem const> items)
    : m_rules(rules) {
  for (SQMReversionItem const& item : items) {
    if (item.op != nullptr) {
      AddOperator(*item.op, item.operandCount);
    } else {
      SQMFragment operand;
      operand.item = item.item;
      Open(std::move(operand));
    }
  }
  FoldWords(m_open);
  m_statement = MakePart(m_open);
}

void CQMFragmentReversion::AddOperator(SQMOperator const& op, std::int32_t count) {
  CQMOpInfo const& info = *op.info;
  bool const isInfix = info.fix == EQMFix::Infix;
  std::int32_t const leftCount = isInfix ? (info.HasVariableOperands() ? 1 : count - 1) : 0;
  std::int32_t const rightCount = count - std::clamp(leftCount, 0, count);
  std::vector<Index> right = info.HasVariableOperands() ? TakeItems(rightCount) : TakeValues(rightCount);
  std::vector<Index> left = TakeValues(leftCount);
  bool const takesWord = left.empty() && leftCount > 0 && !m_open.empty();  // "if a>b" compares "if a"
  if (takesWord) left = TakeFrom(m_open.size() - 1);

  SQMFragment fragment;
  fragment.op = &op;
  fragment.leavesValue = !LeavesNothing(info.id) || IsTypeWord(info.id);
  fragment.itemCount = std::max(CountItems(left) + CountItems(right) - count, 0) + 1;
  switch (info.fix) {
    case EQMFix::Infix: fragment.shape = info.token == "[" ? EQMShape::Index : EQMShape::Between; break;
    case EQMFix::Prefix:
    case EQMFix::MarkedPrefix: fragment.shape = EQMShape::Before; break;
    case EQMFix::Postfix:
    case EQMFix::MarkedPostfix: fragment.shape = EQMShape::Behind; break;
    default: fragment.shape = right.empty() ? EQMShape::Alone : EQMShape::Listed;
  }
  fragment.beginsAnew = LetsGo(info.fix) || fragment.shape == EQMShape::Listed;
  if (fragment.shape == EQMShape::Behind || fragment.shape == EQMShape::Listed) std::swap(left, right);
  FoldWords(left);
  FoldWords(right);
  fragment.left = MakePart(left);
  fragment.right = MakePart(right);
  Open(std::move(fragment));
}

void CQMFragmentReversion::Open(SQMFragment&& fragment) {
  m_openValues += fragment.leavesValue ? 1 : 0;
  m_open.push_back(Add(std::move(fragment)));
}

std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeFrom(std::size_t begin) {
  std::vector<Index> taken(m_open.begin() + static_cast<std::ptrdiff_t>(begin), m_open.end());
  m_open.resize(begin);
  m_openValues -= std::ranges::count_if(taken, [this](Index i) { return m_fragments[i].leavesValue; });
  return taken;
}

/** The last values, as many as there are up to count, with all that lies between and behind them. */
std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeValues(std::int32_t count) {
  std::size_t begin = m_open.size();
  auto missing = std::min<std::ptrdiff_t>(count, m_openValues);
  for (std::size_t i = begin; missing > 0; --missing) {
    do --i;
    while (!m_fragments[m_open[i]].leavesValue);
    begin = i;
  }
  return TakeFrom(begin);
}

std::vector<CQMFragmentReversion::Index> CQMFragmentReversion::TakeItems(std::int32_t count) {
  std::size_t begin = m_open.size();
  while (begin > 0 && count > 0) count -= m_fragments[m_open[--begin]].itemCount;
  return TakeFrom(begin);
}

std::int32_t CQMFragmentReversion::CountItems(std::vector<Index> const& fragments) const {
  std::int32_t count = 0;
  for (Index const i : fragments) count += m_fragments[i].itemCount;
  return count;
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
    if (kept > 0 && IsLoneWord(fragment) && m_fragments[fragments[kept - 1]].leavesValue) {
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
  folded.itemCount = m_fragments[operand].itemCount + m_fragments[word].itemCount;
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
