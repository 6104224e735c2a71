// The items of one statement of postfix text, with their operators found.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/postfix_reader.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"

namespace qumel {

struct SQMReversionOperator {
  CQMOpInfoRef info;
  std::uint32_t precedence = 0;
  SQMOperatorToken rows;  // all that share its token
};

struct SQMReversionItem {
  SQMPostfixItem item;
  SQMReversionOperator const* op = nullptr;  // null: an operand
  std::int32_t operandCount = 0;             // of operators
};

/** What the mark of an operand says of its class. */
constexpr EQMItemClass ItemClassOfOperand(char mark) {
  switch (mark) {
    case PostfixMark::kNumber: return EQMItemClass::Number;
    case PostfixMark::kString: return EQMItemClass::String;
    default: return EQMItemClass::Name;
  }
}

/** Splits postfix text into statements. */
class CQMReversionReader {
 public:
  /** All must outlive the reader and what it reads. */
  CQMReversionReader(SQMReadingRules const& rules, CQMOperatorSearch const& search, std::string_view postfix)
      : m_rules(rules), m_search(search), m_reader(postfix) {}

  bool IsAtEnd() const { return m_reader.GetRest().empty(); }
  /** UnknownOperator, UnknownToken, or 0. */
  long ReadStatement();
  std::span<SQMReversionItem const> GetItems() const { return m_items; }
  /** Whether the statement has its end, or else the text ended first. */
  bool IsComplete() const { return m_isComplete; }
  std::string_view GetRest() const { return m_reader.GetRest(); }

 private:
  long Add(SQMPostfixItem const& item);
  SQMReversionOperator const* FindOperator(long id);

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  CQMPostfixReader m_reader;
  std::unordered_map<long, SQMReversionOperator> m_operators;
  HeldOperators m_held;
  std::vector<SQMReversionItem> m_items;
  bool m_isComplete = false;
};

}  // namespace qumel
