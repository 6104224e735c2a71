// The items of one statement, with their operators found.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/items.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"

namespace qumel {

struct SQMReversionOperator {
  CQMOpInfoRef info;
  std::uint32_t precedence = 0;
  SQMOperatorToken rows;  // all that share its token
};

struct SQMReversionItem {
  SQMItem const* item;
  SQMReversionOperator const* op = nullptr;  // null: an operand
};

/** What the kind of an operand says of its class. */
constexpr EQMItemClass ItemClassOfOperand(EQMItem kind) {
  switch (kind) {
    case EQMItem::Number: return EQMItemClass::Number;
    case EQMItem::String: return EQMItemClass::String;
    default: return EQMItemClass::Name;
  }
}

/** Splits items into statements. */
class CQMReversionReader {
 public:
  /** All must outlive the reader and what it reads. */
  CQMReversionReader(SQMReadingRules const& rules, CQMOperatorSearch const& search, CQMItemList::Items items)
      : m_rules(rules), m_search(search), m_rest(items) {}

  bool IsAtEnd() const { return m_rest.empty(); }
  /** UnknownOperator, where a host's operator is no longer there, or 0. */
  long ReadStatement();
  std::span<SQMReversionItem const> GetItems() const { return m_items; }
  /** The same with their end. */
  CQMItemList::Items GetStatement() const { return m_statement; }

 private:
  SQMReversionOperator const* FindOperator(long id);

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  CQMItemList::Items m_rest;
  CQMItemList::Items m_statement;
  std::unordered_map<long, SQMReversionOperator> m_operators;
  HeldOperators m_held;
  std::vector<SQMReversionItem> m_items;
};

}  // namespace qumel
