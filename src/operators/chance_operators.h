// Random numbers, dice, and the numbers of combinations and permutations.
#pragma once

#include <cmath>

#include "base/conversions.h"
#include "base/mersenne_twister.h"
#include "engine/call.h"
#include "engine/operator_context.h"
#include "operators/numeric_function.h"
#include "rules/arrangements.h"

namespace qumel {

/** Draws a number for an operator. Gives 0 or an error code. */
using DrawFunction = long (*)(CQMCall const& call, CQMRandomGenerator& generator, double& value);

/** Operators that draw from the generator of their context. Never folded: each run draws anew. */
template <DrawFunction draw, long needed, long most = needed>
class CQMDrawOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return needed; }
  long GetOperandsMaximum() override { return most; }
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    double value = 0.0;
    long const code = draw(call, call.Context().GetRandomGenerator(), value);
    call.StoreReal(value);
    return code;
  }
};

inline long DrawRandom(CQMCall const& call, CQMRandomGenerator& generator, double& value) {
  value = generator.Next() * call.Real(0);
  return Error::None;
}
using CQMRandomOperator = CQMDrawOperator<&DrawRandom, 1>;

inline long DrawFromRange(CQMCall const& call, CQMRandomGenerator& generator, double& value) {
  value = std::floor(generator.Next() * (call.Real(1) - call.Real(0) + 1.0)) + call.Real(0);
  return Error::None;
}
using CQMRandomRangeOperator = CQMDrawOperator<&DrawFromRange, 2>;

inline long Seed(CQMCall const& call, CQMRandomGenerator& generator, double& value) {
  generator.SeedFromDouble(call.Real(0));
  value = call.Real(0);
  return Error::None;
}
using CQMRandomSeedOperator = CQMDrawOperator<&Seed, 1>;

/** From 1 to sides, also when the generator gives exactly 1. */
inline double ThrowDie(CQMRandomGenerator& generator, double sides) {
  double const side = std::floor(generator.Next() * sides) + 1.0;
  double const last = std::ceil(sides);
  return sides > 0.0 && side > last ? last : side;
}

/** A die of so many sides, or one whose faces are an array: their count, then the faces. */
inline long RollDice(CQMCall const& call, CQMRandomGenerator& generator, double& value) {
  std::int32_t const dice = call.OperandCount() > 1 ? TruncateToInt32(call.Real(1)) : 1;
  CQMDatum& die = call.Operand(0);
  bool const hasFaces = die.GetDimensionCount() == 1 && !die.IsProxy();
  double const sides = hasFaces ? std::trunc(*static_cast<double*>(die.GetValue(0, false, 0))) : call.Real(0);
  bool const isOutside = hasFaces && !(sides >= 1.0 && sides <= static_cast<double>(die.GetArraySize() - 1));
  if (dice > 0 && isOutside) return Error::IndexOutOfBounds;
  for (std::int32_t i = 0; i < dice; ++i) {
    double const side = ThrowDie(generator, sides);
    value += hasFaces ? *static_cast<double*>(die.GetValue(0, false, static_cast<long>(side))) : side;
  }
  return Error::None;
}
using CQMDiceRollOperator = CQMDrawOperator<&RollDice, 1, 2>;

}  // namespace qumel
