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

constexpr EQMItemClass TokenClassOf(EQMCharacter first) {
  switch (first) {
    case EQMCharacter::Digit: return EQMItemClass::Number;
    case EQMCharacter::Letter:
    case EQMCharacter::Underscore: return EQMItemClass::Name;
    case EQMCharacter::Sign:
    case EQMCharacter::Point:
    case EQMCharacter::OpenBracket: return EQMItemClass::Operator;
    case EQMCharacter::Comma: return EQMItemClass::Comma;
    case EQMCharacter::Separator: return EQMItemClass::Separator;
    case EQMCharacter::OpenParen: return EQMItemClass::OpenParen;
    case EQMCharacter::CloseParen: return EQMItemClass::CloseParen;
    case EQMCharacter::CloseBracket: return EQMItemClass::CloseBracket;
    default: return EQMItemClass::Unknown;
  }
}

}  // namespace

void CQMTokenizer::Next(SQMToken& token) {
  while (m_at < m_end) {
    if (ClassOf(*m_at) == EQMCharacter::Space) {
      ++m_at;
    } else if (*m_at == '/' && Peek(1) == '/') {
      SkipComment();
    } else {
      break;
    }
  }
  char const* const begin = m_at;
  token.isOpen = false;
  if (m_at == m_end) {
    token.itemClass = EQMItemClass::End;
    token.written = {begin, 0};
    return;
  }
  EQMCharacter const first = ClassOf(*m_at);
  token.itemClass = TokenClassOf(first);
  switch (first) {
    case EQMCharacter::Letter:
    case EQMCharacter::Underscore:
      do ++m_at;
      while (m_at < m_end && ClassOf(*m_at) <= EQMCharacter::Underscore);
      break;
    case EQMCharacter::Digit: SkipNumber(); break;
    case EQMCharacter::Point:
      if (m_rules.radixMark == '.' && IsDigit(Peek(1))) {
        token.itemClass = EQMItemClass::Number;
        SkipNumber();
      } else {
        ++m_at;
      }
      break;
    case EQMCharacter::Sign:
      if (*m_at == m_rules.quoteMark) {
        SkipString(token);
        break;
      }
      for (++m_at; m_at < m_end && *m_at != m_rules.quoteMark; ++m_at) {
        EQMCharacter const next = ClassOf(*m_at);
        if (next != EQMCharacter::Sign && next != EQMCharacter::Underscore) break;
      }
      break;
    default: ++m_at;
  }
  token.written = {begin, static_cast<std::size_t>(m_at - begin)};
}

void CQMTokenizer::SkipComment() {
  while (m_at < m_end && *m_at != '\n' && *m_at != '\r') ++m_at;
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
