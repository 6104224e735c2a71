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
  std::string_view text;  // as it is written; of a string, what stands between its quote marks
  std::size_t begin = 0;  // where it stands, and where it ends
  std::size_t end = 0;
  bool isOpen = false;  // of a string: nothing closes it
};

class CQMTokenizer {
 public:
  /** text and rules must outlive the tokenizer. */
  CQMTokenizer(std::string_view text, SQMReadingRules const& rules) : m_text(text), m_rules(rules) {}

  /** The next token; class End once the text is used up. Moves on, except that it stays at the quote mark of
   * a string that nothing closes. */
  SQMToken Next();
  /** Where the last token ended. */
  std::size_t GetPosition() const { return m_position; }

 private:
  char Peek(std::size_t ahead = 0) const {
    return m_position + ahead < m_text.size() ? m_text[m_position + ahead] : '\0';
  }
  bool IsAtEnd() const { return m_position >= m_text.size(); }
  void SkipSpaceAndComments();
  SQMToken ReadToken();
  bool BeginsNumber() const;
  SQMToken Take(EQMItemClass itemClass, std::size_t start) const {
    return {itemClass, m_text.substr(start, m_position - start)};
  }
  template <class Test>
  SQMToken TakeWhile(EQMItemClass itemClass, Test belongs);
  SQMToken ReadNumber();
  SQMToken ReadString();

  std::string_view m_text;
  SQMReadingRules const& m_rules;
  std::size_t m_position = 0;
};

/** Whether the characters of a string are other ones than those written. */
bool HasEscapes(std::string_view text);
/** Appends the characters of a string, escapes applied. */
void AppendUnescaped(std::string_view text, std::string& out);

}  // namespace qumel
