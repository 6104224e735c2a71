// Tokens: numbers in five bases, names, strings with escapes, operator signs, and the marks of structure.
#include "language/tokenizer.h"

#include "base/number_base.h"
#include "language/characters.h"

namespace qumel {

namespace {

constexpr char kEscape = '\\';
constexpr char kPoint = '.';

constexpr std::string_view kExponentMarks = "EX";

constexpr std::string_view DigitsOf(char baseLetter) {
  switch (baseLetter) {
    case BaseLetter::kBinary: return "01";
    case BaseLetter::kOctal: return "01234567";
    case BaseLetter::kDuodecimal: return "0123456789DEde";
    case BaseLetter::kHexadecimal: return "0123456789ABCDEFabcdef";
    default: return "0123456789";
  }
}

constexpr bool Contains(std::string_view characters, char c) {
  return characters.find(c) != std::string_view::npos;
}

/** The marks that stand for themselves; "[" begins an index, and is an operator too. */
EQMItemClass StructureClass(char c) {
  switch (c) {
    case ',': return EQMItemClass::Comma;
    case ';':
    case ':': return EQMItemClass::Separator;
    case '(': return EQMItemClass::OpenParen;
    case ')': return EQMItemClass::CloseParen;
    case ']': return EQMItemClass::CloseBracket;
    case '[':
    case kPoint: return EQMItemClass::Operator;
    default: return EQMItemClass::Start;
  }
}

char Unescape(char c) {
  switch (c) {
    case 'b':
    case 'B': return '\b';
    case 'f':
    case 'F': return '\f';
    case 'n':
    case 'N': return '\n';
    case 'r':
    case 'R': return '\r';
    case 't':
    case 'T': return '\t';
    case 'v':
    case 'V': return '\v';
    default: return c;
  }
}

}  // namespace

SQMToken CQMTokenizer::Next() {
  SkipSpaceAndComments();
  std::size_t const begin = m_position;
  SQMToken token = ReadToken();
  token.begin = begin;
  token.end = m_position;
  return token;
}

SQMToken CQMTokenizer::ReadToken() {
  if (IsAtEnd()) return {};
  char const first = Peek();
  if (first == m_rules.quoteMark) return ReadString();
  if (BeginsNumber()) return ReadNumber();
  if (IsNameStart(first)) return TakeWhile(EQMItemClass::Name, IsNamePart);
  if (EQMItemClass const structure = StructureClass(first); structure != EQMItemClass::Start) {
    ++m_position;
    return Take(structure, m_position - 1);
  }
  if (IsPunctuation(first)) {
    return TakeWhile(EQMItemClass::Operator, [this](char c) {
      return IsPunctuation(c) && c != m_rules.quoteMark && StructureClass(c) == EQMItemClass::Start;
    });
  }
  ++m_position;
  return Take(EQMItemClass::Unknown, m_position - 1);
}

void CQMTokenizer::SkipSpaceAndComments() {
  for (;;) {
    while (IsSpace(Peek())) ++m_position;
    if (Peek() != '/' || Peek(1) != '/') return;
    while (!IsAtEnd() && Peek() != '\n' && Peek() != '\r') ++m_position;
  }
}

bool CQMTokenizer::BeginsNumber() const {
  return IsDigit(Peek()) || (Peek() == kPoint && m_rules.radixMark == kPoint && IsDigit(Peek(1)));
}

template <class Test>
SQMToken CQMTokenizer::TakeWhile(EQMItemClass itemClass, Test belongs) {
  std::size_t const start = m_position++;
  while (!IsAtEnd() && belongs(Peek())) ++m_position;
  return Take(itemClass, start);
}

// number = ["0" base mark] {digit | exponent mark ["+" | "-"] | radix mark}, each mark once, no radix mark
// behind the exponent mark; E is a digit in bases h and t
SQMToken CQMTokenizer::ReadNumber() {
  std::size_t const start = m_position;
  char const marked = Peek() == '0' ? BaseLetter::OfMark(Peek(1)) : '\0';
  if (marked != '\0') m_position += 2;
  std::string_view const digits = DigitsOf(marked);
  bool hasExponent = false;
  bool hasRadixMark = false;
  for (; !IsAtEnd(); ++m_position) {
    char const c = Peek();
    if (Contains(digits, c)) continue;
    if (Contains(kExponentMarks, c) && !hasExponent) {
      hasExponent = true;
      if (Peek(1) == '+' || Peek(1) == '-') ++m_position;
    } else if (c == m_rules.radixMark && !hasExponent && !hasRadixMark && !(c == ',' && IsSpace(Peek(1)))) {
      hasRadixMark = true;
    } else {
      break;
    }
  }
  return Take(EQMItemClass::Number, start);
}

SQMToken CQMTokenizer::ReadString() {
  std::size_t const start = ++m_position;
  while (!IsAtEnd() && Peek() != m_rules.quoteMark) m_position += Peek() == kEscape ? 2 : 1;
  SQMToken token = Take(EQMItemClass::String, start);
  token.isOpen = IsAtEnd();
  m_position = token.isOpen ? start - 1 : m_position + 1;
  return token;
}

bool HasEscapes(std::string_view text) { return Contains(text, kEscape); }

void AppendUnescaped(std::string_view text, std::string& out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != kEscape) {
      out += text[i];
    } else if (++i < text.size()) {
      out += Unescape(text[i]);
    }
  }
}

}  // namespace qumel
