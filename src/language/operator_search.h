// The search for operators through both lists of a context: the shared one first, then the context's own.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "language/operator_list.h"

namespace qumel {

/** The class of an operator that was added. */
constexpr EQMItemClass ItemClassOf(EQMFix fix) {
  return static_cast<EQMItemClass>(static_cast<std::int32_t>(EQMItemClass::Operator) +
                                   static_cast<std::int32_t>(fix));
}

/** The rows of a token in both lists, in list order. */
struct SQMOperatorToken {
  std::span<CQMOpInfoRef const> shared;
  std::span<CQMOpInfoRef const> own;

  bool IsOperator() const { return !shared.empty() || !own.empty(); }
  /** The only row of the list that counts, the own list where the shared one has none; else null. */
  CQMOpInfo const* OnlyRow() const {
    auto const& rows = shared.empty() ? own : shared;
    return rows.size() == 1 ? rows.front().get() : nullptr;
  }
};

/** Keeps rows of hosts' operators, which other threads may delete. */
using HeldOperators = std::vector<std::vector<CQMOpInfoRef>>;

/** The precedence of an operator under the rules in force. */
inline std::uint32_t PrecedenceOf(CQMOpInfo const& info, bool hierarchical) {
  return hierarchical ? info.precedence : static_cast<std::uint32_t>(Precedence::Flat);
}

/** Whether an operator that is read next takes the operand before another one that waits can. */
inline bool BindsTighter(CQMOpInfo const& next, std::uint32_t nextPrecedence, CQMOpInfo const& waiting,
                         std::uint32_t waitingPrecedence) {
  return nextPrecedence > waitingPrecedence ||
         (nextPrecedence == waitingPrecedence && next.fix == waiting.fix && next.rightAssociative);
}

/** Whether a token may stand on the left or right of a multiplication that is not written: a number or name,
 * a parenthesis, or an operator of one meaning. rows are those of an operator. */
bool EndsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows);
bool BeginsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows);

/** What a fix type means for the operators that wait: keywords let them all go, and some do not wait
 * themselves. */
constexpr bool LetsGo(EQMFix fix) {
  return fix == EQMFix::StatementKeyword || fix == EQMFix::BlockKeyword || fix == EQMFix::ClosingBlock;
}
constexpr bool ClosesItself(EQMFix fix) { return fix == EQMFix::BlockKeyword || fix == EQMFix::ClosingBlock; }

class CQMOperatorSearch {
 public:
  /** Either list may be null; both must outlive the search. */
  void SetLists(CQMOperatorList const* shared, CQMOperatorList const* own) {
    m_shared = shared;
    m_own = own;
  }

  /** The rows live as long as the list of standard ones, and those of hosts as long as held. */
  SQMOperatorToken Find(std::string_view token, HeldOperators& held) const;
  /** The first row, or null. */
  CQMOpInfoRef FindFirst(std::string_view token) const;
  CQMOpInfoRef FindById(long id) const;
  /** The first row whose masks fit the neighbours, or null. */
  static CQMOpInfo const* Choose(SQMOperatorToken const& rows, EQMItemClass previous, EQMItemClass next);

 private:
  CQMOperatorList const* m_shared = nullptr;
  CQMOperatorList const* m_own = nullptr;
};

}  // namespace qumel
