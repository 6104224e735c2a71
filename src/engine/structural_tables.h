// The families of operators of this floor, each defined beside its classes.
#pragma once

#include "engine/operator_factory.h"

namespace qumel {

MakerTable AssignmentOperators();
MakerTable CompoundAssignmentOperators();
MakerTable ExchangeOperators();
MakerTable DeclarationOperators();
MakerTable ArrayIndexOperators();
MakerTable ControlFlowOperators();

}  // namespace qumel
