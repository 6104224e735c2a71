// The rules of circular and hyperbolic functions and their inverses, a line a function.
#pragma once

#include <cmath>

#include "rules/circular_functions.h"
#include "rules/outcome.h"

namespace qumel {

template <EQMAngle angle, RealOrNone (*ofReal)(double), Complex (*ofComplex)(Complex)>
struct SQMCircularRule {
  static constexpr EQMAngle kAngle = angle;
  static RealOutcome Real(double x) {
    if (RealOrNone const value = ofReal(x); value.has_value()) return *value;
    return SQMFailure{Status::NeedsComplex};
  }
  static Complex OfComplex(Complex z) { return ofComplex(z); }
};

/** Of sine, cosine and tangent, which a word in the same text that changes the angle unit does not reach. */
template <double (*ofReal)(double), Complex (*ofComplex)(Complex)>
struct SQMFirstCircularRule {
  static constexpr EQMAngle kAngle = EQMAngle::Operand;
  static constexpr bool kTakesFirstFactor = true;
  static double Real(double x) { return ofReal(x); }
  static Complex OfComplex(Complex z) { return ofComplex(z); }
};

using SQMSineRule = SQMFirstCircularRule<&std::sin, &Sine>;
using SQMCosineRule = SQMFirstCircularRule<&std::cos, &Cosine>;
using SQMTangentRule = SQMFirstCircularRule<&std::tan, &Tangent>;
using SQMCotangentRule = SQMCircularRule<EQMAngle::Operand, &Cotangent, &Cotangent>;
using SQMSecantRule = SQMCircularRule<EQMAngle::Operand, &Secant, &Secant>;
using SQMCosecantRule = SQMCircularRule<EQMAngle::Operand, &Cosecant, &Cosecant>;
using SQMArcsineRule = SQMCircularRule<EQMAngle::Result, &Arcsine, &Arcsine>;
using SQMArccosineRule = SQMCircularRule<EQMAngle::Result, &Arccosine, &Arccosine>;
using SQMArctangentRule = SQMCircularRule<EQMAngle::Result, &Arctangent, &Arctangent>;
using SQMArccotangentRule = SQMCircularRule<EQMAngle::Result, &Arccotangent, &Arccotangent>;
using SQMArcsecantRule = SQMCircularRule<EQMAngle::Result, &Arcsecant, &Arcsecant>;
using SQMArccosecantRule = SQMCircularRule<EQMAngle::Result, &Arccosecant, &Arccosecant>;
using SQMHypersineRule = SQMCircularRule<EQMAngle::None, &Hypersine, &Hypersine>;
using SQMHypercosineRule = SQMCircularRule<EQMAngle::None, &Hypercosine, &Hypercosine>;
using SQMHypertangentRule = SQMCircularRule<EQMAngle::None, &Hypertangent, &Hypertangent>;
using SQMHypercotangentRule = SQMCircularRule<EQMAngle::None, &Hypercotangent, &Hypercotangent>;
using SQMHypersecantRule = SQMCircularRule<EQMAngle::None, &Hypersecant, &Hypersecant>;
using SQMHypercosecantRule = SQMCircularRule<EQMAngle::None, &Hypercosecant, &Hypercosecant>;
using SQMArchypersineRule = SQMCircularRule<EQMAngle::None, &Archypersine, &Archypersine>;
using SQMArchypercosineRule = SQMCircularRule<EQMAngle::None, &Archypercosine, &Archypercosine>;
using SQMArchypertangentRule = SQMCircularRule<EQMAngle::None, &Archypertangent, &Archypertangent>;
using SQMArchypercotangentRule = SQMCircularRule<EQMAngle::None, &Archypercotangent, &Archypercotangent>;
using SQMArchypersecantRule = SQMCircularRule<EQMAngle::None, &Archypersecant, &Archypersecant>;
using SQMArchypercosecantRule = SQMCircularRule<EQMAngle::None, &Archypercosecant, &Archypercosecant>;

}  // namespace qumel
