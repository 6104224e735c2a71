// Operands as they are written, and blanks where tokens would run together.
#include "language/infix_writer.h"

#include <algorithm>

#include "base/number_base.h"
#include "language/characters.h"

namespace qumel {

namespace {

constexpr char kPoint = '.', kComma = ',';
/** Keeps a comma in front of it a radix mark, which white space would not. */
constexpr std::string_view kBlankBehindRadixComma = "//\n";

struct SQMEscape {
  char character, letter;
};
constexpr SQMEscape kEscapes[] = {{'\b', 'b'}, {'\f', 'f'}, {'\n', 'n'}, {'\r', 'r'},
                                  {'\t', 't'}, {'\v', 'v'}, {'\\', '\\'}};

std::string Quoted(std::string_view text, char quoteMark) {
  std::string out(1, quoteMark);
  for (char const c : text) {
    auto const escape = std::ranges::find(kEscapes, c, &SQMEscape::character);
    bool const isEscape = escape != std::end(kEscapes);
    if (isEscape || c == quoteMark) out += '\\';
    out += isEscape ? escape->letter : c;
  }
  return out + quoteMark;
}

bool IsSign(char c) { return IsPunctuation(c) && c != '_'; }

}  // namespace

void CQMInfixWriter::AddOperand(SQMItem const& item) {
  switch (item.kind) {
    case EQMItem::Number: Join(NumberText(item), EQMItemClass::Number); break;
    case EQMItem::String:
      Join(Quoted(m_items.Characters(item), m_rules.quoteMark), EQMItemClass::String);
      break;
    default: Join(m_items.Characters(item), EQMItemClass::Name);
  }
}

void CQMInfixWriter::AddMark(std::string_view mark) {
  m_text += mark;
  m_lastClass = EQMItemClass::Start;
}

void CQMInfixWriter::AddBlank() {
  m_text += EndsWithOpenNumber() ? kBlankBehindRadixComma : " ";
  m_lastClass = EQMItemClass::Start;
}

void CQMInfixWriter::Clear() {
  m_text.clear();
  m_lastClass = EQMItemClass::Start;
}

/** A number whose last character is the radix mark, where that is a comma. */
bool CQMInfixWriter::EndsWithOpenNumber() const {
  return m_lastClass == EQMItemClass::Number && m_text.back() == kComma;
}

// One blank between two letters or two signs, where a digit or an underscore counts as a letter and square
// brackets never ask for one; and where two tokens would be read as one.
void CQMInfixWriter::Join(std::string_view token, EQMItemClass itemClass) {
  if (token.empty()) return;
  char const last = m_text.empty() ? ' ' : m_text.back(), first = token.front();
  bool const isInside = last == '(' || last == '[';
  bool const lettersMeet = IsNamePart(last) && IsNamePart(first);
  bool const signsMeet = IsSign(last) && IsSign(first) && last != ']' && first != '[';
  // a sign goes on through underscores
  bool const lengthensSign =
      m_lastClass == EQMItemClass::Operator && IsPunctuation(last) && IsPunctuation(first);
  bool const lengthensNumber =
      m_lastClass == EQMItemClass::Number &&
      (IsSign(last) || first == kPoint || ((last == 'E' || last == 'X') && (first == '+' || first == '-')));
  bool const makesNumber = last == kPoint && IsDigit(first);
  bool const meet = lettersMeet || signsMeet || lengthensSign || lengthensNumber || makesNumber;
  if (EndsWithOpenNumber() ? IsNamePart(first) : meet && !isInside) AddBlank();
  m_text += token;
  m_lastClass = itemClass;
}

std::string CQMInfixWriter::NumberText(SQMItem const& number) const {
  constexpr char kHexadecimalMark = 'x';
  std::string text;
  AppendLiteral(m_items.Written(number), text);
  std::ranges::replace(text, kPoint, m_rules.radixMark);
  char const base = text.front();
  text.erase(0, 1);
  if (base != BaseLetter::kDecimal)
    text.insert(1, 1, base == BaseLetter::kHexadecimal ? kHexadecimalMark : base);
  return text;
}

}  // namespace qumel
