// The makers of operators, expanded from the rows of base/operators.inc.
#pragma once

#include "engine/operator.h"

namespace qumel {

/** A new operator of a row that names a rule; null for other ids. MakeOperator (engine/operator_factory.h)
 * makes them all. */
CQMOperator* MakeFunction(long id, CQMArena& arena);

}  // namespace qumel
