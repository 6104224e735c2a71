// An operator list: the table of operators of one scope, with its rows found by token and by id.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "language/op_info.h"

namespace qumel {

/** Columns "token", "id" and "info" in loading order; owns its descriptors. A list made shared may be read by any
 *  number of threads while one of them adds or deletes operators; reading the standard rows takes no lock. */
class CQMOperatorList {
 public:
  explicit CQMOperatorList(bool shared);
  ~CQMOperatorList();

  /** Appends a row; default context masks by fix type, and for a shared list the letter rule: a word prefix encloses,
   *  and may follow an operand or a closing parenthesis when impliedMultiplication is set. Ids are not checked. */
  void Load(std::unique_ptr<CQMOpInfo> info, bool impliedMultiplication);
  /** Ends the loading of the standard rows: from now on rows are the host's. */
  void Freeze();

  void SetContext(long id, std::uint8_t left, std::uint8_t right);
  void AddContext(long id, std::uint8_t left, std::uint8_t right);
  void SetEnclose(long id, bool enclose);

  /** The first row of a token or id in list order, or null. The descriptor stays valid until it is deleted; use
   *  WithToken or Copy where another thread may delete it. */
  CQMOpInfo const* FindByToken(std::string_view token) const;
  CQMOpInfo const* FindById(long id) const;
  bool HasToken(std::string_view token) const;
  bool CopyById(long id, CQMOpInfo& out) const;
  bool CopyByToken(std::string_view token, CQMOpInfo& out) const;
  /** Calls visit for every row of token in list order, under the list's protection, until it returns true; returns
   *  whether it did. */
  bool VisitToken(std::string_view token, std::function<bool(CQMOpInfo const&)> const& visit) const;

  /** Applies change to the descriptor of a host's operator; false when id names none. */
  bool ChangeDefined(long id, std::function<void(CQMOpInfo&)> const& change);
  /** Deletes all rows of token: NotFound, DeleteNotAllowed for a standard operator, or 0. */
  long DeleteDefined(std::string_view token);

 private:
  class Rows;
  std::unique_ptr<Rows> m_rows;
};

}  // namespace qumel
