// Circular and hyperbolic functions where they are more than their formulas: zeros, domains, infinities,
// units.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "operator_bench.h"

namespace qumel::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kHalfPi = std::numbers::pi / 2.0;
Fails const complexWanted{Status::NeedsComplex};

TEST(Circular, ZeroDenominatorsGiveZero) {
  for (long const id : {OpId::Cotangent, OpId::Cosecant, OpId::Hypercotangent, OpId::Hypercosecant}) {
    SCOPED_TRACE(id);
    ExpectOperations({{id, {0.0}, 0.0, 0.0}, {id, {-0.0}, 0.0, 0.0}, {id, {Complex()}, 0.0, Complex()}});
  }
}

TEST(Circular, InfinitiesAndNaNsFollowTheRules) {
  ExpectOperations({
      {OpId::Sine, {kInfinity}, kNaN, kNaN},
      {OpId::Hypertangent, {kInfinity}, 1.0, 1.0},
      {OpId::Hypertangent, {-kInfinity}, -1.0, -1.0},
      {OpId::Hypertangent, {-800.0}, -1.0, -1.0},
      {OpId::Hypersecant, {-800.0}, 0.0, 0.0},
      {OpId::Hypercosecant, {kInfinity}, 0.0, 0.0},
      {OpId::Arcsine, {kNaN}, kNaN, kNaN},
      {OpId::Arccotangent, {0.0}, kHalfPi, kHalfPi},
      {OpId::Arccotangent, {-0.0}, kHalfPi, kHalfPi},
      {OpId::Arccotangent, {-kInfinity}, -0.0, -0.0},
      {OpId::Arccotangent, {-1.0}, -kHalfPi / 2.0, -kHalfPi / 2.0},
      {OpId::Arcsecant, {kInfinity}, kHalfPi, kHalfPi},
      {OpId::Arccosecant, {-1.0}, -kHalfPi, -kHalfPi},
      {OpId::Archypercosine, {kNaN}, kNaN, kNaN},
      {OpId::Archypertangent, {-1.0}, -kInfinity, -kInfinity},
      {OpId::Archypercotangent, {1.0}, kInfinity, kInfinity},
      {OpId::Archypersecant, {0.0}, kInfinity, kInfinity},
      {OpId::Archypersecant, {-0.0}, kInfinity, kInfinity},
      {OpId::Archypercosecant, {-kInfinity}, -0.0, -0.0},
      // complex ones that overflow on the way
      {OpId::Sine, {Complex(0.0, 800.0)}, 0.0, Complex(0.0, kInfinity)},
      {OpId::Cosine, {Complex(0.0, 800.0)}, 1.0, Complex(kInfinity, -0.0)},
      {OpId::Secant, {Complex(0.0, 800.0)}, 1.0, Complex(0.0, 0.0)},
      {OpId::Tangent, {Complex(0.0, 800.0)}, 0.0, Complex(0.0, 1.0)},
  });
}

TEST(Circular, ArcsinesKeepPartsWhoseSquaresVanishOrOverflow) {
  double const slope = 1.0 / std::sqrt(0.75);  // of the arcsine at a half
  for (double const y : {1e-139, 1e-150, 1e-160, 1e-300, 1e-307}) {
    SCOPED_TRACE(y);
    for (double const side : {1.0, -1.0}) {
      for (double const x : {0.5, -0.5}) {
        Value const value = CQMBench(OpId::Arcsine, {Complex(x, side * y)}).Run(EQMWay::Complex);
        EXPECT_TRUE(Agree(value, Complex(std::asin(x), side * y * slope), 1e-15)) << Describe(value);
        Complex const found = std::get<Complex>(value);
        EXPECT_NEAR(found.imag() / (side * y * slope), 1.0, 1e-15);
      }
    }
  }
  for (double const x : {1e149, 1e151, 1e200, 1e300}) {
    Value const value = CQMBench(OpId::Arcsine, {Complex(x, x)}).Run(EQMWay::Complex);
    Complex const expected(kHalfPi / 2.0, std::log(x) + 1.5 * std::numbers::ln2);
    EXPECT_TRUE(Agree(value, expected, 1e-15)) << Describe(value);
  }
}

TEST(Circular, CosinesOfComplexNumbersWithoutImaginaryPartKeepTheSignOfTheirZero) {
  ExpectOperations({
      {OpId::Cosine, {Complex(3.0, 0.0)}, std::cos(3.0), Complex(std::cos(3.0), -0.0)},
      {OpId::Cosine, {Complex(-3.0, 0.0)}, std::cos(3.0), Complex(std::cos(3.0), 0.0)},
      {OpId::Sine, {Complex(3.0, 0.0)}, std::sin(3.0), Complex(std::sin(3.0), -0.0)},
  });
}

TEST(Circular, RealFunctionsEndWhereTheirDomainsEnd) {
  struct SQMDomain {
    long id;
    std::vector<double> inside, outside;
  };
  for (SQMDomain const& domain : {
           SQMDomain{OpId::Arcsine, {-1.0, 0.3, 1.0}, {-1.0000000000000002, 1.0000000000000002, kInfinity}},
           SQMDomain{OpId::Arccosine, {-1.0, 0.3, 1.0}, {-1.0000000000000002, kNaN, -kInfinity}},
           SQMDomain{OpId::Arcsecant, {-1.0, 1.0, -kInfinity}, {-0.9999999999999999, 0.0, -0.0}},
           SQMDomain{OpId::Arccosecant, {-1.0, 1.0, kInfinity}, {0.9999999999999999, 0.0, -0.0}},
           SQMDomain{OpId::Archypersine, {-kInfinity, 0.0, 1e300}, {}},
           SQMDomain{OpId::Archypercosine, {1.0, 1e300, kInfinity}, {0.9999999999999999, 0.0, -kInfinity}},
           SQMDomain{OpId::Archypertangent, {-1.0, 0.0, 1.0}, {1.0000000000000002, -kInfinity}},
           SQMDomain{OpId::Archypercotangent, {-1.0, 1.0, kInfinity}, {0.9999999999999999, 0.0, -0.0}},
           SQMDomain{OpId::Archypersecant, {0.0, 0.5, 1.0}, {-0.5, 1.0000000000000002, kInfinity}},
           SQMDomain{OpId::Archypercosecant, {0.0, -0.5, kInfinity}, {}},
       }) {
    SCOPED_TRACE(domain.id);
    for (double const x : domain.inside) {
      EXPECT_TRUE(std::holds_alternative<double>(CQMBench(domain.id, {x}).Run(EQMWay::StepByStep))) << x;
    }
    for (double const x : domain.outside) {
      EXPECT_EQ(Describe(CQMBench(domain.id, {x}).Run(EQMWay::StepByStep)), Describe(complexWanted)) << x;
      EXPECT_TRUE(std::holds_alternative<Complex>(CQMBench(domain.id, {x}).Run(EQMWay::Complex))) << x;
    }
  }
}

TEST(Circular, UnitsScaleBothPartsOfOperandsOrOfResults) {
  CQMBenchContext inDegrees;
  inDegrees.toRadians = std::numbers::pi / 180.0;
  Complex const z(25.0, -40.0);
  struct SQMFamily {
    std::vector<long> ids;
    double in, out;
  };
  double const to = inDegrees.toRadians;
  for (SQMFamily const& family : {
           SQMFamily{{OpId::Sine, OpId::Cosine, OpId::Tangent, OpId::Cotangent, OpId::Secant, OpId::Cosecant},
                     to,
                     1.0},
           SQMFamily{{OpId::Arcsine, OpId::Arccosine, OpId::Arctangent, OpId::Arccotangent, OpId::Arcsecant,
                      OpId::Arccosecant},
                     1.0,
                     1.0 / to},
           SQMFamily{
               {OpId::Hypersine, OpId::Hypercosine, OpId::Hypertangent, OpId::Hypercotangent,
                OpId::Hypersecant, OpId::Hypercosecant, OpId::Archypersine, OpId::Archypercosine,
                OpId::Archypertangent, OpId::Archypercotangent, OpId::Archypersecant, OpId::Archypercosecant},
               1.0,
               1.0},
       }) {
    for (long const id : family.ids) {
      SCOPED_TRACE(id);
      Value const bare = CQMBench(id, {z * family.in}).Run(EQMWay::Complex);
      ASSERT_TRUE(std::holds_alternative<Complex>(bare)) << Describe(bare);
      Value const scaled = CQMBench(id, {z}, &inDegrees).Run(EQMWay::Complex);
      EXPECT_TRUE(Agree(scaled, std::get<Complex>(bare) * family.out, 1e-15)) << Describe(scaled);
    }
  }
}

}  // namespace
}  // namespace qumel::test
