// The rules of sums, products, powers, remainders, factorials and signs.
#pragma once

#include <cmath>
#include <limits>

#include "base/conversions.h"
#include "rules/numeric_utilities.h"
#include "rules/outcome.h"

namespace qumel {

struct SQMSumRule {
  static double Real(double x, double y) { return x + y; }
  static Complex OfComplex(Complex z, Complex w) { return z + w; }
};

struct SQMDifferenceRule {
  static double Real(double x, double y) { return x - y; }
  static Complex OfComplex(Complex z, Complex w) { return z - w; }
};

struct SQMProductRule {
  static double Real(double x, double y) { return x * y; }
  static Complex OfComplex(Complex z, Complex w) { return ProductOf(z, w); }
};

struct SQMQuotientRule {
  static RealOutcome Real(double x, double y) {
    if (y == 0.0) return SQMFailure{Error::DivisionByZero};
    return x / y;
  }
  static ComplexOutcome OfComplex(Complex z, Complex w) {
    Complex quotient;
    if (!DivideComplex(z, w, quotient)) return SQMFailure{Error::DivisionByZero};
    return quotient;
  }
};

/** Of the integer parts; complex operands have no other meaning here than their real parts. */
struct SQMRemainderRule {
  static RealOutcome Real(double x, double y) {
    double remainder = 0.0;
    if (!IntegerRemainder(x, y, remainder)) return SQMFailure{Error::DivisionByZero};
    return remainder;
  }
  static RealOutcome OfComplex(Complex z, Complex w) { return Real(z.real(), w.real()); }
};

struct SQMPowerRule {
  /** Every negative base goes to complex evaluation, whatever the exponent; on purpose. */
  static RealOutcome Real(double x, double y) {
    if (x < 0.0) return SQMFailure{Status::NeedsComplex};
    return std::pow(x, y);
  }
  /** Here a NaN as exponent wins. */
  static RealOutcome InRealRun(double x, double y) {
    if (x < 0.0 && !std::isnan(y)) return SQMFailure{Status::NeedsComplex};
    return std::pow(x, y);
  }
  static ComplexOutcome OfComplex(Complex z, Complex w) {
    if (z == 0.0) return OfZero(w);
    double const logarithm = ComplexLogAbs(z.real(), z.imag());
    double const angle = ComplexArg(z.real(), z.imag());
    double const modulus = std::exp(logarithm * w.real() - angle * w.imag());
    double const turn = angle * w.real() + logarithm * w.imag();
    return Complex(modulus * std::cos(turn), modulus * std::sin(turn));
  }
  /** Of a base that has no logarithm for the formula. */
  static ComplexOutcome OfZero(Complex w) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    if (std::isnan(w.real()) || std::isnan(w.imag())) return Complex(kNaN, kNaN);
    if (w == 0.0) return Complex(1.0, 0.0);
    if (w.real() > 0.0) return Complex();
    return SQMFailure{Error::DivisionByZero};
  }
};

// Powers by a literal 2 or 3. They keep the operands of the power and use the first.
struct SQMSquareRule {
  static double Real(double x, double) { return x * x; }
  static Complex OfComplex(Complex z, Complex) {
    return {z.real() * z.real() - z.imag() * z.imag(), 2.0 * z.real() * z.imag()};
  }
};

struct SQMCubeRule {
  static double Real(double x, double) { return x * x * x; }
  static Complex OfComplex(Complex z, Complex) { return ProductOf(ProductOf(z, z), z); }
};

struct SQMFactorialRule : SQMOnRealPart<SQMFactorialRule> {
  static RealOutcome Real(double x) {
    constexpr std::int32_t kFirstOverflow = 171;
    std::int32_t const n = TruncateToInt32(x);
    if (n >= kFirstOverflow) return SQMFailure{Error::Overflow};
    if (n < 0) return SQMFailure{Error::ResultNotDefined};
    return Factorial(n);
  }
};

struct SQMNegationRule {
  /** Never a negative zero. */
  static double Real(double x) { return x == 0.0 ? 0.0 : -x; }
  static Complex OfComplex(Complex z) { return {Real(z.real()), Real(z.imag())}; }
};

struct SQMPositiveRule {
  static double Real(double x) { return x; }
  static Complex OfComplex(Complex z) { return z; }
};

}  // namespace qumel
