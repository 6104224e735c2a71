// The operators of the language through expressions: texts, statistics, chance, angles, complex results. Each
// row is evaluated as text, and twice by handle, so that nothing of the first run shows in the second.
#include <cmath>
#include <string>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

struct Row {
  char const* expression;
  char const* result;  // as text, or null when an error is expected
  long error = kNone;
};

constexpr Row kTextRows[] = {
    {"left(\"abc\", 5)", "abc"},
    {"left(\"abc\", 2.9)", "ab"},
    {"left(\"abc\", 0)", ""},
    {"left(\"abc\", 0-1)", nullptr, 3100},
    {"right(\"abc\", 2)", "bc"},
    {"right(\"abc\", 0-1)", nullptr, 3100},
    {"mid(\"abcdef\", 2, 3)", "cde"},
    {"mid(\"abcdef\", 0-4, 2)", "ab"},
    {"mid(\"abcdef\", 6, 1)", ""},
    {"mid(\"abcdef\", 2, 0-1)", ""},
    {"mid(\"abcdef\", 4, 99)", "ef"},
    {"mid(\"\", 0, 1)", ""},
    {"s = \"abc\"; insert(s, \"X\", 0)", "Xabc"},
    {"s = \"abc\"; insert(s, \"X\", 3)", nullptr, 3210},
    {"s = \"abc\"; insert(s, \"\", 99)", "abc"},
    {"s = \"abc\"; insert(s, s, 1); return s", "aabcbc"},
    {"insert(\"abc\", \"X\", 0)", nullptr, 3050},
    {"s = \"abcdef\"; replace(s, \"XY\", 2)", "abXYef"},
    {"s = \"abcdef\"; replace(s, \"XYZW\", 4); return s", "abcdXY"},
    {"s = \"abcdef\"; replace(s, \"XY\", 2, 1)", "abXdef"},
    {"s = \"abcdef\"; replace(s, \"XY\", 2, 5)", "abXYef"},
    {"s = \"abcdef\"; replace(s, \"XY\", 2, 7)", nullptr, 3210},
    {"s = \"abcdef\"; replace(s, \"XY\", 6)", nullptr, 3210},
    {"s = \"ab\"; s $+= s; return s", "abab"},
    {"s = \"ab\"; s += \"cd\"; return s", "abcd"},
    {"\"a\" $+ \"b\" $+ \"c\"", "abc"},
    // results are places for texts too, also those that were taken for numbers until their operands were
    // known
    {"insert(\"abcd\" + \"efg\", \"X\", 0)", "Xabcdefg"},
    {"(\"abcd\" + \"efg\") $+= \"h\"", "abcdefgh"},
    {"(a = \"x\") $+= \"0123456789\"", "x0123456789"},
    {"a = \"x\"; b = \"y\"; (a <=> b) $+= \"0123456789\"", "y0123456789"},
    {"s = \"a\"; insert((s += \"b\"), \"0123456789\", 0)", "0123456789ab"},
    {"s = \"\"; while (length s < 24) do; s = s + insert(\"abcd\" + \"efg\", \"X\", 0); next; return s",
     "XabcdefgXabcdefgXabcdefg"},
    {"length(\"\")", "0"},
    {"length \"four\"", "4"},
    {"length 4", nullptr, 3090},
    {"length nothing", nullptr, 3060},
    {"left(5, 5)", nullptr, 3090},
    {"left(5, nothing)", nullptr, 3060},
    {"insert(\"abc\", nothing, 0)", nullptr, 3060},
    {"\"a\" + 1", nullptr, 3090},
    {"\"abc\" < \"abd\"", "true"},
    {"\"b\" >= \"abd\"", "true"},
    {"\"abc\" == \"abc\"", "true"},
    {"\"tab\\tquote\\\"\"", "tab\tquote\""},
};

constexpr Row kNumberRows[] = {
    {"sum(1, 2, 3.5)", "6.5"},
    {"average(1, 2, 3) + amean(4)", "6"},
    {"gmean(2, 8)", "4"},
    {"hmean(1, 0, 2)", "2"},
    {"rms(3, 4) ^ 2", "12.5"},
    {"variance(2, 4, 4, 4, 5, 5, 7, 9) * 7", "32"},
    {"stddev(1, 2, 3)", "1"},
    {"min(3, 1, 2) + 10 * max(3, 1, 2)", "31"},
    {"range(3, 1, 7)", "6"},
    {"sum()", nullptr, 3190},
    {"sum(\"a\", nothing)", nullptr, 3060},
    {"roll(6, 1, 1)", nullptr, 3200},
    {"comb(5, 2) + comb(5, 5) + comb(2, 5)", "11"},
    {"perm(5, 2)", "20"},
    {"comb(171, 1)", nullptr, 3100},
    {"comb(0-1, 999)", nullptr, 3150},
    {"comb(5.9, 5.1) + perm(2, 5)", "1"},
    {"roll(6, 0)", "0"},
    {"randseed(0-7.9)", "-7.9"},
    {"sqrt 16 + cbrt(0-8)", "2"},
    {"root(3, 0-8) + root(0, 0)", "-2"},
    {"root(0, 5)", nullptr, 3280},
    {"root(2, 0-4)", nullptr, 3140},
    {"nint(2.5) * 1000 + nint(3.5) * 100 + nint(0-2.5) * 10 + nint(0-3.5)", "2376"},
    {"int(0-2.7) + floor(0-2.7) + ceil(0-2.2)", "-7"},
    {"floor(12345678901.5) - int(12345678901.5)", "0"},
    {"frac(0-2.75)", "-0.75"},
    {"sign(0-3) + sign(0) + sign 9", "0"},
    {"ln 0", nullptr, 3150},
    {"log 1000", "3"},
    {"abs(0-4)", "4"},
    {"real 5 + imag 5", "5"},
    {"conj 5", nullptr, 3140},
    {"arg \"x\"", nullptr, 3090},
    {"arcsin 1", "90"},
    {"arctan 1", "45"},
    {"arccot 0 + arccot(0-1)", "45"},
    {"arcsin 2", nullptr, 3140},
    {"cot 0 + csc 0 + coth 0 + csch 0", "0"},
    {"sinh 0 + cosh 0 + tanh 0 + sech 0", "2"},
    {"arcsinh 0 + arccosh 1 + arctanh 0 + arcsech 1", "0"},
    {"arccosh 0.5", nullptr, 3140},
    {"arccoth 0.5", nullptr, 3140},
    {"5! + 0! + 3.9!", "127"},
    {"171!", nullptr, 3100},
    {"(0-1)!", nullptr, 3150},
    {"7 % (0-3) + 7.9 % 2.5", "2"},
    {"7 % 0.5", nullptr, 3110},
    {"(0-2147483647) % (0-1)", "0"},
    {"(0-2147483648) % (0-1)", nullptr, 3110},
    {"-2147483648 % -1.9", nullptr, 3110},
    {"9^9^3 % -1", nullptr, 3110},
    {"x = 1; while (x < 4) do; x += 1; (x - 2147483651) % -1; next", nullptr, 3110},
    {"x = 0-2147483648; x %= (0-1)", nullptr, 3110},
    {"x = 0-2147483647; x %= (0-1)", "0"},
    {"0^(0-1)", "inf"},
    {"0^0 + 0**2", "1"},
    {"5 / 0", nullptr, 3110},
    {"6.9 & 3", "2"},
    {"0-1.5 | 0", "-1"},
    {"5 -> 3", "-5"},
    {"12 <-> 10", "-7"},
    {"~0", "-1"},
    {"6 \\ 3", "5"},
    {"1e", nullptr, 3060},
    {"0x1F + 0b101 + 0o17 + 0tE + 0x.8", "62.5"},
    {"2 pi / pi", "2"},
    {"2(3)(4)", "24"},
    {"euler > 0.577 && phi < 1.62", "true"},
    {"precision(0-1)", nullptr, 3470},
    {"[1]", nullptr, 2030},
    {"1:2", "2"},
    {"(1; 2)", "2"},
};

// In a second run of the same parsed expression the first index would be one of an array that exists.
constexpr Row kArrayRows[] = {
    {"a[3]; a[0] = 5; a[1] = 7; a[2] = 9; return (sum(a))", "21"},
    {"a[3]; a[0] = 5; a[1] = 7; a[2] = 9; return (sum(a, 100))", "21"},
    {"a[3]; a[0] = 5; a[1] = 7; a[2] = 9; return (sum(100, a))", "105"},
    {"a[3]; a[0] = 5; a[1] = 7; a[2] = 9; return (sum(a[1], 1))", "8"},
    {"f[4]; f[0] = 3; f[1] = 7; f[2] = 7; f[3] = 7; return (roll(f, 3))", "21"},
    {"f[2]; f[0] = 3; return (roll f)", nullptr, 3210},
    {"m[2, 2]; m[0, 0] = 5; m[0, 1] = 7; return (sum(m, 1))", "6"},
};

constexpr Row kComplexRows[] = {
    {"sqrt(0-4)", "( 0 |_ 2 )"},
    {"1 + sqrt(0-4)", "( 1 |_ 2 )"},
    {"(1 |_ 2) * (3 |_ 4)", "( -5 |_ 10 )"},
    {"(1 |_ 2) / (3 |_ 4) * 25", "( 11 |_ 2 )"},
    {"(1 |_ 2) / 0", nullptr, 3110},
    {"(0-2) ^ 4", "( 16 |_ 0 )"},
    {"(0-8) ^ (1/3)", "( 1 |_ 1.7321 )"},
    {"2 |/ 90", "( 0 |_ 2 )"},
    {"conj(1 |_ 2)", "( 1 |_ -2 )"},
    {"arg(0 |_ 2)", "1.5708"},
    {"real(3 |_ 4) + imag(3 |_ 4)", "7"},
    {"abs(3 |_ 4)", "5"},
    {"ln(0 |_ 1)", nullptr, 3150},
    {"arcsin 2", "( 90 |_ -75.4561 )"},
    {"arccosh(0-2)", "( 1.317 |_ 3.1416 )"},
    {"(7 |_ 9) % 4", "3"},
    {"((0-2147483648) |_ 9) % (0-1)", nullptr, 3110},
    {"x = ((0-2147483648) |_ 9); x %= ((0-1) |_ 1)", nullptr, 3110},
    {"(0 |_ 0) ^ 2", "0"},
    {"(0 |_ 0) ** 3", "0"},
    {"(0 |_ 0) ^ 0.5", "0"},
    {"0 ^ (1 |_ 7)", "0"},
    {"(0 |_ 0) ^ 0", "1"},
    {"(0 |_ 0) ** (1+(0-1))", "1"},
    {"0 ^ (0 |_ 0)", "1"},
    {"(0 |_ 0) ^ ln(0-1)", "( nan |_ nan )"},
    {"(0 |_ 0) ^ (2 |_ ln(0-1))", "( nan |_ nan )"},
    {"(0 |_ 0) ^ (0-1)", nullptr, 3110},
    {"(0 |_ 0) ^ (1+(0-4))", nullptr, 3110},
    {"0 ** (0 |_ 1)", nullptr, 3110},
    {"(0 |_ 0) * 1 + 0 ^ (0-1)", "inf"},
    {"z = (2 |_ 0); s = 0; while (real z > (0-1)) do; s += z^2 + z^0.5 * 0; z -= 1; next; return s", "5"},
    {"(3 |_ 1)!", "6"},
    {"-(0 |_ 1)", "( 0 |_ -1 )"},
    {"(1 |_ 2) |_ (3 |_ 4)", "( -3 |_ 5 )"},
    {"sum(1 |_ 5, 2)", "3"},
    {"complex z; z = (2 |_ 9); return (left(\"abc\", z))", "ab"},
    {"comb((5 |_ 1), (2 |_ 1)) + max((1 |_ 9), 3)", "13"},
    {"z = (1 |_ 2); z++; return z", "( 2 |_ 2 )"},
    {"(3 |_ 4) < (6 |_ 8)", "true"},
    {"length \"abc\" + (0 |_ 1)", "( 3 |_ 1 )"},
};

/** Drops zeros behind the point, so that the rows above are short. */
std::string Shorten(std::string const& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::size_t const end = text.find_first_not_of("0123456789.", i);
    std::string word = text.substr(i, end - i);
    if (word.find('.') != std::string::npos && word.find_first_of("0123456789") != std::string::npos) {
      word.erase(word.find_last_not_of('0') + 1);
      if (word.back() == '.') word.pop_back();
      out += word;
      i += text.substr(i, end - i).size() - 1;
    } else {
      out += text[i];
    }
  }
  for (std::string const& zero : {std::string(" -0 "), std::string(" -0")}) {
    while (out.find(zero) != std::string::npos &&
           (out.size() == out.find(zero) + zero.size() || zero.back() == ' ')) {
      out.replace(out.find(zero), zero.size(), zero.back() == ' ' ? " 0 " : " 0");
    }
  }
  return out;
}

class Functions : public InterfaceTest {
 protected:
  template <std::size_t count>
  static void ExpectRows(Row const (&rows)[count]) {
    for (Row const& row : rows) {
      SCOPED_TRACE(row.expression);
      Expect(row, qmEvalExpStrToStr(row.expression), "as text");
      Handle const handle = qmParseExp(row.expression);
      if (handle == 0) {
        EXPECT_EQ(qmGetLastErrorID(), row.error);
        continue;
      }
      for (char const* path : {"by handle", "by handle again"}) Expect(row, qmEvalExpHndlToStr(handle), path);
      qmDeleteExp(handle);
    }
  }
  static void Expect(Row const& row, char const* result, char const* path) {
    EXPECT_EQ(qmGetLastErrorID(), row.error) << path;
    bool const isNumeric = qmGetLastResultType() == 'N' || qmGetLastResultType() == 'C';
    if (row.result != nullptr) {
      EXPECT_EQ(isNumeric ? Shorten(result) : std::string(result), row.result) << path;
    }
  }
};

TEST_F(Functions, Texts) {
  qmSetFormattedResultPrecisionLimit(4);
  ExpectRows(kTextRows);
}

TEST_F(Functions, Numbers) {
  qmSetFormattedResultPrecisionLimit(4);
  ExpectRows(kNumberRows);
}

TEST_F(Functions, Arrays) {
  qmSetFormattedResultPrecisionLimit(4);
  for (Row const& row : kArrayRows) {
    SCOPED_TRACE(row.expression);
    Expect(row, qmEvalExpStrToStr(row.expression), "as text");
    Handle const handle = qmParseExp(row.expression);
    Expect(row, qmEvalExpHndlToStr(handle), "by handle");
    qmEvalExpHndlToStr(handle);
    EXPECT_EQ(qmGetLastErrorID(), 3210);
    qmDeleteExp(handle);
  }
}

TEST_F(Functions, ComplexNumbers) {
  qmSetFormattedResultPrecisionLimit(4);
  qmSetAllowComplexResults(true);
  ExpectRows(kComplexRows);
}

TEST_F(Functions, AngleUnitsApplyToOperandsAndResults) {
  struct Unit {
    char letter;
    double right;  // a right angle
  };
  constexpr Unit kUnits[] = {{'D', 90.0}, {'G', 100.0}, {'M', 250.0}, {'R', 1.5707963267948966}};
  for (Unit const& unit : kUnits) {
    SCOPED_TRACE(unit.letter);
    qmSetAngleUnit(unit.letter);
    std::string const right = std::to_string(unit.right);
    EXPECT_NEAR(qmEvalExpStrToNum(("sin " + right).c_str()), 1.0, 1e-6);
    EXPECT_NEAR(qmEvalExpStrToNum(("sec(" + right + "/3)").c_str()), 2.0 / std::sqrt(3.0), 1e-6);
    EXPECT_NEAR(qmEvalExpStrToNum("arccos 0"), unit.right, 1e-8);
    EXPECT_NEAR(qmEvalExpStrToNum("arctan 1 * 2"), unit.right, 1e-8);
  }
}

TEST_F(Functions, ChanceFollowsItsSeedInEachContext) {
  auto const draw = [] {
    std::vector<double> drawn;
    for (int i = 0; i < 1300; ++i) drawn.push_back(qmEvalExpStrToNum("rand 1"));
    return drawn;
  };
  qmEvalExpStr("randseed 42");
  std::vector<double> const first = draw();
  qmEvalExpStr("randseed(0-42.9)");
  EXPECT_EQ(draw(), first) << "across the regeneration of the state";
  UseContextWith("twin", [] {});
  qmEvalExpStr("randseed 42");
  EXPECT_EQ(draw(), first) << "one generator a context";
  qmEvalExpStr("randseed 43");
  EXPECT_NE(draw(), first);
  Handle const handle = qmParseExp("rand 1");
  EXPECT_NE(qmEvalExpHndlToNum(handle), qmEvalExpHndlToNum(handle)) << "never folded";
  qmDeleteExp(handle);
  for (int i = 0; i < 300; ++i) {
    double const die = qmEvalExpStrToNum("roll 6");
    EXPECT_TRUE(die >= 1.0 && die <= 6.0 && die == std::floor(die)) << die;
    double const ranged = qmEvalExpStrToNum("randrange(3, 5)");
    EXPECT_TRUE(ranged >= 3.0 && ranged <= 5.0 && ranged == std::floor(ranged)) << ranged;
  }
}

TEST_F(Functions, LongTextsAreWholeUntilTheyAreFormatted) {
  std::string const half(700, 'x');
  std::string const quoted = "\"" + half + "\"";
  EXPECT_EQ(qmEvalExpStrToNum(("length(" + quoted + " + " + quoted + ")").c_str()), 1400.0);
  EXPECT_EQ(ToText((quoted + "+" + quoted).c_str()), std::string(1023, 'x'));
}

}  // namespace

}  // namespace qumel::testing
