// Makes the operators that are no more than a row and a rule.
#include "operators/makers.h"
#include "operators/numeric_function.h"
#include "rules/arithmetic.h"
#include "rules/arrangements.h"
#include "rules/circular.h"
#include "rules/elementary.h"
#include "rules/logic.h"

namespace qumel {

CQMOperator* MakeFunction(long id, CQMArena& arena) {
  switch (id) {
#define QM_FUNCTION(token, name, id, fix, operands, precedence, associates, context, rule) \
  case id:                                                                                 \
    return arena.Make<CQMNumericFunction<rule, std::make_integer_sequence<long, operands>>>();
#include "base/operators.inc"
    default: return nullptr;
  }
}

}  // namespace qumel
