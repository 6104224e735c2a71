// Numbers to text and back by functions that know no locale.
#include "base/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace qumel {

namespace {

constexpr long kDefaultPrecision = 6;
constexpr long kMostDigitsBehindPoint =
    1074;  // of the exact decimal value of a double; those behind are zeros
constexpr std::size_t kLongestFixedText = 1400;

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsDecimalDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsHexDigit(char c) {
  return IsDecimalDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/** Reads a sign in front of text and takes it away. */
bool TakeMinus(std::string_view& text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  bool const isMinus = text.front() == '-';
  text.remove_prefix(1);
  return isMinus;
}

std::string_view WithoutSpace(std::string_view text) {
  return {std::find_if_not(text.begin(), text.end(), &IsSpace), text.end()};
}

/** Takes "0x" away where a hexadecimal number follows. */
bool TakeHexMark(std::string_view& text) {
  if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X')) return false;
  bool const hasDigit = IsHexDigit(text[2]) || (text[2] == '.' && text.size() > 3 && IsHexDigit(text[3]));
  if (hasDigit) text.remove_prefix(2);
  return hasDigit;
}

/** Cuts a hexadecimal number before an exponent of two signs, which is none: std::from_chars of the GNU
 * library reads "p+-3" as "p-3". */
std::string_view WithoutTwiceSignedExponent(std::string_view number) {
  return number.substr(0, std::min(number.find("p+-"), number.find("P+-")));
}

/** Of a number too large or too small for its type: whether it is too large. Its first digit other than 0 and
 * its exponent decide, for they are far apart from where the two meet. */
bool IsBeyondLargest(std::string_view number, bool isHex) {
  std::size_t const mark = std::min(number.find_first_of(isHex ? "pP" : "eE"), number.size());
  std::string_view const digits = number.substr(0, mark);
  std::size_t const point = std::min(digits.find('.'), digits.size());
  auto const first = static_cast<long long>(std::min(digits.find_first_not_of("0."), digits.size()));
  constexpr long long kBitsOfHexDigit = 4;
  long long const distance = (static_cast<long long>(point) - first) * (isHex ? kBitsOfHexDigit : 1);
  constexpr long kFarExponent = 1L << 30;  // either side of it, no text is long enough to make up for it
  long const exponent = mark < number.size() ? ParseLong(number.substr(mark + 1)) : 0;
  return distance + std::clamp(exponent, -kFarExponent, kFarExponent) > 0;
}

template <class Real>
Real ParseReal(char const* text) {
  if (text == nullptr) return 0;
  std::string_view number = WithoutSpace(text);
  bool const isNegative = TakeMinus(number);
  if (number.empty() || number.front() == '-') return 0;  // a second sign
  bool const isHex = TakeHexMark(number);
  if (isHex) number = WithoutTwiceSignedExponent(number);
  Real magnitude = 0;
  auto const read = std::from_chars(number.data(), number.data() + number.size(), magnitude,
                                    isHex ? std::chars_format::hex : std::chars_format::general);
  if (read.ec == std::errc::invalid_argument) return 0;
  if (read.ec == std::errc::result_out_of_range) {
    std::string_view const all(number.data(), static_cast<std::size_t>(read.ptr - number.data()));
    magnitude = IsBeyondLargest(all, isHex) ? std::numeric_limits<Real>::infinity() : 0;
  }
  return isNegative ? -magnitude : magnitude;
}

}  // namespace

std::size_t FormatFixed(double value, long precision, char* out, std::size_t capacity) {
  if (out == nullptr || capacity == 0) return 0;
  if (precision < 0) precision = kDefaultPrecision;
  char text[kLongestFixedText];
  auto const converted = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed,
                                       static_cast<int>(std::min(precision, kMostDigitsBehindPoint)));
  std::size_t const room = capacity - 1;
  std::size_t const length = std::min(static_cast<std::size_t>(converted.ptr - text), room);
  std::memcpy(out, text, length);
  std::size_t zeros = 0;
  if (precision > kMostDigitsBehindPoint && std::isfinite(value)) {
    zeros = std::min(static_cast<std::size_t>(precision - kMostDigitsBehindPoint), room - length);
    std::memset(out + length, '0', zeros);
  }
  out[length + zeros] = '\0';
  return length + zeros;
}

double ParseDouble(char const* text) { return ParseReal<double>(text); }

float ParseSingle(char const* text) { return ParseReal<float>(text); }

std::string DecimalText(long value) {
  char text[std::numeric_limits<long>::digits10 + 3];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

long ParseLong(std::string_view text) {
  std::string_view number = WithoutSpace(text);
  bool const isNegative = !number.empty() && number.front() == '-';
  if (!number.empty() && number.front() == '+') {
    number.remove_prefix(1);
    if (!number.empty() && number.front() == '-') return 0;
  }
  long value = 0;
  auto const read = std::from_chars(number.data(), number.data() + number.size(), value);
  if (read.ec == std::errc::result_out_of_range) {
    return isNegative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
  }
  return value;
}

}  // namespace qumel
