// Operator ids: the contract between the operator tables, postfix text, the factory and the resolvers.
#pragma once

namespace qumel {

namespace OpId {
enum EQMOperatorId : long {
#define QM_FUNCTION(token, name, id, ...) name = id,
#define QM_OPERATOR QM_FUNCTION
#define QM_LOCAL_OPERATOR QM_FUNCTION
#define QM_SUBSTITUTE(name, id, ...) name = id,
#include "base/operators.inc"
  LastStandard = 9999,
  FirstExternal = 10000,  // operators defined by hosts
};
}  // namespace OpId

/** Mode words: they stand in a statement without a value of their own. */
constexpr bool IsModeOperator(long id) { return id >= 4000 && id <= 4099; }
constexpr bool IsControlWord(long id) { return id >= 5000 && id <= 5099; }
/** Words of control flow, scope and declaration. */
constexpr bool IsKeywordOperator(long id) { return id >= 5000 && id <= 5999; }
/** Scope, declaration, control and mode words, the range that implied multiplication and hierarchy leave
 * alone. */
constexpr bool IsWordOperator(long id) { return id >= 4000 && id <= 5999; }

/** Whether a compiled operator leaves a value for the operators after it. "always" feeds its "do"; the type
 * words hand on the name that they declare. */
constexpr bool LeavesNothing(long id) {
  return IsModeOperator(id) || (IsKeywordOperator(id) && id != OpId::Always);
}
constexpr bool IsTypeWord(long id) { return id >= OpId::NumberWord && id <= OpId::BooleanWord; }

}  // namespace qumel
