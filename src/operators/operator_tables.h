// The tables of all computing operators, one a family, as the factory takes them.
#pragma once

#include <span>

#include "engine/operator_factory.h"

namespace qumel {

std::span<MakerTable const> ComputingOperatorTables();

// One function a family, defined beside its operators; a new family adds a line here and one in the list
// behind.
MakerTable ArithmeticOperators();
MakerTable BitwiseOperators();
MakerTable LogicalOperators();
MakerTable ElementaryOperators();
MakerTable ComplexOperators();
MakerTable ConstantOperators();
MakerTable ModeOperators();
MakerTable TrigonometricOperators();
MakerTable StatisticsOperators();
MakerTable ChanceOperators();
MakerTable StringOperators();

}  // namespace qumel
