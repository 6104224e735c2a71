// How a name gets its type and its place.
#include "operators/declarations.h"

#include "engine/expression.h"

namespace qumel {

long DeclareName(CQMOperator const& op, CQMDatum& operand, EQMDataType type) {
  CQMExpression* const expression = op.GetExpression();
  if (expression == nullptr) return Error::NotDefined;
  CQMDatum& name = operand.FinalTarget();
  name.SetDatumType(type);
  return expression->ConfirmSymbol(&name);
}

}  // namespace qumel
