// The ranges and their formulas.
#include "rules/inverse_hyperbolic.h"

#include <cmath>
#include <limits>

#include "rules/numeric_utilities.h"

namespace qumel {

namespace {

constexpr double kHuge = 67108864.0;       // 2^26: beyond it, x^2 + 1 is x^2
constexpr double kTiny = 1.4901161e-8;     // 2^-26: below it, the function is its argument
constexpr double kTiniest = 2.220446e-16;  // 2^-52
constexpr double kLn2 = 0.6931471805599453;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double SignOf(double x) { return x >= 0.0 ? 1.0 : -1.0; }

}  // namespace

double ArcHyperSine(double x) {
  double const sign = SignOf(x);
  double const a = std::fabs(x);
  if (a > kHuge) return sign * (std::log(a) + kLn2);
  if (a > 2.0) return sign * std::log(2.0 * a + 1.0 / (a + std::sqrt(a * a + 1.0)));
  if (a < kTiny) return x;
  return sign * Log1P(a + a * a / (1.0 + std::sqrt(1.0 + a * a)));
}

double ArcHyperCosine(double x) {
  if (x > kHuge) return std::log(x) + kLn2;
  if (x > 2.0) return std::log(2.0 * x - 1.0 / (x + std::sqrt(x * x - 1.0)));
  if (x > 1.0) {
    double const t = x - 1.0;
    return Log1P(t + std::sqrt(2.0 * t + t * t));
  }
  return x == 1.0 ? 0.0 : kNaN;
}

double ArcHyperTangent(double x) {
  double const sign = SignOf(x);
  double const a = std::fabs(x);
  if (a > 1.0) return kNaN;
  if (a == 1.0) return sign * std::numeric_limits<double>::infinity();
  if (a >= 0.5) return sign * 0.5 * Log1P(2.0 * a / (1.0 - a));
  if (a >= kTiniest) return sign * 0.5 * Log1P(2.0 * a + 2.0 * a * a / (1.0 - a));
  return x;
}

}  // namespace qumel
