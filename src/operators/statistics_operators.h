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
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!maker.FindNumberResult(step.result)) return false;
    switch (GetOperandCount()) {
      case 2: return MakeStepOfFew<2>(maker, step);
      case 3: return MakeStepOfFew<3>(maker, step);
      case 4: return MakeStepOfFew<4>(maker, step);
      default: return false;
    }
  }

 private:
  /** As many addresses as a step can hold. */
  template <long count>
  static bool MakeStepOfFew(CQMStepMaker& maker, SQMStep& step) {
    std::byte** const places[] = {&step.first, &step.second, &step.third, &step.fourth};
    for (long i = 0; i < count; ++i) {
      SQMStepOperand operand;
      if (!maker.FindNumber(i, false, operand) || operand.source != EQMSource::Direct) return false;
      *places[i] = operand.address;
    }
    return maker.Use({&RunFew<count, true>, &RunFew<count, false>});
  }
  template <long count, bool stores>
  static SQMStep const* RunFew(SQMStep const* step, SQMFrame& frame, double) {
    double const value = OfFew<count>(*step);
    if constexpr (stores) NumberAt(step->result) = value;
    return GoOn(step + 1, frame, value);
  }
  /** On its own, since steps go on by calls that take no stack. */
  template <long count>
  [[gnu::noinline]] static double OfFew(SQMStep const& step) {
    std::byte* const places[] = {step.first, step.second, step.third, step.fourth};
    std::array<double, count> values;
    for (std::size_t i = 0; i < count; ++i) values[i] = NumberAt(places[i]);
    return statistic(values);
  }

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
