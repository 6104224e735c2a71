// The search for operators through both lists of a context: the shared one first, then the context's own.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "base/operator_ids.h"
#include "language/operator_list.h"

namespace qumel {

/** The class of an operator that was added. */
constexpr EQMItemClass ItemClassOf(EQMFix fix) {
  return static_cast<EQMItemClass>(static_cast<std::int32_t>(EQMItemClass::Operator) +
                                   static_cast<std::int32_t>(fix));
}

/** What an item is for the operator beside it: bits of the context masks, one or more; none for what may not
 * stand there. */
constexpr std::uint8_t ContextOf(EQMItemClass item) {
  switch (static_cast<std::int32_t>(item) - static_cast<std::int32_t>(EQMItemClass::Operator)) {
    case static_cast<std::int32_t>(EQMFix::Prefix): return ContextBit::kPrefix;
    case static_cast<std::int32_t>(EQMFix::Infix): return ContextBit::kInfix;
    case static_cast<std::int32_t>(EQMFix::Postfix): return ContextBit::kPostfix;
    case static_cast<std::int32_t>(EQMFix::Nofix): return ContextBit::kNofix;
    case static_cast<std::int32_t>(EQMFix::StatementKeyword):
    case static_cast<std::int32_t>(EQMFix::BlockKeyword):
    case static_cast<std::int32_t>(EQMFix::ClosingBlock): return ContextBit::kAnyOperator;
    default: break;
  }
  switch (item) {
    case EQMItemClass::Start:
    case EQMItemClass::End:
    case EQMItemClass::Separator:
    case EQMItemClass::Comma: return ContextBit::kSeparator;
    case EQMItemClass::OpenParen:
    case EQMItemClass::OpenGroup: return ContextBit::kOpen;
    case EQMItemClass::CloseParen:
    case EQMItemClass::CloseBracket: return ContextBit::kClose;
    case EQMItemClass::Operand:
    case EQMItemClass::Number:
    case EQMItemClass::Name:
    case EQMItemClass::String: return ContextBit::kOperand;
    default: return 0;
  }
}

inline constexpr auto kContexts = [] {
  std::array<std::uint8_t, static_cast<std::size_t>(EQMItemClass::Unknown) + 1> contexts{};
  for (std::size_t i = 0; i < contexts.size(); ++i) contexts[i] = ContextOf(static_cast<EQMItemClass>(i));
  return contexts;
}();

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

/** Strings are not multiplied. */
constexpr bool IsFactor(EQMItemClass itemClass) {
  return itemClass == EQMItemClass::Operand || itemClass == EQMItemClass::Number ||
         itemClass == EQMItemClass::Name;
}

/** Whether a token is an operator of one meaning, which has one of two fixes and is no word of the language.
 */
inline bool IsSoleOperator(EQMItemClass itemClass, SQMOperatorToken const& rows, EQMFix fix,
                           EQMFix otherFix) {
  if (itemClass != EQMItemClass::Operator) return false;
  CQMOpInfo const* const row = rows.OnlyRow();
  return row != nullptr && (row->fix == fix || row->fix == otherFix) && !IsWordOperator(row->id);
}

/** Whether a token may stand on the left or right of a multiplication that is not written: a number or name,
 * a parenthesis, or an operator of one meaning. rows are those of an operator. */
inline bool EndsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows) {
  return IsFactor(itemClass) || itemClass == EQMItemClass::CloseParen ||
         itemClass == EQMItemClass::CloseBracket ||
         IsSoleOperator(itemClass, rows, EQMFix::Postfix, EQMFix::Nofix);
}

inline bool BeginsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows) {
  return IsFactor(itemClass) || itemClass == EQMItemClass::OpenParen ||
         IsSoleOperator(itemClass, rows, EQMFix::Prefix, EQMFix::Nofix);
}

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
  static CQMOpInfo const* Choose(SQMOperatorToken const& rows, EQMItemClass previous, EQMItemClass next) {
    std::uint8_t const left = kContexts[static_cast<std::size_t>(previous)];
    // what follows is no operator that was added
    std::uint8_t const right = next < EQMItemClass::Operator    ? kContexts[static_cast<std::size_t>(next)]
                               : next == EQMItemClass::Operator ? ContextBit::kAnyOperator
                                                                : std::uint8_t{0};
    auto const fits = [left, right](CQMOpInfoRef const& row) {
      return (row->leftContext & left) != 0 && (row->rightContext & right) != 0;
    };
    for (CQMOpInfoRef const& row : rows.shared) {
      if (fits(row)) return row.get();
    }
    for (CQMOpInfoRef const& row : rows.own) {
      if (fits(row)) return row.get();
    }
    return nullptr;
  }

 private:
  CQMOperatorList const* m_shared = nullptr;
  CQMOperatorList const* m_own = nullptr;
};

}  // namespace qumel
