// Arithmetic: values, codes, substitutes and folding.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "operator_bench.h"

namespace qumel::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallest = -2147483648.0;

Complex const z(3.0, 4.0), w(1.0, -2.0);

TEST(Arithmetic, ComputesExactValuesAndCodes) {
  Fails const divided{Error::DivisionByZero}, undefined{Error::ResultNotDefined}, overflow{Error::Overflow};
  ExpectOperations(
      {
          {OpId::Addition, {2.0, 3.5}, 5.5, 5.5},
          {OpId::Addition, {z, 2.0}, 5.0, Complex(5.0, 4.0)},
          {OpId::Subtraction, {2.0, z}, -1.0, Complex(-1.0, -4.0)},
          {OpId::Multiplication, {z, w}, 3.0, Complex(11.0, -2.0)},
          {OpId::ImpliedMultiplication, {2.0, 4.0}, 8.0, 8.0},
          {OpId::Division, {5.0, 0.0}, divided, divided},
          {OpId::Division, {5.0, -0.0}, divided, divided},
          {OpId::Division, {-1.0, 4.0}, -0.25, -0.25},
          {OpId::Division, {Complex(8.0, 2.0), Complex(0.0, 2.0)}, divided, Complex(1.0, -4.0)},
          {OpId::Division, {z, Complex()}, divided, divided},
          {OpId::Division, {kNaN, 2.0}, kNaN, kNaN},

          {OpId::Modulo, {7.0, -3.0}, 1.0, 1.0},
          {OpId::Modulo, {-7.0, 3.0}, -1.0, -1.0},
          {OpId::Modulo, {7.9, 2.5}, 1.0, 1.0},
          {OpId::Modulo, {7.0, 0.9}, divided, divided},
          {OpId::Modulo, {7.0, -0.9}, divided, divided},
          {OpId::Modulo, {kSmallest + 1.0, -1.0}, 0.0, 0.0},
          {OpId::Modulo, {kSmallest, -1.0}, divided, divided},
          {OpId::Modulo, {kSmallest - 9.5, -1.9}, divided, divided},
          {OpId::Modulo, {kNaN, -1.0}, divided, divided},
          {OpId::Modulo, {Complex(kSmallest, 1.0), -1.0}, divided, divided},
          {OpId::Modulo, {7.0, kInfinity}, 7.0, 7.0},
          {OpId::Modulo, {Complex(7.0, 5.0), Complex(4.0, 9.0)}, 3.0, 3.0},
          {OpId::Modulo, {z, Complex(0.0, 9.0)}, divided, divided},

          {OpId::Factorial, {0.0}, 1.0, 1.0},
          {OpId::Factorial, {3.9}, 6.0, 6.0},
          {OpId::Factorial, {-0.9}, 1.0, 1.0},
          {OpId::Factorial, {-1.0}, undefined, undefined},
          {OpId::Factorial, {171.0}, overflow, overflow},
          {OpId::Factorial, {170.9}, std::tgamma(171.0), std::tgamma(171.0)},
          {OpId::Factorial, {kNaN}, undefined, undefined},
          {OpId::Factorial, {Complex(4.0, 1.0)}, 24.0, 24.0},

          {OpId::TightMinus, {0.0}, 0.0, 0.0},
          {OpId::LooseMinus, {-0.0}, 0.0, 0.0},
          {OpId::TightMinus, {2.0}, -2.0, -2.0},
          {OpId::TightMinus, {Complex(0.0, 2.0)}, 0.0, Complex(0.0, -2.0)},
          {OpId::TightMinus, {Complex(1.0, 0.0)}, -1.0, Complex(-1.0, 0.0)},
          {OpId::TightMinus, {kNaN}, kNaN, kNaN},
          {OpId::LoosePlus, {-0.0}, -0.0, -0.0},
          {OpId::TightPlus, {z}, 3.0, z},

          {OpId::Square, {-3.0, 2.0}, 9.0, 9.0},
          {OpId::Square, {z, 2.0}, 9.0, Complex(-7.0, 24.0)},
          {OpId::Cube, {-3.0, 3.0}, -27.0, -27.0},
          {OpId::Cube, {w, 3.0}, 1.0, Complex(-11.0, 2.0)},
      },
      1e-15);
}

TEST(Arithmetic, KeepsTheSignOfZeroWhereItMatters) {
  for (long const id : {OpId::TightMinus, OpId::LooseMinus}) {
    Value const real = CQMBench(id, {0.0}).Run(EQMWay::StepByStep);
    Value const complex = CQMBench(id, {Complex(0.0, 0.0)}).Run(EQMWay::Complex);
    EXPECT_TRUE(Agree(real, 0.0, 0.0)) << Describe(real);
    EXPECT_TRUE(Agree(complex, Complex(0.0, 0.0), 0.0)) << Describe(complex);
  }
}

TEST(Arithmetic, SendsNegativeBasesToTheComplexFormula) {
  Fails const complexWanted{Status::NeedsComplex};
  ExpectOperations(
      {
          {OpId::Power, {8.0, 1.0 / 3.0}, 2.0, 2.0},
          {OpId::PowerStars, {2.0, 10.0}, 1024.0, 1024.0},
          {OpId::Power, {0.0, 0.0}, 1.0, 1.0},
          {OpId::Power, {kNaN, 0.0}, 1.0, 1.0},
          {OpId::Power, {-0.0, -1.0}, -kInfinity, -kInfinity},
          {OpId::Power, {-8.0, 2.0}, complexWanted, Complex(64.0, 0.0)},
          {OpId::Power, {-1.0, 0.5}, complexWanted, Complex(0.0, 1.0)},
          {OpId::Power,
           {2.0, Complex(0.0, 1.0)},
           1.0,
           Complex(std::cos(std::log(2.0)), std::sin(std::log(2.0)))},
          {OpId::Power, {z, 2.0}, 9.0, Complex(-7.0, 24.0)},
      },
      1e-14);
}

TEST(Arithmetic, GivesPowersOfAComplexZeroValuesOfTheirOwn) {
  Complex const zero(0.0, 0.0), nothing(kNaN, kNaN);
  Fails const divided{Error::DivisionByZero};
  struct SQMPower {
    Complex exponent;
    Value power;
  };
  std::vector<SQMPower> const powers = {
      {{2.0, 0.0}, zero},
      {{2.5, -7.0}, zero},
      {{1e-300, 1.0}, zero},
      {{kInfinity, 0.0}, zero},
      {{0.0, 0.0}, Complex(1.0, 0.0)},
      {{-0.0, -0.0}, Complex(1.0, 0.0)},
      {{kNaN, 0.0}, nothing},
      {{2.0, kNaN}, nothing},
      {{-1.0, kNaN}, nothing},
      {{-1.0, 0.0}, divided},
      {{-1.0, 3.0}, divided},
      {{0.0, 1.0}, divided},
      {{-kInfinity, 0.0}, divided},
  };
  for (long const id : {OpId::Power, OpId::PowerStars}) {
    for (auto const& [exponent, power] : powers) {
      SCOPED_TRACE(Describe(exponent));
      EXPECT_TRUE(Agree(CQMBench(id, {zero, exponent}).Run(EQMWay::Complex), power, 0.0));
      EXPECT_TRUE(Agree(CQMBench(id, {Complex(-0.0, -0.0), exponent}).Run(EQMWay::Complex), power, 0.0));
      EXPECT_TRUE(Agree(CQMBench(id, {0.0, exponent}).Run(EQMWay::Complex), power, 0.0));
      if (exponent.imag() == 0.0) {
        EXPECT_TRUE(Agree(CQMBench(id, {zero, exponent.real()}).Run(EQMWay::Complex), power, 0.0));
      }
    }
    EXPECT_EQ(Describe(CQMBench(id, {0.0, -1.0}).Run(EQMWay::Complex)), Describe(kInfinity))
        << "of real numbers";
  }
  for (long const id : {OpId::Square, OpId::Cube}) {
    EXPECT_TRUE(Agree(CQMBench(id, {zero, id == OpId::Square ? 2.0 : 3.0}).Run(EQMWay::Complex), zero, 0.0));
  }
}

TEST(Arithmetic, StepsTheRealPartOfVariables) {
  struct SQMStep {
    long id;
    double result, after;
  };
  for (SQMStep const& step :
       {SQMStep{OpId::PreIncrement, 6.0, 6.0}, SQMStep{OpId::PostIncrement, 5.0, 6.0},
        SQMStep{OpId::PreDecrement, 4.0, 4.0}, SQMStep{OpId::PostDecrement, 5.0, 4.0}}) {
    SCOPED_TRACE(step.id);
    CQMBench real(step.id, {Variable{5.0}});
    EXPECT_EQ(Describe(real.Run(EQMWay::StepByStep)), Describe(step.result));
    EXPECT_EQ(real.Given(0).Real(), step.after);

    CQMBench complex(step.id, {Variable{Complex(5.0, 2.0)}});
    EXPECT_EQ(complex.Verify(), Error::ComplexOperandFound);
    EXPECT_EQ(Describe(complex.Run(EQMWay::Complex)), Describe(step.result));
    EXPECT_EQ(Describe(ValueOf(&complex.Given(0))), Describe(Complex(step.after, 2.0)));
  }
}

TEST(Arithmetic, VerifiesOperands) {
  ExpectVerifications({
      {OpId::Addition, {1.0}, Error::NotEnoughOperands},
      {OpId::Addition, {1.0, 2.0, 3.0}, Error::TooManyOperands},
      {OpId::Addition, {Missing{}, 2.0}, Error::NotEnoughOperands},
      {OpId::Addition, {1.0, 2.0}, Error::None},
      {OpId::Addition, {1.0, z}, Error::ComplexOperandFound},
      {OpId::Addition, {1.0, true}, Error::NotANumber},
      {OpId::Addition, {1.0, "b"}, Error::UseSubstitute},
      {OpId::Addition, {true, "b"}, Error::NotANumber},
      {OpId::Addition, {"a", Unknown{}}, Error::NotDefined},
      {OpId::Addition, {1.0, Untyped{}}, Error::NotDefined},
      {OpId::Subtraction, {1.0, true}, Error::TypeMismatch},
      {OpId::Subtraction, {"a", Unknown{}}, Error::NotDefined},
      {OpId::Subtraction, {Untyped{}, 1.0}, Error::NotDefined},
      {OpId::TightMinus, {"a"}, Error::TypeMismatch},
      {OpId::PreIncrement, {Variable{1.0}}, Error::None},
      {OpId::PreIncrement, {Literal{1.0}}, Error::TargetIsConstant},
      {OpId::PostDecrement, {1.0}, Error::TargetIsConstant},
      {OpId::PostIncrement, {Variable{true}}, Error::NotANumber},
      {OpId::PostIncrement, {Variable{"a"}}, Error::NotANumber},
      {OpId::PreDecrement, {Unknown{}}, Error::NotDefined},
  });
}

/** Ids of the operators of an expression after optimisation, and its value. */
struct SQMOptimized {
  char const* postfix;
  std::vector<long> ids;
  Value value;
};

TEST(Arithmetic, FoldsOnlyWhatIsKnown) {
  constexpr long kAdd = OpId::Addition, kFolded = OpId::NumericConstant;
  SQMOptimized const expressions[] = {
      {"#d1#d2!1101.2", {kFolded}, 3.0},
      {"#d1#d2!1101.2#d4!1101.2", {kFolded, kFolded}, 7.0},
      {"#d2#d3!1301.2#d1!1101.2", {OpId::Multiplication, kAdd}, 7.0},
      {"!2803.0#d1!1101.2", {OpId::Pi, kAdd}, 4.1415926535897931},
      {"#d3!2501.1#d0!1401.2", {OpId::TightMinus, kFolded}, 1.0},
      {"#d3!2501.1#d2!1401.2", {OpId::TightMinus, OpId::Square}, 9.0},
      {"#d3!2501.1#d3!1402.2", {OpId::TightMinus, OpId::Cube}, -27.0},
      {"#d2#d4!1401.2", {OpId::Power}, 16.0},
      {"#d2#d1#d1!1101.2!1401.2", {kFolded, OpId::Square}, 4.0},
      {"$1:a$2:bc!1101.2", {OpId::Concatenation}, "abc"},
  };
  for (SQMOptimized const& expected : expressions) {
    SCOPED_TRACE(expected.postfix);
    CQMBenchContext context;
    auto const expression = context.Compile(expected.postfix, true);
    std::vector<long> ids;
    for (long i = 0; i < expression->GetOperatorCount(); ++i)
      ids.push_back(expression->GetOperatorByIndex(i)->GetId());
    EXPECT_EQ(ids, expected.ids);
    for (int run = 0; run < 2; ++run) {
      EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(expected.value)) << "run " << run;
    }
    auto const plain = context.Compile("#d3!2501.1#d2!1401.2", false);
    EXPECT_EQ(plain->GetOperatorByIndex(1)->GetId(), OpId::Power);
  }
}

TEST(Arithmetic, FoldedPowersTakeComplexBases) {
  CQMBenchContext context;
  context.allowComplex = true;
  auto const square = context.Compile("#d3#d4!50.2#d2!1401.2", true);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*square)), Describe(Complex(-7.0, 24.0)));
  auto const one = context.Compile("#d3#d4!50.2#d0!1401.2", true);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*one)), Describe(1.0));
}

TEST(Arithmetic, ANegativeBaseEndsInTheComplexResolverOrIsRefused) {
  for (bool const allowed : {false, true}) {
    CQMBenchContext context;
    context.allowComplex = allowed;
    auto const power = context.Compile("#d3!2501.1#d2!1401.2", false);
    for (int run = 0; run < 2; ++run) {
      Value const value = CQMBenchContext::Run(*power);
      Value const expected = allowed ? Value(Complex(9.0, 0.0)) : Value(Fails{Error::ResultIsComplex});
      EXPECT_TRUE(Agree(value, expected, 1e-14)) << Describe(value);
    }
  }
}

}  // namespace
}  // namespace qumel::test
