// The one operator on bits that is more than its rule.
#pragma once

#include "operators/numeric_function.h"
#include "rules/logic.h"

namespace qumel {

/** Does not ask for complex evaluation, unlike the rest of its family; on purpose, as hosts rely on real
 * results. */
class CQMBitwiseExOrOperator final : public CQMBinaryFunction<SQMBitwiseExOrRule> {
 public:
  long VerifyOperands() override {
    long const code = CQMOperator::VerifyOperands();
    return code == Error::ComplexOperandFound ? static_cast<long>(Error::None) : code;
  }
};

}  // namespace qumel
