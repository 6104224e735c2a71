// One conversion of infix text to items.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/items.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"

namespace qumel {

/** Operands go to the output as they are read; an operator waits until one that binds no tighter, or the end
 * of its parenthesis, argument or statement, lets it go. Each item is written once and each operator waits
 * once, so that the work is linear in the text, and no nesting of the text nests calls. An operator that is
 * let go before its operand is read would take one that belongs to others: that is an error. Holds buffers
 * from one run to the next. */
class CQMConversion {
 public:
  /** Both must outlive the conversion. */
  CQMConversion(SQMReadingRules const& rules, CQMOperatorSearch const& search)
      : m_rules(rules), m_search(search) {}

  /** 0 or an error code, and then there are no items. text, which begins and ends with characters that are
   * not white space, is part of the text of the items, which are new. */
  long Run(std::string_view text, CQMItemList& items);
  /** Where the tokenizer stood when the last run ended, or the operator that would take a wrong operand. */
  std::size_t GetPosition() const { return m_position; }

 private:
  class CQMRun;

  struct SQMPending {
    CQMOpInfo const* info;
    std::uint32_t precedence;
    std::int32_t outerList;  // of an operator with a list of arguments: where the list around it begins
    SQMStretch place;
  };
  /** An open parenthesis or bracket: what belongs to the text around it. */
  struct SQMLevel {
    EQMItemClass closedBy;
    bool isList;  // belongs to an operator, whose operands are parted within
    std::size_t pendingCount;
    std::size_t itemCount;
  };

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  std::size_t m_position = 0;
  // buffers of a run
  HeldOperators m_held;
  std::vector<SQMPending> m_pending;
  std::vector<SQMLevel> m_levels;
  std::vector<std::uint32_t> m_operands;
};

}  // namespace qumel
