// Infix text written token by token.
#pragma once

#include <string>
#include <string_view>

#include "base/items.h"
#include "language/op_info.h"
#include "language/reading_rules.h"

namespace qumel {

/** Keeps tokens apart that would be read as one. */
class CQMInfixWriter {
 public:
  /** Both must outlive the writer. */
  CQMInfixWriter(SQMReadingRules const& rules, CQMItemList const& items) : m_rules(rules), m_items(items) {}

  /** A number, name or string of the items, as it is written in texts. */
  void AddOperand(SQMItem const& item);
  void AddOperator(std::string_view token) { Join(token, EQMItemClass::Operator); }
  void OpenParen() { Join("(", EQMItemClass::Start); }
  /** Marks of structure, and blanks around them. */
  void AddMark(std::string_view mark);
  void AddBlank();

  std::string const& GetText() const { return m_text; }
  void Clear();

 private:
  void Join(std::string_view token, EQMItemClass itemClass);
  std::string NumberText(SQMItem const& number) const;
  bool EndsWithOpenNumber() const;

  SQMReadingRules const& m_rules;
  CQMItemList const& m_items;
  std::string m_text;
  EQMItemClass m_lastClass = EQMItemClass::Start;  // of the token written last; Start behind a mark
};

}  // namespace qumel
