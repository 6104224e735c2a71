// Statistics over a list of operands or over a one-dimensional array. Real parts count; a complex result has
// none other.
#pragma once

#include <vector>

#include "rules/statistics.h"

namespace qumel {

/** One statistic; of no values it is 0. */
template <double (*statistic)(Values)>
class CQMStatisticOperator final : public CQMOperator {
 public:
  static constexpr long kMostOperands = 32;

  long GetOperandsNeeded() override { return 1; }
  long GetOperandsMaximum() override { return kMostOperands; }
  long DoOperation(long& position) override {
    CollectValues();
    StoreReal(m_values.empty() ? 0.0 : statistic(m_values));
    return Advance(position);
  }

 private:
  void CollectValues() {
    m_values.clear();
    CQMDatum& first = Operand(0);
    // an element reached by an index is a proxy of its array, and a scalar
    if (first.GetDimensionCount() == 1 && !first.IsProxy()) {
      long const size = first.GetArraySize();
      m_values.reserve(static_cast<std::size_t>(size));
      for (long i = 0; i < size; ++i) m_values.push_back(*static_cast<double*>(first.GetValue(0, false, i)));
    } else {
      for (long i = 0; i < GetOperandCount(); ++i) m_values.push_back(Real(i));
    }
  }

  std::vector<double> m_values;  // kept between runs for its room
};

}  // namespace qumel
