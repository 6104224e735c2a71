// The standard dialect: which operators the language has, and their loading into operator lists.
#pragma once

#include <cstdint>

namespace qumel {

class CQMOperatorList;

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

/** Standard operators and keywords, for the list that all contexts share; freezes it. */
void LoadStandardDialect(CQMOperatorList& shared, bool impliedMultiplication);
/** What each context has in a list of its own; freezes it. */
void LoadLocalDialect(CQMOperatorList& own, bool impliedMultiplication);

}  // namespace qumel
