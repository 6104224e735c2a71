// The exported conversions between number bases: what they write to memory of the caller, and null arguments.
#include <gtest/gtest.h>

#include <cstring>

#include "qumel/qumel.h"

namespace {

TEST(NumberBasesTest, ConstantsOfALetter) {
  long radix = 99;
  char* digits = nullptr;
  EXPECT_TRUE(QMU_GetBaseConversionConstants('t', radix, digits));
  EXPECT_EQ(radix, 12);
  EXPECT_STREQ(digits, "0123456789DE");
  EXPECT_FALSE(QMU_GetBaseConversionConstants('X', radix, digits));
  EXPECT_EQ(radix, 0);
  EXPECT_EQ(digits, nullptr);
}

TEST(NumberBasesTest, WritesToTheCallersRoom) {
  char out[1200];
  std::memset(out, '#', sizeof out);
  EXPECT_EQ(QMU_ConvertNumberFromBaseTen(255.75, 'o', 'C', 4, out), out);
  EXPECT_STREQ(out, "0o377,6");
  EXPECT_EQ(out[8], '#');
  EXPECT_EQ(QMU_ConvertNumberFromBaseTen(5.0, '?', 'P', 4, out), nullptr);
  EXPECT_STREQ(out, "");
  // the longest there is: no sign, all 64 bits, and zeros for a fraction below 0
  QMU_ConvertNumberFromBaseTen(-1.5, 'B', 'P', 2147483647, out);
  EXPECT_EQ(std::strlen(out), 2U + 64 + 1 + 1075);
  EXPECT_STREQ(QMU_ConvertIntegerFromBaseTen(31, 16, "0123456789abcdef", out), "1f");
  EXPECT_STREQ(QMU_ConvertIntegerFromBaseTen(0, 16, "0123456789abcdef", out), "");
  EXPECT_STREQ(QMU_ConvertFractionFromBaseTen(0.75, 2, "01", 0, out), "1");
  EXPECT_STREQ(QMU_ConvertFractionFromBaseTen(0.75, 2, "01", -1, out), "");
}

TEST(NumberBasesTest, ReadsDigits) {
  bool isInteger = false;
  bool flag = true;
  EXPECT_EQ(QMU_ConvertNumberToBaseTen("H1F", isInteger, flag), 31.0);
  EXPECT_TRUE(isInteger);
  EXPECT_FALSE(flag);
  EXPECT_EQ(QMU_ConvertNumberToBaseTen("B.1", isInteger, flag), 0.5);
  EXPECT_FALSE(isInteger);
  char const* const table = "0123456789DE";
  EXPECT_EQ(QMU_ConvertIntegerToBaseTenDouble("1E", 12, table), 23.0);
  EXPECT_EQ(QMU_ConvertIntegerToBaseTenLong("1E", 12, table), 23ULL);
  EXPECT_EQ(QMU_ConvertFractionToBaseTen("6", 12, table), 0.5);
}

TEST(NumberBasesTest, NullGivesNothing) {
  bool isInteger, flag;
  char out[8];
  EXPECT_EQ(QMU_ConvertNumberFromBaseTen(1, 'H', 'P', 2, nullptr), nullptr);
  EXPECT_EQ(QMU_ConvertIntegerFromBaseTen(1, 2, "01", nullptr), nullptr);
  EXPECT_STREQ(QMU_ConvertIntegerFromBaseTen(1, 2, nullptr, out), "");
  EXPECT_STREQ(QMU_ConvertFractionFromBaseTen(0.5, 2, nullptr, 2, out), "");
  EXPECT_EQ(QMU_ConvertNumberToBaseTen(nullptr, isInteger, flag), 0.0);
  EXPECT_EQ(QMU_ConvertIntegerToBaseTenDouble(nullptr, 2, "01"), 0.0);
  EXPECT_EQ(QMU_ConvertIntegerToBaseTenLong("1", 2, nullptr), 0ULL);
  EXPECT_EQ(QMU_ConvertFractionToBaseTen("1", 2, nullptr), 0.0);
}

}  // namespace
