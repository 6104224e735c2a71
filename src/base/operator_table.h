// The rows of base/operators.inc as data, and the words that they are written in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "base/operator_ids.h"

namespace qumel {

/** Where an operator stands among its operands. */
enum class EQMFix : std::uint32_t {
  None = 0,
  Prefix = 1,
  Infix = 2,
  Postfix = 3,
  Nofix = 4,
  StatementKeyword = 5,
  BlockKeyword = 6,
  ClosingBlock = 7,  // no standard entries of this and the next two
  MarkedPrefix = 8,  // written with "&" into postfix text
  MarkedPostfix = 9,
};

/** Bits of the left and right context masks. */
namespace ContextBit {
constexpr std::uint8_t kSeparator = 1, kOperand = 2, kOpen = 4, kClose = 8, kPrefix = 16, kInfix = 32,
                       kPostfix = 64, kNofix = 128, kAnyOperator = 240, kAnywhere = 255;
}

/** Binding strength; larger binds tighter. */
namespace Precedence {
enum EQMPrecedence : std::uint32_t {
  Flat = 1,  // of every operator when there is no hierarchy
  ComplexPair = 600,
  Assignment = 601,
  LogicalOr = 602,
  LogicalExclusiveOr = 603,
  LogicalAnd = 604,
  Implied = 605,
  BitwiseOr = 606,
  BitwiseExclusiveOr = 607,
  BitwiseAnd = 608,
  Equality = 609,
  Relation = 610,
  Additive = 611,
  Substring = 612,
  Multiplicative = 613,
  Power = 614,
  LooseSign = 615,
  ComplexPart = 618,
  Splice = 619,
  Trigonometric = 620,
  Function = 621,
  Selection = 622,
  TightSign = 625,
  Increment = 626,
  Access = 627,
  Constant = 628,
  LastResult = 630,
  ModeWord = 1204,
  ControlWord = 1205,
  ScopeWord = 1206,
  Jump = 1226,
};
}  // namespace Precedence

enum EQMAssociation : bool { Left, Right };

struct SQMOperandCount {
  std::int32_t least, most;
  constexpr SQMOperandCount(std::int32_t count) : least(count), most(count) {}
  constexpr SQMOperandCount(std::int32_t fewest, std::int32_t greatest) : least(fewest), most(greatest) {}
};

/** Masks and enclosing that differ from what the fix type gives. */
struct SQMNeighbours {
  std::uint8_t left, right;
  bool encloses = true;  // as the letter rule has it; false: never
};

struct SQMOpRow {
  char const* token;
  long id;
  EQMFix fix;
  SQMOperandCount operands;
  Precedence::EQMPrecedence precedence;
  EQMAssociation associates;
  std::optional<SQMNeighbours> context;  // none: what the fix type gives
};

/** Of the tokens of operators, in characters. */
constexpr std::size_t kLongestToken = 64;

/** The operators of all contexts, and those that each context has in a list of its own. */
std::span<SQMOpRow const> StandardOperators();
std::span<SQMOpRow const> LocalOperators();

}  // namespace qumel
