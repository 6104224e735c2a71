// Exported numeric helpers. They need no context and have no state.
#include "qumel/qumel.h"
#include "rules/fixed_point_trigonometry.h"
#include "rules/inverse_hyperbolic.h"
#include "rules/numeric_utilities.h"

using namespace qumel;

double QMU_Hypotenuse(double x, double y) { return Hypotenuse(x, y); }
double QMU_ComplexArg(double x, double y) { return ComplexArg(x, y); }
double QMU_Log1P(double x) { return Log1P(x); }
double QMU_ComplexLogAbs(double x, double y) { return ComplexLogAbs(x, y); }
void QMU_ComplexReciprocal(double* real, double* imaginary) {
  if (real != nullptr && imaginary != nullptr) ComplexReciprocal(*real, *imaginary);
}
double QMU_Factorial(double x) { return Factorial(x); }

double QMU_ArcHyperSine(double x) { return ArcHyperSine(x); }
double QMU_ArcHyperCosine(double x) { return ArcHyperCosine(x); }
double QMU_ArcHyperTangent(double x) { return ArcHyperTangent(x); }

double QMU_Sine(double degrees) { return FixedPointSine(degrees); }
double QMU_Cosine(double degrees) { return FixedPointCosine(degrees); }
double QMU_Tangent(double degrees) { return FixedPointTangent(degrees); }
