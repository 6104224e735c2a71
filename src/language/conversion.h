// One conversion of infix text to items.
#pragma once

#include <cstdint>
#include <string>
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
   * not white space, is part of the text of the items. */
  long Run(std::string_view text, CQMItemList& items);
  /** Where the tokenizer stood when the last run ended, or the operator that would take a wrong operand. */
  std::size_t GetPosition() const { return m_position; }

 private:
  /** An item of the output, or the mark in front of a list of arguments, which is none. */
  struct SQMOutput {
    SQMItem item;
    CQMOpInfo const* info = nullptr;  // of operators
    std::size_t place = 0;            // of operands and operators: where it stands in the text
    bool isListMark = false;
  };
  struct SQMPending {
    CQMOpInfo const* info;
    std::uint32_t precedence;
    std::size_t place;
    SQMStretch written;
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

  long Read(CQMTokenizer& tokenizer, SQMReadToken& token) const;
  long Convert(CQMTokenizer& tokenizer);
  long Add(SQMReadToken const& token, EQMItemClass next);
  long AddOperator(SQMOperatorToken const& rows, std::size_t place, SQMStretch written, EQMItemClass next);
  long InsertMultiplication(SQMReadToken const& token, SQMReadToken const& next);
  void AddNumber(SQMToken const& token);
  void AddString(SQMToken const& token);
  void AddOperand(SQMItem const& item, SQMToken const& token);
  void AddSeparator(SQMToken const& token);
  void AddSemicolon(SQMStretch written);
  void AddComma();
  void OpenParen(EQMItemClass closedBy);
  long CloseParen(EQMItemClass closing);
  bool HasPending() const { return m_pending.size() > (m_levels.empty() ? 0 : m_levels.back().pendingCount); }
  SQMStretch PlaceOf(SQMToken const& token) const;
  void ReleasePending();
  void UnstackExpression();
  void EndText();
  std::size_t LevelBegin() const { return m_levels.empty() ? 0 : m_levels.back().itemCount; }
  void CountOperands();
  bool LeavesTooMuch() const;
  SQMOutput const* FindWrongSided();

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  SQMOperatorToken m_multiplication;  // what implied multiplication inserts
  std::string_view m_text;
  CQMItemList* m_items = nullptr;  // of the run
  std::vector<SQMOutput> m_output;
  std::string m_literal;
  std::vector<SQMPending> m_pending;
  std::vector<SQMLevel> m_levels;
  std::vector<CQMOpInfoRef> m_held;  // host's operators in the output, which another thread may delete
  std::vector<std::size_t> m_operandPlaces;  // of those that no operator took yet
  EQMItemClass m_lastClass = EQMItemClass::End;
  std::size_t m_position = 0;
};

}  // namespace qumel
