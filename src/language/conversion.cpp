// Infix text to items: operands, operators by binding strength, parentheses, implied multiplication.
#include "language/conversion.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/number_base.h"
#include "base/operator_ids.h"

namespace qumel {

namespace {

constexpr std::string_view kMultiplicationToken = "_*";

/** Places are compared in half characters: a multiplication that is not written stands in front of the token
 * that follows it. */
constexpr std::uint64_t OrderOf(SQMItem const& item) {
  return 2 * std::uint64_t{item.place.start} + (item.place.length > 0 ? 1 : 0);
}

constexpr bool IsMarked(EQMFix fix) { return fix == EQMFix::MarkedPrefix || fix == EQMFix::MarkedPostfix; }

bool TakesList(CQMOpInfo const& info) {
  return info.HasVariableOperands() &&
         (info.fix == EQMFix::Prefix || info.fix == EQMFix::Infix || info.fix == EQMFix::Postfix);
}

/** Whether the operand at index among the count of an operator may stand on that side of it. */
bool MayStand(CQMOpInfo const& info, std::int32_t index, std::int32_t count, bool isOnLeft) {
  bool const isFirst = index == 0, isLast = index + 1 == count;
  switch (info.fix) {
    case EQMFix::Prefix: return !isOnLeft;
    case EQMFix::Postfix: return isOnLeft;
    case EQMFix::Infix:
      if (info.HasVariableOperands()) return isOnLeft == isFirst;
      return isOnLeft ? isFirst || !isLast : isLast || !isFirst;
    default: return true;
  }
}

}  // namespace

long CQMConversion::Run(std::string_view text, CQMItemList& items) {
  m_items = &items;
  m_rows.clear();
  m_lists.clear();
  m_pending.clear();
  m_levels.clear();
  m_lastClass = EQMItemClass::End;
  CQMTokenizer tokenizer(text, m_rules);
  long code = Convert(tokenizer);
  m_position = tokenizer.GetPosition();
  if (code == Error::None) code = Settle(text);
  if (code != Error::None) items.Clear();
  m_held.clear();
  return code;
}

// text = {token}, read with one token of look-ahead
long CQMConversion::Convert(CQMTokenizer& tokenizer) {
  SQMReadToken tokens[2];
  SQMReadToken *token = &tokens[0], *next = &tokens[1];
  if (long const code = Read(tokenizer, *token); code != Error::None) return code;
  if (token->itemClass == EQMItemClass::End) return Error::None;
  for (; token->itemClass != EQMItemClass::End; std::swap(token, next)) {
    if (long const code = Read(tokenizer, *next); code != Error::None) return code;
    if (long const code = Add(*token, next->itemClass); code != Error::None) return code;
    if (!m_rules.impliedMultiplication || !EndsFactor(token->itemClass, token->rows) ||
        !BeginsFactor(next->itemClass, next->rows))
      continue;
    if (long const code = InsertMultiplication(*next); code != Error::None) return code;
  }
  EndText(*token);
  return Error::None;
}

long CQMConversion::Read(CQMTokenizer& tokenizer, SQMReadToken& token) const {
  tokenizer.Next(token);
  if (token.isOpen) return Error::UnknownToken;
  bool const isSign = token.itemClass == EQMItemClass::Operator;
  if (!isSign && token.itemClass != EQMItemClass::Name) return Error::None;
  token.rows = m_search.Find(token.written);
  if (token.rows.IsOperator()) token.itemClass = EQMItemClass::Operator;
  return isSign && !token.rows.IsOperator() ? Error::UnknownOperator : Error::None;
}

long CQMConversion::Add(SQMReadToken const& token, EQMItemClass next) {
  switch (token.itemClass) {
    case EQMItemClass::Separator: AddSeparator(token); return Error::None;
    case EQMItemClass::OpenParen: OpenParen(EQMItemClass::CloseParen); return Error::None;
    case EQMItemClass::CloseParen:
    case EQMItemClass::CloseBracket: return CloseParen(token.itemClass);
    case EQMItemClass::Comma: AddComma(); return Error::None;
    case EQMItemClass::Number: AddNumber(token); return Error::None;
    case EQMItemClass::Name: AddOperand(EQMItem::Name, token); return Error::None;
    case EQMItemClass::String: AddString(token); return Error::None;
    case EQMItemClass::Operator: {
      long const code = AddOperator(token.rows, m_items->PlaceOf(token.written), next);
      if (code == Error::None && token.written.front() == '[') OpenParen(EQMItemClass::CloseBracket);
      return code;
    }
    default: return Error::UnknownToken;
  }
}

/** In front of next. */
long CQMConversion::InsertMultiplication(SQMReadToken const& next) {
  SQMStretch const place{m_items->PlaceOf(next.written).start, 0};
  return AddOperator(m_search.Find(kMultiplicationToken), place, next.itemClass);
}

SQMItem& CQMConversion::AddOperand(EQMItem kind, SQMToken const& token) {
  m_lastClass = token.itemClass;
  return m_items->Add(kind, m_items->PlaceOf(token.written));
}

void CQMConversion::AddNumber(SQMToken const& token) {
  auto const [value, isInteger] = ReadLiteral(token.written);
  SQMItem& item = AddOperand(EQMItem::Number, token);
  item.number = value;
  item.isInteger = isInteger;
}

void CQMConversion::AddString(SQMToken const& token) {
  SQMItem& item = AddOperand(EQMItem::String, token);
  if (token.hasEscapes) {
    std::size_t const begin = m_items->Pool().size();
    AppendUnescaped(token.Quoted(), m_items->Pool());
    item.characters = m_items->PooledSince(begin);
  } else {
    item.characters = m_items->PlaceOf(token.Quoted());
  }
}

long CQMConversion::AddOperator(SQMOperatorToken const& rows, SQMStretch place, EQMItemClass next) {
  CQMOpInfoRef const* const chosen = CQMOperatorSearch::Choose(rows, m_lastClass, next);
  if (chosen == nullptr) return Error::AddOperatorFailed;
  CQMOpInfo const& info = **chosen;
  if (chosen->use_count() != 0) m_held.push_back(*chosen);

  if (LetsGo(info.fix)) UnstackExpression();
  std::uint32_t const precedence = PrecedenceOf(info, m_rules.hierarchical);
  for (std::size_t const begin = PendingBegin(); m_pending.size() > begin; ReleasePending()) {
    SQMPending const& pending = m_pending.back();
    if (BindsTighter(info, precedence, *pending.info, pending.precedence)) break;
  }
  if (TakesList(info)) m_lists.push_back(m_items->Count());
  m_pending.push_back({&info, precedence, place});
  m_lastClass = ItemClassOf(info.fix);
  if (ClosesItself(info.fix)) UnstackExpression();
  return Error::None;
}

void CQMConversion::ReleasePending() {
  SQMPending const& pending = m_pending.back();
  EQMItem const kind = IsMarked(pending.info->fix) ? EQMItem::MarkedOperator : EQMItem::Operator;
  m_items->Add(kind, pending.place).id = pending.info->id;
  m_rows.push_back(pending.info);
  m_pending.pop_back();
}

void CQMConversion::UnstackExpression() {
  for (std::size_t const begin = PendingBegin(); m_pending.size() > begin;) ReleasePending();
  m_lastClass = EQMItemClass::Start;
}

/** Where the comma is the decimal point, the semicolon parts operands. */
void CQMConversion::AddSeparator(SQMToken const& token) {
  if (!m_levels.empty() && m_levels.back().isList && token.written.front() == m_rules.listSeparator)
    return AddComma();
  UnstackExpression();
  m_items->Add(EQMItem::End, m_items->PlaceOf(token.written));
  m_lastClass = EQMItemClass::Separator;
}

void CQMConversion::AddComma() {
  UnstackExpression();
  m_lastClass = EQMItemClass::Comma;
}

void CQMConversion::OpenParen(EQMItemClass closedBy) {
  bool const isList = closedBy == EQMItemClass::CloseBracket || m_lastClass == ItemClassOf(EQMFix::Prefix) ||
                      m_lastClass == ItemClassOf(EQMFix::MarkedPrefix);
  m_levels.push_back({closedBy, isList, m_pending.size(), {m_items->Count(), m_rows.size(), m_lists.size()}});
  m_lastClass = EQMItemClass::OpenParen;
}

long CQMConversion::CloseParen(EQMItemClass closing) {
  if (m_levels.empty() || m_levels.back().closedBy != closing) {
    return closing == EQMItemClass::CloseParen ? Error::MissingLeftParen : Error::MissingLeftBracket;
  }
  UnstackExpression();
  m_levels.pop_back();
  m_lastClass = EQMItemClass::CloseParen;
  return Error::None;
}

void CQMConversion::EndText(SQMToken const& end) {
  UnstackExpression();
  auto const items = m_items->GetItems();
  if (items.size() == OutputBegin().items || items.back().kind != EQMItem::End)
    m_items->Add(EQMItem::End, m_items->PlaceOf(end.written));
}

// ---- operands ----

/** Counts the operands of operators, and checks that they are not too many and stand on the right side. Where
 * a parenthesis was left open, only what stands behind the innermost one counts. An operand stands where it
 * begins. What operators take and leave is what the compiler has them take and leave; how many items they are
 * counted is another matter. */
long CQMConversion::Settle(std::string_view text) {
  std::span<SQMItem> const items = m_items->EditItems();
  SQMExtent const begin = OutputBegin();
  auto row = m_rows.cbegin() + static_cast<std::ptrdiff_t>(begin.rows);
  auto list = m_lists.cbegin() + static_cast<std::ptrdiff_t>(begin.lists);
  SQMItem const* wrongSided = nullptr;
  std::int64_t total = 0;           // values of the statement
  std::int32_t count = 0;           // items that no operator took yet
  std::int32_t statementBegin = 0;  // as many items belong to earlier statements
  std::int32_t floor = 0;           // as many cannot be taken
  m_openLists.clear();
  auto const setFloor = [&] {
    floor = m_openLists.empty() ? statementBegin : std::max(statementBegin, m_openLists.back());
  };
  if (m_untaken.size() < items.size()) m_untaken.resize(items.size());
  std::uint64_t* const bottom = m_untaken.data();
  std::uint64_t* top = bottom;
  for (std::size_t i = begin.items; i < items.size(); ++i) {
    for (; list != m_lists.cend() && *list == i; ++list) {
      m_openLists.push_back(count);
      setFloor();
    }
    SQMItem& item = items[i];
    if (item.kind == EQMItem::End) {
      if (total > 1) return Error::TooManyOperands;
      total = 0;
      statementBegin = count;
      setFloor();
      top = bottom;
      continue;
    }
    if (item.kind != EQMItem::Operator) {
      if (item.kind == EQMItem::MarkedOperator) {
        ++row;
        continue;
      }
      ++total;
      ++count;
      *top++ = OrderOf(item);
      continue;
    }
    CQMOpInfo const& info = **row++;
    item.operandCount = info.minOperands;
    if (info.HasVariableOperands()) {
      item.operandCount = count - floor;
      count = floor;
      if (!m_openLists.empty()) m_openLists.pop_back();
      setFloor();
      if (info.fix == EQMFix::Infix) {  // its left operand stands in front of the list
        ++item.operandCount;
        count = std::max(floor, count - 1);
      }
      ++count;
    } else {
      count = std::max(floor, count - item.operandCount) + 1;
    }
    bool const hasResult = !IsKeywordOperator(item.id) && !IsModeOperator(item.id) &&
                           item.id != OpId::ArrayIndex && item.id != OpId::Member;
    total += (hasResult ? 1 : 0) - item.operandCount;

    // which one an infix operator lacks is not known
    bool const isFree = info.fix == EQMFix::Infix && top - bottom < item.operandCount;
    std::uint64_t const place = OrderOf(item);
    std::uint64_t first = place;
    std::int32_t index = item.operandCount;
    for (; index > 0 && top != bottom; --index) {
      std::uint64_t const operand = *--top;
      if (!isFree && wrongSided == nullptr && !MayStand(info, index - 1, item.operandCount, operand < place))
        wrongSided = &item;
      first = std::min(first, operand);
    }
    bool const handsOn = IsTypeWord(item.id) && index < item.operandCount;
    if (handsOn || !LeavesNothing(item.id)) *top++ = first;
  }
  if (total > 1) return Error::TooManyOperands;
  if (!m_levels.empty()) return Error::MissingRightParen;
  if (wrongSided == nullptr) return Error::None;
  m_position = wrongSided->place.start - m_items->PlaceOf(text).start;
  return Error::NotEnoughOperands;
}

}  // namespace qumel
