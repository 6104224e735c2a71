// Number texts against the C library's own functions, which run in the "C" locale here.
#include "base/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace qumel {
namespace {

std::uint64_t Bits(double value) { return std::bit_cast<std::uint64_t>(value); }

// Every sign, exponent and mantissa is as likely as any other, so that denormal and huge values are met too.
std::vector<double> SampleDoubles(std::size_t count) {
  std::vector<double> samples = {0.0,
                                 -0.0,
                                 0.5,
                                 1.5,
                                 2.5,
                                 -0.05,
                                 0.1,
                                 1e15,
                                 999999.9999999,
                                 1e22,
                                 1e23,
                                 1e308,
                                 std::numeric_limits<double>::max(),
                                 std::numeric_limits<double>::min(),
                                 std::numeric_limits<double>::denorm_min(),
                                 HUGE_VAL,
                                 -HUGE_VAL,
                                 std::numeric_limits<double>::quiet_NaN(),
                                 -std::numeric_limits<double>::quiet_NaN()};
  std::mt19937_64 generator(2024);
  while (samples.size() < count) samples.push_back(std::bit_cast<double>(generator()));
  return samples;
}

TEST(FormatFixedTest, WritesWhatPrintfWrites) {
  for (double const value : SampleDoubles(3000)) {
    for (int const precision : {0, 1, 2, 12, 17, 300, 1074, 1075, 1500}) {
      char expected[2000], text[2000];
      int const length = std::snprintf(expected, sizeof expected, "%.*f", precision, value);
      ASSERT_EQ(FormatFixed(value, precision, text, sizeof text), static_cast<std::size_t>(length))
          << expected;
      ASSERT_STREQ(text, expected);
    }
  }
}

TEST(FormatFixedTest, CutsAtTheCapacityWhateverThePrecision) {
  for (double const value : {1.0 / 3.0, -1e300, HUGE_VAL, 0.0}) {
    for (std::size_t const capacity : {1U, 2U, 5U, 64U, 1024U, 1400U}) {
      for (long const precision : {-1L, -5L, 3L, 1074L, 1100L, 10000L, long{INT_MAX}, LONG_MAX}) {
        std::vector<char> text(capacity, '#');
        std::vector<char> expected(capacity);
        int const enough = precision > 5000 ? 5000 : static_cast<int>(precision);
        std::snprintf(expected.data(), capacity, "%.*f", enough, value);
        ASSERT_EQ(FormatFixed(value, precision, text.data(), capacity), std::strlen(expected.data()));
        ASSERT_STREQ(text.data(), expected.data());
      }
    }
  }
  EXPECT_EQ(FormatFixed(1.0, 2, nullptr, 10), 0U);
  char untouched = '#';
  EXPECT_EQ(FormatFixed(1.0, 2, &untouched, 0), 0U);
  EXPECT_EQ(untouched, '#');
}

TEST(ParseDoubleTest, ReadsWhatStrtodReads) {
  std::vector<std::string> texts = {"",
                                    " ",
                                    "abc",
                                    "1",
                                    "+1",
                                    "-1",
                                    "--1",
                                    "+-1",
                                    "-+1",
                                    "- 1",
                                    " \t\n\v\f\r-12.5e2xyz",
                                    "1e",
                                    "1e+",
                                    "1e-x",
                                    "1.",
                                    ".5",
                                    ".",
                                    "-.",
                                    "..5",
                                    "1.2.3",
                                    "1,5",
                                    "1e5",
                                    "1E5",
                                    "0x",
                                    "0xg",
                                    "0x.p1",
                                    "0x10",
                                    "0X1.8p1",
                                    "0x.8p4",
                                    "-0x1p-1074",
                                    "0x1p-1075",
                                    "0x1.8p-1075",
                                    "0x1p1024",
                                    "-0x1p99999999999999999999",
                                    "0x1p-99999999999999999999",
                                    "0x1.p3",
                                    "0x1.fffffffffffff8p1023",
                                    "0x1.00000000000008p0",
                                    "0x1p+-3",
                                    "-0X1.8P+-3",
                                    "0x.8p-+3",
                                    "0x1p++3",
                                    "0x1p--3",
                                    "0x1p+3p+-3",
                                    "1e+-3",
                                    "1e-+3",
                                    "0x1p",
                                    "0x1pz",
                                    "inf",
                                    "-INF",
                                    "infinity",
                                    "infinitely",
                                    "in",
                                    "nan",
                                    "-nan",
                                    "NAN(",
                                    "nan(12x)z",
                                    "1e400",
                                    "-1e400",
                                    "1e-400",
                                    "-1e-400",
                                    "1e999999999999999999999",
                                    "1e-999999999999999999999",
                                    "0e999999999999",
                                    "4.9e-324",
                                    "2.4e-324",
                                    "2.5e-324",
                                    "1.7976931348623159e308",
                                    "2.2250738585072011e-308",
                                    "0.0000000000000000000001e330",
                                    "1000000000000000000000000e-350",
                                    "0x0p5000",
                                    "9007199254740993",
                                    "00001.5",
                                    "1e0001"};
  texts.push_back("0." + std::string(500, '0') + "1e400");
  texts.push_back(std::string(400, '9') + "e-390");
  texts.push_back("1" + std::string(400, '0'));
  texts.push_back("0x" + std::string(300, 'f'));
  texts.push_back("0x0." + std::string(300, '0') + "1");
  texts.push_back("1." + std::string(2000, '3'));
  for (double const value : SampleDoubles(4000)) {
    for (char const* format : {"%.17g", "%.3e", "%a", "%f"}) {
      char text[600];
      std::snprintf(text, sizeof text, format, value);
      texts.emplace_back(text);
    }
  }
  for (std::string const& text : texts) {
    double const expected = std::strtod(text.c_str(), nullptr);
    double const read = ParseDouble(text.c_str());
    if (std::isnan(expected)) {
      ASSERT_TRUE(std::isnan(read)) << text;
      ASSERT_EQ(std::signbit(read), std::signbit(expected)) << text;
    } else {
      ASSERT_EQ(Bits(read), Bits(expected)) << text << " reads as " << read << ", not " << expected;
    }
  }
  EXPECT_EQ(Bits(ParseDouble(nullptr)), 0U);
}

TEST(LongTextTest, ReadsAndWritesWholeNumbers) {
  for (long const value : {0L, 7L, -7L, 2147483647L, LONG_MAX, LONG_MIN}) {
    EXPECT_EQ(DecimalText(value), std::to_string(value));
    EXPECT_EQ(ParseLong(DecimalText(value)), value);
  }
  struct {
    char const* text;
    long value;
  } const cases[] = {{"", 0},
                     {"x1", 0},
                     {"12.3", 12},
                     {" +5x", 5},
                     {"-5", -5},
                     {"+-5", 0},
                     {"-+5", 0},
                     {"-", 0},
                     {"99999999999999999999", LONG_MAX},
                     {" -99999999999999999999", LONG_MIN}};
  for (auto const& c : cases) EXPECT_EQ(ParseLong(c.text), c.value) << c.text;
}

}  // namespace
}  // namespace qumel
