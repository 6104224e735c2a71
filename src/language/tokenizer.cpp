// Tokens: numbers in five bases, names, strings with escapes, operator signs, and the marks of structure.
#include "language/tokenizer.h"

#include "language/characters.h"

namespace qumel {

namespace {

constexpr char kEscape = '\\';
constexpr char kPoint = '.';

/** A base of numbers: the letter that names it in postfix text, the mark behind a leading 0, and its digits.
 */
struct SQMBase {
  char letter;
  std::string_view marks;
  std::string_view digits;
};

constexpr std::string_view kDecimalDigits = "0123456789";
constexpr SQMBase kBases[] = {
    {'d', "d", kDecimalDigits},
    {'b', "b", "01"},
    {'h', "hx", "0123456789ABCDEFabcdef"},
    {'o', "o", "01234567"},
    {'t', "t", "0123456789DEde"},
};
constexpr SQMBase const& kDecimalBase = kBases[0];
constexpr std::string_view kExponentMarks = "EX";

/** The base that a character behind a leading 0 marks, or null. */
SQMBase const* FindBase(char mark) {
  for (SQMBase const& base : kBases) {
    if (base.marks.find(mark) != std::string_view::npos) return &base;
  }
  return nullptr;
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
  SQMBase const* const marked = Peek() == '0' ? FindBase(Peek(1)) : nullptr;
  bool const hasBaseMark = marked != nullptr;
  SQMBase const* const base = hasBaseMark ? marked : &kDecimalBase;
  if (hasBaseMark) m_position += 2;
  std::size_t const start = m_position;
  bool hasExponent = false;
  bool hasRadixMark = false;
  for (; !IsAtEnd(); ++m_position) {
    char const c = Peek();
    if (Contains(base->digits, c)) continue;
    if (Contains(kExponentMarks, c) && !hasExponent) {
      hasExponent = true;
      if (Peek(1) == '+' || Peek(1) == '-') ++m_position;
    } else if (c == m_rules.radixMark && !hasExponent && !hasRadixMark && !(c == ',' && IsSpace(Peek(1)))) {
      hasRadixMark = true;
    } else {
      break;
    }
  }
  SQMToken token = Take(EQMItemClass::Number, start);
  token.baseLetter = base->letter;
  token.hasBaseMark = hasBaseMark;
  return token;
}

SQMToken CQMTokenizer::ReadString() {
  std::size_t const start = ++m_position;
  while (!IsAtEnd() && Peek() != m_rules.quoteMark) m_position += Peek() == kEscape ? 2 : 1;
  SQMToken token = Take(EQMItemClass::String, start);
  token.isOpen = IsAtEnd();
  m_position = token.isOpen ? start - 1 : m_position + 1;
  return token;
}

void AppendNumber(SQMToken const& number, char radixMark, std::string& out) {
  out += number.baseLetter;
  if (number.hasBaseMark) out += '0';
  std::size_t const start = out.size();
  out += number.text;
  if (radixMark == kPoint) return;
  if (std::size_t const mark = out.find(radixMark, start); mark != std::string::npos) out[mark] = kPoint;
}

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
