// The items of a statement turned back into infix text.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "language/infix_writer.h"
#include "language/reversion_items.h"

namespace qumel {

/** Items are read into fragments, one for each operand or operator with its operands; each fragment
 * decides once whether its operands need parentheses, so that the converter, reading the written text, meets
 * the same operators in the same places and lets them go in the same order. The work is linear in the text,
 * and nothing nests calls. */
class CQMFragmentReversion {
 public:
  /** How items that belong to no operand of an operator are written where they stand among its operands. */
  enum class EQMStyle : std::uint8_t {
    Natural,  // as people write them
    Flat,     // each by itself: an argument list may begin at any of them
  };

  /** rules and items must outlive the reversion. */
  CQMFragmentReversion(SQMReadingRules const& rules, std::span<SQMReversionItem const> items, EQMStyle style);
  void Write(CQMInfixWriter& writer);

 private:
  using Index = std::int32_t;
  static constexpr Index kNone = -1;

  using SQMOperator = SQMReversionOperator;

  enum class EQMShape : std::uint8_t {
    Operand,
    Alone,   // without operands, or with such as stand in front anyway
    Before,  // the token stands before its operands
    Between,
    Behind,
    Index,   // left[right]
    Sign,    // the token stands directly before an operand, and nothing behind that lets it go
    Within,  // the token stands where an operator of its operand begins: see SQMFragment::wedge
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

  /** What the converter counts as operands of lists: each item leaves one, and takes some of those in front
   * of it, whatever the compiler makes of them. */
  struct SQMItemCount {
    std::int64_t left = 0;    // that nothing has taken
    std::int64_t wanted = 0;  // more than there were, to be taken from what stands in front

    /** Of both, this one in front. */
    SQMItemCount Before(SQMItemCount const& next) const;
    /** With an operator behind that takes some and leaves one. */
    SQMItemCount TakenBy(std::int32_t count) const;
  };

  struct SQMFragment {
    SQMItem const* item = nullptr;  // of an operand
    SQMOperator const* op = nullptr;
    EQMShape shape = EQMShape::Operand;
    bool beginsAnew = false;   // lets go of every operator that waits, so that none may wait in front of it
    bool isOpenEnded = false;  // nothing is written for the operand that it lacks on the right
    SQMItemCount items;
    std::int32_t valueCount = 0;  // what it leaves for operators to take
    /** Where the values that it was computed from began among the open fragments; not behind its own place.
     */
    std::size_t reach = std::numeric_limits<std::size_t>::max();
    SQMPart left, right;
    SQMPart behind;  // of a sign: what follows its operand in parentheses
    /** A token that cannot follow its left operand, as an operand and a word may not meet where that means
     * multiplication, stands behind a postfix operator that waits longer, the wedge. */
    SQMOperator const* wedge = nullptr;
    Index unplaced = kNone;  // itself, or the fragment on its left edge, whose token lacks a wedge
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
  void TakeList(SQMFragment& fragment, std::int32_t count);
  void TakeOperands(SQMFragment& fragment, std::int32_t count);
  void TakeLeft(std::size_t begin, std::int32_t values, SQMFragment& fragment);
  bool TakeBehindSign(SQMFragment& fragment, std::int32_t count);
  std::size_t SplitOperands(SQMFragment const& fragment, std::int32_t count, std::size_t& begin) const;
  std::size_t BeginOfValues(std::int32_t count) const;
  std::size_t BeginOfItems(std::int32_t count) const;
  static std::int32_t CountValuesBehind(SQMOperator const& op, std::int32_t count, std::int32_t values);
  void Open(SQMFragment&& fragment);
  std::vector<Index> TakeFrom(std::size_t begin, SQMFragment& fragment);
  std::int32_t TakeValues(std::size_t begin);
  bool IsLoneWord(Index fragment) const;
  Index FoldWord(Index operand, Index word);
  void FoldWords(std::vector<Index>& fragments);
  SQMPart MakePart(std::span<Index const> fragments);
  Index Add(SQMFragment&& fragment);

  // Layout: where parentheses must stand.
  void Arrange(SQMFragment& fragment);
  bool ArrangeParts(SQMFragment& fragment) const;
  bool PlaceWithin(SQMFragment& fragment);
  void SetEdges(SQMFragment& fragment) const;
  bool Suits(SQMFragment const& fragment) const;
  bool NeedsOperand(SQMOperator const& op) const;
  std::size_t CountBareBehindSign(SQMOperator const& sign, std::span<Index const> fragments) const;
  bool MayFollow(SQMFragment const& previous, SQMFragment const& next, SQMOperator const& sign) const;
  static bool MayBeOpenEnded(SQMFragment const& fragment);
  std::span<Index const> FragmentsOf(SQMPart const& part) const;
  SQMFragment const* BareFragment(SQMPart const& part) const;
  SQMFragment const* NextOnLeft(SQMFragment const& fragment) const;
  SQMFragment const* NextOnRight(SQMFragment const& fragment) const;
  bool MayStandLeft(SQMFragment const& fragment, SQMOperator const& by) const;
  bool MayStandRight(SQMFragment const& fragment, SQMOperator const& by) const;
  SQMEdge FirstOf(SQMPart const& part) const;
  SQMEdge LastOf(SQMPart const& part) const;
  static EQMItemClass ClassBefore(SQMEdge const& token);
  EQMItemClass InsideBrackets(SQMPart const& part) const;
  bool NeedsLeadingComma(SQMPart const& part) const;
  bool NeedsTrailingComma(SQMPart const& part) const;
  bool Multiplies(SQMEdge const& last, SQMEdge const& first) const;
  bool IsChosen(SQMEdge const& token, EQMItemClass previous, EQMItemClass next) const;
  bool NeedsComma(Index left, Index right, bool inList) const;

  // Writing.
  void PushFragment(SQMFragment const& fragment);
  void PushWedge(SQMFragment const& fragment);
  void PushIndexes(SQMPart const& part);
  void PushPart(SQMPart const& part);
  void PushList(std::span<Index const> fragments, bool inList);

  SQMReadingRules const& m_rules;
  EQMStyle const m_style;
  std::vector<SQMFragment> m_fragments;
  std::vector<Index> m_parts;
  std::vector<Index> m_open;          // fragments that are part of no other yet
  std::vector<std::size_t> m_values;  // where in m_open those stand that no operator took yet
  SQMPart m_statement;
  std::vector<SQMPiece> m_pieces;  // still to be written, the next one last
};

}  // namespace qumel
