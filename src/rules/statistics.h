// The rules of statistics.
#pragma once

#include <cmath>
#include <span>

namespace qumel {

/** The values that a statistic is of, one at least. */
using Values = std::span<double const>;

inline double SumOf(Values values) {
  double sum = 0.0;
  for (double const x : values) sum += x;
  return sum;
}

inline double CountOf(Values values) { return static_cast<double>(values.size()); }

inline double MeanOf(Values values) { return SumOf(values) / CountOf(values); }

inline double GeometricMeanOf(Values values) {
  double product = 1.0;
  for (double const x : values) product *= x;
  return std::pow(product, 1.0 / CountOf(values));
}

inline double HarmonicMeanOf(Values values) {
  double sum = 0.0;
  for (double const x : values) sum += x == 0.0 ? 0.0 : 1.0 / x;  // zeros count, but add nothing
  return CountOf(values) / sum;
}

inline double RootMeanSquareOf(Values values) {
  double sum = 0.0;
  for (double const x : values) sum += x * x;
  return std::sqrt(sum / CountOf(values));
}

inline double VarianceOf(Values values) {
  double const mean = MeanOf(values);
  double sum = 0.0;
  for (double const x : values) sum += (x - mean) * (x - mean);
  return sum / (CountOf(values) - 1.0);
}

inline double StandardDeviationOf(Values values) { return std::sqrt(VarianceOf(values)); }

inline double SmallestOf(Values values) {
  double smallest = values.front();
  for (double const x : values) smallest = x < smallest ? x : smallest;
  return smallest;
}

inline double LargestOf(Values values) {
  double largest = values.front();
  for (double const x : values) largest = x > largest ? x : largest;
  return largest;
}

inline double RangeOf(Values values) { return LargestOf(values) - SmallestOf(values); }

}  // namespace qumel
