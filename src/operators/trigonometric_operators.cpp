// Circular and hyperbolic operators and their inverses: one rule, a line a function.
#include <cmath>

#include "operators/circular_functions.h"
#include "operators/numeric_function.h"
#include "operators/operator_tables.h"

namespace qumel {

namespace {

template <EQMAngle angle, RealOrNone (*ofReal)(double), Complex (*ofComplex)(Complex)>
struct SQMCircularRule {
  static constexpr EQMAngle kAngle = angle;
  static RealOutcome Real(double x) {
    if (RealOrNone const value = ofReal(x); value.has_value()) return *value;
    return SQMFailure{Status::NeedsComplex};
  }
  static Complex OfComplex(Complex z) { return ofComplex(z); }
};

template <EQMAngle angle, RealOrNone (*ofReal)(double), Complex (*ofComplex)(Complex)>
using CQMFunctionOfOne = CQMUnaryFunction<SQMCircularRule<angle, ofReal, ofComplex>>;

/** Of sine, cosine and tangent, which a word in the same text that changes the angle unit does not reach. */
template <double (*ofReal)(double), Complex (*ofComplex)(Complex)>
struct SQMFirstCircularRule {
  static constexpr EQMAngle kAngle = EQMAngle::Operand;
  static constexpr bool kTakesFirstFactor = true;
  static double Real(double x) { return ofReal(x); }
  static Complex OfComplex(Complex z) { return ofComplex(z); }
};

using CQMSineOperator = CQMUnaryFunction<SQMFirstCircularRule<&std::sin, &Sine>>;
using CQMCosineOperator = CQMUnaryFunction<SQMFirstCircularRule<&std::cos, &Cosine>>;
using CQMTangentOperator = CQMUnaryFunction<SQMFirstCircularRule<&std::tan, &Tangent>>;
using CQMCotangentOperator = CQMFunctionOfOne<EQMAngle::Operand, &Cotangent, &Cotangent>;
using CQMSecantOperator = CQMFunctionOfOne<EQMAngle::Operand, &Secant, &Secant>;
using CQMCosecantOperator = CQMFunctionOfOne<EQMAngle::Operand, &Cosecant, &Cosecant>;

using CQMArcsineOperator = CQMFunctionOfOne<EQMAngle::Result, &Arcsine, &Arcsine>;
using CQMArccosineOperator = CQMFunctionOfOne<EQMAngle::Result, &Arccosine, &Arccosine>;
using CQMArctangentOperator = CQMFunctionOfOne<EQMAngle::Result, &Arctangent, &Arctangent>;
using CQMArccotangentOperator = CQMFunctionOfOne<EQMAngle::Result, &Arccotangent, &Arccotangent>;
using CQMArcsecantOperator = CQMFunctionOfOne<EQMAngle::Result, &Arcsecant, &Arcsecant>;
using CQMArccosecantOperator = CQMFunctionOfOne<EQMAngle::Result, &Arccosecant, &Arccosecant>;

using CQMHypersineOperator = CQMFunctionOfOne<EQMAngle::None, &Hypersine, &Hypersine>;
using CQMHypercosineOperator = CQMFunctionOfOne<EQMAngle::None, &Hypercosine, &Hypercosine>;
using CQMHypertangentOperator = CQMFunctionOfOne<EQMAngle::None, &Hypertangent, &Hypertangent>;
using CQMHypercotangentOperator = CQMFunctionOfOne<EQMAngle::None, &Hypercotangent, &Hypercotangent>;
using CQMHypersecantOperator = CQMFunctionOfOne<EQMAngle::None, &Hypersecant, &Hypersecant>;
using CQMHypercosecantOperator = CQMFunctionOfOne<EQMAngle::None, &Hypercosecant, &Hypercosecant>;

using CQMArchypersineOperator = CQMFunctionOfOne<EQMAngle::None, &Archypersine, &Archypersine>;
using CQMArchypercosineOperator = CQMFunctionOfOne<EQMAngle::None, &Archypercosine, &Archypercosine>;
using CQMArchypertangentOperator = CQMFunctionOfOne<EQMAngle::None, &Archypertangent, &Archypertangent>;
using CQMArchypercotangentOperator = CQMFunctionOfOne<EQMAngle::None, &Archypercotangent, &Archypercotangent>;
using CQMArchypersecantOperator = CQMFunctionOfOne<EQMAngle::None, &Archypersecant, &Archypersecant>;
using CQMArchypercosecantOperator = CQMFunctionOfOne<EQMAngle::None, &Archypercosecant, &Archypercosecant>;

constexpr SQMMakerRow kTrigonometricOperators[] = {
    {OpId::Sine, &MakeOperator<CQMSineOperator>},
    {OpId::Cosine, &MakeOperator<CQMCosineOperator>},
    {OpId::Tangent, &MakeOperator<CQMTangentOperator>},
    {OpId::Cotangent, &MakeOperator<CQMCotangentOperator>},
    {OpId::Secant, &MakeOperator<CQMSecantOperator>},
    {OpId::Cosecant, &MakeOperator<CQMCosecantOperator>},
    {OpId::Arcsine, &MakeOperator<CQMArcsineOperator>},
    {OpId::Arccosine, &MakeOperator<CQMArccosineOperator>},
    {OpId::Arctangent, &MakeOperator<CQMArctangentOperator>},
    {OpId::Arccotangent, &MakeOperator<CQMArccotangentOperator>},
    {OpId::Arcsecant, &MakeOperator<CQMArcsecantOperator>},
    {OpId::Arccosecant, &MakeOperator<CQMArccosecantOperator>},
    {OpId::Hypersine, &MakeOperator<CQMHypersineOperator>},
    {OpId::Hypercosine, &MakeOperator<CQMHypercosineOperator>},
    {OpId::Hypertangent, &MakeOperator<CQMHypertangentOperator>},
    {OpId::Hypercotangent, &MakeOperator<CQMHypercotangentOperator>},
    {OpId::Hypersecant, &MakeOperator<CQMHypersecantOperator>},
    {OpId::Hypercosecant, &MakeOperator<CQMHypercosecantOperator>},
    {OpId::Archypersine, &MakeOperator<CQMArchypersineOperator>},
    {OpId::Archypercosine, &MakeOperator<CQMArchypercosineOperator>},
    {OpId::Archypertangent, &MakeOperator<CQMArchypertangentOperator>},
    {OpId::Archypercotangent, &MakeOperator<CQMArchypercotangentOperator>},
    {OpId::Archypersecant, &MakeOperator<CQMArchypersecantOperator>},
    {OpId::Archypercosecant, &MakeOperator<CQMArchypercosecantOperator>},
    {OpId::ShortArcsine, &MakeOperator<CQMArcsineOperator>},
    {OpId::ShortArccosine, &MakeOperator<CQMArccosineOperator>},
    {OpId::ShortArctangent, &MakeOperator<CQMArctangentOperator>},
    {OpId::ShortArccotangent, &MakeOperator<CQMArccotangentOperator>},
    {OpId::ShortArcsecant, &MakeOperator<CQMArcsecantOperator>},
    {OpId::ShortArccosecant, &MakeOperator<CQMArccosecantOperator>},
    {OpId::ShortArchypersine, &MakeOperator<CQMArchypersineOperator>},
    {OpId::ShortArchypercosine, &MakeOperator<CQMArchypercosineOperator>},
    {OpId::ShortArchypertangent, &MakeOperator<CQMArchypertangentOperator>},
    {OpId::ShortArchypercotangent, &MakeOperator<CQMArchypercotangentOperator>},
    {OpId::ShortArchypersecant, &MakeOperator<CQMArchypersecantOperator>},
    {OpId::ShortArchypercosecant, &MakeOperator<CQMArchypercosecantOperator>},
};

}  // namespace

MakerTable TrigonometricOperators() { return kTrigonometricOperators; }

}  // namespace qumel
