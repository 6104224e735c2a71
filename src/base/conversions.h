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

}  // namespace qumel
