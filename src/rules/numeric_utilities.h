// Numeric helpers that the operators share and that hosts may call.
#pragma once

#include "rules/complex_arithmetic.h"  // Hypotenuse

namespace qumel {

/** Angle of x + yi, in radians. */
double ComplexArg(double x, double y);
/** log(1 + x), compensated for the rounding of 1 + x. */
double Log1P(double x);
/** Logarithm of the modulus of x + yi; does not overflow where the modulus would. */
double ComplexLogAbs(double x, double y);
/** Puts 1 / (real + imaginary i) in place. */
void ComplexReciprocal(double& real, double& imaginary);
/** x (x - 1) (x - 2) ... over all factors greater than 1; 1 when there is none. */
double Factorial(double x);

}  // namespace qumel
