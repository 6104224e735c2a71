// The operators of one scope: the standard ones, which lists share, and beside them those of hosts.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <shared_mutex>
#include <span>
#include <string_view>
#include <vector>

#include "language/op_info.h"
#include "tables/table.h"

namespace qumel {

/** A descriptor that stays as it is while it is held, even when its row is deleted meanwhile. That of a
 * standard row owns nothing, so that copies of it cost nothing. */
using CQMOpInfoRef = std::shared_ptr<CQMOpInfo const>;

/** The rows of one token, in list order. */
struct SQMTokenRows {
  std::span<CQMOpInfoRef const> standard;
  CQMOpInfoRef defined;  // a host's; null where there is none

  std::size_t Count() const { return standard.size() + (defined != nullptr ? 1 : 0); }
  bool IsEmpty() const { return standard.empty() && defined == nullptr; }
  /** The first row that satisfies test, or null. */
  template <class Test>
  CQMOpInfoRef const* First(Test test) const {
    for (CQMOpInfoRef const& row : standard) {
      if (test(*row)) return &row;
    }
    return defined != nullptr && test(*defined) ? &defined : nullptr;
  }
};

/** A table with the columns "token", "id" and "info", which finds the descriptors of others. */
class CQMOperatorTable {
 public:
  /** Throws where there is no memory, as Append. */
  CQMOperatorTable();
  /** Appends a row for what info refers to; info itself must stay where it is. */
  void Append(CQMOpInfoRef const& info);
  /** The first of its token, or null. */
  CQMOpInfoRef const* Find(SQMHashedText const& token) const;
  CQMOpInfoRef const* Find(long id) const;
  /** The first of its token leaves the table; null when there is none. */
  CQMOpInfoRef const* Remove(SQMHashedText const& token);
  template <class Action>
  void ForEach(Action action) {
    for (long row = m_table.GetRowCount(); row > 0; --row) action(InfoAt(m_table.GetColumnRowNumber(row)));
  }

 private:
  CQMOpInfoRef const* InfoAt(long slot) const {
    CQMOpInfoRef const* info;
    std::memcpy(&info, m_infos->GetColumnValueLocation(slot), sizeof info);
    return info;
  }

  CQMTable m_table;
  CQMColumn const* m_infos;  // the column of the table
};

/** The standard operators of one kind of list. They never change, so that any number of lists and threads
 * share them. */
class CQMStandardOperators {
 public:
  /** forAll chooses the rows of the list that all contexts share, else those of a context's own one. Word
   * prefixes of the shared list enclose, and where multiplication may be implied they may follow an operand
   * or a closing parenthesis. Throws where there is no memory. */
  CQMStandardOperators(bool forAll, bool impliedMultiplication);

  std::span<CQMOpInfoRef const> Find(SQMHashedText const& token) const {
    // Most words of a text are names: few have the first letter and the length of an operator.
    return MayHave(token.text) ? FindRows(token) : std::span<CQMOpInfoRef const>();
  }
  CQMOpInfoRef const* Find(long id) const { return m_table.Find(id); }
  /** Gives info, which a host defines beside these, the masks that go with its fix. */
  void SetDefaults(CQMOpInfo& info) const;

 private:
  static constexpr std::size_t kLongestTold = 31;  // lengths from here on count as one
  static std::uint32_t LengthBit(std::string_view token) {
    return 1U << std::min(token.size(), kLongestTold);
  }
  bool MayHave(std::string_view token) const {
    return !token.empty() && (m_lengths[static_cast<unsigned char>(token.front())] & LengthBit(token)) != 0;
  }
  std::span<CQMOpInfoRef const> FindRows(SQMHashedText const& token) const;

  std::array<std::uint32_t, 256>
      m_lengths{};  // a bit for each length of token that begins with the character
  bool const m_isForAll;
  bool const m_impliedMultiplication;
  std::unique_ptr<CQMOpInfo[]> m_infos;
  std::vector<CQMOpInfoRef> m_rows;  // those of one token side by side, in loading order
  CQMOperatorTable m_table;
};

/** A list made shared may be read by any number of threads while one of them adds or deletes operators; while
 * no host has defined one, reading takes no lock. */
class CQMOperatorList {
 public:
  explicit CQMOperatorList(bool shared) : m_shared(shared) {}
  ~CQMOperatorList();

  /** To be called once, before anything else. */
  void SetStandard(std::shared_ptr<CQMStandardOperators const> standard) { m_standard = std::move(standard); }
  /** Adds a host's operator with the masks that go with its fix. False when a host's row of that token is
   * there: another thread may have been first. Ids are not checked. Throws where there is no memory. */
  bool Load(std::unique_ptr<CQMOpInfo> info);

  SQMTokenRows Find(SQMHashedText const& token) const {
    bool const hasDefined = m_definedCount.load(std::memory_order_acquire) != 0;
    return {m_standard->Find(token), hasDefined ? FindDefined(token) : nullptr};
  }
  /** The first row of a token or id in list order, or null. */
  CQMOpInfoRef FindByToken(SQMHashedText const& token) const;
  CQMOpInfoRef FindById(long id) const;
  bool HasToken(SQMHashedText const& token) const { return !Find(token).IsEmpty(); }
  bool CopyByToken(SQMHashedText const& token, CQMOpInfo& out) const;

  /** Deletes the host's row of token: NotFound, DeleteNotAllowed for a standard operator, or 0. */
  long DeleteDefined(SQMHashedText const& token);

 private:
  std::unique_lock<std::shared_mutex> LockForChange();
  template <class Key>
  CQMOpInfoRef FindDefined(Key const& key) const;

  bool const m_shared;
  std::shared_ptr<CQMStandardOperators const> m_standard;
  mutable std::shared_mutex m_mutex;  // of what follows
  std::atomic<long> m_definedCount{0};
  std::unique_ptr<CQMOperatorTable> m_defined;  // while there are rows; owns what it refers to
};

}  // namespace qumel
