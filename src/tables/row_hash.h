// Row numbers by words that stand for their keys.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qumel {

/** Rows count from 1. Those of one word are found in ascending order. */
class CQMRowHash {
 public:
  /** Throws where there is no memory, as Insert. */
  CQMRowHash() : m_chains(kFewestChains) {}
  /** Enters a row that is not in, and never needs memory for one that was in before. Nothing changes where an
   * exception is thrown. */
  void Insert(long row, std::uint64_t word);
  /** Ignores a row that is not in. */
  void Remove(long row);
  void Clear();
  /** The rows named, in ascending order, keep their words and count anew from 1; all others go. */
  void Keep(std::span<std::int32_t const> rows);

  /** 0 when there is none. */
  long FindFirst(std::uint64_t word) const { return FirstWith(word, m_chains[ChainOf(word)].first); }
  /** The next row with the word of this one; 0 when there is none. */
  long FindNext(long row) const { return FirstWith(At(row).word, At(row).next); }

 private:
  static constexpr std::size_t kFewestChains = 4;
  static constexpr std::int32_t kNone = 0, kAbsent = -1;
  struct SQMRow {
    std::uint64_t word = 0;
    std::int32_t next = kAbsent;  // of the chain
  };
  struct SQMChain {
    std::int32_t first = kNone, last = kNone;
  };

  SQMRow const& At(long row) const { return m_rows[static_cast<std::size_t>(row - 1)]; }
  SQMRow& At(long row) { return m_rows[static_cast<std::size_t>(row - 1)]; }
  std::size_t ChainOf(std::uint64_t word) const {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
    return static_cast<std::size_t>(word * kOdd >> m_shift);
  }
  SQMChain& ChainOf(SQMRow const& row) { return m_chains[ChainOf(row.word)]; }
  long FirstWith(std::uint64_t word, std::int32_t row) const {
    while (row != kNone && At(row).word != word) row = At(row).next;
    return row;
  }
  static constexpr int ShiftFor(std::size_t chains) {
    return std::countl_zero(static_cast<std::uint64_t>(chains)) + 1;
  }
  void Link(std::int32_t row);
  void LinkAll();

  std::vector<SQMRow> m_rows;
  std::vector<SQMChain> m_chains;  // a power of two of them
  int m_shift = ShiftFor(kFewestChains);
  std::size_t m_count = 0;
};

}  // namespace qumel
