// Checked conversions between number kinds.
#pragma once

#include <cstdint>
#include <limits>

namespace qumel {

/** The integer part of value as signed 32 bits. NaN and values out of range give INT32_MIN, which is what the
 *  truncating conversion of the home platform gives. */
constexpr std::int32_t TruncateToInt32(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value)
                                                       : std::numeric_limits<std::int32_t>::min();
}

/** Remainder of the integer parts with the sign of the dividend; false when the divisor truncates to 0, and
 *  for the smallest integer by -1, whose quotient is no 32-bit integer. */
constexpr bool IntegerRemainder(double dividend, double divisor, double& remainder) {
  std::int32_t const number = TruncateToInt32(dividend);
  std::int32_t const whole = TruncateToInt32(divisor);
  if (whole == 0 || (whole == -1 && number == std::numeric_limits<std::int32_t>::min())) return false;
  remainder = number % whole;
  return true;
}

}  // namespace qumel
