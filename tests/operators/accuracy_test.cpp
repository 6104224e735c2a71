// Compares the real and complex functions with reference values from an independent source, and states the
// largest relative error of each. The values and the script that made them stand beside this file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "base/number_text.h"
#include "operator_bench.h"

namespace qumel::test {

namespace {

/** Errors in units of the modulus of the value. A cube root is a power with a third as doubles have it, whose
 * error grows with the logarithm of the argument. */
constexpr double kBound = 2e-15;
constexpr double kCubeRootBound = 3e-14;
/** Inverse functions of 1/x, by definition: beside a branch point they magnify the rounding of 1/x. */
constexpr double kReciprocalBound = 5e-11;

double BoundOf(long id) {
  switch (id) {
    case OpId::CubeRoot: return kCubeRootBound;
    case OpId::Arccotangent:
    case OpId::Arcsecant:
    case OpId::Arccosecant:
    case OpId::Archypercotangent:
    case OpId::Archypersecant:
    case OpId::Archypercosecant: return kReciprocalBound;
    default: return kBound;
  }
}

struct Worst {
  double error = 0.0;
  std::string at;
};

double RelativeError(Value const& actual, Complex expected) {
  Complex value;
  if (auto const* number = std::get_if<double>(&actual)) {
    value = *number;
  } else if (auto const* pair = std::get_if<Complex>(&actual)) {
    value = *pair;
  } else {
    return HUGE_VAL;
  }
  double const error = std::abs(value - expected) / std::abs(expected);
  return value == expected ? 0.0 : std::isnan(error) ? HUGE_VAL : error;
}

TEST(Accuracy, OfFunctionsAgainstReferenceValues) {
  std::ifstream file(QUMEL_REFERENCE_VALUES);
  ASSERT_TRUE(file) << QUMEL_REFERENCE_VALUES;
  std::map<std::pair<long, bool>, Worst> worst;
  long lines = 0;
  for (std::string line; std::getline(file, line); ++lines) {
    std::istringstream words(line);
    long id = 0;
    char kind = ' ';
    std::string texts[4];
    ASSERT_TRUE(words >> id >> kind >> texts[0] >> texts[1] >> texts[2] >> texts[3]) << line;
    double numbers[4];
    std::transform(texts, texts + 4, numbers,
                   [](std::string const& text) { return ParseDouble(text.c_str()); });
    bool const isComplex = kind == 'C';
    CQMBench bench(id, isComplex ? Operands{Complex(numbers[0], numbers[1])} : Operands{numbers[0]});
    Value const actual = isComplex ? bench.RunComplex() : bench.RunReal();
    double const error = RelativeError(actual, {numbers[2], numbers[3]});
    Worst& most = worst[{id, isComplex}];
    if (error >= most.error) most = {error, line + " but " + Describe(actual)};
  }
  EXPECT_GT(lines, 4000);
  for (auto const& [function, most] : worst) {
    std::printf("%ld %s: largest relative error %.2g\n", function.first, function.second ? "complex" : "real",
                most.error);
    EXPECT_LE(most.error, BoundOf(function.first)) << most.at;
  }
}

/** Signs on the cuts along the real axis, where the reference has none to choose. */
TEST(Accuracy, SidesOfCuts) {
  constexpr double kPi = 3.141592653589793;
  struct Case {
    long id;
    double x;
    double real, imaginary;
  };
  constexpr Case kCases[] = {
      {OpId::Arcsine, 2.0, kPi / 2, -1.3169578969248166},
      {OpId::Arcsine, -2.0, -kPi / 2, 1.3169578969248166},
      {OpId::Arccosine, 2.0, 0.0, -1.3169578969248166},
      {OpId::Arccosine, -2.0, kPi, -1.3169578969248166},
      {OpId::Archypercosine, 0.5, 0.0, kPi / 3},
      {OpId::Archypercosine, -2.0, 1.3169578969248166, kPi},
      {OpId::Archypertangent, 2.0, 0.5493061443340549, kPi / 2},
      {OpId::Archypertangent, -2.0, -0.5493061443340549, kPi / 2},
      {OpId::Archypercotangent, 0.0, 0.0, kPi / 2},
      {OpId::SquareRoot, -4.0, 0.0, 2.0},
      {OpId::Archypersecant, 2.0, 0.0, kPi / 3},
      {OpId::Arcsecant, 0.5, 0.0, -1.3169578969248166},
  };
  for (Case const& c : kCases) {
    for (Operand const& operand : {Operand(c.x), Operand(Complex(c.x, 0.0)), Operand(Complex(c.x, -0.0))}) {
      SCOPED_TRACE(std::to_string(c.id) + " of " + std::to_string(c.x));
      Value const actual = CQMBench(c.id, {operand}).RunComplex();
      EXPECT_LE(RelativeError(actual, {c.real, c.imaginary}), kBound) << Describe(actual);
    }
  }
}

}  // namespace

}  // namespace qumel::test
