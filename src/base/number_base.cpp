// Based number texts: writing with a base label and fraction digits, reading with a point and an exponent.
#include "base/number_base.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/letters.h"

namespace qumel {

namespace {

constexpr char kSixteenDigits[] = "0123456789ABCDEF";
constexpr char kTwelveDigits[] = "0123456789DE";
constexpr std::string_view kLabels = "--b-----o-d-t---x";  // the label of a radix stands at its own place

constexpr long kDuodecimalRadix = 12, kHexadecimalRadix = 16;
constexpr char kRadixPoint = '.', kRadixComma = ',';
constexpr std::size_t kMostExactDigits = 14;  // so many digits are accumulated in 64 bits, more in a double
constexpr std::size_t kMostZeros = 1100;      // moving the point further changes neither 0 nor infinity
constexpr std::size_t kMostFractionDigits = 1075;  // more than any double has

constexpr bool IsDecimalDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view DigitTable(SQMNumberBase const& base) { return base.digits != nullptr ? base.digits : ""; }

bool CanWrite(SQMNumberBase const& base) {
  return base.radix >= 2 && static_cast<std::size_t>(base.radix) <= DigitTable(base).size();
}

std::size_t DigitValue(char c, std::string_view table) { return std::min(table.find(c), table.size()); }

/** The integer part as 64 bits: negative values as their two's complement. Beyond 64 bits the nearest pattern
 * is taken, -2^63 also for what is no number. */
std::uint64_t ToPattern(double integer) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (integer >= 2.0 * kTwoTo63) return std::numeric_limits<std::uint64_t>::max();
  if (integer >= kTwoTo63) {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(integer - kTwoTo63)) +
           (std::uint64_t{1} << 63);
  }
  if (!(integer >= -kTwoTo63)) return std::uint64_t{1} << 63;
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(integer));
}

/** Moves the point of digits, to the left for '-'. Zeros stand where there are no digits. */
std::string MovePoint(std::string_view digits, bool toTheLeft, std::size_t distance) {
  std::size_t const point = std::min(digits.find(kRadixPoint), digits.size());
  std::string_view const integer = digits.substr(0, point);
  std::string_view const fraction = point < digits.size() ? digits.substr(point + 1) : std::string_view();
  std::string moved(integer);
  moved += fraction;
  std::size_t place = integer.size();
  if (toTheLeft) {
    std::size_t const missing = distance > place ? std::min(distance - place, kMostZeros) : 0;
    moved.insert(0, missing, '0');
    place -= std::min(distance, place);
  } else {
    std::size_t const missing =
        distance > fraction.size() ? std::min(distance - fraction.size(), kMostZeros) : 0;
    moved.append(missing, '0');
    place = std::min(distance, fraction.size() + missing) + place;
    if (place == moved.size()) return moved;  // no fraction is left
  }
  return moved.insert(place, 1, kRadixPoint);
}

double IntegerValue(std::string_view digits, SQMNumberBase const& base) {
  return digits.size() > kMostExactDigits ? DigitsToDouble(digits, base)
                                          : static_cast<double>(DigitsToInteger(digits, base));
}

SQMBasedNumber ValueOf(std::string_view digits, SQMNumberBase const& base) {
  std::size_t const point = digits.find(kRadixPoint);
  if (point == std::string_view::npos) return {IntegerValue(digits, base), true};
  double const integer = point > 0 ? IntegerValue(digits.substr(0, point), base) : 0.0;
  return {integer + FractionDigitsToDouble(digits.substr(point + 1), base), false};
}

}  // namespace

SQMNumberBase FindNumberBase(char letter) {
  switch (letter) {
    case NumberBase::kBinary:
    case 'b': return {2, kSixteenDigits};
    case NumberBase::kOctal:
    case 'o': return {8, kSixteenDigits};
    case NumberBase::kDecimal:
    case 'd': return {10, kSixteenDigits};
    case NumberBase::kDuodecimal:
    case 't': return {kDuodecimalRadix, kTwelveDigits};
    case NumberBase::kHexadecimal:
    case 'h':
    case 'x': return {kHexadecimalRadix, kSixteenDigits};
    default: return {0, nullptr};
  }
}

// ---- writing ----

std::string NumberToBasedText(double value, char base, char radixMark, long precision) {
  SQMNumberBase const numberBase = FindNumberBase(base);
  if (numberBase.digits == nullptr) return {};
  double integer;
  double const fraction = std::modf(value, &integer);
  std::string text = "0";
  text += kLabels[static_cast<std::size_t>(numberBase.radix)];
  text += IntegerToDigits(ToPattern(integer), numberBase);
  text += radixMark == RadixMark::kComma ? kRadixComma : kRadixPoint;
  return text += FractionToDigits(fraction, numberBase, precision);
}

std::string IntegerToDigits(unsigned long long value, SQMNumberBase const& base) {
  std::string digits;
  if (!CanWrite(base)) return digits;
  auto const radix = static_cast<unsigned long long>(base.radix);
  for (; value != 0; value /= radix) digits += base.digits[value % radix];
  std::reverse(digits.begin(), digits.end());
  return digits;
}

// Each step shifts the fraction's lowest bit up, as every radix is even, so that a fraction above 0 ends in
// 0. One below 0, and one that is no number, would give zeros without end.
std::string FractionToDigits(double fraction, SQMNumberBase const& base, long precision) {
  std::string digits;
  if (precision < 0 || !CanWrite(base)) return digits;
  auto const radix = static_cast<double>(base.radix);
  double integer;
  double rest = std::modf(fraction, &integer);
  std::size_t const most = std::min(static_cast<std::size_t>(precision), kMostFractionDigits - 1);
  do {
    rest *= radix;
    std::size_t digit = 0;
    if (rest >= 1.0) {
      rest = std::modf(rest, &integer);
      digit = static_cast<std::size_t>(std::min(integer, radix - 1.0));
    }
    digits += base.digits[digit];
  } while (rest != 0.0 && digits.size() <= most);
  return digits;
}

// ---- reading ----

double DigitsToDouble(std::string_view digits, SQMNumberBase const& base) {
  std::string_view const table = DigitTable(base);
  double value = 0.0;
  for (char const c : digits) {
    value = value * static_cast<double>(base.radix) + static_cast<double>(DigitValue(c, table));
  }
  return value;
}

unsigned long long DigitsToInteger(std::string_view digits, SQMNumberBase const& base) {
  std::string_view const table = DigitTable(base);
  unsigned long long value = 0;
  for (char const c : digits)
    value = value * static_cast<unsigned long long>(base.radix) + DigitValue(c, table);
  return value;
}

double FractionDigitsToDouble(std::string_view digits, SQMNumberBase const& base) {
  if (base.radix == 0) return 0.0;
  std::string_view const table = DigitTable(base);
  double value = 0.0;
  for (auto c = digits.rbegin(); c != digits.rend(); ++c) {
    value = (static_cast<double>(DigitValue(*c, table)) + value) / static_cast<double>(base.radix);
  }
  return value;
}

SQMBasedNumber BasedTextToNumber(std::string_view text) {
  SQMNumberBase const base = text.empty() ? SQMNumberBase{0, nullptr} : FindNumberBase(text.front());
  if (base.digits == nullptr) return {0.0, true};
  std::string_view const digits = text.substr(1);
  bool const hasDigitE = base.radix == kDuodecimalRadix || base.radix == kHexadecimalRadix;
  std::size_t const mark = digits.find_first_of(hasDigitE ? "X" : "XE");
  if (mark == std::string_view::npos) return ValueOf(digits, base);

  std::string_view exponentDigits = digits.substr(mark + 1);
  bool const hasSign =
      !exponentDigits.empty() && (exponentDigits.front() == '-' || exponentDigits.front() == '+');
  bool const toTheLeft = hasSign && exponentDigits.front() == '-';
  if (hasSign) exponentDigits.remove_prefix(1);
  constexpr std::size_t kFarthest = std::numeric_limits<std::size_t>::max() / (2 * kHexadecimalRadix);
  std::size_t exponent = 0;
  for (char const c : exponentDigits) {
    std::size_t const next =
        exponent * static_cast<std::size_t>(base.radix) + DigitValue(c, DigitTable(base));
    exponent = std::min(next, kFarthest);
  }
  // without an exponent to go by, the mark is read as a digit
  if (exponent == 0) return ValueOf(digits, base);
  return ValueOf(MovePoint(digits.substr(0, mark), toTheLeft, exponent), base);
}

// Most literals are decimal numbers without an exponent; they are read in one pass, by the arithmetic of
// ValueOf.
SQMBasedNumber ReadLiteral(std::string_view written) {
  constexpr double kTen = 10.0;
  std::size_t at = 0;
  std::uint64_t digits = 0;
  for (; at < written.size() && at <= kMostExactDigits && IsDecimalDigit(written[at]); ++at) {
    digits = digits * 10 + static_cast<std::uint64_t>(written[at] - '0');
  }
  auto integer = static_cast<double>(digits);
  for (; at < written.size() && IsDecimalDigit(written[at]); ++at) {
    integer = integer * kTen + static_cast<double>(written[at] - '0');
  }
  if (at == written.size()) return {integer, true};
  if (written[at] == kRadixPoint || written[at] == kRadixComma) {
    double fraction = 0.0;
    std::size_t last = written.size();
    while (--last > at && IsDecimalDigit(written[last])) {
      fraction = (static_cast<double>(written[last] - '0') + fraction) / kTen;
    }
    if (last == at) return {integer + fraction, false};
  }
  std::string literal;
  AppendLiteral(written, literal);
  std::for_each(literal.begin() + 1, literal.end(), [](char& c) {  // the base letter in front keeps its case
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  });
  return BasedTextToNumber(literal);
}

void AppendLiteral(std::string_view written, std::string& out) {
  char const marked = written.size() > 1 && written.front() == '0' ? BaseLetter::OfMark(written[1]) : '\0';
  out += marked != '\0' ? marked : BaseLetter::kDecimal;
  if (marked != '\0') {
    out += written.front();
    written.remove_prefix(2);
  }
  std::size_t const start = out.size();
  out += written;
  if (std::size_t const comma = out.find(kRadixComma, start); comma != std::string::npos)
    out[comma] = kRadixPoint;
}

}  // namespace qumel
