// Numbers written in base 2, 8, 10, 12 and 16, with fractions, in both directions.
#pragma once

#include <string>
#include <string_view>

namespace qumel {

/** How literals of each base are written: the letter that begins them in postfix text, and their mark behind
 * a leading 0. Decimal literals need no mark. */
namespace BaseLetter {
constexpr char kDecimal = 'd', kBinary = 'b', kHexadecimal = 'h', kOctal = 'o', kDuodecimal = 't';
/** The letter of the base that a character behind a leading 0 marks, or 0. */
constexpr char OfMark(char mark) {
  switch (mark) {
    case kDecimal:
    case kBinary:
    case kHexadecimal:
    case kOctal:
    case kDuodecimal: return mark;
    case 'x': return kHexadecimal;
    default: return '\0';
  }
}
}  // namespace BaseLetter

struct SQMNumberBase {
  long radix;          // 0 for an unknown base
  char const* digits;  // digit table; null for an unknown base
};

/** What a base letter ('B', 'O', 'D', 'T', 'H' in either case, or 'x') stands for. */
SQMNumberBase FindNumberBase(char letter);

/** "0", the base label, the integer digits, the point (',' for radix mark 'C', else '.') and the fraction
 * digits. One digit more than the precision is written; a negative precision writes none. Negative values
 * have no sign: their integer part is written as its 64-bit two's complement pattern, the nearest one beyond
 * 64 bits. */
std::string NumberToBasedText(double value, char base, char radixMark, long precision);

/** Digits of a number, most significant first; empty for 0. */
std::string IntegerToDigits(unsigned long long value, SQMNumberBase const& base);

/** Fraction digits: at least one, at most precision + 1; none for a negative precision. */
std::string FractionToDigits(double fraction, SQMNumberBase const& base, long precision);

double DigitsToDouble(std::string_view digits, SQMNumberBase const& base);
unsigned long long DigitsToInteger(std::string_view digits, SQMNumberBase const& base);
double FractionDigitsToDouble(std::string_view digits, SQMNumberBase const& base);

struct SQMBasedNumber {
  double value;
  bool isInteger;
};

/** The value of a literal: a base letter, digits, perhaps a point, perhaps an exponent ("X", or "E" where it
 * is no digit). An unknown base letter gives 0. Letters are digits only as the digit table writes them. */
SQMBasedNumber BasedTextToNumber(std::string_view text);
/** The value of a literal as infix texts have it: perhaps a base mark, and a point or a comma; digits in
 * either case. */
SQMBasedNumber ReadLiteral(std::string_view written);
/** Appends a literal of an infix text as BasedTextToNumber reads it: the base letter, then the literal
 * without its mark and with a point for a comma. Of a base mark the 0 stays. */
void AppendLiteral(std::string_view written, std::string& out);

}  // namespace qumel
