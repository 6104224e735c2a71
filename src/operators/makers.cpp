// Makes the operators that have a class of their own.
#include "operators/makers.h"

#include <type_traits>

#include "engine/operator_factory.h"
#include "operators/arithmetic_operators.h"
#include "operators/array_index.h"
#include "operators/assignment.h"
#include "operators/bitwise_operators.h"
#include "operators/chance_operators.h"
#include "operators/complex_operators.h"
#include "operators/compound_assignment.h"
#include "operators/constant_operators.h"
#include "operators/control_flow.h"
#include "operators/declaration_words.h"
#include "operators/elementary_operators.h"
#include "operators/exchange.h"
#include "operators/logical_operators.h"
#include "operators/mode_operators.h"
#include "operators/statistics_operators.h"
#include "operators/string_operators.h"

namespace qumel {

namespace {

template <class Operator>
CQMOperator* Make(CQMArena& arena) {
  if constexpr (std::is_void_v<Operator>) {
    return nullptr;  // the row of an operator that converts and has never run
  } else {
    return arena.Make<Operator>();
  }
}

}  // namespace

CQMOperator* MakeOperator(long id, CQMArena& arena) {
  switch (id) {
// clang-format off
#define QM_OPERATOR(token, name, id, fix, operands, precedence, associates, context, ...) \
  case id: return Make<__VA_ARGS__>(arena);
#define QM_LOCAL_OPERATOR QM_OPERATOR
#define QM_SUBSTITUTE(name, id, ...) case id: return Make<__VA_ARGS__>(arena);
#include "base/operators.inc"
    // clang-format on
    default: return MakeFunction(id, arena);
  }
}

}  // namespace qumel
