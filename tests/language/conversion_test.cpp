// Infix text to postfix text: tokens, operator choice, binding, argument counts, failures with their places.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/operator_ids.h"
#include "language/dialect.h"

namespace qumel {
namespace {

struct SQMCase {
  std::string_view text;
  std::string_view postfix;  // or an error code in decimal
};

constexpr SQMReadingRules kNoMultiplication{.impliedMultiplication = false};
constexpr SQMReadingRules kCommaRules{.radixMark = ',', .listSeparator = ';', .statementSeparator = ':'};

template <std::size_t N>
void ExpectAll(SQMCase const (&cases)[N], SQMReadingRules const& rules = {}) {
  CQMDialect dialect(rules);
  for (auto const& [text, postfix] : cases) EXPECT_EQ(dialect.Convert(text), postfix) << text;
}

TEST(Conversion, Numbers) {
  static constexpr SQMCase kCases[] = {
      {"3.5", "#d3.5;"},
      {".5", "#d.5;"},
      {"1.", "#d1.;"},
      {"0x1F", "#h01F;"},
      {"0h1f", "#h01f;"},
      {"0b101", "#b0101;"},
      {"0o17", "#o017;"},
      {"0t1DE", "#t01DE;"},
      {"0d9", "#d09;"},
      {"1.5E3", "#d1.5E3;"},
      {"1X-3", "#d1X-3;"},
      {"0x1EX+2", "#h01EX+2;"},
      {"2E+x", "#d2E+@x!1302.2;"},  // the sign belongs to the exponent, with or without digits
      {"1E2E3", "#d1E2@E3!1302.2;"},
      {"1E2.5", "#d1E2#d.5!1302.2;"},
      {"1.5e3", "#d1.5@e3!1302.2;"},
      {"1.2.3", "#d1.2#d.3!1302.2;"},
      {"0b12", "#b01#d2!1302.2;"},
      {"0X1", "#d0X1;"},
      {"0", "#d0;"},
      {"0x", "#h0;"},
      {"0x.8", "#h0.8;"},
      {"0b-1", "#b0#d1!1102.2;"},
  };
  ExpectAll(kCases);
}

TEST(Conversion, CommaAsRadixMark) {
  static constexpr SQMCase kCases[] = {
      {"1,5", "#d1.5;"},
      {"min(1,2)", "#d1.2!2116.1;"},
      {"min(1, 2)", "#d1#d2!2116.2;"},
      {"min(x,2)", "@x#d2!2116.2;"},
      {"min(1,5,3)", "#d1.5#d3!2116.2;"},
      {"1E2,5", "3200"},
      {"1.5", "#d1#d5!2702.2;"},
      {",5", "#d5;"},
      {"1;2", "#d1;#d2;"},
  };
  ExpectAll(kCases, kCommaRules);
}

TEST(Conversion, SemicolonWhereTheCommaIsTheRadixMark) {
  static constexpr SQMCase kCases[] = {
      {"min(1;2)", "#d1#d2!2116.2;"},
      {"min(1,5;2,5)", "#d1.5#d2.5!2116.2;"},
      {"root(8;3)", "#d8#d3!2124.2;"},
      {"1+min(2;max(3;4), 5)", "#d1#d2#d3#d4!2117.2#d5!2116.3!1101.2;"},
      {"a[1;2]", "@a#d1#d2!2701.3;"},
      {"a[1;b[2;3]] = min(x;4)", "@a#d1@b#d2#d3!2701.3!2701.3@x#d4!2116.2!101.2;"},
      {"replace(s;\"a\";2); x", "@s$1:a#d2!1902.3;@x;"},
      {"(1;2)", "#d1;#d2;"},
      {"-(b;c)", "3200"},
      {"(a=b;c)", "@a@b!101.2;@c;"},
      {"min((1;2);3)", "#d1;#d2#d3!2116.2;"},  // the inner parentheses only group
      {"min(1:2)", "#d1;#d2!2116.1;"},
      {"if (x) then (a; b) end", "@x!5001.1!5003.0@a;@b!5021.0;"},
      {"sin(1;2)", "3200"},
      {"comb(5;abs -(2))", "3190"},
  };
  ExpectAll(kCases, kCommaRules);
  CQMDialect dialect;
  EXPECT_EQ(dialect.Convert("5; min(1;2)"), "#d5;#d1;#d2!2116.1;");
}

TEST(Conversion, Strings) {
  static constexpr SQMCase kCases[] = {
      {R"("hello")", "$5:hello;"},
      {R"("a\"b")", "$3:a\"b;"},
      {R"("\t\\\q")", "$3:\t\\q;"},
      {R"("")", "$0:;"},
      {R"("#1!;{")", "$5:#1!;{;"},
      {R"(";")", "$1:;;"},
      {R"(length("ab") + 1)", "$2:ab!2071.1#d1!1101.2;"},
      {R"(min("!2116.1{", 2))", "$8:!2116.1{#d2!2116.2;"},
      {R"("a" "b")", "3200"},
  };
  ExpectAll(kCases);
  CQMDialect single({.quoteMark = '\''});
  EXPECT_EQ(single.Convert("'say \"x\"'"), "$7:say \"x\";");
  EXPECT_EQ(single.Convert("\"x\""), "2020");
  EXPECT_EQ(single.Convert("'it\"s"), "2010");
}

TEST(Conversion, BindingAndParentheses) {
  static constexpr SQMCase kCases[] = {
      {"1+2*3", "#d1#d2#d3!1301.2!1101.2;"},
      {"1-2-3", "#d1#d2!1102.2#d3!1102.2;"},
      {"2^3^2", "#d2#d3#d2!1401.2!1401.2;"},
      {"2^3**2", "#d2#d3#d2!1402.2!1401.2;"},
      {"(1+2)*3", "#d1#d2!1101.2#d3!1301.2;"},
      {"a=b=c+1", "@a@b@c#d1!1101.2!101.2!101.2;"},
      {"sin(a)+cos(b)*tan(c)", "@a!2001.1@b!2002.1@c!2003.1!1301.2!1101.2;"},
      {"-a^2", "@a!2501.1#d2!1401.2;"},
      {"-(a)^2", "@a!1501.1#d2!1401.2;"},
      {"sin cos x", "@x!2002.1!2001.1;"},
      {"sqrt abs x", "!2101.1@x!2111.1;"},  // neither binds tighter, and they group to the left
      {"a && b || c and d", "@a@b!401.2@c@d!402.2!201.2;"},
      {"x++ + ++y", "@x!2602.1@y!2601.1!1101.2;"},
      {"3!", "#d3!1305.1;"},
      {"a.b.c", "@a@b!2702.2@c!2702.2;"},
      {"1 |_ 2+3", "#d1#d2#d3!1101.2!50.2;"},
      {"()", ";"},
      {"sqrt()", "!2101.1;"},
      {"x // note", "@x;"},
      {"x // note\n+1", "@x#d1!1101.2;"},
      {"// only a note", ""},
  };
  ExpectAll(kCases);
}

TEST(Conversion, WithoutHierarchy) {
  static constexpr SQMCase kCases[] = {
      {"1+2*3", "#d1#d2!1101.2#d3!1301.2;"},
      {"2^3^2", "#d2#d3#d2!1401.2!1401.2;"},
      {"a=1+2", "@a#d1!101.2#d2!1101.2;"},
      {"2 pi", "#d2!1302.2!2803.0;"},  // constants bind no tighter than the rest
      {"sin x + 1", "@x!2001.1#d1!1101.2;"},
  };
  ExpectAll(kCases, {.hierarchical = false});
}

TEST(Conversion, ChoiceByNeighbours) {
  static constexpr SQMCase kCases[] = {
      {"-x", "@x!2501.1;"},
      {"-(x)", "@x!1501.1;"},
      {"- sin x", "@x!2001.1!1501.1;"},
      {"a-b", "@a@b!1102.2;"},
      {"a - -b", "@a@b!2501.1!1102.2;"},
      {"- -b", "@b!2501.1!1501.1;"},
      {"!x", "@x!2503.1;"},
      {"!(x)", "@x!1503.1;"},
      {"x!", "@x!1305.1;"},
      {"x! + 1", "@x!1305.1#d1!1101.2;"},
      {"not x", "@x!2504.1;"},
      {"not not x", "@x!2504.1!1504.1;"},
      {"(pi)", "!2803.0;"},
      {"(true)", "2030"},
      {"true && false", "!2801.0!2802.0!401.2;"},
      {"a = true", "@a!2801.0!101.2;"},
      {"x $+= y", "@x@y!107.2;"},
      {"x!= y", "@x@y!902.2;"},
      {"a+b = 1", "@a@b!1101.2#d1!101.2;"},
      {"a++ = 1", "2030"},
      {"3+-2", "2020"},
      {"sin", "2030"},
      {"x=_y", "2020"},
      {"x = _y", "@x@_y!101.2;"},
      {"x[]", "2030"},
      {"a.-b", "@a!2702.2@b!2501.1;"},
  };
  ExpectAll(kCases);
}

TEST(Conversion, ImpliedMultiplication) {
  static constexpr SQMCase kCases[] = {
      {"2 pi", "#d2!2803.0!1302.2;"},
      {"pi 2", "!2803.0#d2!1302.2;"},
      {"2(3)", "#d2#d3!1302.2;"},
      {"(2)(3)", "#d2#d3!1302.2;"},
      {"2x^2", "#d2@x#d2!1401.2!1302.2;"},
      {"2 sin x", "#d2@x!2001.1!1302.2;"},
      {"x[1]y", "@x#d1!2701.2@y!1302.2;"},
      {"pi phi", "!2803.0!2804.0!1302.2;"},
      {"x not y", "2030"},     // "not" is two operators
      {"3! 2", "2030"},        // and so is "!"
      {"x number y", "2030"},  // words are not multiplied
      {"2 \"s\"", "3200"},
  };
  ExpectAll(kCases);
  static constexpr SQMCase kWithout[] = {
      {"2 pi", "2030"}, {"1 2", "3200"},  {"2(3)", "3200"}, {"x[1] 5", "@x#d1#d5!2701.3;"},
      {"1 (2", "2050"}, {"(1 2", "3200"},
  };
  ExpectAll(kWithout, kNoMultiplication);
}

TEST(Conversion, ArgumentCounts) {
  static constexpr SQMCase kCases[] = {
      {"min(a,b,c)", "@a@b@c!2116.3;"},
      {"min(1+2,3)", "#d1#d2!1101.2#d3!2116.2;"},
      {"min(max(1,2),max(3,4,5))", "#d1#d2!2117.2#d3#d4#d5!2117.3!2116.2;"},
      {"1+min(2,3)", "#d1#d2#d3!2116.2!1101.2;"},
      {"min 1", "#d1!2116.1;"},
      {"min() + 1", "!2116.0#d1!1101.2;"},
      {"a[b[1]]", "@a@b#d1!2701.2!2701.2;"},
      {"x[1][2]", "@x#d1!2701.2#d2!2701.2;"},
      {"m[i+1, j]", "@m@i#d1!1101.2@j!2701.3;"},
      {"m[1,2,3,4,5,6,7]", "@m#d1#d2#d3#d4#d5#d6#d7!2701.8;"},
      {"s = replace(s, t, 2)", "@s@s@t#d2!1902.3!101.2;"},
      {"a[min(1,2)] + b[3]", "@a#d1#d2!2116.2!2701.2@b#d3!2701.2!1101.2;"},
      {"roll(6) + roll(6,2)", "#d6!2139.1#d6#d2!2139.2!1101.2;"},
      {"5; min(1;2)", "#d5;#d1;#d2!2116.1;"},
      {"min([1])", "2030"},
      {"min(1,2", "3200"},
      {"comb(1)", "#d1!2201.2;"},
  };
  ExpectAll(kCases);
}

TEST(Conversion, WordsAndStatements) {
  static constexpr SQMCase kCases[] = {
      {"global x = 5", "@x!5202.0#d5!101.2;"},
      {"global complex x = 5", "!5202.0@x!5204.0#d5!101.2;"},
      {"number x = 5", "@x!5211.1#d5!101.2;"},
      {"degrees sin 30", "!4002.0#d30!2001.1;"},
      {"degrees 30", "#d30!4002.0;"},
      {"if x < 5 then y = 1; else y = 2; end",  // "if" binds tighter than "<"
       "@x!5001.1#d5!1001.2!5003.0@y#d1!101.2;!5004.0@y#d2!101.2;!5021.0;"},
      {"if x then y = 1 else y = 2 end", "3200"},  // two values in one statement
      {"if (x < 5) then y end", "@x#d5!1001.2!5001.1!5003.0@y!5021.0;"},
      {"while x < 5 do ++x end", "!5011.0@x#d5!1001.2!5014.1@x!2601.1!5021.0;"},
      {"a=1; b=2 : a+b;", "@a#d1!101.2;@b#d2!101.2;@a@b!1101.2;"},
      {"1;2;", "#d1;#d2;"},
      {";;", ";;"},
      {"\"s;\"", "$2:s;;"},
      {"return x", "@x!5061.1;"},
      {"break", "!5051.0;"},
      {"precision 3", "#d3!4030.1;"},
  };
  ExpectAll(kCases);
}

struct SQMFailure {
  std::string_view text;
  long code;
  long index;
};

TEST(Conversion, FailuresAndTheirPlaces) {
  static constexpr SQMFailure kCases[] = {
      {"", 3030, 0},
      {" \t\n", 3030, 0},
      {"1+", 2030, 2},
      {"  1+", 2030, 2},
      {"* @", 2020, 3},
      {"*2@", 2030, 2},
      {"1+2)", 2060, 4},
      {"(1+2", 2050, 4},
      {"(1]", 2070, 3},
      {"x[1)", 2060, 4},
      {"x]", 2070, 2},
      {"1 ? 2", 2020, 3},
      {"a \x01 b", 2010, 5},
      {"\xC3\xA4", 2010, 2},
      {"1+\xC3\xA4", 2030, 3},
      {"((((", 2050, 4},
      {"1 + (2 * @ 3)", 2020, 10},
      {"1;2 \"s\";3", 3200, 9},
      {"\"open", 2010, 0},
      {"  \"open", 2010, 0},
      {R"(1 + "open\")", 2010, 4},
      {R"(x = 1; "a" + "b; y)", 2010, 13},
      {R"(min("a", "b)", 2010, 9},
      {R"(* "open)", 2010, 2},  // found when it is read ahead
      {R"(1 ] x "open)", 2070, 5},
      {"1 + 1  ", 0, 5},
      {"x // c", 0, 6},
  };
  CQMDialect dialect;
  for (auto const& [text, code, index] : kCases) {
    std::string postfix;
    EXPECT_EQ(dialect.Convert(text, postfix), code) << text;
    EXPECT_EQ(dialect.fixer.GetParseIndex(), index) << text;
  }
}

/** The place is that of the operator. */
TEST(Conversion, OperandsOnTheWrongSide) {
  static constexpr SQMFailure kCases[] = {
      {"3 - abs -(4)", 3190, 4},
      {"2 + sqrt abs 9", 3190, 4},
      {"1 + ln ln 9", 3190, 4},
      {"1 + abs ln 4", 3190, 4},
      {"2 * sin -(30)", 3190, 4},
      {" x = -abs -(4)", 3190, 5},
      {"x = 5; x * sqrt -(4)", 3190, 11},
      {"\"a\" + left(\"b\", abs -(1))", 3190, 16},
      {"min(100, sqrt abs 9)", 3190, 9},
      {"sum(1, 2, ln ln 3)", 3190, 10},
      {"a[1 + abs -(2)]", 3190, 6},
      {"a[abs -(1)]", 3190, 2},
      {"2 (abs -(4))", 3190, 3},
      {"2 comb(3)", 3190, 2},
      {"5, return -(3)", 3190, 3},
      {"1 + number -(y)", 3190, 4},
      {"if (1 + abs -(x) > 2) then y = 1; end", 3190, 8},
      {"a, b, ()*()", 3190, 8},
      {"a.-b.-c", 3190, 4},
      {"2 + ()", 0, 6},  // what lacks an operand is left to the compiler
      {"sqrt abs 9", 0, 10},
      {"x; abs -(4)", 0, 11},  // statements are apart
      {"while x < abs(3) do ++x next", 0, 28},
      {"always do break next", 0, 20},
      {"-2 ^ -(-x)", 0, 10},
      {"x! + -y! * sin cos z", 0, 20},
      {"global x = (1, 2) |_ 3", 3200, 22},
  };
  CQMDialect dialect;
  for (auto const& [text, code, index] : kCases) {
    std::string postfix;
    EXPECT_EQ(dialect.Convert(text, postfix), code) << text;
    EXPECT_EQ(dialect.fixer.GetParseIndex(), index) << text;
  }
}

TEST(Conversion, SidesOfHostOperators) {
  CQMDialect dialect;
  dialect.Define(dialect.own, {"twice", EQMFix::Prefix, 1});
  dialect.Define(dialect.own, {"three", EQMFix::Infix, 3});
  dialect.Define(dialect.own, {"one", EQMFix::Infix, 1});
  dialect.Define(dialect.own, {"pair", EQMFix::Postfix, 2});
  dialect.Define(dialect.own, {"sin", EQMFix::Postfix, 1});
  static constexpr SQMCase kCases[] = {
      {"1 + twice twice 4", "#d1#d4!10000.1!10000.1!1101.2;"},
      {"1 + abs twice 4", "#d1#d4!10000.1!2111.1!1101.2;"},
      {"1 + twice abs 4", "3190"},
      {"1 + twice -(4)", "3190"},
      {"(1, 2) three 4", "#d1#d2#d4!10001.3;"},
      {"1 three (2, 4)", "#d1#d2#d4!10001.3;"},
      {"1, 2, 4, () three ()", "3190"},
      {"1 one ()", "#d1!10002.1;"},
      {"() one 1", "#d1!10002.1;"},
      {"(1, 2) pair", "#d1#d2!10003.2;"},
      {"1, 2 pair", "#d1#d2!10003.2;"},
      {"x! sin", "@x!10004.1!1305.1;"},
  };
  for (auto const& [text, postfix] : kCases) EXPECT_EQ(dialect.Convert(text), postfix) << text;
}

TEST(Conversion, OperatorsOfHosts) {
  CQMDialect dialect;
  dialect.Define(dialect.shared, {"twice", EQMFix::Prefix, 1});
  dialect.Define(dialect.own, {"half", EQMFix::Prefix, 1});
  dialect.Define(dialect.own, {"<<", EQMFix::Infix, 2, Precedence::Additive});
  dialect.Define(dialect.own, {"squared", EQMFix::Postfix, 1, Precedence::Power});
  dialect.Define(dialect.own, {"now", EQMFix::Nofix, 0});
  dialect.Define(dialect.own, {"sin", EQMFix::Infix, 2});
  static constexpr SQMCase kCases[] = {
      {"twice x", "@x!10000.1;"},
      {"2 twice x", "#d2@x!10000.1!1302.2;"},
      {"2 half x", "#d2@x!10001.1!1302.2;"},
      {"a << b * 2", "@a@b#d2!1301.2!10002.2;"},
      {"x squared + 1", "@x!10003.1#d1!1101.2;"},
      {"now", "!10004.0;"},
      {"(now)", "2030"},
      {"sin x", "@x!2001.1;"},
      {"3! sin y", "#d3@y!10005.2!1305.1;"},  // the shared row does not fit there
  };
  for (auto const& [text, postfix] : kCases) EXPECT_EQ(dialect.Convert(text), postfix) << text;
}

std::string Repeat(std::string_view piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

TEST(Conversion, LongAndDeepTexts) {
  constexpr int kCount = 100'000;
  CQMDialect dialect;
  std::string postfix;
  EXPECT_EQ(dialect.Convert(Repeat("1+", kCount) + "1", postfix), Error::None);
  EXPECT_EQ(postfix, "#d1" + Repeat("#d1!1101.2", kCount) + ";");
  EXPECT_EQ(dialect.Convert(Repeat("2^", kCount) + "2", postfix), Error::None);
  EXPECT_EQ(postfix, Repeat("#d2", kCount + 1) + Repeat("!1401.2", kCount) + ";");
  EXPECT_EQ(dialect.Convert(Repeat("(", kCount) + "x" + Repeat(")", kCount), postfix), Error::None);
  EXPECT_EQ(postfix, "@x;");
  EXPECT_EQ(dialect.Convert(Repeat("a[", kCount) + "1" + Repeat("]", kCount), postfix), Error::None);
  EXPECT_EQ(postfix, Repeat("@a", kCount) + "#d1" + Repeat("!2701.2", kCount) + ";");
  EXPECT_EQ(dialect.Convert("sum(" + Repeat("x,", kCount) + "x)", postfix), Error::None);
  EXPECT_EQ(postfix, Repeat("@x", kCount + 1) + "!2131." + std::to_string(kCount + 1) + ";");
  EXPECT_EQ(dialect.Convert(Repeat("min(", kCount) + Repeat("1;", kCount) + Repeat(")", kCount), postfix),
            Error::None);
  EXPECT_EQ(dialect.Convert(Repeat("(", kCount), postfix), Error::MissingRightParen);
}

}  // namespace
}  // namespace qumel
