// Infix text to postfix items: operands, operators by binding strength, parentheses, implied multiplication.
#include "language/conversion.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/number_base.h"
#include "base/operator_ids.h"

namespace qumel {

namespace {

constexpr std::string_view kMultiplicationToken = "_*";

/** Places count in half characters: a multiplication that is not written stands in front of the token that
 * follows it. */
constexpr std::size_t PlaceAt(SQMToken const& token) { return 2 * token.begin + 1; }
constexpr std::size_t PlaceInFrontOf(SQMToken const& token) { return 2 * token.begin; }
constexpr std::size_t PositionOf(std::size_t place) { return place / 2; }

constexpr bool IsMarked(EQMFix fix) { return fix == EQMFix::MarkedPrefix || fix == EQMFix::MarkedPostfix; }
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

bool TakesList(CQMOpInfo const& info) {
  return info.HasVariableOperands() &&
         (info.fix == EQMFix::Prefix || info.fix == EQMFix::Infix || info.fix == EQMFix::Postfix);
}

}  // namespace

long CQMConversion::Run(std::string_view text, CQMItemList& items) {
  m_text = text;
  m_items = &items;
  m_output.clear();
  m_pending.clear();
  m_levels.clear();
  m_held.clear();
  m_lastClass = EQMItemClass::End;
  if (m_rules.impliedMultiplication) m_multiplication = m_search.Find(kMultiplicationToken);
  CQMTokenizer tokenizer(text, m_rules);
  long code = Convert(tokenizer);
  m_position = tokenizer.GetPosition();
  if (code == Error::None && !m_levels.empty()) code = Error::MissingRightParen;
  if (SQMOutput const* const output = code == Error::None ? FindWrongSided() : nullptr; output != nullptr) {
    code = Error::NotEnoughOperands;
    m_position = PositionOf(output->place);
  }
  if (code == Error::None) {
    for (SQMOutput const& output : m_output) {
      if (!output.isListMark) items.Add(output.item);
    }
  }
  m_multiplication = {};
  m_held.clear();
  return code;
}

// text = {token}, read with one token of look-ahead
long CQMConversion::Convert(CQMTokenizer& tokenizer) {
  SQMReadToken token;
  if (long const code = Read(tokenizer, token); code != Error::None) return code;
  if (token.itemClass == EQMItemClass::End) return Error::None;
  while (token.itemClass != EQMItemClass::End) {
    SQMReadToken next;
    if (long const code = Read(tokenizer, next); code != Error::None) return code;
    if (long const code = Add(token, next.itemClass); code != Error::None) return code;
    if (long const code = InsertMultiplication(token, next); code != Error::None) return code;
    token = std::move(next);
  }
  EndText();
  CountOperands();
  return LeavesTooMuch() ? Error::TooManyOperands : Error::None;
}

long CQMConversion::Read(CQMTokenizer& tokenizer, SQMReadToken& token) const {
  static_cast<SQMToken&>(token) = tokenizer.Next();
  if (token.isOpen) return Error::UnknownToken;
  bool const isSign = token.itemClass == EQMItemClass::Operator;
  if (!isSign && token.itemClass != EQMItemClass::Name) return Error::None;
  token.rows = m_search.Find(token.text);
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
    case EQMItemClass::Name: AddOperand(SQMItem(EQMItem::Name), token); return Error::None;
    case EQMItemClass::String: AddString(token); return Error::None;
    case EQMItemClass::Operator: {
      long const code = AddOperator(token.rows, PlaceAt(token), PlaceOf(token), next);
      if (code == Error::None && token.text == "[") OpenParen(EQMItemClass::CloseBracket);
      return code;
    }
    default: return Error::UnknownToken;
  }
}

long CQMConversion::InsertMultiplication(SQMReadToken const& token, SQMReadToken const& next) {
  if (!m_rules.impliedMultiplication) return Error::None;
  bool const multiplies = EndsFactor(token.itemClass, token.rows) && BeginsFactor(next.itemClass, next.rows);
  if (!multiplies) return Error::None;
  SQMStretch const nowhere = {PlaceOf(next).start, 0};
  return AddOperator(m_multiplication, PlaceInFrontOf(next), nowhere, next.itemClass);
}

SQMStretch CQMConversion::PlaceOf(SQMToken const& token) const {
  return m_items->PlaceOf(m_text.substr(token.begin, token.end - token.begin));
}

void CQMConversion::AddNumber(SQMToken const& token) {
  m_literal.clear();
  AppendLiteral(token.text, m_literal);
  auto const [value, isInteger] = LiteralToNumber(m_literal);
  SQMItem item(EQMItem::Number);
  item.isInteger = isInteger;
  item.number = value;
  AddOperand(item, token);
}

void CQMConversion::AddString(SQMToken const& token) {
  SQMItem item(EQMItem::String);
  if (HasEscapes(token.text)) {
    std::size_t const begin = m_items->Pool().size();
    AppendUnescaped(token.text, m_items->Pool());
    item.characters = m_items->PooledSince(begin);
  } else {
    item.characters = m_items->PlaceOf(token.text);
  }
  AddOperand(item, token);
}

void CQMConversion::AddOperand(SQMItem const& item, SQMToken const& token) {
  m_output.push_back({item, nullptr, PlaceAt(token)});
  m_output.back().item.place = PlaceOf(token);
  m_lastClass = token.itemClass;
}

long CQMConversion::AddOperator(SQMOperatorToken const& rows, std::size_t place, SQMStretch written,
                                EQMItemClass next) {
  SQMFoundOperator const found = CQMOperatorSearch::Choose(rows, m_lastClass, next, m_rules.hierarchical);
  if (found.info == nullptr) return Error::AddOperatorFailed;
  CQMOpInfo const& info = *found.info;
  if (found.info.use_count() != 0) m_held.push_back(found.info);

  if (LetsGo(info.fix)) UnstackExpression();
  while (HasPending()) {
    SQMPending const& pending = m_pending.back();
    if (BindsTighter(info, found.precedence, *pending.info, pending.precedence)) break;
    ReleasePending();
  }
  if (TakesList(info)) m_output.push_back({SQMItem(), nullptr, place, true});
  m_pending.push_back({&info, found.precedence, place, written});
  m_lastClass = ItemClassOf(info.fix);
  if (ClosesItself(info.fix)) UnstackExpression();
  return Error::None;
}

void CQMConversion::ReleasePending() {
  SQMPending const& pending = m_pending.back();
  SQMItem item(IsMarked(pending.info->fix) ? EQMItem::MarkedOperator : EQMItem::Operator, pending.written);
  item.id = pending.info->id;
  m_output.push_back({item, pending.info, pending.place});
  m_pending.pop_back();
}

void CQMConversion::UnstackExpression() {
  while (HasPending()) ReleasePending();
  m_lastClass = EQMItemClass::Start;
}

/** Where the comma is the decimal point, the semicolon parts operands. */
void CQMConversion::AddSeparator(SQMToken const& token) {
  bool const partsOperands =
      !m_levels.empty() && m_levels.back().isList && token.text.front() == m_rules.listSeparator;
  partsOperands ? AddComma() : AddSemicolon(PlaceOf(token));
}

void CQMConversion::AddSemicolon(SQMStretch written) {
  UnstackExpression();
  m_output.push_back({SQMItem(EQMItem::End, written)});
  m_lastClass = EQMItemClass::Separator;
}

void CQMConversion::AddComma() {
  UnstackExpression();
  m_lastClass = EQMItemClass::Comma;
}

void CQMConversion::OpenParen(EQMItemClass closedBy) {
  bool const isList = closedBy == EQMItemClass::CloseBracket || m_lastClass == ItemClassOf(EQMFix::Prefix) ||
                      m_lastClass == ItemClassOf(EQMFix::MarkedPrefix);
  m_levels.push_back({closedBy, isList, m_pending.size(), m_output.size()});
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

void CQMConversion::EndText() {
  UnstackExpression();
  if (m_output.size() == LevelBegin() || m_output.back().item.kind != EQMItem::End) {
    m_output.push_back({SQMItem(EQMItem::End, m_items->PlaceOf(m_text.substr(m_text.size())))});
  }
}

// ---- operand counts ----

/** Where a parenthesis was left open, only what stands behind the innermost one is counted and checked. */
void CQMConversion::CountOperands() {
  std::int32_t items = 0;           // not taken by an operator yet
  std::int32_t statementBegin = 0;  // as many items belong to earlier statements
  std::vector<std::int32_t> lists;  // of each open list of arguments: how many items stand in front of it
  auto const innermost = [&] { return std::max(statementBegin, lists.empty() ? 0 : lists.back()); };
  for (std::size_t i = LevelBegin(); i < m_output.size(); ++i) {
    auto& [item, info, place, isListMark] = m_output[i];
    if (isListMark) {
      lists.push_back(items);
    } else if (item.kind == EQMItem::End) {
      statementBegin = items;
    } else if (item.kind == EQMItem::Operator && info->HasVariableOperands()) {
      std::int32_t const begin = innermost();
      item.operandCount = items - begin;
      items = begin;
      if (!lists.empty()) lists.pop_back();
      if (info->fix == EQMFix::Infix) {  // its left operand stands in front of the list
        ++item.operandCount;
        items = std::max(innermost(), items - 1);
      }
      ++items;
    } else if (item.kind == EQMItem::Operator) {
      item.operandCount = info->minOperands;
      items = std::max(innermost(), items - item.operandCount) + 1;
    } else if (item.kind != EQMItem::MarkedOperator) {
      ++items;
    }
  }
}

bool CQMConversion::LeavesTooMuch() const {
  long total = 0;
  for (std::size_t i = LevelBegin(); i < m_output.size(); ++i) {
    SQMItem const& item = m_output[i].item;
    if (m_output[i].isListMark) continue;
    switch (item.kind) {
      case EQMItem::MarkedOperator: break;
      case EQMItem::End:
        if (total > 1) return true;
        total = 0;
        break;
      case EQMItem::Operator: {
        long const id = item.id;
        bool const hasResult =
            !IsKeywordOperator(id) && !IsModeOperator(id) && id != OpId::ArrayIndex && id != OpId::Member;
        total += (hasResult ? 1 : 0) - item.operandCount;
        break;
      }
      default: ++total;
    }
  }
  return total > 1;
}

// ---- sides of operators ----

/** The first operator that would take an operand from the wrong side of it, or null. An operand stands where
 * it begins. What operators take and leave is what the compiler has them take and leave. */
CQMConversion::SQMOutput const* CQMConversion::FindWrongSided() {
  std::vector<std::size_t>& operands = m_operandPlaces;
  operands.clear();
  for (SQMOutput const& output : m_output) {
    auto const& [item, info, place, isListMark] = output;
    if (isListMark) continue;
    switch (item.kind) {
      case EQMItem::MarkedOperator: break;
      case EQMItem::End: operands.clear(); break;
      case EQMItem::Operator: {
        // which one an infix operator lacks is not known
        bool const isFree = info->fix == EQMFix::Infix && std::cmp_less(operands.size(), item.operandCount);
        std::size_t begin = place;
        std::int32_t index = item.operandCount;
        for (; index > 0 && !operands.empty(); --index, operands.pop_back()) {
          bool const isOnLeft = operands.back() < place;
          if (!isFree && !MayStand(*info, index - 1, item.operandCount, isOnLeft)) return &output;
          begin = std::min(begin, operands.back());
        }
        bool const handsOn = IsTypeWord(item.id) && index < item.operandCount;
        if (handsOn || !LeavesNothing(item.id)) operands.push_back(begin);
        break;
      }
      default: operands.push_back(place);
    }
  }
  return nullptr;
}

}  // namespace qumel
