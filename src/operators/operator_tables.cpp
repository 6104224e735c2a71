// The list of families.
#include "operators/operator_tables.h"

namespace qumel {

std::span<MakerTable const> ComputingOperatorTables() {
  static MakerTable const tables[] = {
      ArithmeticOperators(), BitwiseOperators(),  LogicalOperators(), ElementaryOperators(),
      ComplexOperators(),    ConstantOperators(), ModeOperators(),    TrigonometricOperators(),
      StatisticsOperators(), ChanceOperators(),   StringOperators(),
  };
  return tables;
}

}  // namespace qumel
