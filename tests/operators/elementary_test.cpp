// Elementary functions, complex numbers and the numeric helpers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "operator_bench.h"
#include "rules/numeric_utilities.h"

namespace qumel::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = std::numbers::pi;
Complex const z(3.0, -4.0);
Fails const complexWanted{Status::NeedsComplex};
Fails const undefined{Error::ResultNotDefined};

TEST(Elementary, RoundsAndSplitsNumbersOfAnySize) {
  ExpectOperations({
      {OpId::AbsoluteValue, {-2.5}, 2.5, 2.5},
      {OpId::AbsoluteValue, {z}, 3.0, 5.0},
      {OpId::AbsoluteValue, {Complex(-7.0, 0.0)}, 7.0, 7.0},
      {OpId::AbsoluteValue, {Complex(3e300, 4e300)}, 3e300, 5e300},
      {OpId::Sign, {-0.0}, 0.0, 0.0},
      {OpId::Sign, {kNaN}, 0.0, 0.0},
      {OpId::Sign, {-kInfinity}, -1.0, -1.0},
      {OpId::Sign, {Complex(2.0, -9.0)}, 1.0, 1.0},
      {OpId::NearestInteger, {2.5}, 2.0, 2.0},
      {OpId::NearestInteger, {3.5}, 4.0, 4.0},
      {OpId::NearestInteger, {-2.5}, -2.0, -2.0},
      {OpId::NearestInteger, {-3.5}, -4.0, -4.0},
      {OpId::NearestInteger, {-0.4}, 0.0, 0.0},
      {OpId::NearestInteger, {0.49999999999999994}, 0.0, 0.0},
      {OpId::NearestInteger, {2.6}, 3.0, 3.0},
      {OpId::NearestInteger, {-2.6}, -3.0, -3.0},
      {OpId::NearestInteger, {2147483647.5}, 2147483648.0, 2147483648.0},
      {OpId::NearestInteger, {1e12}, -2147483647.0, -2147483647.0},  // goes through 32 bits
      {OpId::NearestInteger, {-1e12}, -2147483649.0, -2147483649.0},
      {OpId::NearestInteger, {kInfinity}, -2147483647.0, -2147483647.0},
      {OpId::NearestInteger, {kNaN}, -2147483649.0, -2147483649.0},
      {OpId::NearestInteger, {Complex(1.5, 8.5)}, 2.0, 2.0},
      {OpId::IntegerPart, {-2.7}, -2.0, -2.0},
      {OpId::IntegerPart, {1e300}, 1e300, 1e300},
      {OpId::IntegerPart, {Complex(2.7, 2.7)}, 2.0, 2.0},
      {OpId::Fraction, {-2.75}, -0.75, -0.75},
      {OpId::Fraction, {4294967296.5}, 0.5, 0.5},
      {OpId::Fraction, {kInfinity}, kNaN, kNaN},
      {OpId::Floor, {-2.7}, -3.0, -3.0},
      {OpId::Floor, {1e18}, 1e18, 1e18},
      {OpId::Floor, {Complex(-0.5, 0.5)}, -1.0, -1.0},
      {OpId::Ceiling, {2.1}, 3.0, 3.0},
      {OpId::Ceiling, {-3e9}, -3e9, -3e9},
      {OpId::Ceiling, {Complex(0.5, 0.5)}, 1.0, 1.0},
  });
}

TEST(Elementary, TakesRoots) {
  Fails const infinite{Error::ResultIsInfinite};
  ExpectOperations(
      {
          {OpId::SquareRoot, {9.0}, 3.0, 3.0},
          {OpId::SquareRoot, {-4.0}, complexWanted, Complex(0.0, 2.0)},
          {OpId::SquareRoot, {kNaN}, kNaN, Complex(kNaN, 0.0)},
          {OpId::SquareRoot, {Complex(-4.0, -0.0)}, complexWanted, Complex(0.0, 2.0)},
          {OpId::SquareRoot, {Complex(0.0, 0.0)}, 0.0, Complex(0.0, 0.0)},
          {OpId::SquareRoot, {z}, std::sqrt(3.0), Complex(2.0, -1.0)},
          {OpId::SquareRoot, {Complex(-3.0, 4.0)}, complexWanted, Complex(1.0, 2.0)},
          {OpId::SquareRoot, {Complex(-3.0, -4.0)}, complexWanted, Complex(1.0, -2.0)},
          {OpId::SquareRoot, {Complex(0.0, 8.0)}, 0.0, Complex(2.0, 2.0)},
          {OpId::SquareRoot, {Complex(1e300, 1e-300)}, 1e150, Complex(1e150, 0.0)},

          {OpId::CubeRoot, {27.0}, 3.0, 3.0},
          {OpId::CubeRoot, {-8.0}, -2.0, Complex(1.0, std::sqrt(3.0))},
          {OpId::CubeRoot, {-0.0}, 0.0, 0.0},
          {OpId::CubeRoot, {Complex(0.0, 8.0)}, 0.0, Complex(std::sqrt(3.0), 1.0)},
          {OpId::CubeRoot, {Complex(0.0, 0.0)}, 0.0, Complex(0.0, 0.0)},
          {OpId::CubeRoot, {Complex(kInfinity, 0.0)}, kInfinity, Complex(kInfinity, 0.0)},

          {OpId::Root, {3.0, 27.0}, 3.0, 3.0},
          {OpId::Root, {3.0, -8.0}, -2.0, Complex(1.0, std::sqrt(3.0))},
          {OpId::Root, {-3.0, -8.0}, -0.5, Complex(0.25, -std::sqrt(3.0) / 4.0)},
          {OpId::Root, {2.0, -4.0}, complexWanted, Complex(0.0, 2.0)},
          {OpId::Root, {-2.0, -4.0}, complexWanted, Complex(0.0, -0.5)},
          {OpId::Root, {3.9, -1.0}, -1.0, Complex(std::cos(kPi / 3.9), std::sin(kPi / 3.9))},
          {OpId::Root, {0.5, -3.0}, complexWanted, Complex(9.0, 0.0)},
          {OpId::Root, {0.0, 5.0}, infinite, infinite},
          {OpId::Root, {0.0, -5.0}, infinite, infinite},
          {OpId::Root, {0.0, kNaN}, infinite, infinite},
          {OpId::Root, {0.0, 0.0}, 0.0, 0.0},
          {OpId::Root, {2.0, 0.0}, 0.0, 0.0},
          {OpId::Root, {2.0, Complex(3.0, 4.0)}, complexWanted, Complex(2.0, 1.0)},
          {OpId::Root,
           {Complex(0.0, 1.0), Complex(0.0, 1.0)},
           complexWanted,
           Complex(std::exp(kPi / 2.0), 0.0)},
          {OpId::Root, {Complex(0.0, 0.0), z}, complexWanted, infinite},
          {OpId::Root, {Complex(0.0, 0.0), Complex()}, complexWanted, Complex()},
          {OpId::Root, {kInfinity, -2.0}, complexWanted, Complex(1.0, 0.0)},
          {OpId::Root, {2.0, Complex(kInfinity, 0.0)}, complexWanted, Complex(kInfinity, 0.0)},
      },
      1e-14);
}

TEST(Elementary, TakesLogarithmsInTheOrderOfItsTests) {
  ExpectOperations(
      {
          {OpId::NaturalLog, {std::numbers::e}, 1.0, 1.0},
          {OpId::NaturalLog, {0.0}, undefined, undefined},
          {OpId::NaturalLog, {-0.0}, undefined, undefined},
          {OpId::NaturalLog, {-1.0}, kNaN, kNaN},
          {OpId::NaturalLog, {Complex(-1.0, 0.0)}, kNaN, Complex(kNaN, 0.0)},
          {OpId::NaturalLog, {Complex(0.0, 1.0)}, undefined, undefined},
          {OpId::NaturalLog, {Complex(-1.0, 1.0)}, kNaN, Complex(std::log(2.0) / 2.0, 0.75 * kPi)},
          {OpId::NaturalLog,
           {Complex(1e308, 1e308)},
           std::log(1e308),
           Complex(std::log(1e308) + std::log(2.0) / 2.0, kPi / 4.0)},
          {OpId::NaturalLog, {kInfinity}, kInfinity, kInfinity},
          {OpId::CommonLog, {1000.0}, 3.0, 3.0},
          {OpId::CommonLog, {0.0}, undefined, undefined},
          {OpId::CommonLog, {-10.0}, kNaN, kNaN},
          {OpId::CommonLog, {Complex(0.0, 10.0)}, undefined, undefined},
          {OpId::CommonLog,
           {Complex(1.0, 1.0)},
           0.0,
           Complex(std::log10(2.0) / 2.0, kPi / 4.0 / std::log(10.0))},
          {OpId::CommonLog, {Complex(100.0, 0.0)}, 2.0, Complex(2.0, 0.0)},
      },
      1e-15);
}

TEST(ComplexNumbers, AreMadeAndTakenApart) {
  ExpectOperations(
      {
          {OpId::RealPart, {7.0}, 7.0, 7.0},
          {OpId::RealPart, {z}, 3.0, 3.0},
          {OpId::ImaginaryPart, {7.0}, 0.0, 0.0},
          {OpId::ImaginaryPart, {z}, -4.0, -4.0},
          {OpId::Conjugate, {z}, complexWanted, Complex(3.0, 4.0)},
          {OpId::Conjugate, {7.0}, complexWanted, Complex(7.0, 0.0)},
          {OpId::Argument, {Complex(-1.0, 1.0)}, complexWanted, 0.75 * kPi},
          {OpId::Argument, {-4.0}, complexWanted, kPi},
          {OpId::RectangularComplex, {3.0, 4.0}, complexWanted, Complex(3.0, 4.0)},
          {OpId::RectangularComplex,
           {Complex(3.0, 4.0), Complex(1.0, 2.0)},
           complexWanted,
           Complex(1.0, 5.0)},
          {OpId::PolarComplex, {2.0, 0.0}, complexWanted, Complex(2.0, 0.0)},
          {OpId::PolarComplex, {2.0, kPi / 3.0}, complexWanted, Complex(1.0, std::sqrt(3.0))},
          {OpId::PolarComplex, {Complex(2.0, 9.0), Complex(0.0, 9.0)}, complexWanted, Complex(2.0, 0.0)},
      },
      1e-15);

  for (long const id : {OpId::RealPart, OpId::ImaginaryPart}) {
    CQMBench bench(id, {7.0});
    bench.Op().GetResultOperand()->SetComplex(1.0, 2.0);
    EXPECT_EQ(Describe(bench.Run(EQMWay::StepByStep)), Describe(complexWanted))
        << "a result that has been complex";
  }
}

TEST(ComplexNumbers, PolarAnglesAreInTheUnitOfTheContextAndArgumentsAreNot) {
  CQMBenchContext context;
  context.toRadians = kPi / 180.0;
  Value const made = CQMBench(OpId::PolarComplex, {2.0, 90.0}, &context).Run(EQMWay::Complex);
  EXPECT_TRUE(Agree(made, Complex(0.0, 2.0), 1e-15)) << Describe(made);
  Value const angle = CQMBench(OpId::Argument, {Complex(0.0, 2.0)}, &context).Run(EQMWay::Complex);
  EXPECT_TRUE(Agree(angle, kPi / 2.0, 0.0)) << Describe(angle);
}

TEST(ComplexNumbers, AreRefusedAtCompilationAfterEveryOtherFault) {
  ExpectVerifications({
      {OpId::Conjugate, {1.0}, Error::ResultIsComplex},
      {OpId::Argument, {1.0}, Error::ResultIsComplex},
      {OpId::Argument, {z}, Error::ComplexOperandFound},
      {OpId::RectangularComplex, {1.0, 2.0}, Error::ResultIsComplex},
      {OpId::PolarComplex, {1.0, z}, Error::ComplexOperandFound},
      {OpId::PolarComplex, {1.0, true}, Error::TypeMismatch},
      {OpId::RectangularComplex, {"a", Unknown{}}, Error::NotDefined},
      {OpId::RectangularComplex, {1.0, Untyped{}}, Error::NotDefined},
      {OpId::RectangularComplex, {1.0}, Error::NotEnoughOperands},
      {OpId::Conjugate, {1.0, 2.0}, Error::TooManyOperands},
      // these ask only when they run
      {OpId::SquareRoot, {-4.0}, Error::None},
      {OpId::RealPart, {1.0}, Error::None},
  });

  struct SQMRefusal {
    char const* postfix;
    bool whenCompiled;
  };
  for (SQMRefusal const& refusal : {SQMRefusal{"#d1!1802.1", true}, SQMRefusal{"#d4!2501.1!2101.1", false}}) {
    CQMBenchContext context;
    auto const expression = context.Compile(refusal.postfix, false);
    EXPECT_EQ(expression->GetErrorState() == Error::ResultIsComplex, refusal.whenCompiled) << refusal.postfix;
    EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(Fails{Error::ResultIsComplex}));
  }
}

// sqrt(x - 1), run again and again while x changes: complex once, real again without a trace
TEST(ComplexNumbers, LeaveNoImaginaryPartBehind) {
  CQMBenchContext context;
  context.allowComplex = true;
  auto variable = std::make_unique<CQMDatum>(EQMDataType::Number, "x");
  CQMDatum& x = *variable;
  ASSERT_EQ(context.GetGlobalSymbolTable()->AddSymbol(variable.release()), Error::None);
  auto const expression = context.Compile("@x#d1!1102.2!2101.1", true);
  struct SQMRun {
    double x;
    Complex result;
  };
  for (SQMRun const& run : {SQMRun{10.0, 3.0}, SQMRun{-8.0, Complex(0.0, 3.0)}, SQMRun{5.0, 2.0}}) {
    x.SetReal(run.x);
    ASSERT_EQ(expression->Resolve(), Error::None);
    EXPECT_EQ(expression->GetResultDatum()->Real(), run.result.real());
    EXPECT_EQ(expression->GetResultDatum()->Imaginary(), run.result.imag());
  }
}

TEST(NumericUtilities, HoldToTheirFormulas) {
  EXPECT_EQ(Hypotenuse(3.0, 4.0), 5.0);
  EXPECT_EQ(Hypotenuse(0.0, -7.0), 7.0);
  EXPECT_EQ(Hypotenuse(0.0, 0.0), 0.0);
  EXPECT_DOUBLE_EQ(Hypotenuse(3e200, -4e200), 5e200);
  EXPECT_EQ(Hypotenuse(kInfinity, 1.0), kInfinity);
  EXPECT_TRUE(std::isnan(Hypotenuse(kNaN, 3.0)));
  EXPECT_TRUE(std::isnan(Hypotenuse(0.0, kNaN)));

  EXPECT_EQ(ComplexArg(-1.0, 0.0), kPi);
  EXPECT_EQ(ComplexArg(-1.0, -0.0), -kPi);
  EXPECT_EQ(ComplexArg(0.0, 2.0), kPi / 2.0);

  for (double const x : {1e-300, 1e-17, 1e-9, -1e-9, 0.5, -0.5, 3.0, 1e15}) {
    EXPECT_NEAR(Log1P(x) / std::log1p(x), 1.0, 1e-15) << x;
  }
  EXPECT_EQ(Log1P(0.0), 0.0);
  EXPECT_TRUE(std::isnan(Log1P(-2.0)));

  EXPECT_EQ(ComplexLogAbs(1.0, 0.0), 0.0);
  EXPECT_NEAR(ComplexLogAbs(1e308, 1e308), std::log(1e308) + std::log(2.0) / 2.0, 1e-12);
  EXPECT_NEAR(ComplexLogAbs(-3e-300, 4e-300), std::log(5e-300), 1e-12);

  double re = 3.0, im = -4.0;
  ComplexReciprocal(re, im);
  EXPECT_NEAR(re, 0.12, 1e-16);
  EXPECT_NEAR(im, 0.16, 1e-16);
  re = 0.0, im = 2e200;
  ComplexReciprocal(re, im);
  EXPECT_EQ(re, 0.0);
  EXPECT_EQ(im, -5e-201);

  EXPECT_EQ(Factorial(-3.0), 1.0);
  EXPECT_EQ(Factorial(1.0), 1.0);
  EXPECT_EQ(Factorial(1.5), 1.5);
  EXPECT_EQ(Factorial(4.5), 4.5 * 3.5 * 2.5 * 1.5);
  EXPECT_EQ(Factorial(10.0), 3628800.0);
  EXPECT_EQ(Factorial(1e300), kInfinity);
  EXPECT_EQ(Factorial(kInfinity), kInfinity);
  EXPECT_TRUE(std::isnan(Factorial(kNaN)));
}

}  // namespace
}  // namespace qumel::test
