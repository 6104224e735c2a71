// One conversion of infix text to items.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/items.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"
#include "language/tokenizer.h"

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
  struct SQMPending {
    CQMOpInfo const* info;
    std::uint32_t precedence;
    SQMStretch place;
  };
  /** How much there is of the output and of what belongs to it. */
  struct SQMExtent {
    std::size_t items = 0, rows = 0, lists = 0;
  };
  /** An open parenthesis or bracket: what belongs to the text around it. */
  struct SQMLevel {
    EQMItemClass closedBy;
    bool isList;  // belongs to an operator, whose operands are parted within
    std::size_t pendingCount;
    SQMExtent output;
  };
  struct SQMReadToken : SQMToken {
    SQMOperatorToken rows;  // of names and signs
  };

  long Read(CQMTokenizer& tokenizer, SQMReadToken& token) const;
  long Convert(CQMTokenizer& tokenizer);
  long Add(SQMReadToken const& token, EQMItemClass next);
  long AddOperator(SQMOperatorToken const& rows, SQMStretch place, EQMItemClass next);
  long InsertMultiplication(SQMReadToken const& next);
  SQMItem& AddOperand(EQMItem kind, SQMToken const& token);
  void AddNumber(SQMToken const& token);
  void AddString(SQMToken const& token);
  void AddSeparator(SQMToken const& token);
  void AddComma();
  void OpenParen(EQMItemClass closedBy);
  long CloseParen(EQMItemClass closing);
  std::size_t PendingBegin() const { return m_levels.empty() ? 0 : m_levels.back().pendingCount; }
  SQMExtent OutputBegin() const { return m_levels.empty() ? SQMExtent() : m_levels.back().output; }
  void ReleasePending();
  void UnstackExpression();
  void EndText(SQMToken const& end);
  long Settle(std::string_view text);

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  CQMItemList* m_items = nullptr;        // the output
  std::vector<CQMOpInfo const*> m_rows;  // of the operators of the output
  std::vector<std::size_t> m_lists;      // of lists of arguments: how many items stand in front of each
  std::vector<CQMOpInfoRef> m_held;      // host's operators in the output, which another thread may delete
  std::vector<SQMPending> m_pending;
  std::vector<SQMLevel> m_levels;
  std::vector<std::int32_t> m_openLists;  // while operands are counted: the same for those not taken yet
  std::vector<std::uint64_t> m_untaken;   // where the operands stand that no operator took yet
  EQMItemClass m_lastClass = EQMItemClass::End;
  std::size_t m_position = 0;
};

}  // namespace qumel
