// The formulas of the shared numeric helpers.
#include "rules/numeric_utilities.h"

#include <cmath>

namespace qumel {

double ComplexArg(double x, double y) { return std::atan2(y, x); }

double Log1P(double x) {
  double const u = 1.0 + x;
  return std::log(u) - ((u - 1.0) - x) / u;
}

double ComplexLogAbs(double x, double y) {
  double const a = std::fabs(x), b = std::fabs(y);
  double const modulus = a >= b ? a : b;
  double const ratio = a >= b ? b / a : a / b;
  return std::log(modulus) + 0.5 * Log1P(ratio * ratio);
}

void ComplexReciprocal(double& real, double& imaginary) {
  double const s = 1.0 / Hypotenuse(real, imaginary);
  real = real * s * s;
  imaginary = -(imaginary * s) * s;
}

double Factorial(double x) {
  if (x <= 1.0) return 1.0;
  double product = x;
  // an infinite product stays one, however many factors are left
  for (double factor = x - 1.0; factor > 1.0 && std::isfinite(product); factor -= 1.0) product *= factor;
  return product;
}

}  // namespace qumel
