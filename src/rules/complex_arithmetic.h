// Products and quotients of complex numbers by the plain formulas. Those of the standard library repair
// infinities, which is slower and gives other results.
#pragma once

#include <cmath>
#include <complex>

namespace qumel {

using Complex = std::complex<double>;

/** Modulus of x + yi without overflow on the way. */
inline double Hypotenuse(double x, double y) {
  double const a = std::fabs(x), b = std::fabs(y);
  double const larger = a > b ? a : b;
  double const smaller = a > b ? b : a;
  if (smaller == 0.0) return larger;
  double const ratio = smaller / larger;
  return larger * std::sqrt(1.0 + ratio * ratio);
}

inline Complex ProductOf(Complex z, Complex w) {
  return {z.real() * w.real() - z.imag() * w.imag(), z.real() * w.imag() + z.imag() * w.real()};
}

/** z / w by two products with the reciprocal of the modulus of w; false when that modulus is 0. */
inline bool DivideComplex(Complex z, Complex w, Complex& quotient) {
  double const modulus = Hypotenuse(w.real(), w.imag());
  if (modulus == 0.0) return false;
  double const s = 1.0 / modulus;
  Complex const product = ProductOf(z, std::conj(w));
  quotient = {product.real() * s * s, product.imag() * s * s};
  return true;
}

}  // namespace qumel
