// An operator list: the table of operators of one scope, with its rows found by token and by id.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <shared_mutex>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "language/op_info.h"

namespace qumel {

class CQMTable;

/** A descriptor that stays as it is while it is held, even when its row is changed or deleted meanwhile. That
 * of a standard row owns nothing, so that copies of it cost nothing. */
using CQMOpInfoRef = std::shared_ptr<CQMOpInfo const>;

/** The rows of one token, in list order. */
struct SQMTokenRows {
  std::span<CQMOpInfoRef const> standard;
  std::vector<CQMOpInfoRef> defined;

  std::size_t Count() const { return standard.size() + defined.size(); }
  bool IsEmpty() const { return Count() == 0; }
  /** The first row that satisfies test, or null. */
  template <class Test>
  CQMOpInfoRef const* First(Test test) const {
    for (CQMOpInfoRef const& row : standard) {
      if (test(*row)) return &row;
    }
    for (CQMOpInfoRef const& row : defined) {
      if (test(*row)) return &row;
    }
    return nullptr;
  }
};

/** Columns "token", "id" and "info" in loading order; owns its descriptors. A list made shared may be read by
 * any number of threads while one of them adds or deletes operators; while no host has defined one, reading
 * takes no lock. */
class CQMOperatorList {
 public:
  explicit CQMOperatorList(bool shared);
  ~CQMOperatorList();

  /** Appends a row; default context masks by fix type, and for a shared list the letter rule: a word prefix
   * encloses, and may follow an operand or a closing parenthesis when impliedMultiplication is set. What the
   * standard rows were loaded with holds for a host's too. False when a host's row of that token is there:
   * another thread may have been first. Ids are not checked. */
  bool Load(std::unique_ptr<CQMOpInfo> info, bool impliedMultiplication);
  /** Ends the loading of the standard rows: from now on they never change, and new rows are the host's. */
  void Freeze() { m_frozen = true; }

  // Of the standard row of an id; an unknown id is left alone, and so are all rows once the list is frozen.
  void SetContext(long id, std::uint8_t left, std::uint8_t right);
  void AddContext(long id, std::uint8_t left, std::uint8_t right);
  void SetEnclose(long id, bool enclose);

  SQMTokenRows Find(std::string_view token) const;
  /** The first row of a token or id in list order, or null. */
  CQMOpInfoRef FindByToken(std::string_view token) const;
  CQMOpInfoRef FindById(long id) const;
  bool HasToken(std::string_view token) const;
  bool CopyById(long id, CQMOpInfo& out) const;
  bool CopyByToken(std::string_view token, CQMOpInfo& out) const;

  /** Deletes all rows of token: NotFound, DeleteNotAllowed for a standard operator, or 0. */
  long DeleteDefined(std::string_view token);

  /** With a row for each operator that there is now. */
  CQMTable& Table();

 private:
  struct SQMTokenHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view token) const { return std::hash<std::string_view>()(token); }
  };
  struct SQMRows {
    std::unordered_map<std::string, std::vector<CQMOpInfoRef>, SQMTokenHash, std::equal_to<>> byToken;
    std::unordered_map<long, CQMOpInfoRef> byId;  // the first of an id

    void Add(CQMOpInfoRef const& row);
    std::vector<CQMOpInfoRef> const* Find(std::string_view token) const;
    CQMOpInfoRef Find(long id) const;
  };

  std::unique_lock<std::shared_mutex> LockForChange();
  template <class Result, class Read>
  Result ReadDefined(Result none, Read read) const;
  template <class Action>
  void Change(long id, Action change);
  void DropDeadRows();

  bool const m_shared;
  bool m_frozen = false;
  bool m_impliedMultiplication = false;  // of the context that loaded the standard rows
  std::vector<std::unique_ptr<CQMOpInfo>> m_standardInfos;
  SQMRows m_standard;
  mutable std::shared_mutex m_mutex;  // of m_defined and, once frozen, of m_table
  std::atomic<long> m_definedCount{0};
  SQMRows m_defined;
  std::unique_ptr<CQMTable> m_table;
  long m_deadRows = 0;  // of m_table: rows of operators that were deleted since it was made
};

}  // namespace qumel
