// The rules of combinations and permutations.
#pragma once

#include <cmath>

#include "rules/numeric_utilities.h"
#include "rules/outcome.h"

namespace qumel {

/** n and k by their whole parts, k of n; both within what a double's factorial holds. Of complex operands the
 * real parts count. */
template <double (*count)(double n, double k)>
struct SQMArrangementRule {
  static RealOutcome Real(double x, double y) {
    constexpr double kLargest = 170.0;
    if (x < 0.0 || y < 0.0) return SQMFailure{Error::ResultNotDefined};
    double const n = std::floor(x);
    double const k = std::floor(y);
    if (n > kLargest || k > kLargest) return SQMFailure{Error::Overflow};
    return count(n, k);
  }
  static RealOutcome OfComplex(Complex z, Complex w) { return Real(z.real(), w.real()); }
};

inline double CombinationsOf(double n, double k) {
  if (k == n) return 1.0;
  return k > n ? 0.0 : Factorial(n) / (Factorial(n - k) * Factorial(k));
}

inline double PermutationsOf(double n, double k) { return k <= n ? Factorial(n) / Factorial(n - k) : 0.0; }

using SQMCombinationsRule = SQMArrangementRule<&CombinationsOf>;
using SQMPermutationsRule = SQMArrangementRule<&PermutationsOf>;

}  // namespace qumel
