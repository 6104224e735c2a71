// Infix text for postfix items whose operators do not simply follow their operands.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "language/infix_writer.h"
#include "language/reversion_items.h"

namespace qumel {

/** A comma lets every operator go and leaves no trace in postfix text, so "a, b, ()+()" converts to the same
 * items as "a+b": each item is written by itself, operators between empty parentheses. Only two kinds enclose
 * others: operators of any number of operands enclose what they count, and a sign that must stand next to an
 * operand stands in front of one. */
class CQMItemwiseReversion {
 public:
  /** Both must outlive the reversion. */
  CQMItemwiseReversion(SQMReadingRules const& rules, std::span<SQMReversionItem const> items);
  void Write(CQMInfixWriter& writer) const;

 private:
  using Index = std::int32_t;
  static constexpr Index kNone = -1;

  /** What an item leaves for operators to take, with the item below it on the stack. An argument list that
   * counts from it on begins at begin, where the stack was stackThere. */
  struct SQMEntry {
    Index begin, below, stackThere;
  };
  /** How an item is written. */
  enum class EQMForm : std::uint8_t {
    Alone,
    List,            // its token and "(" stand at its beginning
    Sign,            // its token stands in front of an operand
    SignBeforeList,  // and what lies between the operand and the sign is enclosed behind the operand
    SignBeforeWord,  // and the last operator of that encloses the rest
    Word,            // that operator
  };
  struct SQMPlace {
    EQMForm form = EQMForm::Alone;
    Index firstOpening = kNone;  // the outermost item that begins here
    Index nextOpening = kNone;   // the next one that begins where this one does
  };

  void Place(Index at);
  void PlaceList(Index at);
  void PlaceSign(Index at);
  EQMForm FormOfSign(Index at, Index operand) const;
  void Open(Index at, Index begin, EQMForm form);
  Index Below(Index entry, std::int32_t count) const;
  bool Fits(SQMReversionItem const& item, EQMItemClass previous, EQMItemClass next) const;
  bool NeedsOperand(SQMReversionItem const& item) const;
  void Separate(SQMReversionItem const& item, EQMItemClass previous, CQMInfixWriter& writer) const;
  EQMItemClass WriteOpening(Index at, CQMInfixWriter& writer) const;
  EQMItemClass WriteBehindOperand(Index sign, CQMInfixWriter& writer) const;
  void WriteAlone(SQMReversionItem const& item, CQMInfixWriter& writer) const;
  static void WriteNothing(CQMInfixWriter& writer);
  static bool TakesLeft(SQMReversionItem const& item);

  SQMReadingRules const& m_rules;
  std::span<SQMReversionItem const> m_items;
  std::vector<SQMPlace> m_places;   // of each item
  std::vector<SQMEntry> m_entries;  // of each item
  Index m_top = kNone;
};

}  // namespace qumel
