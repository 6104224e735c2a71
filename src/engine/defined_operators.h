// Operators that hosts define: by an expression, by a recursive expression, or by a callback.
#pragma once

#include <memory>

#include "engine/operator.h"
#include "engine/operator_definition.h"

namespace qumel {

/** The operator object that runs a definition; null for one that has neither a body nor a callback. */
std::unique_ptr<CQMOperator> MakeDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition);

}  // namespace qumel
