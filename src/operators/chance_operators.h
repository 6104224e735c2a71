// Random numbers, dice, and the numbers of combinations and permutations.
#pragma once

#include <cmath>

#include "base/conversions.h"
#include "base/mersenne_twister.h"
#include "engine/operator_context.h"
#include "operators/numeric_function.h"
#include "rules/arrangements.h"

namespace qumel {

/** Operators that draw from the generator of their context; without a context the result is 0. Never folded:
 * each run draws anew. */
template <long needed, long most = needed>
class CQMDrawOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return needed; }
  long GetOperandsMaximum() override { return most; }
  long DoOperation(long& position) override {
    double value = 0.0;
    long code = Error::None;
    if (CQMOperatorContext* const context = GetContext(); context != nullptr) {
      code = Draw(context->GetRandomGenerator(), value);
    }
    StoreReal(value);
    return code == Error::None ? Advance(position) : code;
  }

 protected:
  virtual long Draw(CQMRandomGenerator& generator, double& value) = 0;
};

class CQMRandomOperator final : public CQMDrawOperator<1> {
  long Draw(CQMRandomGenerator& generator, double& value) override {
    value = generator.Next() * Real(0);
    return Error::None;
  }
};

class CQMRandomRangeOperator final : public CQMDrawOperator<2> {
  long Draw(CQMRandomGenerator& generator, double& value) override {
    value = std::floor(generator.Next() * (Real(1) - Real(0) + 1.0)) + Real(0);
    return Error::None;
  }
};

class CQMRandomSeedOperator final : public CQMDrawOperator<1> {
  long Draw(CQMRandomGenerator& generator, double& value) override {
    generator.SeedFromDouble(Real(0));
    value = Real(0);
    return Error::None;
  }
};

/** A die of so many sides, or one whose faces are an array: their count, then the faces. */
class CQMDiceRollOperator final : public CQMDrawOperator<1, 2> {
  long Draw(CQMRandomGenerator& generator, double& value) override {
    std::int32_t const dice = GetOperandCount() > 1 ? TruncateToInt32(Real(1)) : 1;
    CQMDatum& die = Operand(0);
    bool const hasFaces = die.GetDimensionCount() == 1 && !die.IsProxy();
    double const sides = hasFaces ? std::trunc(*static_cast<double*>(die.GetValue(0, false, 0))) : Real(0);
    bool const isOutside =
        hasFaces && !(sides >= 1.0 && sides <= static_cast<double>(die.GetArraySize() - 1));
    if (dice > 0 && isOutside) return Error::IndexOutOfBounds;
    for (std::int32_t i = 0; i < dice; ++i) {
      double const side = Throw(generator, sides);
      value += hasFaces ? *static_cast<double*>(die.GetValue(0, false, static_cast<long>(side))) : side;
    }
    return Error::None;
  }

  /** From 1 to sides, also when the generator gives exactly 1. */
  static double Throw(CQMRandomGenerator& generator, double sides) {
    double const side = std::floor(generator.Next() * sides) + 1.0;
    double const last = std::ceil(sides);
    return sides > 0.0 && side > last ? last : side;
  }
};

}  // namespace qumel
