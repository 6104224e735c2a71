// Constants, the last result and the words that change settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "operator_bench.h"

namespace qumel::test {
namespace {

TEST(Constants, HaveTheirValuesAndLeaveOperandsAlone) {
  ExpectOperations({
      {OpId::Pi, {}, 3.141592653589793, 3.141592653589793},
      {OpId::Phi, {}, 1.618033988749895, 1.618033988749895},
      {OpId::Euler, {}, 0.5772156649015329, 0.5772156649015329},
      {OpId::True, {}, true, true},
      {OpId::False, {}, false, false},
  });
  for (long const id : {OpId::Pi, OpId::True, OpId::LastResult, OpId::Degrees, OpId::ForceComplex}) {
    CQMBench bench(id, {1.0, Unknown{}});
    EXPECT_EQ(bench.Op().GetOperandCount(), 0) << id;
    EXPECT_EQ(bench.Verify(), Error::None) << id;
  }
}

SQMLastResult Number(double x) { return {TypeLetter::kNumber, x, 0.0, false, ""}; }
SQMLastResult ComplexNumber(double x, double y) { return {TypeLetter::kComplex, x, y, false, ""}; }
SQMLastResult Boolean(bool truth) { return {TypeLetter::kBoolean, 0.0, 0.0, truth, ""}; }
SQMLastResult Text(char const* text) { return {TypeLetter::kString, 0.0, 0.0, false, text}; }
SQMLastResult Nothing() { return {TypeLetter::kNone, 9.0, 9.0, true, "left over"}; }

TEST(LastResult, TakesWhateverTypeItFindsWhenItRuns) {
  std::string const longText(900, 'q');
  struct SQMCase {
    SQMLastResult last;
    Value value;
  };
  SQMCase const cases[] = {
      {Number(4.5), 4.5},
      {Boolean(true), true},
      {Text("abc"), "abc"},
      {Nothing(), 0.0},
      {Text(longText.c_str()), longText},
  };
  CQMBenchContext context;
  for (SQMCase const& compiled : cases) {
    for (SQMCase const& found : cases) {
      if (found.last.type == TypeLetter::kNone && compiled.last.type != TypeLetter::kNumber) continue;
      context.lastResult = compiled.last;
      auto const expression = context.Compile("!3001.0", true);
      for (SQMLastResult const& last : {compiled.last, found.last, compiled.last, found.last}) {
        context.lastResult = last;
        expression->Resolve();
      }
      EXPECT_EQ(Describe(ValueOf(expression->GetResultDatum())), Describe(found.value))
          << compiled.last.type << " to " << found.last.type;
    }
  }
}

TEST(LastResult, DeliversComplexNumbersToComplexEvaluationOnly) {
  CQMBenchContext context;
  context.lastResult = ComplexNumber(1.0, 2.0);
  auto const expression = context.Compile("!3001.0", true);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(Fails{Error::ResultIsComplex}));
  context.allowComplex = true;
  EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(Complex(1.0, 2.0)));
  context.lastResult = Number(3.0);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(Complex(3.0, 0.0)))
      << "the old part is gone";
  context.lastResult = Text("abc");
  EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe("abc"));
  context.lastResult = ComplexNumber(5.0, 6.0);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*expression)), Describe(Complex(5.0, 6.0)));
}

TEST(LastResult, IsRefusedWhereItsOperatorExpectsAnotherKind) {
  CQMBenchContext context;
  context.lastResult = Number(4.0);
  auto const sum = context.Compile("!3001.0#d1!1101.2", true);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*sum)), Describe(5.0));
  context.lastResult = Text("abc");
  EXPECT_EQ(Describe(CQMBenchContext::Run(*sum)), Describe(Fails{Error::TypeMismatch}));
  auto const joined = context.Compile("!3001.0$1:d!1101.2", true);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*joined)), Describe("abcd"));
  context.lastResult = Number(6.0);
  EXPECT_EQ(Describe(CQMBenchContext::Run(*joined)), Describe(Fails{Error::TypeMismatch}));
  EXPECT_EQ(Describe(CQMBenchContext::Run(*sum)), Describe(7.0));
}

TEST(ModeWords, ChangeOneSettingEach) {
  struct SQMWord {
    long id;
    char CQMBenchContext::*setting;
    char value;
  };
  for (SQMWord const& word : {SQMWord{OpId::Radians, &CQMBenchContext::angleUnit, 'R'},
                              SQMWord{OpId::Degrees, &CQMBenchContext::angleUnit, 'D'},
                              SQMWord{OpId::Grads, &CQMBenchContext::angleUnit, 'G'},
                              SQMWord{OpId::Millicles, &CQMBenchContext::angleUnit, 'M'},
                              SQMWord{OpId::Polar, &CQMBenchContext::coordinateFormat, 'P'},
                              SQMWord{OpId::Rect, &CQMBenchContext::coordinateFormat, 'R'},
                              SQMWord{OpId::Hex, &CQMBenchContext::numberBase, 'H'},
                              SQMWord{OpId::Duodec, &CQMBenchContext::numberBase, 'T'},
                              SQMWord{OpId::Decimal, &CQMBenchContext::numberBase, 'D'},
                              SQMWord{OpId::Octal, &CQMBenchContext::numberBase, 'O'},
                              SQMWord{OpId::Binary, &CQMBenchContext::numberBase, 'B'}}) {
    CQMBenchContext context;
    EXPECT_EQ(Describe(CQMBench(word.id, {}, &context).Run(EQMWay::StepByStep)), Describe(0.0));
    EXPECT_EQ(context.*word.setting, word.value) << word.id;
    std::string const others{context.angleUnit, context.coordinateFormat, context.numberBase};
    EXPECT_EQ(std::count(others.begin(), others.end(), ' '), 2) << word.id;
  }

  CQMBenchContext context;
  auto const say = [&context](long id) { CQMBench(id, {}, &context).Run(EQMWay::Complex); };
  say(OpId::ForceComplex);
  EXPECT_TRUE(context.forceComplex && !context.allowComplex);
  say(OpId::AllowComplex);
  EXPECT_TRUE(context.forceComplex && context.allowComplex);
  say(OpId::RealOnly);
  EXPECT_TRUE(context.forceComplex && !context.allowComplex);
}

TEST(ModeWords, PrecisionTruncatesAndRefusesNegativeLimits) {
  struct SQMLimit {
    Operand operand;
    long status;
    int limit;
  };
  for (SQMLimit const& row :
       {SQMLimit{2.9, Error::None, 2}, SQMLimit{-0.5, Error::None, 0},
        SQMLimit{-1.0, Error::PrecisionIsNegative, 7}, SQMLimit{Complex(3.0, -4.0), Error::None, 3},
        SQMLimit{std::numeric_limits<double>::quiet_NaN(), Error::PrecisionIsNegative, 7}}) {
    CQMBenchContext context;
    context.precisionLimit = 7;
    Value const expected = row.status == Error::None ? Value(0.0) : Value(Fails{row.status});
    EXPECT_EQ(Describe(CQMBench(OpId::Precision, {row.operand}, &context).Run(EQMWay::StepByStep)),
              Describe(expected));
    EXPECT_EQ(context.precisionLimit, row.limit);
  }
  ExpectVerifications(
      {{OpId::Precision, {"a"}, Error::TypeMismatch}, {OpId::Precision, {}, Error::NotEnoughOperands}});
}

}  // namespace
}  // namespace qumel::test
