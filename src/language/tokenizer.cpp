// Tokens: numbers in five bases, names, strings with escapes, operator signs, and the marks of structure.
#include "language/tokenizer.h"

#include "base/number_base.h"
#include "language/characters.h"

namespace qumel {

namespace {

constexpr char kEscape = '\\';
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

/** To the end of the line, which is white space, or of the text. */
void CQMTokenizer::SkipComment() {
  while (m_at < m_end && *m_at != '\n' && *m_at != '\r') ++m_at;
}

void CQMTokenizer::Skip(EQMCharacter first, SQMToken& token) {
  if (first == EQMCharacter::Sign) return *m_at == m_rules.quoteMark ? SkipString(token) : SkipSign();
  bool const isNumber = first == EQMCharacter::Digit || (m_rules.radixMark == '.' && IsDigit(Peek(1)));
  if (!isNumber) {
    ++m_at;
    return;
  }
  token.itemClass = EQMItemClass::Number;
  SkipNumber();
}

void CQMTokenizer::SkipSign() {
  for (++m_at; m_at < m_end && *m_at != m_rules.quoteMark; ++m_at) {
    EQMCharacter const next = ClassOf(*m_at);
    if (next != EQMCharacter::Sign && next != EQMCharacter::Underscore) break;
  }
}

// number = ["0" base mark] {digit | exponent mark ["+" | "-"] | radix mark}, each mark once, no radix mark
// behind the exponent mark; E is a digit in bases h and t
void CQMTokenizer::SkipNumber() {
  char const marked = *m_at == '0' ? BaseLetter::OfMark(Peek(1)) : '\0';
  if (marked != '\0') m_at += 2;
  std::string_view const digits = DigitsOf(marked);
  bool hasExponent = false;
  bool hasRadixMark = false;
  for (; m_at < m_end; ++m_at) {
    char const c = *m_at;
    if (marked == '\0' ? IsDigit(c) : Contains(digits, c)) continue;
    if (Contains(kExponentMarks, c) && !hasExponent) {
      hasExponent = true;
      if (Peek(1) == '+' || Peek(1) == '-') ++m_at;
    } else if (c == m_rules.radixMark && !hasExponent && !hasRadixMark && !(c == ',' && IsSpace(Peek(1)))) {
      hasRadixMark = true;
    } else {
      break;
    }
  }
}

void CQMTokenizer::SkipString(SQMToken& token) {
  char const* const begin = m_at++;
  token.itemClass = EQMItemClass::String;
  token.hasEscapes = false;
  for (; m_at < m_end && *m_at != m_rules.quoteMark; ++m_at) {
    if (*m_at != kEscape) continue;
    token.hasEscapes = true;
    if (m_end - m_at > 1) ++m_at;
  }
  token.isOpen = m_at == m_end;
  m_at = token.isOpen ? begin : m_at + 1;
}

void AppendUnescaped(std::string_view text, std::vector<char>& out) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != kEscape) {
      out.push_back(text[i]);
    } else if (++i < text.size()) {
      out.push_back(Unescape(text[i]));
    }
  }
}

}  // namespace qumel
