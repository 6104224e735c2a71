// Infix text to items: operands, operators by binding strength, parentheses, implied multiplication.
#include "language/conversion.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/number_base.h"
#include "base/operator_ids.h"
#include "language/tokenizer.h"

namespace qumel {

namespace {

constexpr std::string_view kMultiplicationToken = "_*";

/** Places are compared in half characters: a multiplication that is not written stands in front of the token
 * that follows it. */
constexpr std::uint32_t OrderOf(SQMStretch place) { return 2 * place.start + (place.length > 0 ? 1 : 0); }

constexpr bool IsMarked(EQMFix fix) { return fix == EQMFix::MarkedPrefix || fix == EQMFix::MarkedPostfix; }

/** How many values an operator of id leaves in its statement. */
constexpr int ResultsOf(long id) {
  bool const isWord = IsKeywordOperator(id) || IsModeOperator(id);
  return isWord || id == OpId::ArrayIndex || id == OpId::Member ? 0 : 1;
}

/** Which operands of an operator must stand on its left, and which on its right: those in front of the first
 * index, and those from the second one on. */
struct SQMSides {
  std::int32_t leftEnd, rightBegin;
};

SQMSides SidesOf(CQMOpInfo const& info, std::int32_t count) {
  switch (info.fix) {
    case EQMFix::Prefix: return {0, 0};
    case EQMFix::Postfix: return {count, count};
    case EQMFix::Infix:
      if (info.HasVariableOperands()) return {1, 1};
      return count > 1 ? SQMSides{1, count - 1} : SQMSides{0, count};
    default: return {0, count};
  }
}

}  // namespace

/** One run, which is all that this file is about. */
class CQMConversion::CQMRun {
 public:
  CQMRun(CQMConversion& buffers, std::string_view text, CQMItemList& items)
      : m_rules(buffers.m_rules),
        m_search(buffers.m_search),
        m_held(buffers.m_held),
        m_pending(buffers.m_pending),
        m_levels(buffers.m_levels),
        m_operands(buffers.m_operands),
        m_items(items),
        m_text(text),
        m_tokenizer(text, m_rules) {
    m_pending.clear();
    m_levels.clear();
    m_operands.clear();
  }

  // text = {token}, read with one token of look-ahead
  long Convert() {
    SQMReadToken token, next;
    for (bool isFirst = true;; isFirst = false, token = next) {
      if (long const code = Read(next); code != Error::None) return code;
      bool const isLast = next.itemClass == EQMItemClass::End;
      if (isFirst) {
        if (isLast) return Error::None;
        continue;
      }
      if (long const code = Add(token, next.itemClass); code != Error::None) return code;
      if (isLast) return EndText(next);
      bool const multiplies = m_rules.impliedMultiplication && EndsFactor(token.itemClass, token.rows) &&
                              BeginsFactor(next.itemClass, next.rows);
      if (!multiplies) continue;
      if (long const code = InsertMultiplication(next); code != Error::None) return code;
    }
  }

  std::size_t GetPosition() const { return m_tokenizer.GetPosition(); }
  /** Where the first operator stands that would take an operand from the wrong side of it. */
  std::size_t GetWrongPlace() const { return m_wrongPlace - m_items.PlaceOf(m_text).start; }

 private:
  struct SQMReadToken : SQMToken {
    SQMOperatorToken rows;  // of names and signs
  };

  long Read(SQMReadToken& token) {
    m_tokenizer.Next(token);
    bool const isSign = token.itemClass == EQMItemClass::Operator;
    if (!isSign && token.itemClass != EQMItemClass::Name) {
      bool const isOpen = token.itemClass == EQMItemClass::String && token.isOpen;
      return isOpen ? Error::UnknownToken : Error::None;
    }
    token.rows = m_search.Find(token.written, m_held);
    if (token.rows.IsOperator()) token.itemClass = EQMItemClass::Operator;
    return isSign && !token.rows.IsOperator() ? Error::UnknownOperator : Error::None;
  }

  long Add(SQMReadToken const& token, EQMItemClass next) {
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
        long const code = AddOperator(token.rows, m_items.PlaceOf(token.written), next);
        if (code == Error::None && token.written.front() == '[') OpenParen(EQMItemClass::CloseBracket);
        return code;
      }
      default: return Error::UnknownToken;
    }
  }

  /** In front of next. */
  long InsertMultiplication(SQMReadToken const& next) {
    SQMStretch const place{m_items.PlaceOf(next.written).start, 0};
    return AddOperator(m_search.Find(kMultiplicationToken, m_held), place, next.itemClass);
  }

  SQMItem& AddOperand(EQMItem kind, SQMToken const& token) {
    m_lastClass = token.itemClass;
    ++m_count;
    ++m_values;
    SQMItem& item = m_items.Add(kind, m_items.PlaceOf(token.written));
    m_operands.push_back(OrderOf(item.place));
    return item;
  }

  void AddNumber(SQMToken const& token) {
    auto const [value, isInteger] = ReadLiteral(token.written);
    SQMItem& item = AddOperand(EQMItem::Number, token);
    item.number = value;
    item.isInteger = isInteger;
  }

  void AddString(SQMToken const& token) {
    SQMItem& item = AddOperand(EQMItem::String, token);
    if (token.hasEscapes) {
      std::size_t const begin = m_items.Pool().size();
      AppendUnescaped(token.Quoted(), m_items.Pool());
      item.characters = m_items.PooledSince(begin);
    } else {
      item.characters = m_items.PlaceOf(token.Quoted());
    }
  }

  long AddOperator(SQMOperatorToken const& rows, SQMStretch place, EQMItemClass next) {
    CQMOpInfo const* const info = CQMOperatorSearch::Choose(rows, m_lastClass, next);
    if (info == nullptr) return Error::AddOperatorFailed;
    if (LetsGo(info->fix)) UnstackExpression();
    std::uint32_t const precedence = PrecedenceOf(*info, m_rules.hierarchical);
    for (std::size_t const begin = PendingBegin(); m_pending.size() > begin; ReleasePending()) {
      SQMPending const& pending = m_pending.back();
      if (BindsTighter(*info, precedence, *pending.info, pending.precedence)) break;
    }
    m_pending.push_back({info, precedence, m_listBegin, place});
    if (info->HasVariableOperands()) m_listBegin = m_count;
    m_lastClass = ItemClassOf(info->fix);
    if (ClosesItself(info->fix)) UnstackExpression();
    return Error::None;
  }

  std::size_t PendingBegin() const { return m_levels.empty() ? 0 : m_levels.back().pendingCount; }

  void ReleasePending() {
    SQMPending const& pending = m_pending.back();
    CQMOpInfo const& info = *pending.info;
    bool const isMarked = IsMarked(info.fix);
    SQMItem& item = m_items.Add(isMarked ? EQMItem::MarkedOperator : EQMItem::Operator, pending.place);
    item.id = info.id;
    if (!isMarked) {
      item.operandCount = CountOperands(pending);
      m_values += ResultsOf(info.id) - item.operandCount;
      TakeOperands(info, item);
    }
    m_pending.pop_back();
  }

  void UnstackExpression() {
    for (std::size_t const begin = PendingBegin(); m_pending.size() > begin;) ReleasePending();
    m_lastClass = EQMItemClass::Start;
  }

  /** Where the comma is the decimal point, the semicolon parts operands. */
  void AddSeparator(SQMToken const& token) {
    if (!m_levels.empty() && m_levels.back().isList && token.written.front() == m_rules.listSeparator)
      return AddComma();
    UnstackExpression();
    AddEnd(token);
    m_lastClass = EQMItemClass::Separator;
  }

  void AddEnd(SQMToken const& token) {
    m_items.Add(EQMItem::End, m_items.PlaceOf(token.written));
    m_leavesTooMuch |= m_values > 1;
    m_values = 0;
    m_statementBegin = m_count;
    m_operands.clear();
  }

  void AddComma() {
    UnstackExpression();
    m_lastClass = EQMItemClass::Comma;
  }

  void OpenParen(EQMItemClass closedBy) {
    bool const isList = closedBy == EQMItemClass::CloseBracket ||
                        m_lastClass == ItemClassOf(EQMFix::Prefix) ||
                        m_lastClass == ItemClassOf(EQMFix::MarkedPrefix);
    m_levels.push_back({closedBy, isList, m_pending.size(), m_items.Count()});
    m_lastClass = EQMItemClass::OpenParen;
  }

  long CloseParen(EQMItemClass closing) {
    if (m_levels.empty() || m_levels.back().closedBy != closing) {
      return closing == EQMItemClass::CloseParen ? Error::MissingLeftParen : Error::MissingLeftBracket;
    }
    UnstackExpression();
    m_levels.pop_back();
    m_lastClass = EQMItemClass::CloseParen;
    return Error::None;
  }

  long EndText(SQMToken const& end) {
    UnstackExpression();
    auto const items = m_items.GetItems();
    std::size_t const begin = m_levels.empty() ? 0 : m_levels.back().itemCount;
    if (items.size() == begin || items.back().kind != EQMItem::End) AddEnd(end);
    // where a parenthesis was left open, only what stands behind the innermost one counts
    if (m_levels.empty() ? m_leavesTooMuch : LeavesTooMuch(begin)) return Error::TooManyOperands;
    if (!m_levels.empty()) return Error::MissingRightParen;
    return m_isWrongSided ? Error::NotEnoughOperands : Error::None;
  }

  // ---- operands ----

  /** What an operator takes that is let go now. */
  std::int32_t CountOperands(SQMPending const& pending) {
    CQMOpInfo const& info = *pending.info;
    auto const floor = [this] { return std::max(m_statementBegin, m_listBegin); };
    if (!info.HasVariableOperands()) {
      m_count = std::max(floor(), m_count - info.minOperands) + 1;
      return info.minOperands;
    }
    std::int32_t const begin = floor();
    std::int32_t const listed = m_count - begin;
    bool const hasLeft = info.fix == EQMFix::Infix;  // it stands in front of the list
    m_listBegin = pending.outerList;
    m_count = (hasLeft ? std::max(floor(), begin - 1) : begin) + 1;
    return hasLeft ? listed + 1 : listed;
  }

  /** Takes the operands of an operator and leaves its result. */
  void TakeOperands(CQMOpInfo const& info, SQMItem const& item) {
    std::uint32_t const place = OrderOf(item.place);
    std::uint32_t first = place;
    std::int32_t index = item.operandCount;
    SQMSides sides = SidesOf(info, index);
    if (info.fix == EQMFix::Infix && std::cmp_less(m_operands.size(), index))
      sides = {0, index};  // which one it lacks is not known
    while (index > 0 && !m_operands.empty()) {
      std::uint32_t const operand = m_operands.back();
      m_operands.pop_back();
      --index;
      if ((operand < place ? index >= sides.rightBegin : index < sides.leftEnd) && !m_isWrongSided) {
        m_isWrongSided = true;
        m_wrongPlace = item.place.start;
      }
      first = std::min(first, operand);
    }
    bool const handsOn = IsTypeWord(info.id) && index < item.operandCount;
    if (handsOn || !LeavesNothing(info.id)) m_operands.push_back(first);
  }

  /** Whether a statement leaves more than one value, among the items from begin on. */
  bool LeavesTooMuch(std::size_t begin) const {
    std::int64_t values = 0;
    for (SQMItem const& item : m_items.GetItems().subspan(begin)) {
      switch (item.kind) {
        case EQMItem::MarkedOperator: break;
        case EQMItem::Operator: values += ResultsOf(item.id) - item.operandCount; break;
        case EQMItem::End:
          if (values > 1) return true;
          values = 0;
          break;
        default: ++values;
      }
    }
    return false;
  }

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  HeldOperators& m_held;
  std::vector<SQMPending>& m_pending;
  std::vector<SQMLevel>& m_levels;
  /** Where operands begin, in half characters, as the compiler has operators take them: those that none took
   * yet. */
  std::vector<std::uint32_t>& m_operands;
  CQMItemList& m_items;
  std::string_view m_text;
  CQMTokenizer m_tokenizer;
  EQMItemClass m_lastClass = EQMItemClass::End;
  // Items are counted as the converter has them taken: each leaves one, and takes some of those in front of
  // it.
  std::int32_t m_count = 0;           // that no operator took yet
  std::int32_t m_statementBegin = 0;  // as many belong to earlier statements
  std::int32_t m_listBegin = 0;       // as many stand in front of the innermost list of arguments
  std::int64_t m_values = 0;          // that the statement leaves
  bool m_leavesTooMuch = false;       // of the statements so far
  bool m_isWrongSided = false;        // some operator would take an operand from the wrong side of it
  std::uint32_t m_wrongPlace = 0;
};

long CQMConversion::Run(std::string_view text, CQMItemList& items) {
  CQMRun run(*this, text, items);
  long const code = run.Convert();
  m_position = code == Error::NotEnoughOperands ? run.GetWrongPlace() : run.GetPosition();
  if (code != Error::None) items.Clear();
  m_held.clear();
  return code;
}

}  // namespace qumel
