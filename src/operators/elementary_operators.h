// Modulus, sign, rounding, roots and logarithms.
#pragma once

#include "operators/numeric_function.h"
#include "rules/elementary.h"

namespace qumel {

class CQMRootOperator final : public CQMBinaryFunction<SQMRootRule> {
 public:
  SQMWays GetWays() const override {
    return {kWays<&Do>.inReal, CQMBinaryFunction<SQMRootRule>::GetWays().inComplex};
  }

 private:
  static long Do(CQMCall& call) {
    if (!call.HasComplexOperand()) return InReal(call);
    call.StoreReal(0.0);
    return Status::NeedsComplex;
  }
};

}  // namespace qumel
