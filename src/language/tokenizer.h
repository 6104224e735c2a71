// Cuts the text of an expression into tokens.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "language/characters.h"
#include "language/op_info.h"
#include "language/reading_rules.h"

namespace qumel {

struct SQMToken {
  EQMItemClass itemClass = EQMItemClass::End;
  bool isOpen = false;       // of a string: nothing closes it
  bool hasEscapes = false;   // of a string: its characters are not those written
  std::string_view written;  // strings with their quote marks

  /** Of a string: what stands between its quote marks. */
  std::string_view Quoted() const { return written.substr(1, written.size() - 2); }
};

/** What a token is that a character begins, as far as that tells. */
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

class CQMTokenizer {
 public:
  /** text and rules must outlive the tokenizer. */
  CQMTokenizer(std::string_view text, SQMReadingRules const& rules)
      : m_begin(text.data()), m_at(m_begin), m_end(m_begin + text.size()), m_rules(rules) {}

  /** The next token; class End once the text is used up. Moves on, except that it stays at the quote mark of
   * a string that nothing closes. */
  void Next(SQMToken& token) {
    EQMCharacter const first = SkipSpace();
    char const* const begin = m_at;
    token.itemClass = TokenClassOf(first);
    if (first <= EQMCharacter::Underscore && first != EQMCharacter::Digit) {
      do ++m_at;
      while (m_at < m_end && ClassOf(*m_at) <= EQMCharacter::Underscore);
    } else if (m_at == m_end) {
      token.itemClass = EQMItemClass::End;
    } else if (first <= EQMCharacter::Point) {
      Skip(first, token);
    } else {
      ++m_at;
    }
    token.written = {begin, static_cast<std::size_t>(m_at - begin)};
  }
  /** Where the last token ended. */
  std::size_t GetPosition() const { return static_cast<std::size_t>(m_at - m_begin); }

 private:
  char Peek(std::ptrdiff_t ahead = 0) const { return m_end - m_at > ahead ? m_at[ahead] : '\0'; }
  /** The class of the character behind it; Unknown at the end. */
  EQMCharacter SkipSpace() {
    for (; m_at < m_end; ++m_at) {
      EQMCharacter const next = ClassOf(*m_at);
      if (next != EQMCharacter::Space && !(*m_at == '/' && Peek(1) == '/')) return next;
      if (next != EQMCharacter::Space) SkipComment();
      if (m_at == m_end) break;
    }
    return EQMCharacter::Unknown;
  }
  void SkipComment();
  /** Moves behind a number, a string or a sign. */
  void Skip(EQMCharacter first, SQMToken& token);
  void SkipNumber();
  void SkipString(SQMToken& token);
  void SkipSign();

  char const* m_begin;
  char const* m_at;
  char const* m_end;
  SQMReadingRules const& m_rules;
};

/** Appends the characters of a string, escapes applied. */
void AppendUnescaped(std::string_view text, std::vector<char>& out);

}  // namespace qumel
