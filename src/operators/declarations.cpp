// How a name gets its type and its place.
#include "operators/declarations.h"

#include "engine/expression.h"

namespace qumel {

long DeclareName(CQMOperator const& op, CQMDatum& operand, EQMDataType type) {
  CQMDatum& name = operand.FinalTarget();
  name.SetDatumType(type);
  return op.GetExpression()->ConfirmSymbol(&name);
}

}  // namespace qumel
