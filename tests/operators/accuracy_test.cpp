// Compares the real and complex functions with reference values from an independent source, and states the
// largest relative error of each. The values and the script that made them stand beside this file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include "base/number_text.h"
#include "operator_bench.h"

namespace qumel::test {

namespace {

/** Errors in units of the modulus of the value. */
constexpr double kBound = 2e-15;

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

/** A line of the table: an operation on reals, or on complex numbers, and its value. */
struct Reference {
  long id = 0;
  bool isComplex = false;
  Operands operands;
  Complex value;
};

bool Read(std::string const& line, Reference& reference) {
  std::istringstream words(line);
  char kind = ' ';
  if (!(words >> reference.id >> kind)) return false;
  std::vector<double> numbers;
  for (std::string word; words >> word;) numbers.push_back(ParseDouble(word.c_str()));
  reference.isComplex = kind == 'C';
  std::size_t const width = reference.isComplex ? 2 : 1;
  if (numbers.size() < 2 * width || numbers.size() % width != 0) return false;
  auto const at = [&](std::size_t i) { return Complex(numbers[i], width == 2 ? numbers[i + 1] : 0.0); };
  std::size_t i = 0;
  for (; i + width < numbers.size(); i += width) {
    reference.operands.push_back(reference.isComplex ? Operand(at(i)) : Operand(numbers[i]));
  }
  reference.value = at(i);
  return true;
}

/** How many times the error of a step on the way shows in the value. Roots are powers with a rounded 1/n,
 * whose error grows with the logarithm; some inverse functions are by definition those of 1/z, which is
 * rounded, and steep near a branch point. */
double Magnification(Reference const& reference) {
  auto const at = [&](std::size_t i) {
    auto const* const z = std::get_if<Complex>(&reference.operands[i]);
    return z != nullptr ? *z : Complex(std::get<double>(reference.operands[i]));
  };
  Complex const z = at(0);
  auto const slope = [&](Complex branchPoint, bool isLogarithmic) {
    double const distances = std::abs(z - branchPoint) * std::abs(z + branchPoint);
    return (isLogarithmic ? std::abs(z) / distances : 1.0 / std::sqrt(distances)) / std::abs(reference.value);
  };
  constexpr Complex kI(0.0, 1.0);
  switch (reference.id) {
    case OpId::CubeRoot: return std::abs(std::log(z)) / 3.0;
    case OpId::Root: return std::abs(std::log(at(1)) / z);
    case OpId::Arccotangent: return slope(kI, true);
    case OpId::Archypercotangent: return slope(1.0, true);
    case OpId::Arcsecant:
    case OpId::Arccosecant:
    case OpId::Archypersecant: return slope(1.0, false);
    case OpId::Archypercosecant: return slope(kI, false);
    default: return 0.0;
  }
}

template <class Call>
void ForEachReference(Call call) {
  std::ifstream file(QUMEL_REFERENCE_VALUES);
  ASSERT_TRUE(file) << QUMEL_REFERENCE_VALUES;
  for (std::string line; std::getline(file, line);) {
    Reference reference;
    ASSERT_TRUE(Read(line, reference)) << line;
    call(line, reference);
  }
}

TEST(Accuracy, OfFunctionsAgainstReferenceValues) {
  constexpr long kFewestPoints = 150;
  struct Measured {
    long points = 0;
    double error = 0.0;
    double judged = 0.0;  // the error in view of the steps on the way
    std::string at;
  };
  std::map<std::pair<long, bool>, Measured> functions;
  ForEachReference([&](std::string const& line, Reference const& reference) {
    CQMBench bench(reference.id, reference.operands);
    Value const actual = reference.isComplex ? bench.Run(EQMWay::Complex) : bench.Run(EQMWay::StepByStep);
    double const error = RelativeError(actual, reference.value);
    Measured& measured = functions[{reference.id, reference.isComplex}];
    ++measured.points;
    measured.error = std::max(measured.error, error);
    double const judged = error / (1.0 + Magnification(reference));
    if (judged < measured.judged) return;
    measured.judged = judged;
    measured.at = line + " but " + Describe(actual);
  });
  EXPECT_EQ(functions.size(), 61U);  // 31 of complex numbers; all but the argument of reals as well
  double largest = 0.0;
  for (auto const& [function, measured] : functions) {
    std::printf("%ld %s: largest relative error %.2g at %ld points\n", function.first,
                function.second ? "complex" : "real", measured.error, measured.points);
    EXPECT_GE(measured.points, kFewestPoints) << function.first;
    EXPECT_LE(measured.judged, kBound) << measured.at;
    largest = std::max(largest, measured.judged);
  }
  std::printf("largest of all, in view of how steps on the way magnify it: %.2g\n", largest);
}

TEST(Accuracy, RealFunctionsEqualThePlatforms) {
  using Function = double (*)(double);
  std::map<long, Function> const functions = {
      {OpId::Sine, std::sin},       {OpId::Cosine, std::cos},       {OpId::Tangent, std::tan},
      {OpId::Arcsine, std::asin},   {OpId::Arccosine, std::acos},   {OpId::Arctangent, std::atan},
      {OpId::Hypersine, std::sinh}, {OpId::Hypercosine, std::cosh}, {OpId::CommonLog, std::log10},
      {OpId::NaturalLog, std::log}, {OpId::SquareRoot, std::sqrt},  {OpId::AbsoluteValue, std::fabs},
  };
  ForEachReference([&](std::string const& line, Reference const& reference) {
    auto const function = functions.find(reference.id);
    if (reference.isComplex || function == functions.end()) return;
    double const expected = function->second(std::get<double>(reference.operands.front()));
    EXPECT_EQ(Describe(CQMBench(reference.id, reference.operands).Run(EQMWay::StepByStep)),
              Describe(Value(expected)))
        << line;
    EXPECT_EQ(Describe(CQMBench(reference.id, reference.operands).Run(EQMWay::Complex)),
              Describe(Value(expected)))
        << line;
  });
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
      Value const actual = CQMBench(c.id, {operand}).Run(EQMWay::Complex);
      EXPECT_LE(RelativeError(actual, {c.real, c.imaginary}), kBound) << Describe(actual);
    }
  }
}

}  // namespace

}  // namespace qumel::test
