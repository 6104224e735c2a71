// Inverse hyperbolic functions of real numbers, accurate for tiny and huge arguments.
#pragma once

namespace qumel {

double ArcHyperSine(double x);
/** NaN below 1. */
double ArcHyperCosine(double x);
/** NaN beyond -1 and 1, an infinity of the sign of x at them. */
double ArcHyperTangent(double x);

}  // namespace qumel
