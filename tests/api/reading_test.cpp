// What reading a text finds before anything runs, whichever function reads it.
#include <string>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

constexpr long kUnknownToken = 2010, kNotEnoughOperands = 3190, kTooManyOperands = 3200;

class Reading : public InterfaceTest {
 protected:
  /** Every function that reads text reports the error, and nothing before the place of it runs. */
  static void ExpectRefused(std::string const& text, long code, long index) {
    SCOPED_TRACE(text);
    std::string const program = "global ran = 1; " + text;
    long const behindStart = static_cast<long>(program.size() - text.size()) + index;
    qmEvalExpStr(program.c_str());
    EXPECT_EQ(qmGetLastErrorID(), code);
    EXPECT_EQ(qmGetLastParseIndex(), behindStart);
    EXPECT_EQ(qmParseExp(program.c_str()), 0U);
    EXPECT_EQ(qmGetLastErrorID(), code);
    EXPECT_EQ(std::string(qmCheckExp(program.c_str())), qmGetErrorText(code));
    EXPECT_EQ(qmGetLastErrorID(), code);
    EXPECT_STREQ(qmAnnotateExp(program.c_str()), "");
    EXPECT_EQ(qmDefineExpOp('G', "refused", "prefix", "number", "number x", nullptr, program.c_str()), code);
    EXPECT_EQ(qmGetLastParseIndex(), behindStart);
    EXPECT_FALSE(qmIsOp('G', "refused"));
    EXPECT_FALSE(qmIsVar('G', "ran"));
  }

  /** As text, twice by handle, in a loop and as a body. */
  static void ExpectValue(std::string const& text, double value) {
    SCOPED_TRACE(text);
    EXPECT_DOUBLE_EQ(qmEvalExpStrToNum(text.c_str()), value);
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    Handle const handle = qmParseExp(text.c_str());
    for (int run = 0; run < 2; ++run) EXPECT_DOUBLE_EQ(qmEvalExpHndlToNum(handle), value);
    qmDeleteExp(handle);
    std::string const loop = "r = 0: n = 0: while n < 3 do n += 1: r = (" + text + "): next return r";
    EXPECT_DOUBLE_EQ(qmEvalExpStrToNum(loop.c_str()), value);
    ASSERT_EQ(qmDefineExpOp('G', "body", "prefix", "number", "number unused", nullptr, text.c_str()), kNone);
    EXPECT_DOUBLE_EQ(qmEvalExpStrToNum("body 1"), value);
    EXPECT_EQ(qmDeleteOp('G', "body"), kNone);
  }
};

TEST_F(Reading, AnOperatorThatWouldTakeAnOperandFromItsWrongSideIsRefused) {
  struct Case {
    char const* text;
    long index;
  };
  static constexpr Case kCases[] = {
      {"3 - abs -(4)", 4},         {"2 + sqrt abs 9", 4},
      {"1 + ln ln 9", 4},          {"1 + abs ln 4", 4},
      {"min(100, sqrt abs 9)", 9}, {"x = 4; y = (x * (1 + sqrt -(x)))", 21},
      {"a[2]; a[abs -(1)]", 8},    {"n = 0; while n < 3 do n += 1; y = 2 + abs -(n); next", 38},
      {"2 * twice sin -(3)", 4},   {"if (1 + floor -(2) > 2) then x = 1; end", 8},
  };
  ASSERT_EQ(qmDefineExpOp('G', "twice", "prefix", "number", "number n", nullptr, "2 * n"), kNone);
  for (auto const& [text, index] : kCases) ExpectRefused(text, kNotEnoughOperands, index);

  ExpectValue("3 - abs(-(4))", -1.0);
  ExpectValue("2 + sqrt(abs 9)", 5.0);
  ExpectValue("1 + sin abs 0", 1.0);
  ExpectValue("1 + twice twice 4", 17.0);
  ExpectValue("min(100, sqrt(abs 9) * 2, 7)", 6.0);
}

TEST_F(Reading, AQuoteThatNothingClosesIsRefused) {
  ExpectRefused("\"open", kUnknownToken, 0);
  ExpectRefused("s = \"a\" + \"b\\\"", kUnknownToken, 10);
  ExpectRefused("length(\"abc", kUnknownToken, 7);
  ExpectRefused("x = 1; if (x > 0) then s = \"yes; end\nreturn s", kUnknownToken, 27);
  EXPECT_EQ(ToText("\"closed\" // \"not"), "closed");
  UseContextWith("single", [] { qmSetQuoteMark('1'); });
  ExpectRefused("'it is \"so\"", kUnknownToken, 0);
}

TEST_F(Reading, SemicolonsPartOperandsWhereTheDecimalPointIsAComma) {
  UseContextWith("comma", [] { qmSetRadixMark('C'); });
  ExpectValue("min(1;2)", 1.0);
  ExpectValue("max(1,5;2,25; 2)", 2.25);
  ExpectValue("root(3;8)", 2.0);
  ExpectValue("1 + sum(1; max(2;3), 4)", 9.0);
  ASSERT_EQ(qmDefineExpOp('G', "mix", "prefix", "number", "number a; number b", nullptr, "a * 10 + b"),
            kNone);
  ExpectValue("mix(1;2,5)", 12.5);
  EXPECT_EQ(qmEvalExpStrToNum("number m[2;3]; m[1;2] = 0,5; m[1;2] + m[0; 2]"), 0.5);
  EXPECT_EQ(qmEvalExpStrToNum("s = \"abc\"; insert(s; \"X\"; 1); length s"), 4.0);
  EXPECT_EQ(qmEvalExpStrToNum("(x = 1; y = x + 1)"), 2.0) << "parentheses that only group hold statements";
  EXPECT_EQ(qmEvalExpStrToNum("min(7:2)"), 2.0) << "a colon ends a statement everywhere";
  qmEvalExpStr("sin(1;2)");
  EXPECT_EQ(qmGetLastErrorID(), kTooManyOperands);
  ASSERT_NE(qmSetContext("test", false), 0U);
  EXPECT_EQ(qmEvalExpStrToNum("5; min(1;2)"), 2.0) << "and where it is a point";
}

}  // namespace
}  // namespace qumel::testing
