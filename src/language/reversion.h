// Postfix text turned back into infix text.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/postfix_reader.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"

namespace qumel {

/** What counts as an operand when operators look for theirs. Where all have theirs the first reading is
 * right. */
enum class EQMReversionModel {
  Values,  // what leaves a value when it runs: words of scope, mode and control lie between operands
  Items,   // every item, as the converter counts argument lists
};

/** Postfix text is read into fragments, one for each operand or operator with its operands; each fragment
 * decides once whether its operands need parentheses, so that the converter, reading the written text, meets
 * the same operators in the same places and lets them go in the same order. The work is linear in the text,
 * and nothing nests calls. */
class CQMReversion {
 public:
  /** Both must outlive the reversion. */
  CQMReversion(SQMReadingRules const& rules, CQMOperatorSearch const& search, EQMReversionModel model)
      : m_rules(rules), m_search(search), m_model(model) {}

  /** UnknownOperator, UnknownToken, or 0. postfix must outlive the reversion. */
  long Read(std::string_view postfix);
  /** The infix text of what was read. */
  std::string Write(char quoteMark);

 private:
  using Index = std::int32_t;
  static constexpr Index kNone = -1;

  struct SQMOperator {
    CQMOpInfoRef info;
    std::uint32_t precedence = 0;
    SQMOperatorToken rows;  // all that share its token
  };

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
    bool isRow = false;  // an operand and words behind it, side by side without parentheses
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
    bool beginsAnew = false;  // lets go of every operator that waits, so that none may wait in front of it
    std::int32_t weight = 1;  // how many items of it are left untaken, as the converter counts
    SQMPart left, right;
    SQMEdge first, last;
  };

  /** Text to be written, or the fragment to be written there. */
  struct SQMPiece {
    Index fragment = kNone;
    char const* text = "";
    bool joins = false;  // a blank keeps it apart where one is needed
  };

  // Reading: from items to fragments.
  long ReadItem(SQMPostfixItem const& item);
  long ReadOperator(std::string_view text);
  SQMOperator const* FindOperator(long id);
  void EndStatement();
  std::vector<Index> TakeOperands(std::int32_t count);
  void TakeSides(std::int32_t count, std::vector<Index>& left, std::vector<Index>& right);
  std::vector<Index> TakeWeight(std::int32_t weight);
  std::vector<Index> TakeFrom(std::size_t begin);
  std::int32_t WeightOf(std::vector<Index> const& fragments) const;
  void SplitWord(std::vector<Index>& operands);
  bool IsLoneWord(Index fragment) const;
  Index FoldWord(Index operand, Index word);
  void FoldWords(std::vector<Index>& fragments, bool all);
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
  bool MayStandInRow(SQMPart const& part, SQMOperator const& by) const;
  SQMEdge FirstOf(SQMPart const& part) const;
  SQMEdge LastOf(SQMPart const& part) const;
  EQMItemClass InsideBrackets(SQMPart const& part) const;
  bool NeedsLeadingComma(SQMPart const& part) const;
  bool NeedsTrailingComma(SQMPart const& part) const;
  bool Multiplies(SQMEdge const& last, SQMEdge const& first) const;
  bool IsChosen(SQMEdge const& token, EQMItemClass previous, EQMItemClass next) const;
  char const* JointOf(Index left, Index right, bool inList) const;

  // Writing.
  void WritePieces(char quoteMark, std::string& out);
  void PushFragment(SQMFragment const& fragment);
  void PushPart(SQMPart const& part);
  void PushList(std::span<Index const> fragments, bool inList);
  void WriteOperand(SQMPostfixItem const& item, char quoteMark, std::string& out);
  std::string NumberText(std::string_view number) const;
  void Join(std::string_view text, EQMItemClass itemClass, std::string& out);

  SQMReadingRules const& m_rules;
  CQMOperatorSearch const& m_search;
  EQMReversionModel m_model;
  std::unordered_map<long, SQMOperator> m_operators;
  std::vector<SQMFragment> m_fragments;
  std::vector<Index> m_parts;
  std::vector<Index> m_open;  // fragments of this statement that no operator took yet
  std::vector<SQMPart> m_statements;
  bool m_isEnded = false;                          // the last statement has its end
  std::vector<SQMPiece> m_pieces;                  // still to be written, the next one last
  EQMItemClass m_lastClass = EQMItemClass::Start;  // of the token written last
};

}  // namespace qumel
