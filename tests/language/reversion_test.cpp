// Postfix text turned back into infix text: what the text looks like, and that it converts to the same again.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "language/dialect.h"
#include "support/postfix.h"

namespace qumel {
namespace {

struct SQMCase {
  std::string_view text;
  std::string_view reverted;
};

std::string Revert(CQMDialect const& dialect, std::string_view postfix) {
  std::string infix;
  long const code =
      dialect.fixer.RevertExpression(ReadPostfix(postfix), infix, dialect.fixer.GetReadingRules().quoteMark);
  return code == Error::None ? infix : std::to_string(code);
}

void ExpectReverted(CQMDialect& dialect, SQMCase const& expected) {
  SCOPED_TRACE(expected.text);
  std::string postfix;
  ASSERT_EQ(dialect.Convert(expected.text, postfix), Error::None);
  std::string const reverted = Revert(dialect, postfix);
  EXPECT_EQ(reverted, expected.reverted);
  EXPECT_EQ(dialect.Convert(reverted), postfix);
}

template <std::size_t N>
void ExpectAll(SQMCase const (&cases)[N], SQMReadingRules const& rules = {}) {
  CQMDialect dialect(rules);
  for (SQMCase const& expected : cases) ExpectReverted(dialect, expected);
}

TEST(Reversion, ParenthesesWhereTheyAreNeeded) {
  static constexpr SQMCase kCases[] = {
      {"1+2*3", "1+2*3"},
      {"(1+2)*3", "(1+2) *3"},
      {"a-b-c", "a-b-c"},
      {"a-(b-c)", "a- (b-c)"},
      {"2^3^4", "2^3^4"},
      {"(2^3)^4", "(2^3) ^4"},
      {"2^(3^4)", "2^3^4"},
      {"(a=b)=c", "(a=b) =c"},
      {"a=(b=c)", "a=b=c"},
      {"((x))", "x"},
      {"not(x and y) or z", "not(x and y)or z"},
      {"(1|_2)*3", "(1|_ 2) *3"},
      {"x++ + ++y", "x++ + ++y"},
      {"-5!", "-5!"},
      {"-(5!)", "- (5!)"},
  };
  ExpectAll(kCases);
}

TEST(Reversion, SignsByWhatStandsRightOfThem) {
  static constexpr SQMCase kCases[] = {
      {"-x", "-x"},           {"-(x)", "- (x)"},          {"- -x", "- -x"},
      {"-(-(x))", "- - (x)"}, {"-2^2", "-2^2"},           {"-(2)^2", "- (2) ^2"},
      {"(-2)^2", "-2^2"},     {"-(2^2)", "- (2^2)"},      {"2^ -x", "2^ -x"},
      {"not x", "not x"},     {"not(x)", "not(x)"},       {"!x!", "!x!"},
      {"-sin(x)", "-sin(x)"}, {"-a[1]", "-a[1]"},         {"-(a[1])", "- (a[1])"},
      {"-x.y", "-x.y"},       {"~(x)+ ~x", "~ (x) + ~x"},
  };
  ExpectAll(kCases);
}

TEST(Reversion, ConstantsBesideParentheses) {
  static constexpr SQMCase kCases[] = {
      {"sin(,true)", "sin(, true)"}, {"sin(pi)", "sin(pi)"}, {"2 pi", "2 pi"}, {"pi*(2)", "pi*2"},
      {"a[(,true)]", "a[(, true)]"},  // no comma may follow the bracket itself
  };
  ExpectAll(kCases);
}

TEST(Reversion, ArgumentsAndIndexes) {
  static constexpr SQMCase kCases[] = {
      {"min(a,b ,c)", "min(a, b, c)"},
      {"min()", "min()"},
      {"min x", "min(x)"},
      {"max(min(1,2),3)", "max(min(1, 2), 3)"},
      {"min(a;b)", "a; min(b)"},  // a separator ends the list for the operator
      {"comb(5,2)", "comb(5, 2)"},
      {"sin x", "sin(x)"},
      {"sin x^2", "sin(x) ^2"},
      {"sin(x^2)", "sin(x^2)"},
      {"replace(s,\"a\",\"b\",1)", "replace(s, \"a\", \"b\", 1)"},
      {"a[1]", "a[1]"},
      {"a[1][2]", "a[1][2]"},
      {"a[b[c[1]],2,3]", "a[b[c[1]], 2, 3]"},
      {"a[()]", "a[()]"},
      {"(a+b)[1]", "(a+b)[1]"},
      {"a.b[1].c", "a.b[1].c"},
      {"min(global x)", "min(global x)"},
  };
  ExpectAll(kCases);
}

TEST(Reversion, Operands) {
  static constexpr SQMCase kCases[] = {
      {"2 3", "2 3"},
      {"2(3)(4)", "2 3 4"},
      {"2 .5", "2 .5"},
      {"1. .5", "1. .5"},
      {"0x1 F", "0x1 F"},
      {"0x1 b", "0x1 b"},
      {"0b1 d", "0b1 d"},
      {"1 E5", "1 E5"},
      {"1E5 E", "1E5 E"},
      {"0 x", "0 x"},
      {"0 x1", "0 x1"},
      {"1.5E3*2X-1", "1.5E3*2X-1"},
      {"2E +x", "2E +x"},
      {"0d9", "09"},
      {"0h1f", "0x1f"},
      {"0o17 0t1DE", "0o17 0t1DE"},
      {"x _y", "x _y"},
      {R"("")", R"("")"},
      {R"("it's a \"b\\c\"")", R"("it's a \"b\\c\"")"},
      {R"("\n\t\r\f\v\b")", R"("\n\t\r\f\v\b")"},
      {R"("!1101.2;#d1")", R"("!1101.2;#d1")"},
      {"\"a\"$+\"b\"", "\"a\" $+ \"b\""},
  };
  ExpectAll(kCases);
}

TEST(Reversion, WordsInFrontOfTheirOperands) {
  static constexpr SQMCase kCases[] = {
      {"global x = 5", "global x=5"},
      {"number x = 5", "number x=5"},
      {"local string s = \"a\"", "local string s= \"a\""},
      {"complex z", "complex z"},
      {"degrees sin(30)", "degrees sin(30)"},
      {"sin(30) degrees", "degrees(sin(30))"},
      {"hex 255", "hex 255"},
      {"if a>b then c=1 else", "if a>b then c=1 else"},
      {"while(x<10) do x=x+1 end", "while x<10 do x=x+1 end"},
      {"do x++ while x<10", "do x++ while x<10"},
      {"goto 10", "goto(10)"},
      {"select x case 1 break default 2", "select(x), case(1) break default 2"},
      {"return x", "return(x)"},
  };
  ExpectAll(kCases);
}

TEST(Reversion, Statements) {
  static constexpr SQMCase kCases[] = {
      {"a=1; b=2", "a=1; b=2"},
      {"a=1: b=2;", "a=1; b=2"},
      {"(a;b)", "a; b"},
      {";", ";"},
      {";;x", "; ; x"},
      {"x;;", "x; ;"},
      {"x // note", "x"},
      {"// note", "//"},
      {"if a then; b; end", "if a then; b; end"},
  };
  ExpectAll(kCases);
}

TEST(Reversion, WithoutHierarchyAndWithoutImpliedMultiplication) {
  static constexpr SQMCase kFlat[] = {
      {"1+2*3", "1+2*3"}, {"1+(2*3)", "1+ (2*3)"}, {"2^3^4", "2^3^4"}, {"sin(x)+1", "sin(x) +1"}};
  ExpectAll(kFlat, {.hierarchical = false});
  static constexpr SQMCase kNoProduct[] = {{"sin(x)*2", "sin(x) *2"}, {"-x", "-x"}, {"-(x)", "- (x)"}};
  ExpectAll(kNoProduct, {.impliedMultiplication = false});
}

TEST(Reversion, CommaAsRadixMark) {
  static constexpr SQMCase kCases[] = {
      {"1,5+2", "1,5+2"},
      {"min(1,5;2)", "min(1,5, 2)"},
      {"min(1,5:2)", "1,5; min(2)"},
      {"a[1;2,5]", "a[1, 2,5]"},
      {"min(1, 5)", "min(1, 5)"},
      {"min(1,5, 2)", "min(1,5, 2)"},
      {"-7,", "-7,"},
      {"-7,+1", "-7,+1"},
      {"min(7,, x)", "min(7,, x)"},
      {"7,//\n5", "7,//\n5"},
      {"'it\\'s \"x\"'", "'it\\'s \"x\"'"},
  };
  ExpectAll(kCases, {.radixMark = ',', .quoteMark = '\'', .listSeparator = ';'});
}

TEST(Reversion, HostOperatorsOfEveryFix) {
  static constexpr SQMCase kCases[] = {
      {"twice(x)+1", "twice(x) +1"},
      {"mix(a,b,c)", "mix(a, b, c)"},
      {"a plus b*c", "a plus b*c"},
      {"(a plus b)*c", "(a plus b) *c"},
      {"a<<b<<c", "a<<b<<c"},
      {"a<<(b<<c)", "a<< (b<<c)"},
      {"x sq", "x sq"},
      {"(x+1) sq", "(x+1)sq"},
      {"-x sq", "-x sq"},
      {"now", "now"},
      {"@@(x+1)", "@@ (x+1)"},
  };
  CQMDialect dialect;
  dialect.Define(dialect.shared, {"twice", EQMFix::Prefix, 1});
  dialect.Define(dialect.shared, {"mix", EQMFix::Prefix, 3});
  dialect.Define(dialect.own, {"plus", EQMFix::Infix, 2, Precedence::Additive});
  dialect.Define(dialect.own, {"<<", EQMFix::Infix, 2, Precedence::Multiplicative});
  dialect.Define(dialect.own, {"sq", EQMFix::Postfix, 1, Precedence::Power});
  dialect.Define(dialect.own, {"now", EQMFix::Nofix, 0});
  dialect.Define(dialect.own, {"@@", EQMFix::Prefix, 1});
  for (SQMCase const& expected : kCases) ExpectReverted(dialect, expected);
}

TEST(Reversion, OperatorsWithoutOperands) {
  static constexpr SQMCase kCases[] = {
      {"()+()", "() + ()"}, {"()x!", "x() !"}, {"sin()", "sin()"},
      {"2+()", "2+ ()"},    {"()+2", "2+ ()"}, {"5 do", "5 do"},
  };
  ExpectAll(kCases);
}

// A sign that stands next to an operand is not let go by what stands behind that, and goes on from there.
TEST(Reversion, SignsThatWaitBehindTheirOperand) {
  static constexpr SQMCase kCases[] = {
      {"-a . -b", "-a. -b"},
      {"+a . -2", "+a. -2"},
      {"-a[1] . -b . c", "-a[1]. -b.c"},
      {"not a . not b", "not a. not b"},
      {"-x return(5)", "-x return(5)"},
      {"-'s' return(pi)", "- 's' return(pi)"},
      {"sin(-x if(, y, ()++))", "sin(-x if(y++))"},
      {"-1E5.cot(x)", "-1E5 . (), cot(x)"},
      {"not x . select 2", "not x.select(2)"},
  };
  ExpectAll(kCases, {.quoteMark = '\''});
  static constexpr SQMCase kNoProduct[] = {{"if ~y ('a' allowcomplex)", "if(), y, ~ 'a' (allowcomplex)"}};
  ExpectAll(kNoProduct, {.impliedMultiplication = false, .quoteMark = '\''});
}

// What an operator takes may begin in front of the list that it stands in, and words may lie between.
TEST(Reversion, WordsAmongOperands) {
  static constexpr SQMCase kCases[] = {
      {"max(ceil(until label 012))", "max(until label(012), ceil())"},
      {"roll(x degrees, (do, 0))", "roll(x, degrees do 0)"},
      {"E5[select(!3) !]", "E5, select(!3), ()[() !]"},
      {"1[local * 2 end 0b10->1E5, break]", "local 1, ()[() *2, end 0b10->1E5, break]"},
      {"(rect E5)[if x>=acsc(O)]", "E5 rect, if x, ()[() >=acsc(O)]"},
      {"x return(5) + 3", "x, return(5), () +3"},
      {"5 do if y end", "5 do if y end"},
      {"min(a, do, c)", "a, min(do c)"},
  };
  ExpectAll(kCases);
}

// With implied multiplication "x sin" is a product, so that a postfix operator "sin" needs another in front.
TEST(Reversion, OneTokenInBothLists) {
  static constexpr SQMCase kCases[] = {
      {"x! sin", "x!sin"},
      {"x! sin!", "x!sin!"},
      {"x! sin cos", "x!sin cos"},
      {"(x+1)! sin + 1", "(x+1) !sin+1"},
      {"2 a[1]! sin", "(2 a[1]) !sin"},
      {"-x! sin! sin", "(-x!sin) !sin"},
      {"min(sqrt(x)! sin, 2)", "min(sqrt(x) !sin, 2)"},
      {"3! ln y", "3!ln y"},
      {"x! ln (y+1) * 2", "x!ln(y+1) *2"},
      {"x++ sin", "x++sin"},
      {"\"s\" sin", "\"s\"sin"},
      {"sin(x)", "sin(x)"},
  };
  CQMDialect dialect;
  dialect.Define(dialect.own, {"sin", EQMFix::Postfix, 1});
  dialect.Define(dialect.own, {"cos", EQMFix::Postfix, 1});
  dialect.Define(dialect.own, {"ln", EQMFix::Infix, 2});
  for (SQMCase const& expected : kCases) ExpectReverted(dialect, expected);
}

TEST(Reversion, Failures) {
  CQMDialect dialect;
  EXPECT_EQ(Revert(dialect, "#d1!9999.1;"), std::to_string(Error::UnknownOperator));
  EXPECT_EQ(Revert(dialect, ""), "//");
  dialect.Define(dialect.own, {"twice", EQMFix::Prefix, 1});
  std::string const postfix = dialect.Convert("twice(x)");
  EXPECT_EQ(Revert(dialect, postfix), "twice x");
  ASSERT_EQ(dialect.own.DeleteDefined("twice"), Error::None);
  EXPECT_EQ(Revert(dialect, postfix), std::to_string(Error::UnknownOperator));
}

std::string Repeat(std::string_view piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

TEST(Reversion, LongAndDeepTexts) {
#ifdef QUMEL_SANITIZED
  constexpr int kCount = 10'000;
#else
  constexpr int kCount = 100'000;
#endif
  CQMDialect dialect;
  std::string const texts[] = {
      Repeat("1+", kCount) + "1",
      Repeat("2^", kCount) + "2",
      Repeat("(1+", kCount) + "x" + Repeat(")", kCount),
      Repeat("sin(", kCount) + "x" + Repeat(")", kCount),
      Repeat("a[", kCount) + "1" + Repeat("]", kCount),
      Repeat("min(1,", kCount) + "x" + Repeat(")", kCount),
      Repeat("- ", kCount) + "x",
      "sum(" + Repeat("x,", kCount) + "x)",
      Repeat("x;", kCount),
      "-\"s\"" + Repeat(" return(1)", kCount),
      Repeat("x,", kCount) + "if y," + Repeat(" do", kCount),
      Repeat("-x return(", kCount) + "y" + Repeat(")", kCount),
      Repeat("()+() ", kCount),
      "x" + Repeat(" ++", kCount),
  };
  for (std::string const& text : texts) {
    SCOPED_TRACE(text.substr(0, 20));
    std::string postfix;
    ASSERT_EQ(dialect.Convert(text, postfix), Error::None);
    EXPECT_TRUE(dialect.Convert(Revert(dialect, postfix)) == postfix);
  }
  // what no text converts to takes no longer
  std::string const signs = Repeat("@a!2702.2", kCount) + Repeat("!2501.1", kCount) + ";";
  EXPECT_FALSE(Revert(dialect, signs).empty());
}

}  // namespace
}  // namespace qumel
