// The list of families of this floor.
#include "engine/structural_tables.h"

namespace qumel {

std::span<MakerTable const> StructuralOperatorTables() {
  static MakerTable const tables[] = {
      AssignmentOperators(),  CompoundAssignmentOperators(), ExchangeOperators(),
      DeclarationOperators(), ArrayIndexOperators(),         ControlFlowOperators(),
  };
  return tables;
}

}  // namespace qumel
