// Statistics over a list of operands or over a one-dimensional array. Real parts count; a complex result has
// none other.
#pragma once

#include <array>
#include <vector>

#include "engine/call.h"
#include "engine/operator.h"
#include "rules/statistics.h"

namespace qumel {

/** One statistic; of no values it is 0. */
template <double (*statistic)(Values)>
class CQMStatisticOperator final : public CQMOperator {
 public:
  static constexpr long kMostOperands = 32;

  long GetOperandsNeeded() override { return 1; }
  long GetOperandsMaximum() override { return kMostOperands; }
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    CQMDatum& first = call.Operand(0);
    // an element reached by an index is a proxy of its array, and a scalar
    bool const isArray = first.GetDimensionCount() == 1 && !first.IsProxy();
    if (isArray && first.GetType() == EQMDataType::Number && first.GetValue() != nullptr) {
      auto const size = static_cast<std::size_t>(first.GetArraySize());
      return Store(call, {reinterpret_cast<double const*>(first.GetValue()), size});
    }
    if (isArray) {
      std::vector<double> values;
      for (long i = 0; i < first.GetArraySize(); ++i)
        values.push_back(*static_cast<double*>(first.GetValue(0, false, i)));
      return Store(call, values);
    }
    std::array<double, kMostOperands> values;
    long const count = call.OperandCount();
    for (long i = 0; i < count; ++i) values[static_cast<std::size_t>(i)] = call.Real(i);
    return Store(call, {values.data(), static_cast<std::size_t>(count)});
  }
  static long Store(CQMCall const& call, Values values) {
    call.StoreReal(values.empty() ? 0.0 : statistic(values));
    return Status::Done;
  }
};

}  // namespace qumel
