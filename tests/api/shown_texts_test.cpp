// Expressions as the library read them: annotated, and turned back into text, with the lists and settings of
// the context that parsed them.
#include <string>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class ShownTexts : public InterfaceTest {};

TEST_F(ShownTexts, CheckedTextsConvertToTheSame) {
  ASSERT_EQ(qmDefineExpOp('G', "near", "infix", "number", "a, b", "+", "a - b"), kNone);
  ASSERT_EQ(qmDefineExpOp('G', "cos", "postfix", "number", "number a", nullptr, "a + 1"), kNone);
  static constexpr char const* kTexts[] = {
      "1 +2* 3",
      "-(x)^2",
      "- -x",
      "global n = 5",
      "min(1; 2)",
      "a[b[1], 2]",
      "if (x>1) then; y = \"a\\\"b\"; end",
      "a near (b near c)",
      "2 .5 + 0x1 F",
      "sin(,true) pi",
      "degrees tan 45",
      "x++ + ++y; // note",
      "-a . -b",
      "not a[1] . not b",
      "-x return(5)",
      "x! cos",
      "y = -x! cos! * cos(x)",
  };
  for (char const* const text : kTexts) {
    SCOPED_TRACE(text);
    std::string const annotated = qmAnnotateExp(text);
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    std::string const checked = qmCheckExp(text);
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    EXPECT_EQ(qmAnnotateExp(checked.c_str()), annotated) << checked;
    EXPECT_EQ(qmCheckExp(checked.c_str()), checked);
  }
}

TEST_F(ShownTexts, ParsedExpressionsUseTheContextThatParsedThem) {
  UseContextWith("theirs", [] {
    qmSetRadixMark('C');
    qmSetQuoteMark('1');
  });
  ASSERT_EQ(qmDefineExpOp('G', "twice", "prefix", "number", "a", nullptr, "a + a"), kNone);
  Handle const number = qmParseExp("twice(1,5)");
  ASSERT_NE(number, 0U);
  Handle const string = qmParseExp("'it\\'s \"it\"'");
  ASSERT_NE(string, 0U);
  ASSERT_NE(qmSetContext("test", false), 0U);

  EXPECT_STREQ(qmRevertParsedExp(number), "twice 1,5");
  EXPECT_STREQ(qmRevertParsedExp(string), "'it\\'s \"it\"'");
  EXPECT_NE(std::string(qmAnnotateParsedExp(number)).find("twice"), std::string::npos);
  EXPECT_STREQ(qmCheckExp("twice(1.5)"), "twice 1.5");  // a name here, and a product
  EXPECT_NE(std::string(qmAnnotateExp("twice(1.5)")).find("@twice"), std::string::npos);
}

TEST_F(ShownTexts, ParsedExpressionsComeBackWhateverTheyMean) {
  ASSERT_EQ(qmDefineExpOp('G', "cos", "postfix", "number", "number a", nullptr, "a + 1"), kNone);
  struct Case {
    char const* text;
    double value;
  };
  constexpr Case kCases[] = {
      {"3! cos", 24.0},  // of 3 + 1
      {"1 + 3! cos * 2", 49.0},
      {"(1+1)! cos! + cos(0)", 721.0},
      {"x = 2; -x return(7)", 7.0},
  };
  for (auto const& [text, value] : kCases) {
    SCOPED_TRACE(text);
    Handle const handle = qmParseExp(text);
    std::string const reverted = qmRevertParsedExp(handle);
    Handle const again = qmParseExp(reverted.c_str());
    ASSERT_NE(again, 0U) << reverted;
    EXPECT_STREQ(qmRevertParsedExp(again), reverted.c_str());
    for (Handle const either : {handle, again, handle, again}) {
      EXPECT_EQ(qmEvalExpHndlToNum(either), value) << reverted;
      EXPECT_EQ(qmGetLastErrorID(), kNone);
    }
    qmDeleteExp(handle);
    qmDeleteExp(again);
  }
}

TEST_F(ShownTexts, DeletedOperatorsAreShownByTheirIdAlone) {
  ASSERT_EQ(qmDefineExpOp('G', "twice", "prefix", "number", "a", nullptr, "a + a"), kNone);
  Handle const handle = qmParseExp("twice(4)");
  ASSERT_NE(handle, 0U);
  EXPECT_STREQ(qmRevertParsedExp(handle), "twice 4");
  ASSERT_EQ(qmDeleteOp('G', "twice"), kNone);
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 8.0);
  EXPECT_EQ(std::string(qmAnnotateParsedExp(handle)).find("twice"), std::string::npos);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_STREQ(qmRevertParsedExp(handle), "");
  EXPECT_EQ(qmGetLastErrorID(), 2020);
}

TEST_F(ShownTexts, LongTexts) {
  constexpr int kCount = 100'000;
  std::string sum = "1", nested, members = "a", signs = "-x";
  for (int i = 0; i < kCount; ++i) {
    sum += "+1";
    members += ".-a";
    signs += " return(1)";
  }
  nested.append(kCount, '(').append("x").append(kCount, ')');
  EXPECT_EQ(qmCheckExp(sum.c_str()), sum);
  EXPECT_STREQ(qmCheckExp(nested.c_str()), "x");
  EXPECT_EQ(qmCheckExp(signs.c_str()), signs);
  qmCheckExp(members.c_str());
  EXPECT_EQ(qmGetLastErrorID(), 3190);
  EXPECT_STREQ(qmAnnotateExp(nested.c_str()), "\n\n@x\t\tx\n;");
}

}  // namespace
}  // namespace qumel::testing
