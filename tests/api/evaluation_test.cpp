// Evaluation of texts and of parsed expressions, the last result, and results as text.
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class Evaluation : public InterfaceTest {
 protected:
  void SetUp() override {
    InterfaceTest::SetUp();
    qmSetAllowComplexResults(true);
  }
};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct SQMResultCase {
  char const* text;
  char type;
  double real;
  double imaginary;
  bool boolean;
  char const* string;
};

/** Gives every field of the last result a value that no case has. */
void MarkLastResult() {
  ASSERT_EQ(qmEvalExpStr("1 == 1"), 'B');
  ASSERT_EQ(qmEvalExpStr("\"before\""), 'S');
  ASSERT_EQ(qmEvalExpStr("sqrt(0-49)+77"), 'C');
}
constexpr double kOldReal = 77.0;
constexpr double kOldImaginary = 7.0;
constexpr double kUntouched = -99.0;
constexpr char kOldText[] = "before";

void ExpectResult(SQMResultCase const& expected) {
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_EQ(qmGetLastResultType(), expected.type);
  EXPECT_EQ(qmGetLastNumResult(), expected.real);
  EXPECT_EQ(qmGetLastRealResult(), expected.real);
  EXPECT_EQ(qmGetLastImagResult(), expected.imaginary);
  EXPECT_EQ(qmGetLastBoolResult(), expected.boolean);
  EXPECT_STREQ(qmGetLastStrResult(), expected.string);
}

/** Runs every case from its text and twice by its handle. */
template <class ByText, class ByHandle>
void CheckByEveryWay(std::vector<SQMResultCase> const& cases, ByText byText, ByHandle byHandle) {
  for (SQMResultCase const& test : cases) {
    SCOPED_TRACE(test.text);
    MarkLastResult();
    byText(test.text, test);
    ExpectResult(test);
    Handle const handle = qmParseExp(test.text);
    ASSERT_NE(handle, 0U);
    for (int run = 1; run <= 2; ++run) {
      SCOPED_TRACE(run);
      MarkLastResult();
      byHandle(handle, test);
      ExpectResult(test);
    }
    qmDeleteExp(handle);
  }
}

TEST_F(Evaluation, ResultsAsTheyAre) {
  CheckByEveryWay(
      {
          {"2*pi+1", 'N', 7.283185307179586, 0.0, true, kOldText},
          {"1+2", 'N', 3.0, 0.0, true, kOldText},
          {"sqrt(0-4)", 'C', 0.0, 2.0, true, kOldText},
          {"\"text\"", 'S', kOldReal, kOldImaginary, true, "text"},
          {"\"\"", 'S', kOldReal, kOldImaginary, true, ""},
          {"1 > 2", 'B', kOldReal, kOldImaginary, false, kOldText},
          {"1; 2", 'N', 2.0, 0.0, true, kOldText},
      },
      [](char const* text, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpStr(text), test.type); },
      [](Handle handle, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpHndl(handle), test.type); });
}

TEST_F(Evaluation, ResultsAsNumbers) {
  CheckByEveryWay(
      {
          {"1+2", 'N', 3.0, 0.0, true, kOldText},
          {"sqrt(0-4)+1", 'C', 1.0, 2.0, true, kOldText},
          {"\"12.5 apples\"", 'N', 12.5, 0.0, true, "12.5 apples"},
          {"\"apples\"", 'N', 0.0, 0.0, true, "apples"},
          {"\"0x1.8p-1 of it\"", 'N', 0.75, 0.0, true, "0x1.8p-1 of it"},
          {"\"0x1p+-3\"", 'N', 1.0, 0.0, true, "0x1p+-3"},
          {"\"-0X1.\" + \"8P+-3\"", 'N', -1.5, 0.0, true, "-0X1.8P+-3"},
          {"1 < 2", 'N', 1.0, 0.0, true, kOldText},
          {"1 > 2", 'N', 0.0, 0.0, true, kOldText},
      },
      [](char const* text, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpStrToNum(text), test.real); },
      [](Handle handle, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpHndlToNum(handle), test.real); });
}

TEST_F(Evaluation, ResultsAsComplexNumbers) {
  auto const check = [](double real, double reported, SQMResultCase const& test) {
    EXPECT_EQ(real, test.real);
    EXPECT_EQ(reported, test.text[0] == '"' ? kUntouched : test.imaginary);
  };
  CheckByEveryWay(
      {
          {"1+2", 'C', 3.0, 0.0, true, kOldText},
          {"sqrt(0-4)+1", 'C', 1.0, 2.0, true, kOldText},
          {"\"12.5 apples\"", 'C', 12.5, 0.0, true, kOldText},
          {"1 < 2", 'C', 1.0, 0.0, true, kOldText},
      },
      [&](char const* text, SQMResultCase const& test) {
        double imaginary = kUntouched;
        double const real = qmEvalExpStrToComp(text, &imaginary);
        check(real, imaginary, test);
        EXPECT_EQ(qmEvalExpStrToComp(text, nullptr), test.real);
      },
      [&](Handle handle, SQMResultCase const& test) {
        double imaginary = kUntouched;
        double const real = qmEvalExpHndlToComp(handle, &imaginary);
        check(real, imaginary, test);
        EXPECT_EQ(qmEvalExpHndlToComp(handle, nullptr), test.real);
      });
}

TEST_F(Evaluation, ResultsAsBooleans) {
  CheckByEveryWay(
      {
          {"1+2", 'B', kOldReal, kOldImaginary, true, kOldText},
          {"2-2", 'B', kOldReal, kOldImaginary, false, kOldText},
          {"sqrt(0-4)", 'B', kOldReal, kOldImaginary, true, kOldText},  // its real part is 0
          {"\"false\"", 'B', kOldReal, kOldImaginary, true, "false"},
          {"\"\"", 'B', kOldReal, kOldImaginary, false, ""},
          {"1 > 2", 'B', kOldReal, kOldImaginary, false, kOldText},
      },
      [](char const* text, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpStrToBool(text), test.boolean); },
      [](Handle handle, SQMResultCase const& test) { EXPECT_EQ(qmEvalExpHndlToBool(handle), test.boolean); });
}

TEST_F(Evaluation, ResultsAsTexts) {
  CheckByEveryWay(
      {
          {"1/3", 'N', 1.0 / 3.0, 0.0, true, "0.333333333333"},
          {"sqrt(0-4)+1", 'C', 1.0, 2.0, true, "( 1.000000000000 |_ 2.000000000000 )"},
          {"(sqrt(0-4)+1)*0+3", 'C', 3.0, 0.0, true, "3.000000000000"},
          {"\"text\"", 'S', 0.0, 0.0, true, "text"},
          {"1 < 2", 'B', 1.0, 0.0, true, "true"},
          {"1 > 2", 'B', 0.0, 0.0, false, "false"},
      },
      [](char const* text, SQMResultCase const& test) { EXPECT_STREQ(qmEvalExpStrToStr(text), test.string); },
      [](Handle handle, SQMResultCase const& test) {
        EXPECT_STREQ(qmEvalExpHndlToStr(handle), test.string);
      });
}

TEST_F(Evaluation, ANaNIsTrueAndAnImaginaryPartCountsOnlyWhenAllowed) {
  qmCreateNumVar('G', "nan", kNaN);
  EXPECT_TRUE(qmEvalExpStrToBool("nan"));
  Handle const handle = qmParseExp("sqrt(0-4)");
  EXPECT_TRUE(qmEvalExpHndlToBool(handle));
  qmSetAllowComplexResults(false);
  EXPECT_FALSE(qmEvalExpHndlToBool(handle));  // it stays complex, but only its real part is looked at
  EXPECT_EQ(qmGetLastErrorID(), kNone);
}

TEST_F(Evaluation, ABareUnknownNameIsNoResultAndNoError) {
  struct SQMCase {
    char const* name;
    void (*call)();
    char type;
    double real;
    bool boolean;
    char const* text;
  };
  constexpr SQMCase kCases[] = {
      {"any", [] { EXPECT_EQ(qmEvalExpStr("unknown"), 'X'); }, 'X', kOldReal, true, kOldText},
      {"number", [] { EXPECT_EQ(qmEvalExpStrToNum("unknown"), 0.0); }, 'N', 0.0, true, kOldText},
      {"complex", [] { EXPECT_EQ(qmEvalExpStrToComp("unknown", nullptr), 0.0); }, 'C', 0.0, true, kOldText},
      {"boolean", [] { EXPECT_FALSE(qmEvalExpStrToBool("unknown")); }, 'B', kOldReal, false, kOldText},
      {"text", [] { EXPECT_STREQ(qmEvalExpStrToStr("unknown"), ""); }, 'X', 0.0, true, ""},
  };
  for (auto const& [name, call, type, real, boolean, text] : kCases) {
    SCOPED_TRACE(name);
    MarkLastResult();
    call();
    ExpectResult({"unknown", type, real, real == 0.0 ? 0.0 : kOldImaginary, boolean, text});
  }
}

TEST_F(Evaluation, ATextWithoutAnythingToEvaluateHasAnEmptyTextAndNoNumber) {
  ASSERT_EQ(qmDefineExpOp('G', "silent", "prefix", "string", "number x", nullptr, "// nothing to do"), kNone);
  CheckByEveryWay(
      {
          {"// only a comment", 'X', 0.0, 0.0, true, ""},
          {"  // one\n  // and another\n", 'X', 0.0, 0.0, true, ""},
          {"unknown // as a bare name", 'X', 0.0, 0.0, true, ""},
          {"silent 1", 'S', 0.0, 0.0, true, ""},
      },
      [](char const* text, SQMResultCase const&) { EXPECT_STREQ(qmEvalExpStrToStr(text), ""); },
      [](Handle handle, SQMResultCase const&) { EXPECT_STREQ(qmEvalExpHndlToStr(handle), ""); });
}

TEST_F(Evaluation, AFailureKeepsTheLastResult) {
  MarkLastResult();
  qmCreateNumVar('G', "zero", 0.0);
  Handle const handle = qmParseExp("1/zero");
  double imaginary = -1.0;
  EXPECT_EQ(qmEvalExpStr("1/0"), 'C');
  EXPECT_EQ(qmEvalExpStrToNum("(1"), kOldReal);
  EXPECT_EQ(qmEvalExpStrToComp("1/0", &imaginary), kOldReal);
  EXPECT_EQ(imaginary, -1.0);
  EXPECT_TRUE(qmEvalExpStrToBool("1/0"));
  EXPECT_STREQ(qmEvalExpStrToStr("1/0"), kOldText);
  EXPECT_EQ(qmEvalExpHndl(handle), 'C');
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
  EXPECT_EQ(qmGetLastNumResult(), kOldReal);
  EXPECT_EQ(qmGetLastImagResult(), kOldImaginary);
  EXPECT_STREQ(qmGetLastStrResult(), kOldText);
}

TEST_F(Evaluation, AParsedExpressionRunsAgainAfterErrors) {
  ASSERT_NE(qmCreateNumVar('G', "x", 0.0), 0U);
  Handle const handle = qmParseExp("1/x");
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 0.0);
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
  qmClearLastError();
  EXPECT_TRUE(qmSetNumVar('G', "x", 4.0));
  qmSetLastError(4711);
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 0.25);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
}

TEST_F(Evaluation, OptimisationIsForParsedExpressionsOnly) {
  qmSetAllowComplexResults(false);
  qmCreateNumVar('G', "x", -3.0);
  EXPECT_EQ(qmEvalExpHndlToNum(qmParseExp("x^2")), 9.0);
  qmEvalExpStr("x^2");
  EXPECT_EQ(qmGetLastErrorID(), kResultIsComplex);
}

TEST_F(Evaluation, TheSwitchToComplexNumbersRepeatsNothingAndIsRemembered) {
  qmCreateNumVar('G', "x", 0.0);
  qmCreateNumVar('G', "n", 0.0);
  Handle const handle = qmParseExp("n += 1; sqrt(x)+1");
  struct SQMRun {
    double x;
    bool isAllowed;
    char type;
    double real, imaginary;
    long code;
  };
  constexpr SQMRun kRuns[] = {
      {4.0, false, 'N', 3.0, 0.0, kNone},  {-4.0, false, 'N', 3.0, 0.0, kResultIsComplex},
      {4.0, true, 'N', 3.0, 0.0, kNone},   {-4.0, true, 'C', 1.0, 2.0, kNone},
      {4.0, true, 'C', 3.0, 0.0, kNone},  // complex for good, but nothing of the old imaginary part
      {-9.0, false, 'C', 1.0, 3.0, kNone},
  };
  double runs = 0.0;
  for (SQMRun const& run : kRuns) {
    SCOPED_TRACE(runs);
    qmSetNumVar('G', "x", run.x);
    qmSetAllowComplexResults(run.isAllowed);
    EXPECT_EQ(qmEvalExpHndl(handle), run.type);
    EXPECT_EQ(qmGetLastErrorID(), run.code);
    EXPECT_EQ(qmGetLastRealResult(), run.real);
    EXPECT_EQ(qmGetLastImagResult(), run.imaginary);
    EXPECT_EQ(qmGetNumVarValue('G', "n"), ++runs);
  }
}

TEST_F(Evaluation, AModeWordInsideReachesSinCosAndTanInTheNextRun) {
  for (char const* const function : {"sin", "cos", "tan"}) {
    SCOPED_TRACE(function);
    std::string const text = std::string(function) + "(30)";
    qmSetAngleUnit('R');
    double const inRadians = qmEvalExpStrToNum(text.c_str());
    qmSetAngleUnit('D');
    double const inDegrees = qmEvalExpStrToNum(text.c_str());
    Handle const handle = qmParseExp(("radians " + text).c_str());
    EXPECT_EQ(qmEvalExpHndlToNum(handle), inDegrees);
    EXPECT_EQ(qmEvalExpHndlToNum(handle), inRadians);
  }
  // others ask when they run
  qmSetAngleUnit('R');
  double const inRadians = qmEvalExpStrToNum("sec(30)");
  qmSetAngleUnit('D');
  EXPECT_EQ(qmEvalExpStrToNum("radians sec(30)"), inRadians);
}

TEST_F(Evaluation, AFoldedConstantIsNoPlaceForValues) {
  for (char const* const text : {"(1+2) = 7", "(1+2) += 1", "x = 1; x <=> (1+2)"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(qmEvalExpStr(text), 'N');  // a result like others, gone with the expression
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    EXPECT_EQ(qmParseExp(text), 0U);
    EXPECT_EQ(qmGetLastErrorID(), 3050);
  }
  Handle const handle = qmParseExp("1+2+3");
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 6.0);
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 6.0);
}

TEST_F(Evaluation, AFaultyTextLeavesNothingThatHoldsAVariable) {
  qmReleaseVarHandle(qmCreateNumVar('G', "x", 1.0));
  qmReleaseVarHandle(qmCreateNumArray('C', "shared", 1, 5, 0, 0, 0, 0, 0));
  ASSERT_EQ(qmEvalExpStrToNum("x + shared[4]"), 1.0);  // makes the resolver, which stays
  long const before = qmGetQumelObjectCount();
  for (char const* const text : {"x + unknown", "x + 1; y = 5; \"a\" - y", "shared[2] + x; if x then 1",
                                 "global fresh = x; unknown + fresh", "x = (x + 1"}) {
    SCOPED_TRACE(text);
    qmEvalExpStr(text);
    EXPECT_NE(qmGetLastErrorID(), kNone);
    EXPECT_EQ(qmParseExp(text), 0U);
  }
  qmClearLastError();
  EXPECT_EQ(qmDeleteVar('G', "fresh"), kNone);  // declared before the fault, so it stayed
  EXPECT_EQ(qmGetQumelObjectCount(), before);
  EXPECT_EQ(qmDeleteVar('G', "x"), kNone);
  EXPECT_EQ(qmDeleteVar('C', "shared"), kNone);
}

TEST_F(Evaluation, HandlesThatNameNoExpression) {
  qmSetLastError(4711);
  Handle const deleted = qmParseExp("1+1");
  ASSERT_NE(deleted, 0U);
  qmDeleteExp(deleted);
  qmSetLastError(4711);
  Handle const others[] = {0, 1, deleted, qmGetCurrentContextHandle(), ~0ULL, 1ULL << 63};
  for (Handle const handle : others) {
    SCOPED_TRACE(handle);
    double imaginary = -1.0;
    EXPECT_EQ(qmEvalExpHndl(handle), 'X');
    EXPECT_EQ(qmEvalExpHndlToNum(handle), 0.0);
    EXPECT_EQ(qmEvalExpHndlToComp(handle, &imaginary), 0.0);
    EXPECT_EQ(imaginary, -1.0);
    EXPECT_FALSE(qmEvalExpHndlToBool(handle));
    EXPECT_EQ(qmEvalExpHndlToStr(handle), nullptr);
    EXPECT_EQ(qmAnnotateParsedExp(handle), nullptr);
    EXPECT_EQ(qmRevertParsedExp(handle), nullptr);
    qmDeleteExp(handle);
    EXPECT_EQ(qmGetLastErrorID(), 4711);
  }
  EXPECT_NE(qmGetCurrentContextHandle(), 0U);
}

// Handles are looked for in places that others take, and that outlive what they name.
TEST_F(Evaluation, HandlesAreFoundAmongManyAndNeverForWhatTheyDoNotName) {
  constexpr std::size_t kCount = 200;
  std::vector<Handle> expressions(kCount), variables(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    std::string const number = std::to_string(i);
    expressions[i] = qmParseExp(number.c_str());
    variables[i] = qmCreateNumVar('G', ("v" + number).c_str(), static_cast<double>(i));
  }
  qmClearLastError();
  auto const expectAll = [&](bool areThere) {
    for (std::size_t const i : {0UL, 1UL, 100UL, 64UL, 0UL, 1UL, 199UL}) {
      SCOPED_TRACE(i);
      double const value = areThere ? static_cast<double>(i) : 0.0;
      EXPECT_EQ(qmEvalExpHndlToNum(expressions[i]), value);
      EXPECT_EQ(qmGetNumVarValueByHandle(variables[i]), value);
      EXPECT_EQ(qmSetNumVarByHandle(variables[i], value), areThere);
      EXPECT_EQ(qmIsVarHandle(variables[i]), areThere);
      for (Handle const handle : {variables[i], expressions[i] | 1ULL << 52, expressions[i] + 1000}) {
        EXPECT_EQ(qmEvalExpHndl(handle), 'X');
      }
      EXPECT_FALSE(qmIsVarHandle(expressions[i]));
      EXPECT_FALSE(qmIsVarHandle(variables[i] | 1ULL << 52));
      qmClearLastError();
    }
  };
  expectAll(true);
  qmSetContext("Qumel", false);  // whichever context is current
  expectAll(true);
  qmSetContext("test", false);
  expectAll(true);
  for (std::size_t i = 0; i < kCount; ++i) {
    EXPECT_EQ(qmEvalExpHndlToNum(expressions[i]), static_cast<double>(i));
    qmDeleteExp(expressions[i]);
    for (Handle const handle : {expressions[i], Handle{0}, Handle{1} << 32}) {
      EXPECT_EQ(qmEvalExpHndl(handle), 'X');
    }
    expressions[i] = variables[i];
  }
  qmDestroyPrivateContext("test");
  qmCreatePrivateContext("test");
  qmSetContext("test", false);
  expectAll(false);
}

TEST_F(Evaluation, AParsedExpressionRunsInItsOwnContext) {
  qmCreateNumVar('G', "x", 5.0);
  Handle const handle = qmParseExp("x+1");
  qmSetContext("Qumel", false);
  qmEvalExpStr("10");
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 6.0);
  EXPECT_EQ(qmGetLastNumResult(), 10.0);  // of the current context
  EXPECT_NE(std::string(qmAnnotateParsedExp(handle)).find("@x"), std::string::npos);
  EXPECT_STREQ(qmRevertParsedExp(handle), "x+1");
  qmSetContext("test", false);
  EXPECT_EQ(qmGetLastNumResult(), 6.0);
  qmClearContext();
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 6.0);
}

TEST_F(Evaluation, CheckedAndAnnotatedTexts) {
  EXPECT_STREQ(qmCheckExp("1 +  2"), "1+2");
  EXPECT_STREQ(qmCheckExp("(1"), "Postfixer: missing right parenthesis");
  EXPECT_EQ(qmGetLastErrorID(), kMissingRightParen);
  EXPECT_STREQ(qmCheckExp(nullptr), "Executor: bad expression");
  std::string const annotated = qmAnnotateExp("1+2");
  EXPECT_EQ(annotated, "\n\n#d1\t\td1\n#d2\t\td2\n!1101.2\t\t+\n;");
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_STREQ(qmAnnotateExp("(1"), "");
}

TEST_F(Evaluation, TheParseIndexOfAFailure) {
  qmEvalExpStr("1+2");
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  long const whole = qmGetLastParseIndex();
  EXPECT_EQ(whole, 3);
  qmEvalExpStr("1 @ 2+3+4");
  EXPECT_EQ(qmGetLastErrorID(), 2020);
  EXPECT_GT(qmGetLastParseIndex(), 0);
  EXPECT_LT(qmGetLastParseIndex(), 5);
}

// ---- texts of results ----

struct SQMFormatCase {
  void (*choose)();
  char const* expression;
  char const* text;
};

TEST_F(Evaluation, NumbersAsTextsBySettings) {
  constexpr auto kNone = [] {};
  constexpr auto kComma = [] { qmSetRadixMark('C'); };
  constexpr auto kPolar = [] { qmSetCoordinateFormat('P'); };
  constexpr auto kHex = [] { qmSetOutputBase('H'), qmSetFormattedResultPrecisionLimit(2); };
  SQMFormatCase const kCases[] = {
      {kNone, "2^20", "1048576.000000000000"},
      {kNone, "0-1/8", "-0.125000000000"},
      {kNone, "\"a.b\"", "a.b"},
      {kNone, "9^9^3", "inf"},
      {[] { qmSetFormattedResultPrecisionLimit(0); }, "2.5", "2"},
      {[] { qmSetFormattedResultPrecisionLimit(20); }, "0.1", "0.10000000000000000555"},
      {kComma, "1/4", "0,250000000000"},
      {kComma, "\"a.b\"", "a.b"},
      {kComma, "sqrt(0-4)", "( 0,000000000000 |_ 2,000000000000 )"},
      {kPolar, "sqrt(0-4)+2", "( 2.828427124746 |/ 45.000000000014 )"},
      {kPolar, "sqrt(0-4)-2", "( 2.828427124746 |/ -45.000000000014 )"},  // as its reflection
      {kPolar, "sqrt(0-4)", "( 2.000000000000 |/ 90.000000000028 )"},
      {kPolar, "0-sqrt(0-4)", "( 2.000000000000 |/ 90.000000000028 )"},
      {kPolar, "(0-1)+sqrt(0-4)*0", "-1.000000000000"},
      {kHex, "26.5", "0x1A.8"},
      {kHex, "sqrt(0-4)+26.5", "( 0x1A.8 |_ 0x2.0 )"},
  };
  for (auto const& [choose, expression, text] : kCases) {
    SCOPED_TRACE(expression);
    UseContextWith("choice", [choose = choose] {
      qmSetAllowComplexResults(true);
      choose();
    });
    EXPECT_EQ(ToText(expression), text);
    EXPECT_STREQ(qmGetLastStrResult(), text);
    qmDestroyPrivateContext("choice");
  }
}

TEST_F(Evaluation, LongTextsAreCutToTheBuffer) {
  constexpr std::size_t kLongest = 1023;
  std::string const letters(2000, 'a');
  std::string const literal = '"' + letters + '"';
  EXPECT_EQ(ToText(literal.c_str()), letters.substr(0, kLongest));
  EXPECT_EQ(qmEvalExpStr(literal.c_str()), 'S');
  EXPECT_EQ(std::strlen(qmGetLastStrResult()), kLongest);
  EXPECT_EQ(ToText("\"short\""), "short");

  qmSetFormattedResultPrecisionLimit(std::numeric_limits<int>::max());
  EXPECT_EQ(ToText("1/4"), "0.25" + std::string(kLongest - 4, '0'));
  EXPECT_EQ(ToText("sqrt(0-4)").size(), kLongest);
  EXPECT_EQ(ToText("sqrt(0-4)").substr(0, 6), "( 0.00");
  for (char const base : {'B', 'O', 'T', 'H'}) {
    SCOPED_TRACE(base);
    qmSetOutputBase(base);
    EXPECT_LE(ToText("1/3").size(), kLongest);
    EXPECT_LE(ToText("2^0.5+sqrt(0-3)").size(), kLongest);
  }
}

// ---- sizes and orders that call for care ----

TEST_F(Evaluation, LongExpressions) {
  constexpr int kTerms = 20000;
  std::string sum = "1";
  for (int i = 1; i < kTerms; ++i) sum += "+1";
  EXPECT_EQ(qmEvalExpStrToNum(sum.c_str()), kTerms);
  std::string const nested = std::string(kTerms, '(') + "7" + std::string(kTerms, ')');
  EXPECT_EQ(qmEvalExpStrToNum(nested.c_str()), 7.0);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  Handle const handle = qmParseExp(sum.c_str());
  EXPECT_EQ(qmEvalExpHndlToNum(handle), kTerms);
  EXPECT_GT(std::strlen(qmAnnotateParsedExp(handle)), sum.size());
}

TEST_F(Evaluation, ManyParsedExpressionsAreDeletedInAnyOrder) {
  constexpr std::size_t kCount = 30000;
  long const before = qmGetQumelObjectCount();
  std::vector<Handle> handles(kCount);
  for (std::size_t i = 0; i < kCount; ++i) handles[i] = qmParseExp(i % 2 == 0 ? "1+1" : "2*3");
  for (std::size_t i = 1; i < kCount; i += 2) qmDeleteExp(handles[i]);  // inner ones
  for (std::size_t i = 0; i < kCount; i += 2) {
    EXPECT_EQ(qmEvalExpHndlToNum(handles[i]), 2.0);
    EXPECT_EQ(qmEvalExpHndl(handles[i + 1]), 'X');
  }
  for (std::size_t i = kCount; i > 0; i -= 2) qmDeleteExp(handles[i - 2]);  // last to first
  EXPECT_LE(qmGetQumelObjectCount(), before + 3);                           // resolvers made on the way stay
}

Handle g_handle = 0;
int g_calls = 0;

int DeleteTheRunningExpression(Handle) {
  qmDeleteExp(g_handle);
  qmDeleteExp(g_handle);
  return 0;
}
int EvaluateTheRunningExpression(Handle) {
  ++g_calls;
  qmEvalExpHndl(g_handle);
  return 0;
}

TEST_F(Evaluation, AnExpressionDeletedByItsOwnCallbackEndsItsRun) {
  ASSERT_EQ(qmLinkCallbackOp('G', "selfdelete", "nofix", "number", "", nullptr, DeleteTheRunningExpression),
            0);
  long const before = qmGetQumelObjectCount();
  g_handle = qmParseExp("1+2*3; selfdelete; 40+2");
  ASSERT_NE(g_handle, 0U) << qmGetLastErrorID();
  EXPECT_EQ(qmEvalExpHndlToNum(g_handle), 42.0);
  EXPECT_EQ(qmEvalExpHndl(g_handle), 'X');
  EXPECT_LE(qmGetQumelObjectCount(), before + 3);
}

TEST_F(Evaluation, AnExpressionThatRunsItselfEndsAtALimit) {
  ASSERT_EQ(qmLinkCallbackOp('G', "again", "nofix", "number", "", nullptr, EvaluateTheRunningExpression), 0);
  g_handle = qmParseExp("again; 2+3");
  ASSERT_NE(g_handle, 0U) << qmGetLastErrorID();
  g_calls = 0;
  EXPECT_EQ(qmEvalExpHndlToNum(g_handle), 5.0);
  EXPECT_GT(g_calls, 100);
  EXPECT_LT(g_calls, 1000);
}

}  // namespace
}  // namespace qumel::testing
