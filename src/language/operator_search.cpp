// Which of several operators with one spelling is meant, told by its neighbours.
#include "language/operator_search.h"

#include "base/operator_ids.h"
#include "language/standard_operators.h"

namespace qumel {

namespace {

constexpr std::uint8_t kNowhere = 0;

SQMFoundOperator Found(CQMOpInfoRef const& info, bool isShared, bool hierarchical) {
  if (info == nullptr) return {};
  bool const keepsPrecedence = hierarchical || (!isShared && IsWordOperator(info->id));
  return {info, keepsPrecedence ? info->precedence : static_cast<std::uint32_t>(Precedence::Flat)};
}

/** What operands, parentheses and separators are on either side. */
std::uint8_t PlainContextOf(EQMItemClass item) {
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
    default: return kNowhere;
  }
}

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

std::uint8_t LeftContextOf(EQMItemClass previous) {
  if (previous <= EQMItemClass::Operator) return PlainContextOf(previous);
  switch (static_cast<EQMFix>(static_cast<std::int32_t>(previous) -
                              static_cast<std::int32_t>(EQMItemClass::Operator))) {
    case EQMFix::Prefix: return ContextBit::kPrefix;
    case EQMFix::Infix: return ContextBit::kInfix;
    case EQMFix::Postfix: return ContextBit::kPostfix;
    case EQMFix::Nofix: return ContextBit::kNofix;
    case EQMFix::StatementKeyword:
    case EQMFix::BlockKeyword:
    case EQMFix::ClosingBlock: return ContextBit::kAnyOperator;
    default: return kNowhere;
  }
}

std::uint8_t RightContextOf(EQMItemClass next) {
  return next == EQMItemClass::Operator ? ContextBit::kAnyOperator : PlainContextOf(next);
}

CQMOpInfo const* SQMOperatorToken::OnlyRow() const {
  SQMTokenRows const& rows = shared.IsEmpty() ? own : shared;
  if (rows.Count() != 1) return nullptr;
  return rows.standard.empty() ? rows.defined.get() : rows.standard.front().get();
}

SQMOperatorToken CQMOperatorSearch::Find(std::string_view token) const {
  SQMOperatorToken rows;
  SQMHashedText const key(token);
  if (m_shared != nullptr) rows.shared = m_shared->Find(key);
  if (m_own != nullptr) rows.own = m_own->Find(key);
  return rows;
}

SQMFoundOperator CQMOperatorSearch::FindFirst(std::string_view token, bool hierarchical) const {
  for (CQMOperatorList const* list : {m_shared, m_own}) {
    if (list == nullptr) continue;
    if (CQMOpInfoRef const info = list->FindByToken(token); info != nullptr) {
      return Found(info, list == m_shared, hierarchical);
    }
  }
  return {};
}

SQMFoundOperator CQMOperatorSearch::FindById(long id, bool hierarchical) const {
  for (CQMOperatorList const* list : {m_shared, m_own}) {
    if (list == nullptr) continue;
    if (CQMOpInfoRef const info = list->FindById(id); info != nullptr) {
      return Found(info, list == m_shared, hierarchical);
    }
  }
  return {};
}

SQMFoundOperator CQMOperatorSearch::Choose(SQMOperatorToken const& rows, EQMItemClass previous,
                                           EQMItemClass next, bool hierarchical) {
  auto const fits = [left = LeftContextOf(previous), right = RightContextOf(next)](CQMOpInfo const& info) {
    return (info.leftContext & left) != 0 && (info.rightContext & right) != 0;
  };
  for (bool const isShared : {true, false}) {
    CQMOpInfoRef const* const row = (isShared ? rows.shared : rows.own).First(fits);
    if (row != nullptr) return Found(*row, isShared, hierarchical);
  }
  return {};
}

}  // namespace qumel
