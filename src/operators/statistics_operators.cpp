// Statistics over a list of operands or over a one-dimensional array. Real parts count; a complex result has
// none other.
#include <cmath>
#include <vector>

#include "operators/operator_tables.h"

namespace qumel {

namespace {

using Values = std::vector<double>;

double SumOf(Values const& values) {
  double sum = 0.0;
  for (double const x : values) sum += x;
  return sum;
}

double CountOf(Values const& values) { return static_cast<double>(values.size()); }

double MeanOf(Values const& values) { return SumOf(values) / CountOf(values); }

double GeometricMeanOf(Values const& values) {
  double product = 1.0;
  for (double const x : values) product *= x;
  return std::pow(product, 1.0 / CountOf(values));
}

double HarmonicMeanOf(Values const& values) {
  double sum = 0.0;
  for (double const x : values) sum += x == 0.0 ? 0.0 : 1.0 / x;  // zeros count, but add nothing
  return CountOf(values) / sum;
}

double RootMeanSquareOf(Values const& values) {
  double sum = 0.0;
  for (double const x : values) sum += x * x;
  return std::sqrt(sum / CountOf(values));
}

double VarianceOf(Values const& values) {
  double const mean = MeanOf(values);
  double sum = 0.0;
  for (double const x : values) sum += (x - mean) * (x - mean);
  return sum / (CountOf(values) - 1.0);
}

double StandardDeviationOf(Values const& values) { return std::sqrt(VarianceOf(values)); }

double SmallestOf(Values const& values) {
  double smallest = values.front();
  for (double const x : values) smallest = x < smallest ? x : smallest;
  return smallest;
}

double LargestOf(Values const& values) {
  double largest = values.front();
  for (double const x : values) largest = x > largest ? x : largest;
  return largest;
}

double RangeOf(Values const& values) { return LargestOf(values) - SmallestOf(values); }

/** One statistic; of no values it is 0. */
template <double (*statistic)(Values const&)>
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

  Values m_values;  // kept between runs for its room
};

using CQMSumOperator = CQMStatisticOperator<&SumOf>;
using CQMArithmeticMeanOperator = CQMStatisticOperator<&MeanOf>;
using CQMGeometricMeanOperator = CQMStatisticOperator<&GeometricMeanOf>;
using CQMHarmonicMeanOperator = CQMStatisticOperator<&HarmonicMeanOf>;
using CQMRootMeanSquareOperator = CQMStatisticOperator<&RootMeanSquareOf>;
using CQMVarianceOperator = CQMStatisticOperator<&VarianceOf>;
using CQMStandardDeviationOperator = CQMStatisticOperator<&StandardDeviationOf>;
using CQMMinimumOperator = CQMStatisticOperator<&SmallestOf>;
using CQMMaximumOperator = CQMStatisticOperator<&LargestOf>;
using CQMRangeOperator = CQMStatisticOperator<&RangeOf>;

constexpr SQMMakerRow kStatisticsOperators[] = {
    {OpId::Average, &MakeOperator<CQMArithmeticMeanOperator>},
    {OpId::ArithmeticMean, &MakeOperator<CQMArithmeticMeanOperator>},
    {OpId::Sum, &MakeOperator<CQMSumOperator>},
    {OpId::StandardDeviation, &MakeOperator<CQMStandardDeviationOperator>},
    {OpId::Variance, &MakeOperator<CQMVarianceOperator>},
    {OpId::Range, &MakeOperator<CQMRangeOperator>},
    {OpId::GeometricMean, &MakeOperator<CQMGeometricMeanOperator>},
    {OpId::HarmonicMean, &MakeOperator<CQMHarmonicMeanOperator>},
    {OpId::RootMeanSquare, &MakeOperator<CQMRootMeanSquareOperator>},
    {OpId::Minimum, &MakeOperator<CQMMinimumOperator>},
    {OpId::Maximum, &MakeOperator<CQMMaximumOperator>},
};

}  // namespace

MakerTable StatisticsOperators() { return kStatisticsOperators; }

}  // namespace qumel
