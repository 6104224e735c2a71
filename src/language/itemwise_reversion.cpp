// Items written one by one, and what encloses what.
#include "language/itemwise_reversion.h"

#include "base/operator_ids.h"

namespace qumel {

namespace {

constexpr int kMostTries = 8;  // of operands that a sign may stand in front of

}  // namespace

CQMItemwiseReversion::CQMItemwiseReversion(SQMReadingRules const& rules,
                                           std::span<SQMReversionItem const> items)
    : m_rules(rules), m_items(items), m_places(items.size()) {
  m_entries.reserve(items.size());
  for (Index at = 0; at < static_cast<Index>(items.size()); ++at) Place(at);
}

// ---- what encloses what ----

void CQMItemwiseReversion::Place(Index at) {
  SQMReversionItem const& item = m_items[at];
  Index const stack = m_top;
  m_top = at;
  m_entries.push_back({at, stack, stack});
  if (item.op == nullptr) return;
  if (item.op->info->HasVariableOperands()) {
    PlaceList(at);
  } else {
    m_entries.back().below = Below(stack, item.operandCount);
    if (NeedsOperand(item)) PlaceSign(at);
  }
}

/** The list begins as late as it can, so that most is left for operators outside. */
void CQMItemwiseReversion::PlaceList(Index at) {
  SQMEntry& entry = m_entries.back();
  bool const isInfix = m_items[at].op->info->fix == EQMFix::Infix;
  std::int32_t const count = m_items[at].operandCount - (isInfix ? 1 : 0);
  for (std::int32_t i = 0; i < count && entry.stackThere != kNone; ++i) {
    SQMEntry const& argument = m_entries[entry.stackThere];
    entry.begin = argument.begin;
    entry.below = argument.below;
    bool const isFirst = i + 1 == count;
    entry.stackThere = isFirst ? argument.stackThere : argument.below;
  }
  entry.below = isInfix ? Below(entry.stackThere, 1) : entry.stackThere;
  Open(at, entry.begin, EQMForm::List);
}

/** The sign waits for all between its operand and itself, which must not be read as a factor of the operand.
 */
void CQMItemwiseReversion::PlaceSign(Index at) {
  SQMEntry& entry = m_entries.back();
  Index operand = entry.stackThere;
  for (int tries = 0; operand != kNone && tries < kMostTries; operand = m_entries[operand].stackThere) {
    if (m_items[operand].op != nullptr) continue;
    ++tries;
    EQMForm const form = FormOfSign(at, operand);
    if (form == EQMForm::Alone) continue;
    if (form == EQMForm::SignBeforeWord) m_places[at - 1].form = EQMForm::Word;
    entry.begin = operand;
    entry.stackThere = m_entries[operand].below;
    Open(at, operand, form);
    return;
  }
}

CQMItemwiseReversion::EQMForm CQMItemwiseReversion::FormOfSign(Index at, Index operand) const {
  if (operand == at - 1) return EQMForm::Sign;
  EQMItemClass const operandClass = ItemClassOfOperand(m_items[operand].item.mark);
  bool const isFactor = m_rules.impliedMultiplication && operandClass != EQMItemClass::String;
  if (!isFactor) return EQMForm::SignBeforeList;
  SQMReversionItem const& last = m_items[at - 1];
  if (last.op == nullptr || m_places[at - 1].form != EQMForm::Alone) return EQMForm::Alone;
  SQMReversionOperator const &word = *last.op, &sign = *m_items[at].op;
  bool const waitsLess = (word.info->fix == EQMFix::Prefix || word.info->fix == EQMFix::Infix) &&
                         BindsTighter(*word.info, word.precedence, *sign.info, sign.precedence) &&
                         Fits(last, operandClass, EQMItemClass::OpenParen) &&
                         !BeginsFactor(EQMItemClass::Operator, word.rows);
  return waitsLess ? EQMForm::SignBeforeWord : EQMForm::Alone;
}

void CQMItemwiseReversion::Open(Index at, Index begin, EQMForm form) {
  m_places[at].form = form;
  m_places[at].nextOpening = m_places[begin].firstOpening;
  m_places[begin].firstOpening = at;
}

CQMItemwiseReversion::Index CQMItemwiseReversion::Below(Index entry, std::int32_t count) const {
  for (; entry != kNone && count > 0; --count) entry = m_entries[entry].below;
  return entry;
}

bool CQMItemwiseReversion::Fits(SQMReversionItem const& item, EQMItemClass previous,
                                EQMItemClass next) const {
  SQMFoundOperator const found =
      CQMOperatorSearch::Choose(item.op->rows, previous, next, m_rules.hierarchical);
  return found.info != nullptr && found.info->id == item.op->info->id;
}

bool CQMItemwiseReversion::NeedsOperand(SQMReversionItem const& item) const {
  return item.op->info->fix == EQMFix::Prefix && !Fits(item, EQMItemClass::Comma, EQMItemClass::OpenParen) &&
         Fits(item, EQMItemClass::Comma, EQMItemClass::Name);
}

// ---- writing ----

void CQMItemwiseReversion::Write(CQMInfixWriter& writer) const {
  auto previous = EQMItemClass::Comma;  // what stands in front: OpenParen, Comma, or an item
  for (Index at = 0; at < static_cast<Index>(m_items.size()); ++at) {
    SQMReversionItem const& item = m_items[at];
    Index innermost = kNone;
    for (Index i = m_places[at].firstOpening; i != kNone; i = m_places[i].nextOpening) {
      innermost = i;
      Separate(m_items[i], previous, writer);
      previous = WriteOpening(i, writer);
    }
    switch (m_places[at].form) {
      case EQMForm::Alone:
        Separate(item, previous, writer);
        WriteAlone(item, writer);
        break;
      case EQMForm::List: writer.AddMark(item.op->info->fix == EQMFix::Infix ? ")]" : ")"); break;
      case EQMForm::SignBeforeList:
      case EQMForm::SignBeforeWord: writer.AddMark(")"); break;
      default: break;  // stands in front already
    }
    previous = EQMItemClass::Operand;
    if (item.op == nullptr && innermost != kNone) previous = WriteBehindOperand(innermost, writer);
  }
}

void CQMItemwiseReversion::Separate(SQMReversionItem const& item, EQMItemClass previous,
                                    CQMInfixWriter& writer) const {
  bool const mayFollowParen = item.op == nullptr || TakesLeft(item) ||
                              Fits(item, EQMItemClass::OpenParen, EQMItemClass::OpenParen) ||
                              Fits(item, EQMItemClass::OpenParen, EQMItemClass::Comma);
  if (previous == EQMItemClass::Operand || (previous == EQMItemClass::OpenParen && !mayFollowParen)) {
    writer.AddMark(", ");
  }
}

/** The class of what it ends with. */
EQMItemClass CQMItemwiseReversion::WriteOpening(Index at, CQMInfixWriter& writer) const {
  std::string const& token = m_items[at].op->info->token;
  if (TakesLeft(m_items[at])) WriteNothing(writer);
  writer.AddOperator(token);
  if (m_places[at].form != EQMForm::List) return EQMItemClass::Comma;
  writer.OpenParen();
  return EQMItemClass::OpenParen;
}

/** Behind an operand with a sign in front, what the sign waits for. */
EQMItemClass CQMItemwiseReversion::WriteBehindOperand(Index sign, CQMInfixWriter& writer) const {
  EQMForm const form = m_places[sign].form;
  if (form != EQMForm::SignBeforeList && form != EQMForm::SignBeforeWord) return EQMItemClass::Operand;
  if (form == EQMForm::SignBeforeWord) writer.AddOperator(m_items[sign - 1].op->info->token);
  writer.OpenParen();
  return EQMItemClass::OpenParen;
}

void CQMItemwiseReversion::WriteAlone(SQMReversionItem const& item, CQMInfixWriter& writer) const {
  if (item.op == nullptr) {
    writer.AddOperand(item.item);
    return;
  }
  EQMFix const fix = item.op->info->fix;
  if (TakesLeft(item)) WriteNothing(writer);
  if (item.op->info->id != OpId::ImpliedMultiplication) writer.AddOperator(item.op->info->token);
  if (fix == EQMFix::Infix || fix == EQMFix::Prefix || fix == EQMFix::MarkedPrefix) WriteNothing(writer);
}

/** In place of operands that stand further in front. */
void CQMItemwiseReversion::WriteNothing(CQMInfixWriter& writer) {
  writer.OpenParen();
  writer.AddMark(")");
}

bool CQMItemwiseReversion::TakesLeft(SQMReversionItem const& item) {
  EQMFix const fix = item.op->info->fix;
  return fix == EQMFix::Infix || fix == EQMFix::Postfix || fix == EQMFix::MarkedPostfix;
}

}  // namespace qumel
