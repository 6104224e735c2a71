// The list of families.
#include "operators/operator_tables.h"

namespace qumel {

std::span<MakerTable const> ComputingOperatorTables() {
  static MakerTable const tables[] = {
      ArithmeticOperators(),
      ConstantOperators(),
      ModeOperators(),
  };
  return tables;
}

}  // namespace qumel
