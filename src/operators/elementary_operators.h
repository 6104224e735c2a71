// Modulus, sign, rounding, roots and logarithms.
#pragma once

#include "operators/numeric_function.h"
#include "rules/elementary.h"

namespace qumel {

class CQMRootOperator final : public CQMBinaryFunction<SQMRootRule> {
 public:
  long DoOperation(long& position) override {
    if (!HasComplexOperand()) return CQMBinaryFunction<SQMRootRule>::DoOperation(position);
    StoreReal(0.0);
    return Status::NeedsComplex;
  }
};

}  // namespace qumel
