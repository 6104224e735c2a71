// Sine, cosine and tangent of degrees in 16.16 fixed point, by rotation in 18 steps. Helpers for hosts; no
// operator of the language uses them. The error is of the order of 1e-4 from -90 to 90 degrees; angles
// farther out are not folded.
#pragma once

namespace qumel {

double FixedPointSine(double degrees);
double FixedPointCosine(double degrees);
/** 0 where the sine is 0. */
double FixedPointTangent(double degrees);

}  // namespace qumel
