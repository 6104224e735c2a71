// Circular and hyperbolic functions and their inverses, of real and of complex numbers, in radians. They know
// no angle unit and no operator. A real function without a value answers nothing where a complex one exists.
#pragma once

#include <complex>
#include <optional>

namespace qumel {

using Complex = std::complex<double>;
using RealOrNone = std::optional<double>;

// ---- of reals; a zero denominator of cot, sec, csc, coth and csch gives 0 ----
RealOrNone Sine(double x);
RealOrNone Cosine(double x);
RealOrNone Tangent(double x);
RealOrNone Cotangent(double x);
RealOrNone Secant(double x);
RealOrNone Cosecant(double x);
RealOrNone Hypersine(double x);
RealOrNone Hypercosine(double x);
RealOrNone Hypertangent(double x);
RealOrNone Hypercotangent(double x);
RealOrNone Hypersecant(double x);
RealOrNone Hypercosecant(double x);

// ---- inverse functions of reals ----
RealOrNone Arcsine(double x);
RealOrNone Arccosine(double x);
RealOrNone Arctangent(double x);
/** atan(1/x): a negative number has a negative angle. */
RealOrNone Arccotangent(double x);
RealOrNone Arcsecant(double x);
RealOrNone Arccosecant(double x);
RealOrNone Archypersine(double x);
RealOrNone Archypercosine(double x);
RealOrNone Archypertangent(double x);
RealOrNone Archypercotangent(double x);
RealOrNone Archypersecant(double x);
RealOrNone Archypercosecant(double x);

// ---- of complex numbers: principal values ----
// A number without an imaginary part takes the real function where that has a value, whatever the sign of its
// zero; on a cut it counts as lying on the upper side, but for the arcsine, which has signs of its own.
Complex Sine(Complex z);
Complex Cosine(Complex z);
Complex Tangent(Complex z);
Complex Cotangent(Complex z);
Complex Secant(Complex z);
Complex Cosecant(Complex z);
Complex Hypersine(Complex z);
Complex Hypercosine(Complex z);
Complex Hypertangent(Complex z);
Complex Hypercotangent(Complex z);
Complex Hypersecant(Complex z);
Complex Hypercosecant(Complex z);
Complex Arcsine(Complex z);
Complex Arccosine(Complex z);
Complex Arctangent(Complex z);
Complex Arccotangent(Complex z);
Complex Arcsecant(Complex z);
Complex Arccosecant(Complex z);
Complex Archypersine(Complex z);
Complex Archypercosine(Complex z);
Complex Archypertangent(Complex z);
Complex Archypercotangent(Complex z);
Complex Archypersecant(Complex z);
Complex Archypercosecant(Complex z);

}  // namespace qumel
