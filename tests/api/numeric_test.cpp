// Numeric functions over several runs of an expression, and the exported helpers, which need no context.
#include <cmath>
#include <limits>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kFixedOne = 65536.0;

TEST(NumericHelpers, FixedPointRotationIsExact) {
  struct Case {
    double degrees;
    long cosine, sine;  // in units of 1/65536
  };
  constexpr Case kCases[] = {
      {0.0, 65537, -2},       {30.0, 56758, 32768},  {-30.0, 56758, -32769},
      {-45.5, 45937, -46747}, {60.0, 32768, 56758},  {89.9, 116, 65533},
      {90.0, 2, 65535},       {99.0, -10250, 64727}, {-170.0, -11254, -64554},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.degrees);
    EXPECT_EQ(QMU_Sine(c.degrees) * kFixedOne, static_cast<double>(c.sine));
    EXPECT_EQ(QMU_Cosine(c.degrees) * kFixedOne, static_cast<double>(c.cosine));
    EXPECT_EQ(QMU_Tangent(c.degrees), static_cast<double>(c.sine) / static_cast<double>(c.cosine));
  }
  for (double const beyond : {1e300, -1e300, kInfinity, std::nan("")}) {
    EXPECT_LE(std::fabs(QMU_Sine(beyond)), 1.001) << "no angle overflows: " << beyond;
  }
}

TEST(NumericHelpers, InverseHyperbolicFunctionsAreAccurateOnEachSideOfTheirLimits) {
  constexpr double kBound = 1e-15;
  for (double const x : {1.4e-8, 1.6e-8, 1e-3, 0.7, 2.0, 2.1, 6.7e7, 6.8e7, 1e300}) {
    EXPECT_NEAR(QMU_ArcHyperSine(x) / std::asinh(x), 1.0, kBound) << x;
    EXPECT_EQ(QMU_ArcHyperSine(-x), -QMU_ArcHyperSine(x)) << x;
  }
  for (double const x : {1.0000000000000002, 1.001, 1.9, 2.0, 2.1, 6.7e7, 6.8e7, 1e300}) {
    EXPECT_NEAR(QMU_ArcHyperCosine(x) / std::acosh(x), 1.0, kBound) << x;
  }
  for (double const x : {2.1e-16, 2.3e-16, 1e-9, 0.3, 0.4999, 0.5, 0.7, 0.9999999999999999}) {
    EXPECT_NEAR(QMU_ArcHyperTangent(x) / std::atanh(x), 1.0, kBound) << x;
    EXPECT_EQ(QMU_ArcHyperTangent(-x), -QMU_ArcHyperTangent(x)) << x;
  }
  EXPECT_EQ(QMU_ArcHyperSine(1e-9), 1e-9);
  EXPECT_TRUE(std::signbit(QMU_ArcHyperSine(-0.0)));
  EXPECT_EQ(QMU_ArcHyperSine(-kInfinity), -kInfinity);
  EXPECT_EQ(QMU_ArcHyperCosine(1.0), 0.0);
  EXPECT_TRUE(std::isnan(QMU_ArcHyperCosine(0.9999999999999999)));
  EXPECT_TRUE(std::isnan(QMU_ArcHyperCosine(-kInfinity)));
  EXPECT_EQ(QMU_ArcHyperTangent(1.0), kInfinity);
  EXPECT_EQ(QMU_ArcHyperTangent(-1.0), -kInfinity);
  EXPECT_TRUE(std::isnan(QMU_ArcHyperTangent(1.0000000000000002)));
  EXPECT_EQ(QMU_ArcHyperTangent(-2e-16), -2e-16);
}

TEST(NumericHelpers, ElementaryOnesHoldToTheirFormulas) {
  struct Case {
    char const* what;
    double actual, expected;
  };
  Case const cases[] = {
      {"hypotenuse", QMU_Hypotenuse(3.0, -4.0), 5.0},
      {"hypotenuse without overflow", QMU_Hypotenuse(3e200, 4e200), 5e200},
      {"hypotenuse of nothing", QMU_Hypotenuse(0.0, -7.0), 7.0},
      {"argument", QMU_ComplexArg(-1.0, 0.0), 3.141592653589793},
      {"argument, y second", QMU_ComplexArg(0.0, -2.0), -1.5707963267948966},
      {"logarithm beside 1", QMU_Log1P(1e-17), 1e-17},
      {"logarithm of 1 more", QMU_Log1P(1.0), 0.6931471805599453},
      {"logarithm of a modulus", QMU_ComplexLogAbs(3.0, -4.0), 1.6094379124341003},
      {"the same without overflow", QMU_ComplexLogAbs(-3e300, 4e300), 692.3849658106478},
      {"factorial", QMU_Factorial(6.0), 720.0},
      {"factorial of nothing", QMU_Factorial(-3.0), 1.0},
      {"factorial of a fraction", QMU_Factorial(4.5), 4.5 * 3.5 * 2.5 * 1.5},
      {"factorial beyond doubles", QMU_Factorial(171.0), kInfinity},
      {"factorial without end", QMU_Factorial(kInfinity), kInfinity},
  };
  for (Case const& c : cases) EXPECT_DOUBLE_EQ(c.actual, c.expected) << c.what;
}

TEST(NumericHelpers, ReciprocalIsInPlaceAndTakesNull) {
  double real = 3.0, imaginary = 4.0;
  QMU_ComplexReciprocal(&real, nullptr);
  QMU_ComplexReciprocal(nullptr, &imaginary);
  QMU_ComplexReciprocal(nullptr, nullptr);
  EXPECT_EQ(real, 3.0);
  EXPECT_EQ(imaginary, 4.0);
  QMU_ComplexReciprocal(&real, &imaginary);
  EXPECT_DOUBLE_EQ(real, 0.12);
  EXPECT_DOUBLE_EQ(imaginary, -0.16);
}

using NumericFunctions = InterfaceTest;

TEST_F(NumericFunctions, ModeWordsReachSinesOfTheNextRunAndOtherFunctionsAtOnce) {
  constexpr double kSineOf90Radians = 0.89399666360055785;
  constexpr double kBound = 1e-10;
  qmSetAllowComplexResults(true);
  struct Case {
    char const* expression;
    double firstRun, secondRun;
  };
  constexpr Case kCases[] = {
      {"degrees; sin 90", kSineOf90Radians, 1.0},
      {"degrees; sec 60", 2.0, 2.0},
      {"degrees; arccos 0.5", 60.0, 60.0},
      {"degrees; imag(sqrt(-1)) + sin 90 - 1", 1.0, 1.0},  // complex evaluation
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.expression);
    qmSetAngleUnit('R');
    Handle const handle = qmParseExp(c.expression);
    for (double const expected : {c.firstRun, c.secondRun}) {
      EXPECT_NEAR(qmEvalExpHndlToNum(handle), expected, kBound);
      EXPECT_EQ(qmGetLastErrorID(), kNone);
    }
    qmDeleteExp(handle);
  }
}

TEST_F(NumericFunctions, HandOverToComplexEvaluationInALoop) {
  qmSetAllowComplexResults(true);
  Handle const handle = qmParseExp("x = 2; s = 0; while (x > -3) do; s += sqrt(x); x -= 1; next; return s");
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(qmEvalExpHndl(handle), 'C');
    EXPECT_DOUBLE_EQ(qmGetLastRealResult(), 1.0 + std::sqrt(2.0));
    EXPECT_DOUBLE_EQ(qmGetLastImagResult(), 1.0 + std::sqrt(2.0));
  }
  qmDeleteExp(handle);
}

}  // namespace

}  // namespace qumel::testing
