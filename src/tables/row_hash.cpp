// Entering rows into chains and taking them out.
#include "tables/row_hash.h"

#include <algorithm>

namespace qumel {

void CQMRowHash::Insert(long row, std::uint64_t word) {
  if (m_rows.size() < static_cast<std::size_t>(row)) m_rows.resize(static_cast<std::size_t>(row));
  if (m_count == m_chains.size()) {
    std::vector<SQMChain> chains(2 * m_chains.size());
    m_chains.swap(chains);
    m_shift = ShiftFor(m_chains.size());
    LinkAll();
  }
  At(row).word = word;
  Link(static_cast<std::int32_t>(row));
  ++m_count;
}

void CQMRowHash::Link(std::int32_t row) {
  SQMChain& chain = ChainOf(At(row));
  if (chain.last < row) {  // nearly always: rows come in their order
    (chain.last != kNone ? At(chain.last).next : chain.first) = row;
    chain.last = row;
    At(row).next = kNone;
    return;
  }
  std::int32_t* link = &chain.first;
  while (*link < row) link = &At(*link).next;
  At(row).next = *link;
  *link = row;
}

/** Links all rows that are in anew; the chains are empty. */
void CQMRowHash::LinkAll() {
  for (std::int32_t row = 1; row <= static_cast<std::int32_t>(m_rows.size()); ++row) {
    if (At(row).next != kAbsent) Link(row);
  }
}

void CQMRowHash::Remove(long row) {
  if (row < 1 || static_cast<std::size_t>(row) > m_rows.size() || At(row).next == kAbsent) return;
  SQMChain& chain = ChainOf(At(row));
  std::int32_t previous = kNone;
  std::int32_t* link = &chain.first;
  while (*link != row) {
    previous = *link;
    link = &At(previous).next;
  }
  *link = At(row).next;
  if (chain.last == row) chain.last = previous;
  At(row).next = kAbsent;
  --m_count;
}

void CQMRowHash::Clear() {
  m_rows.clear();
  std::ranges::fill(m_chains, SQMChain());
  m_count = 0;
}

void CQMRowHash::Keep(std::span<std::int32_t const> rows) {
  std::size_t kept = 0;
  m_count = 0;
  for (std::int32_t const row : rows) {
    if (static_cast<std::size_t>(row) > m_rows.size()) break;
    m_rows[kept] = At(row);
    if (m_rows[kept].next != kAbsent) ++m_count;
    ++kept;
  }
  m_rows.resize(kept);
  std::ranges::fill(m_chains, SQMChain());
  LinkAll();
}

}  // namespace qumel
