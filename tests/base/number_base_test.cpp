// Based numbers in both directions: settled texts, exact and inexact lengths, exponents of any size, hostile
// input.
#include "base/number_base.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace qumel {
namespace {

TEST(NumberToBasedTextTest, WritesLabelDigitsAndFraction) {
  struct {
    double value;
    char base, mark;
    long precision;
    char const* text;
  } const cases[] = {
      {10, 'H', 'P', 12, "0xA.0"},
      {0.5, 'B', 'P', 12, "0b.1"},
      {255.75, 'O', 'P', 12, "0o377.6"},
      {0, 'H', 'P', 12, "0x.0"},
      {-0.0, 'x', 'P', 12, "0x.0"},
      {23, 'T', 'P', 12, "0t1E.0"},
      {22, 't', 'P', 12, "0t1D.0"},
      {12.5, 'd', 'C', 12, "0d12,5"},
      {12.5, 'D', '.', 12, "0d12.5"},
      {1.0 / 3.0, 'H', 'P', 3, "0x.5555"},  // one digit more than the precision
      {0.99609375, 'h', 'P', 0, "0x.F"},
      {0.75, 'B', 'P', -1, "0b."},
      {7, 'B', 'C', -9, "0b111,"},
      {-1, 'H', 'P', 2, "0xFFFFFFFFFFFFFFFF.0"},
      {-2.5, 'H', 'P', 2, "0xFFFFFFFFFFFFFFFE.000"},  // a negative fraction has only zeros
      {9223372036854775808.0, 'H', 'P', 2, "0x8000000000000000.0"},
      {18446744073709549568.0, 'H', 'P', 2, "0xFFFFFFFFFFFFF800.0"},
      {18446744073709551616.0, 'H', 'P', 2, "0xFFFFFFFFFFFFFFFF.0"},  // beyond 64 bits: the nearest pattern
      {HUGE_VAL, 'O', 'P', 2, "0o1777777777777777777777.0"},
      {-HUGE_VAL, 'H', 'P', 2, "0x8000000000000000.0"},
      {-1e300, 'H', 'P', 2, "0x8000000000000000.0"},
      {5, 'Q', 'P', 2, ""},
  };
  for (auto const& c : cases)
    EXPECT_EQ(NumberToBasedText(c.value, c.base, c.mark, c.precision), c.text) << c.value;
  EXPECT_EQ(NumberToBasedText(std::nan(""), 'H', 'P', 1), "0x8000000000000000.00");
}

TEST(NumberToBasedTextTest, NoPrecisionMakesItEndless) {
  EXPECT_EQ(NumberToBasedText(std::numeric_limits<double>::denorm_min(), 'B', 'P', LONG_MAX),
            "0b." + std::string(1073, '0') + "1");
  EXPECT_EQ(NumberToBasedText(-0.5, 'B', 'P', LONG_MAX), "0b." + std::string(1075, '0'));
  EXPECT_EQ(FractionToDigits(0.1, {3, "012"}, LONG_MAX).size(), 1075U);  // an odd radix of a caller
}

// Written with all its fraction digits in a base that has a power of 2 as radix, a number loses nothing.
TEST(BasedNumberTest, WhatIsWrittenReadsBack) {
  std::mt19937_64 generator(7);
  for (int i = 0; i < 2000; ++i) {
    double const value =
        std::ldexp(static_cast<double>(generator() >> 11), -static_cast<int>(generator() % 60));
    for (char const base : {'B', 'O', 'H'}) {
      std::string text = NumberToBasedText(value, base, 'P', 200);
      text = base + text.substr(2);
      ASSERT_EQ(BasedTextToNumber(text).value, value) << text;
    }
    for (char const base : {'D', 'T'}) {
      std::string text = NumberToBasedText(value, base, 'P', 200);
      text = base + text.substr(2);
      ASSERT_NEAR(BasedTextToNumber(text).value, value, value * 1e-14) << text;
    }
  }
}

TEST(BasedTextToNumberTest, ReadsLiterals) {
  struct {
    char const* text;
    double value;
    bool isInteger;
  } const cases[] = {
      {"H1F", 31, true},
      {"B.1", 0.5, false},
      {"d3.5", 3.5, false},
      {"t1E", 23, true},
      {"t1E3", 279, true},  // a digit in this base
      {"hE", 14, true},
      {"h1E2", 482, true},
      {"x10", 16, true},
      {"X10", 0, true},
      {"z9", 0, true},
      {"", 0, true},
      {"d", 0, true},
      {"d.", 0, false},
      {"d5.", 5, false},
      {"h1f", 32, true},  // small letters are no digits and count 16
      {"t1F", 24, true},  // and 12 where there are twelve
      {"d1.5E3", 1500, true},
      {"d1.5X3", 1500, true},
      {"d1.25E1", 12.5, false},
      {"d125E-2", 1.25, false},
      {"d125E-3", 0.125, false},
      {"d125E-5", 0.00125, false},
      {"d7E+2", 700, true},
      {"b1X11", 8, true},  // the exponent's digits are of the same base
      {"h1X10", 18446744073709551616.0, true},
      {"t1X-1", 1.0 / 12.0, false},
      {"o7.7X1", 63, true},
      {"d.5E2", 50, true},
      {"d12E0", 1340, true},  // without an exponent to go by the mark is read as a digit
      {"d2X", 36, true},
      {"hFFFFFFFFFFFFFF", 72057594037927935.0, true},  // fourteen digits, exact before the one rounding
      {"h10000000000000001", 18446744073709551616.0, true},
      {"d123456789012345", 123456789012345.0, true},
  };
  for (auto const& c : cases) {
    SQMBasedNumber const number = BasedTextToNumber(c.text);
    EXPECT_DOUBLE_EQ(number.value, c.value) << c.text;
    EXPECT_EQ(number.isInteger, c.isInteger) << c.text;
  }
}

TEST(BasedTextToNumberTest, FifteenDigitsAreAccumulatedInADouble) {
  // the fourteenth digit is rounded away before the last one could have tipped the balance
  EXPECT_EQ(BasedTextToNumber("h800000000000041").value, static_cast<double>(0x800000000000000));
  EXPECT_EQ(BasedTextToNumber("h800000000000041.0").value, static_cast<double>(0x800000000000000));
  EXPECT_EQ(BasedTextToNumber("h80000000000005").value, static_cast<double>(0x80000000000005));
  EXPECT_EQ(DigitsToInteger("FFFFFFFFFFFFFFFF1", FindNumberBase('H')), 0xFFFFFFFFFFFFFFF1ULL);  // wraps
}

TEST(BasedTextToNumberTest, FarExponentsCostNothing) {
  EXPECT_EQ(BasedTextToNumber("d1E999999999").value, HUGE_VAL);
  EXPECT_EQ(BasedTextToNumber("d1E-999999999").value, 0.0);
  EXPECT_EQ(BasedTextToNumber("d0E99999999999999999999999999999").value, 0.0);
  EXPECT_EQ(BasedTextToNumber("bX1111111111111111111111111111111111111111111111111111").value, 0.0);
  EXPECT_EQ(BasedTextToNumber("b1X-10000110010").value,
            std::numeric_limits<double>::denorm_min());  // 2^-1074
  EXPECT_EQ(BasedTextToNumber("b1X1111111111").value, std::ldexp(1.0, 1023));
  std::string const zeros(3000, '0');
  EXPECT_EQ(BasedTextToNumber("d." + zeros + "1E3001").value, 1.0);
  EXPECT_EQ(BasedTextToNumber("d1" + zeros + "E-3000").value, 1.0);
  // every digit position costs a rounding
  EXPECT_NEAR(BasedTextToNumber("d1E300").value / 1e300, 1.0, 1e-13);
  EXPECT_NEAR(BasedTextToNumber("d1E-300").value / 1e-300, 1.0, 1e-13);
}

TEST(DigitsTest, RadixAndTableOfCallersAreNotTrusted) {
  for (long const radix : {LONG_MIN, -2L, 0L, 1L, 17L, LONG_MAX}) {
    EXPECT_EQ(IntegerToDigits(255, {radix, "0123456789ABCDEF"}), "") << radix;
    EXPECT_EQ(FractionToDigits(0.5, {radix, "0123456789ABCDEF"}, 5), "") << radix;
    DigitsToDouble("12", {radix, "0123456789"});
    DigitsToInteger("12", {radix, "0123456789"});
    FractionDigitsToDouble("12", {radix, "0123456789"});
  }
  EXPECT_EQ(IntegerToDigits(5, {2, nullptr}), "");
  EXPECT_EQ(DigitsToInteger("11", {2, nullptr}), 0U);
  EXPECT_EQ(IntegerToDigits(35, {36, "0123456789abcdefghijklmnopqrstuvwxyz"}), "z");
  EXPECT_EQ(IntegerToDigits(UINT64_MAX, FindNumberBase('D')), "18446744073709551615");
  EXPECT_EQ(FractionToDigits(123.5, FindNumberBase('T'), 3), "6");
  EXPECT_EQ(FractionToDigits(HUGE_VAL, FindNumberBase('T'), 3), "0");
}

}  // namespace
}  // namespace qumel
