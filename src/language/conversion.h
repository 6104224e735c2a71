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
  struct SQMReadToken : SQMToken {
    SQMOperatorToken rows;  // of names and signs
  };

  long Convert(CQMTokenizer& tokenizer);
  long Read(CQMTokenizer& tokenizer, SQMReadToken& token);
  long Add(SQMReadToken const& token, EQMItemClass next);
  long AddOperator(SQMOperatorToken const& rows, SQMStretch place, EQMItemClass next);
  long InsertMultiplication(SQMReadToken const& next);
  SQMItem& AddOperand(EQMItem kind, SQMToken const& token);
  void AddNumber(SQMToken const& token);
  void AddString(SQMToken const& token);
  void AddSeparator(SQMToken const& token);
  void AddComma();
  void AddEnd(SQMToken const& token);
  void OpenParen(EQMItemClass closedBy);
  long CloseParen(EQMItemClass closing);
  std::size_t PendingBegin() const { return m_levels.empty() ? 0 : m_levels.back().pendingCount; }
  void ReleasePending();
  void UnstackExpression();
  std::int32_t CountOperands(SQMPending const& pending);
  void TakeOperands(CQMOpInfo const& info, SQMItem const& item);
  long EndText(SQMToken const& end);
  bool LeavesTooMuch(std::size_t begin) const;

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  CQMItemList* m_items = nullptr;  // the output
  HeldOperators m_held;
  std::vector<SQMPending> m_pending;
  std::vector<SQMLevel> m_levels;
  EQMItemClass m_lastClass = EQMItemClass::End;
  // Items are counted as the converter has them taken: each leaves one, and takes some of those in front of
  // it.
  std::int32_t m_count = 0;           // that no operator took yet
  std::int32_t m_statementBegin = 0;  // as many belong to earlier statements
  std::int32_t m_listBegin = 0;       // as many stand in front of the innermost list of arguments
  std::int64_t m_values = 0;          // that the statement leaves
  bool m_leavesTooMuch = false;       // of the statements so far
  // Operands are taken as the compiler takes them.
  std::vector<std::uint32_t> m_operands;  // where those begin that no operator took yet, in half characters
  bool m_isWrongSided = false;            // some operator would take an operand from the wrong side of it
  std::uint32_t m_wrongPlace = 0;         // the first one
  std::size_t m_position = 0;
};

}  // namespace qumel
