// Which of several operators with one spelling is meant, told by its neighbours.
#include "language/operator_search.h"

#include <array>

#include "base/operator_ids.h"

namespace qumel {

namespace {

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

constexpr auto kContexts = [] {
  std::array<std::uint8_t, static_cast<std::size_t>(EQMItemClass::Unknown) + 1> contexts{};
  for (std::size_t i = 0; i < contexts.size(); ++i) contexts[i] = ContextOf(static_cast<EQMItemClass>(i));
  return contexts;
}();

/** Strings are not multiplied. */
bool IsFactor(EQMItemClass itemClass) {
  return itemClass == EQMItemClass::Operand || itemClass == EQMItemClass::Number ||
         itemClass == EQMItemClass::Name;
}

/** Whether a token is an operator of one meaning, which has one of two fixes and is no word of the language.
 */
bool IsSoleOperator(EQMItemClass itemClass, SQMOperatorToken const& rows, EQMFix fix, EQMFix otherFix) {
  if (itemClass != EQMItemClass::Operator) return false;
  CQMOpInfo const* const row = rows.OnlyRow();
  return row != nullptr && (row->fix == fix || row->fix == otherFix) && !IsWordOperator(row->id);
}

}  // namespace

bool EndsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows) {
  return IsFactor(itemClass) || itemClass == EQMItemClass::CloseParen ||
         itemClass == EQMItemClass::CloseBracket ||
         IsSoleOperator(itemClass, rows, EQMFix::Postfix, EQMFix::Nofix);
}

bool BeginsFactor(EQMItemClass itemClass, SQMOperatorToken const& rows) {
  return IsFactor(itemClass) || itemClass == EQMItemClass::OpenParen ||
         IsSoleOperator(itemClass, rows, EQMFix::Prefix, EQMFix::Nofix);
}

SQMOperatorToken CQMOperatorSearch::Find(std::string_view token, HeldOperators& held) const {
  SQMTokenRows const shared = m_shared != nullptr ? m_shared->Find(token) : SQMTokenRows();
  SQMTokenRows const own = m_own != nullptr ? m_own->Find(token) : SQMTokenRows();
  if (shared.defined.empty() && own.defined.empty()) return {shared.standard, own.standard};
  std::vector<CQMOpInfoRef>& rows = held.emplace_back();
  for (SQMTokenRows const* list : {&shared, &own}) {
    rows.insert(rows.end(), list->standard.begin(), list->standard.end());
    rows.insert(rows.end(), list->defined.begin(), list->defined.end());
  }
  return {std::span(rows).first(shared.Count()), std::span(rows).subspan(shared.Count())};
}

CQMOpInfoRef CQMOperatorSearch::FindFirst(std::string_view token) const {
  CQMOpInfoRef info = m_shared != nullptr ? m_shared->FindByToken(token) : nullptr;
  return info == nullptr && m_own != nullptr ? m_own->FindByToken(token) : info;
}

CQMOpInfoRef CQMOperatorSearch::FindById(long id) const {
  CQMOpInfoRef info = m_shared != nullptr ? m_shared->FindById(id) : nullptr;
  return info == nullptr && m_own != nullptr ? m_own->FindById(id) : info;
}

CQMOpInfo const* CQMOperatorSearch::Choose(SQMOperatorToken const& rows, EQMItemClass previous,
                                           EQMItemClass next) {
  std::uint8_t const left = kContexts[static_cast<std::size_t>(previous)];
  // what follows is no operator that was added
  std::uint8_t const right = next < EQMItemClass::Operator    ? kContexts[static_cast<std::size_t>(next)]
                             : next == EQMItemClass::Operator ? ContextBit::kAnyOperator
                                                              : std::uint8_t{0};
  for (auto const list : {rows.shared, rows.own}) {
    for (CQMOpInfoRef const& row : list) {
      if ((row->leftContext & left) != 0 && (row->rightContext & right) != 0) return row.get();
    }
  }
  return nullptr;
}

}  // namespace qumel
