// Numbers to text and back without the locale: the host may set any, and results never change with it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qumel {

/** Writes value with precision digits behind the point, as "%.*f" does in the "C" locale ("inf", "-nan"
 * included). The text is cut to capacity - 1 characters and always ended. Returns its length. A negative
 * precision means 6. */
std::size_t FormatFixed(double value, long precision, char* out, std::size_t capacity);

/** Reads the longest number at the start of text as atof does in the "C" locale; 0.0 when there is none. */
double ParseDouble(char const* text);
/** The same for the nearest single-precision number: that of a double may be another. */
float ParseSingle(char const* text);

/** The decimal digits of a number, with a leading '-' when negative. */
std::string DecimalText(long value);

/** Reads a decimal integer at the start of text; 0 when there is none, the nearest bound when out of range.
 */
long ParseLong(std::string_view text);

}  // namespace qumel
