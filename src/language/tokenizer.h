// Cuts the text of an expression into tokens.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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

class CQMTokenizer {
 public:
  /** text and rules must outlive the tokenizer. */
  CQMTokenizer(std::string_view text, SQMReadingRules const& rules)
      : m_begin(text.data()), m_at(m_begin), m_end(m_begin + text.size()), m_rules(rules) {}

  /** The next token; class End once the text is used up. Moves on, except that it stays at the quote mark of
   * a string that nothing closes. */
  void Next(SQMToken& token);
  /** Where the last token ended. */
  std::size_t GetPosition() const { return static_cast<std::size_t>(m_at - m_begin); }

 private:
  char Peek(std::ptrdiff_t ahead = 0) const { return m_end - m_at > ahead ? m_at[ahead] : '\0'; }
  void SkipComment();
  void SkipNumber();
  void SkipString(SQMToken& token);

  char const* m_begin;
  char const* m_at;
  char const* m_end;
  SQMReadingRules const& m_rules;
};

/** Appends the characters of a string, escapes applied. */
void AppendUnescaped(std::string_view text, std::string& out);

}  // namespace qumel
