// Postfix text turned back into infix text.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "language/infix_writer.h"
#include "language/reversion_items.h"

namespace qumel {

/** Postfix text is read into fragments, one for each operand or operator with its operands; each fragment
 * decides once whether its operands need parentheses, so that the converter, reading the written text, meets
 * the same operators in the same places and lets them go in the same order. The work is linear in the text,
 * and nothing nests calls. */
class CQMFragmentReversion {
 public:
  /** Both must outlive the reversion. */
  CQMFragmentReversion(SQMReadingRules const& rules, std::span<SQMReversionItem const> items);
  void Write(CQMInfixWriter& writer);

 private:
  using Index = std::int32_t;

  using SQMOperator = SQMReversionOperator;

  enum class EQMShape : std::uint8_t {
    Operand,
    Alone,   // an operator without operands
    Before,  // the token stands before its operands
    Between,
    Behind,
    Index,   // left[right]
    Listed,  // operands in a list, the token as its last entry
  };

  /** Fragments in order, on one side of a token. */
  struct SQMPart {
    Index begin = 0, count = 0;  // in m_parts
    bool isEnclosed = false;
  };

  /** The token at one end of a fragment. */
  struct SQMEdge {
    EQMItemClass itemClass = EQMItemClass::Operator;
    SQMOperator const* op = nullptr;
    EQMItemClass inner = EQMItemClass::Separator;  // of an operator: what stands on its other side
  };

  struct SQMFragment {
    SQMPostfixItem item;  // of an operand
    SQMOperator const* op = nullptr;
    EQMShape shape = EQMShape::Operand;
    bool leavesValue = true;
    bool beginsAnew = false;     // lets go of every operator that waits, so that none may wait in front of it
    std::int32_t itemCount = 1;  // how many items of it are left untaken, as the converter counts
    SQMPart left, right;
    SQMEdge first, last;
  };

  enum class EQMPiece : std::uint8_t { Fragment, Operator, OpenParen, Mark, Comma, Blank };
  /** Text to be written, or the fragment to be written there. */
  struct SQMPiece {
    EQMPiece kind;
    char const* text = "";
    Index fragment = 0;
  };

  // Reading: from items to fragments.
  void AddOperator(SQMOperator const& op, std::int32_t count);
  void Open(SQMFragment&& fragment);
  std::vector<Index> TakeValues(std::int32_t count);
  std::vector<Index> TakeItems(std::int32_t count);
  std::vector<Index> TakeFrom(std::size_t begin);
  std::int32_t CountItems(std::vector<Index> const& fragments) const;
  bool IsLoneWord(Index fragment) const;
  Index FoldWord(Index operand, Index word);
  void FoldWords(std::vector<Index>& fragments);
  SQMPart MakePart(std::vector<Index> const& fragments);
  Index Add(SQMFragment&& fragment);

  // Layout: where parentheses must stand.
  void Arrange(SQMFragment& fragment) const;
  void SetEdges(SQMFragment& fragment) const;
  bool Suits(SQMFragment const& fragment) const;
  std::span<Index const> FragmentsOf(SQMPart const& part) const;
  SQMFragment const* BareFragment(SQMPart const& part) const;
  bool MayStandLeft(SQMPart const& part, SQMOperator const& by) const;
  bool MayStandRight(SQMPart const& part, SQMOperator const& by) const;
  SQMEdge FirstOf(SQMPart const& part) const;
  SQMEdge LastOf(SQMPart const& part) const;
  EQMItemClass InsideBrackets(SQMPart const& part) const;
  bool NeedsLeadingComma(SQMPart const& part) const;
  bool NeedsTrailingComma(SQMPart const& part) const;
  bool Multiplies(SQMEdge const& last, SQMEdge const& first) const;
  bool IsChosen(SQMEdge const& token, EQMItemClass previous, EQMItemClass next) const;
  bool NeedsComma(Index left, Index right, bool inList) const;

  // Writing.
  void PushFragment(SQMFragment const& fragment);
  void PushIndexes(SQMPart const& part);
  void PushPart(SQMPart const& part);
  void PushList(std::span<Index const> fragments, bool inList);

  SQMReadingRules const& m_rules;
  std::vector<SQMFragment> m_fragments;
  std::vector<Index> m_parts;
  std::vector<Index> m_open;        // fragments that no operator took yet
  std::ptrdiff_t m_openValues = 0;  // those of them that leave a value
  SQMPart m_statement;
  std::vector<SQMPiece> m_pieces;  // still to be written, the next one last
};

}  // namespace qumel
