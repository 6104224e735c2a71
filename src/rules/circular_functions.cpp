// The formulas.
#include "rules/circular_functions.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "rules/inverse_hyperbolic.h"
#include "rules/numeric_utilities.h"

namespace qumel {

namespace {

constexpr double kHalfPi = std::numbers::pi / 2.0;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/** x * y where a zero wins against an infinity: sin(0 + 1000i) has no real part. */
double Product(double x, double y) {
  double const product = x * y;
  return std::isnan(product) && !std::isnan(x) && !std::isnan(y) ? 0.0 : product;
}

/** 1/x with the zero of either sign taken as the positive one. */
double Reciprocal(double x) { return x == 0.0 ? kInfinity : 1.0 / x; }

Complex Reciprocal(Complex z) {
  if (z.imag() == 0.0) return {Reciprocal(z.real()), 0.0};
  return 1.0 / z;
}

double ReciprocalOrZero(double x) { return x == 0.0 ? 0.0 : 1.0 / x; }

Complex ReciprocalOrZero(Complex z) { return z == Complex() ? Complex() : 1.0 / z; }

/** The hyperbolic tangent in the two forms that the library keeps. */
double TangentByTwoForms(double x) {
  if (std::fabs(x) >= 1.0) {
    double const r = 1.0 / std::sinh(x);
    return 1.0 / (std::tanh(x) * (r * r + 1.0));
  }
  double const s = std::sinh(x);
  return std::cosh(x) * s / (1.0 + s * s);
}

/** z on the upper side of every cut along the real axis. */
Complex OnUpperSide(Complex z) { return {z.real(), z.imag() == 0.0 ? 0.0 : z.imag()}; }

/** The real function where the number is real and has a value, else the complex one. */
template <class OfReal, class OfComplex>
Complex RealFirst(Complex z, OfReal ofReal, OfComplex ofComplex) {
  if (z.imag() == 0.0) {
    if (RealOrNone const value = ofReal(z.real()); value.has_value()) return {*value, 0.0};
  }
  return ofComplex(OnUpperSide(z));
}

using RealFunction = RealOrNone (*)(double);

}  // namespace

// ---- real ----

RealOrNone Sine(double x) { return std::sin(x); }

RealOrNone Cosine(double x) { return std::cos(x); }

RealOrNone Tangent(double x) { return std::tan(x); }

RealOrNone Cotangent(double x) { return ReciprocalOrZero(std::tan(x)); }

RealOrNone Secant(double x) { return ReciprocalOrZero(std::cos(x)); }

RealOrNone Cosecant(double x) { return ReciprocalOrZero(std::sin(x)); }

RealOrNone Hypersine(double x) { return std::sinh(x); }

RealOrNone Hypercosine(double x) { return std::cosh(x); }

RealOrNone Hypertangent(double x) { return TangentByTwoForms(x); }

RealOrNone Hypercotangent(double x) { return ReciprocalOrZero(TangentByTwoForms(x)); }

RealOrNone Hypersecant(double x) { return 1.0 / std::cosh(x); }

RealOrNone Hypercosecant(double x) { return ReciprocalOrZero(std::sinh(x)); }

// ---- inverse, real ----

RealOrNone Arcsine(double x) { return std::fabs(x) > 1.0 ? std::nullopt : RealOrNone(std::asin(x)); }

RealOrNone Arccosine(double x) { return std::fabs(x) <= 1.0 ? RealOrNone(std::acos(x)) : std::nullopt; }

RealOrNone Arctangent(double x) { return std::atan(x); }

RealOrNone Arccotangent(double x) { return x == 0.0 ? kHalfPi : std::atan(1.0 / x); }

RealOrNone Arcsecant(double x) { return std::fabs(x) < 1.0 ? std::nullopt : RealOrNone(std::acos(1.0 / x)); }

RealOrNone Arccosecant(double x) {
  return std::fabs(x) < 1.0 ? std::nullopt : RealOrNone(std::asin(1.0 / x));
}

RealOrNone Archypersine(double x) { return ArcHyperSine(x); }

RealOrNone Archypercosine(double x) { return x < 1.0 ? std::nullopt : RealOrNone(ArcHyperCosine(x)); }

RealOrNone Archypertangent(double x) {
  return std::fabs(x) > 1.0 ? std::nullopt : RealOrNone(ArcHyperTangent(x));
}

RealOrNone Archypercotangent(double x) { return Archypertangent(Reciprocal(x)); }

RealOrNone Archypersecant(double x) { return Archypercosine(Reciprocal(x)); }

RealOrNone Archypercosecant(double x) { return ArcHyperSine(Reciprocal(x)); }

// ---- complex ----

Complex Sine(Complex z) {
  double const a = z.real(), b = z.imag();
  return {Product(std::sin(a), std::cosh(b)), Product(std::cos(a), std::sinh(b))};
}

Complex Cosine(Complex z) {
  double const a = z.real(), b = z.imag();
  return {Product(std::cos(a), std::cosh(b)), -Product(std::sin(a), std::sinh(b))};
}

Complex Tangent(Complex z) { return std::tan(z); }

Complex Cotangent(Complex z) { return ReciprocalOrZero(std::tan(z)); }

Complex Secant(Complex z) { return ReciprocalOrZero(Cosine(z)); }

Complex Cosecant(Complex z) { return ReciprocalOrZero(Sine(z)); }

Complex Hypersine(Complex z) { return std::sinh(z); }

Complex Hypercosine(Complex z) { return std::cosh(z); }

Complex Hypertangent(Complex z) { return std::tanh(z); }

Complex Hypercotangent(Complex z) { return ReciprocalOrZero(std::tanh(z)); }

Complex Hypersecant(Complex z) { return ReciprocalOrZero(std::cosh(z)); }

Complex Hypercosecant(Complex z) { return ReciprocalOrZero(std::sinh(z)); }

// Hull, Fairgrieve and Tang's algorithm off the real axis: no cancellation near the branch points.
Complex Arcsine(Complex z) {
  constexpr double kRealCrossover = 0.6417, kImaginaryCrossover = 1.5;
  constexpr double kSquareOverflows = 1e150, kSquareVanishes = 1e-140;
  double const a = z.real(), b = z.imag();
  if (b == 0.0) {
    if (a > 1.0) return {kHalfPi, -ArcHyperCosine(a)};
    if (a < -1.0) return {-kHalfPi, ArcHyperCosine(-a)};
    return {std::asin(a), 0.0};
  }
  double const x = std::fabs(a), y = std::fabs(b);
  double const r = Hypotenuse(x + 1.0, y), s = Hypotenuse(x - 1.0, y);
  double const bigA = 0.5 * (r + s);
  double const bigB = x / bigA;
  double real = 0.0;
  if (bigB <= kRealCrossover) {
    real = std::asin(bigB);
  } else if (x <= 1.0) {
    real = std::atan(x / std::sqrt(0.5 * (bigA + x) * (y * y / (r + x + 1.0) + (s + (1.0 - x)))));
  } else {
    real = std::atan(x / (y * std::sqrt(0.5 * ((bigA + x) / (r + x + 1.0) + (bigA + x) / (s + (x - 1.0))))));
  }
  double imaginary = 0.0;
  if (bigA > kSquareOverflows) {
    imaginary = std::log(bigA) + std::numbers::ln2;
  } else if (bigA > kImaginaryCrossover) {
    imaginary = std::log(bigA + std::sqrt(bigA * bigA - 1.0));
  } else if (x < 1.0 && y < kSquareVanishes) {
    imaginary = y / std::sqrt((1.0 - x) * (1.0 + x));
  } else {
    double const excess = x < 1.0 ? 0.5 * (y * y / (r + x + 1.0) + y * y / (s + (1.0 - x)))
                                  : 0.5 * (y * y / (r + x + 1.0) + (s + (x - 1.0)));
    imaginary = Log1P(excess + std::sqrt(excess * (bigA + 1.0)));
  }
  return {a < 0.0 ? -real : real, b < 0.0 ? -imaginary : imaginary};
}

Complex Arccosine(Complex z) {
  return RealFirst(z, RealFunction(&Arccosine), [](Complex w) { return std::acos(w); });
}

Complex Arctangent(Complex z) {
  return RealFirst(z, RealFunction(&Arctangent), [](Complex w) { return std::atan(w); });
}

Complex Arccotangent(Complex z) {
  return RealFirst(z, RealFunction(&Arccotangent), [](Complex w) { return std::atan(Reciprocal(w)); });
}

Complex Arcsecant(Complex z) {
  return RealFirst(z, RealFunction(&Arcsecant), [](Complex w) { return Arccosine(Reciprocal(w)); });
}

Complex Arccosecant(Complex z) {
  return RealFirst(z, RealFunction(&Arccosecant), [](Complex w) { return Arcsine(Reciprocal(w)); });
}

Complex Archypersine(Complex z) {
  return RealFirst(z, RealFunction(&Archypersine), [](Complex w) { return std::asinh(w); });
}

Complex Archypercosine(Complex z) {
  return RealFirst(z, RealFunction(&Archypercosine), [](Complex w) { return std::acosh(w); });
}

Complex Archypertangent(Complex z) {
  return RealFirst(z, RealFunction(&Archypertangent), [](Complex w) { return std::atanh(w); });
}

Complex Archypercotangent(Complex z) {
  if (z == Complex()) return {0.0, kHalfPi};
  return RealFirst(z, RealFunction(&Archypercotangent), [](Complex w) { return std::atanh(Reciprocal(w)); });
}

Complex Archypersecant(Complex z) {
  return RealFirst(z, RealFunction(&Archypersecant), [](Complex w) { return std::acosh(Reciprocal(w)); });
}

Complex Archypercosecant(Complex z) {
  return RealFirst(z, RealFunction(&Archypercosecant), [](Complex w) { return std::asinh(Reciprocal(w)); });
}

}  // namespace qumel
