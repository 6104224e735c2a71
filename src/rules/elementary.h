// The rules of modulus, sign, rounding, roots and logarithms.
#pragma once

#include <cmath>
#include <numbers>

#include "base/conversions.h"
#include "rules/numeric_utilities.h"
#include "rules/outcome.h"

namespace qumel {

inline constexpr double kThird = 1.0 / 3.0;

/** modulus e^(angle i); without an angle there is no imaginary part, however large the modulus. */
inline Complex FromPolar(double modulus, double angle) {
  if (angle == 0.0) return {modulus, angle};
  return {modulus * std::cos(angle), modulus * std::sin(angle)};
}

// ---- modulus, sign, rounding ----

struct SQMAbsoluteValueRule {
  static double Real(double x) { return std::fabs(x); }
  static double OfComplex(Complex z) { return Hypotenuse(z.real(), z.imag()); }
};

struct SQMSignRule : SQMOnRealPart<SQMSignRule> {
  static double Real(double x) { return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0; }
};

struct SQMIntegerRule : SQMOnRealPart<SQMIntegerRule> {
  static double Real(double x) { return x > 0.0 ? std::floor(x) : std::ceil(x); }
};

/** Halves go to the even neighbour, whatever the rounding mode of the host. The neighbour towards zero is a
 * signed 32-bit integer, so that numbers beyond those come out next to the smallest one. */
struct SQMNearestIntegerRule : SQMOnRealPart<SQMNearestIntegerRule> {
  static double Real(double x) {
    constexpr double kHalf = 0.5;
    std::int32_t const whole = TruncateToInt32(x);
    double const rest = x > 0.0 ? x - whole : whole - x;
    if (rest < kHalf || (rest == kHalf && whole % 2 == 0)) return whole;
    return x > 0.0 ? whole + 1.0 : whole - 1.0;
  }
};

struct SQMFractionRule : SQMOnRealPart<SQMFractionRule> {
  static double Real(double x) { return x - SQMIntegerRule::Real(x); }
};

struct SQMFloorRule : SQMOnRealPart<SQMFloorRule> {
  static double Real(double x) { return std::floor(x); }
};

struct SQMCeilingRule : SQMOnRealPart<SQMCeilingRule> {
  static double Real(double x) { return std::ceil(x); }
};

// ---- roots ----

struct SQMSquareRootRule {
  static RealOutcome Real(double x) {
    if (x >= 0.0) return std::sqrt(x);
    return SQMFailure{Status::NeedsComplex};
  }
  /** A NaN stays one here; in complex evaluation it becomes the root of a complex number. */
  static RealOutcome InRealRun(double x) {
    if (x < 0.0) return SQMFailure{Status::NeedsComplex};
    return std::sqrt(x);
  }
  static Complex OfComplex(Complex z) {
    double const re = z.real(), im = z.imag();
    if (im == 0.0)
      return re < 0.0 ? Complex(0.0, std::sqrt(-re)) : Complex(re == 0.0 ? 0.0 : std::sqrt(re), 0.0);
    double const a = std::fabs(re), b = std::fabs(im);
    double const t = a >= b ? b / a : a / b;
    double const hypotenuse = std::sqrt(1.0 + t * t);
    double const w = a >= b ? std::sqrt(a) * std::sqrt(0.5 * (1.0 + hypotenuse))
                            : std::sqrt(b) * std::sqrt(0.5 * (t + hypotenuse));
    if (re >= 0.0) return {w, im / (2.0 * w)};
    double const v = im >= 0.0 ? w : -w;
    return {im / (2.0 * v), v};
  }
};

/** A negative real has a real root of its own, but complex evaluation gives the principal one. */
struct SQMCubeRootRule {
  static double Real(double x) { return x >= 0.0 ? std::pow(x, kThird) : -std::pow(-x, kThird); }
  static bool WantsComplex(double x) { return x < 0.0; }
  static Complex OfComplex(Complex z) {
    return FromPolar(std::pow(Hypotenuse(z.real(), z.imag()), kThird),
                     ComplexArg(z.real(), z.imag()) * kThird);
  }
};

/** The root of a degree n of x. As with the cube root, complex evaluation gives the principal root. */
struct SQMRootRule {
  static RealOutcome Real(double n, double x) {
    if (n == 0.0 && x != 0.0) return SQMFailure{Error::ResultIsInfinite};
    if (x > 0.0) return std::pow(x, 1.0 / n);
    if (x == 0.0) return 0.0;
    if (IsOdd(n)) return -std::pow(-x, 1.0 / n);
    return SQMFailure{Status::NeedsComplex};
  }
  static bool WantsComplex(double n, double x) { return n != 0.0 && x < 0.0; }
  static ComplexOutcome OfComplex(Complex n, Complex z) {
    if (z == 0.0) return Complex();
    if (n == 0.0) return SQMFailure{Error::ResultIsInfinite};
    Complex logarithm(ComplexLogAbs(z.real(), z.imag()), ComplexArg(z.real(), z.imag()));
    // a real degree divides each part, so that an infinite one leaves nothing of them
    if (n.imag() == 0.0) {
      logarithm /= n.real();
    } else {
      DivideComplex(logarithm, n, logarithm);
    }
    return FromPolar(std::exp(logarithm.real()), logarithm.imag());
  }
  /** Whether the integer part of n is odd. */
  static bool IsOdd(double n) { return std::fabs(std::fmod(std::trunc(n), 2.0)) == 1.0; }
};

// ---- logarithms ----

struct SQMNaturalLogRule {
  /** A negative number gives the platform's NaN, in complex evaluation too. */
  static RealOutcome Real(double x) {
    if (x == 0.0) return SQMFailure{Error::ResultNotDefined};
    return std::log(x);
  }
  /** A real part of 0 is refused before the imaginary part is looked at; on purpose. */
  static ComplexOutcome OfComplex(Complex z) {
    if (z.real() == 0.0) return SQMFailure{Error::ResultNotDefined};
    if (z.imag() == 0.0) return Complex(std::log(z.real()), 0.0);
    return Complex(ComplexLogAbs(z.real(), z.imag()), ComplexArg(z.real(), z.imag()));
  }
};

struct SQMCommonLogRule {
  static RealOutcome Real(double x) {
    if (x == 0.0) return SQMFailure{Error::ResultNotDefined};
    return std::log10(x);
  }
  static ComplexOutcome OfComplex(Complex z) {
    ComplexOutcome outcome = SQMNaturalLogRule::OfComplex(z);
    outcome.value /= std::numbers::ln10;
    return outcome;
  }
};

}  // namespace qumel
