// Infix text to postfix items: operands, operators by binding strength, parentheses, implied multiplication.
#include "language/conversion.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/operator_ids.h"
#include "base/postfix_reader.h"

namespace qumel {

namespace {

constexpr std::string_view kMultiplicationToken = "_*";

/** Places count in half characters: a multiplication that is not written stands in front of the token that
 * follows it. */
constexpr std::size_t PlaceOf(SQMToken const& token) { return 2 * token.begin + 1; }
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

long CQMConversion::Run(std::string_view text, std::string& postfix) {
  m_items.clear();
  m_operandTexts.clear();
  m_pending.clear();
  m_levels.clear();
  m_held.clear();
  m_lastClass = EQMItemClass::End;
  postfix.clear();
  if (m_rules.impliedMultiplication) m_multiplication = m_search.Find(kMultiplicationToken);
  CQMTokenizer tokenizer(text, m_rules);
  long code = Convert(tokenizer);
  m_position = tokenizer.GetPosition();
  if (code == Error::None && !m_levels.empty()) code = Error::MissingRightParen;
  if (SQMItem const* const item = code == Error::None ? FindWrongSided() : nullptr; item != nullptr) {
    code = Error::NotEnoughOperands;
    m_position = PositionOf(item->place);
  }
  if (code == Error::None) Write(postfix);
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
    case EQMItemClass::Number: AddOperand(PostfixMark::kNumber, token); return Error::None;
    case EQMItemClass::Name: AddOperand(PostfixMark::kName, token); return Error::None;
    case EQMItemClass::String: AddOperand(PostfixMark::kString, token); return Error::None;
    case EQMItemClass::Operator: {
      long const code = AddOperator(token.rows, PlaceOf(token), next);
      if (code == Error::None && token.text == "[") OpenParen(EQMItemClass::CloseBracket);
      return code;
    }
    default: return Error::UnknownToken;
  }
}

long CQMConversion::InsertMultiplication(SQMReadToken const& token, SQMReadToken const& next) {
  if (!m_rules.impliedMultiplication) return Error::None;
  bool const multiplies = EndsFactor(token.itemClass, token.rows) && BeginsFactor(next.itemClass, next.rows);
  return multiplies ? AddOperator(m_multiplication, PlaceInFrontOf(next), next.itemClass) : Error::None;
}

void CQMConversion::AddOperand(char mark, SQMToken const& token) {
  if (mark == PostfixMark::kNumber) {
    AppendNumber(token, m_rules.radixMark, m_operandTexts);
  } else if (mark == PostfixMark::kName) {
    m_operandTexts += token.text;
  } else {
    AppendUnescaped(token.text, m_operandTexts);
  }
  m_items.push_back({mark, 0, nullptr, m_operandTexts.size(), PlaceOf(token)});
  m_lastClass = token.itemClass;
}

long CQMConversion::AddOperator(SQMOperatorToken const& rows, std::size_t place, EQMItemClass next) {
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
  if (TakesList(info)) m_items.push_back({kListMark, 0, nullptr, 0, place});
  m_pending.push_back({&info, found.precedence, place});
  m_lastClass = ItemClassOf(info.fix);
  if (ClosesItself(info.fix)) UnstackExpression();
  return Error::None;
}

void CQMConversion::ReleasePending() {
  auto const [info, precedence, place] = m_pending.back();
  char const mark = IsMarked(info->fix) ? PostfixMark::kMarkedOperator : PostfixMark::kOperator;
  m_items.push_back({mark, 0, info, 0, place});
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
  partsOperands ? AddComma() : AddSemicolon();
}

void CQMConversion::AddSemicolon() {
  UnstackExpression();
  m_items.push_back({PostfixMark::kEnd, 0, nullptr, 0, 0});
  m_lastClass = EQMItemClass::Separator;
}

void CQMConversion::AddComma() {
  UnstackExpression();
  m_lastClass = EQMItemClass::Comma;
}

void CQMConversion::OpenParen(EQMItemClass closedBy) {
  bool const isList = closedBy == EQMItemClass::CloseBracket || m_lastClass == ItemClassOf(EQMFix::Prefix) ||
                      m_lastClass == ItemClassOf(EQMFix::MarkedPrefix);
  m_levels.push_back({closedBy, isList, m_pending.size(), m_items.size()});
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
  if (m_items.size() == LevelBegin() || m_items.back().mark != PostfixMark::kEnd) {
    m_items.push_back({PostfixMark::kEnd, 0, nullptr, 0, 0});
  }
}

// ---- operand counts ----

/** Where a parenthesis was left open, only what stands behind the innermost one is counted and checked. */
void CQMConversion::CountOperands() {
  std::int32_t items = 0;           // not taken by an operator yet
  std::int32_t statementBegin = 0;  // as many items belong to earlier statements
  std::vector<std::int32_t> lists;  // of each open list of arguments: how many items stand in front of it
  auto const innermost = [&] { return std::max(statementBegin, lists.empty() ? 0 : lists.back()); };
  for (std::size_t i = LevelBegin(); i < m_items.size(); ++i) {
    SQMItem& item = m_items[i];
    if (item.mark == kListMark) {
      lists.push_back(items);
    } else if (item.mark == PostfixMark::kEnd) {
      statementBegin = items;
    } else if (item.mark == PostfixMark::kOperator && item.info->HasVariableOperands()) {
      std::int32_t const begin = innermost();
      item.operandCount = items - begin;
      items = begin;
      if (!lists.empty()) lists.pop_back();
      if (item.info->fix == EQMFix::Infix) {  // its left operand stands in front of the list
        ++item.operandCount;
        items = std::max(innermost(), items - 1);
      }
      ++items;
    } else if (item.mark == PostfixMark::kOperator) {
      item.operandCount = item.info->minOperands;
      items = std::max(innermost(), items - item.operandCount) + 1;
    } else if (item.mark != PostfixMark::kMarkedOperator) {
      ++items;
    }
  }
}

bool CQMConversion::LeavesTooMuch() const {
  long total = 0;
  for (std::size_t i = LevelBegin(); i < m_items.size(); ++i) {
    SQMItem const& item = m_items[i];
    switch (item.mark) {
      case kListMark:
      case PostfixMark::kMarkedOperator: break;
      case PostfixMark::kEnd:
        if (total > 1) return true;
        total = 0;
        break;
      case PostfixMark::kOperator: {
        long const id = item.info->id;
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
CQMConversion::SQMItem const* CQMConversion::FindWrongSided() {
  std::vector<std::size_t>& operands = m_operandPlaces;
  operands.clear();
  for (SQMItem const& item : m_items) {
    switch (item.mark) {
      case kListMark:
      case PostfixMark::kMarkedOperator: break;
      case PostfixMark::kEnd: operands.clear(); break;
      case PostfixMark::kOperator: {
        // which one an infix operator lacks is not known
        bool const isFree =
            item.info->fix == EQMFix::Infix && std::cmp_less(operands.size(), item.operandCount);
        std::size_t begin = item.place;
        std::int32_t index = item.operandCount;
        for (; index > 0 && !operands.empty(); --index, operands.pop_back()) {
          bool const isOnLeft = operands.back() < item.place;
          if (!isFree && !MayStand(*item.info, index - 1, item.operandCount, isOnLeft)) return &item;
          begin = std::min(begin, operands.back());
        }
        bool const handsOn = IsTypeWord(item.info->id) && index < item.operandCount;
        if (handsOn || !LeavesNothing(item.info->id)) operands.push_back(begin);
        break;
      }
      default: operands.push_back(item.place);
    }
  }
  return nullptr;
}

void CQMConversion::Write(std::string& postfix) const {
  std::size_t textBegin = 0;
  for (SQMItem const& item : m_items) {
    if (item.mark == kListMark) continue;
    postfix += item.mark;
    switch (item.mark) {
      case PostfixMark::kEnd: break;
      case PostfixMark::kMarkedOperator: postfix += DecimalText(item.info->id); break;
      case PostfixMark::kOperator:
        postfix += DecimalText(item.info->id);
        postfix += PostfixMark::kCount;
        postfix += DecimalText(item.operandCount);
        break;
      default:
        if (item.mark == PostfixMark::kString) {
          postfix += DecimalText(static_cast<long>(item.textEnd - textBegin));
          postfix += PostfixMark::kLength;
        }
        postfix.append(m_operandTexts, textBegin, item.textEnd - textBegin);
        textBegin = item.textEnd;
    }
  }
}

}  // namespace qumel
