// Exported conversions between numbers and their texts in other bases. They need no context and have no
// state.
#include <cstring>

#include "api/guard.h"
#include "base/number_base.h"
// Parameters that C++ hosts see as references are pointers here, and may be null.
#define QM_PLAIN_POINTERS
#include "qumel/qumel.h"

using namespace qumel;

namespace {

/** Writes the text that make returns to out, and returns out. */
template <class Make>
char* WriteText(char* out, Make make) noexcept {
  if (out == nullptr) return nullptr;
  *out = '\0';
  return Guarded<char*>(nullptr, [&] {
    std::string const text = make();
    return static_cast<char*>(std::memcpy(out, text.c_str(), text.size() + 1));
  });
}

/** Reads digits by means of read; 0 without digits or table. */
template <class Value>
Value ReadDigits(Value (*read)(std::string_view, SQMNumberBase const&), char const* digits, long radix,
                 char const* table) noexcept {
  return digits != nullptr && table != nullptr ? read(digits, {radix, table}) : Value{0};
}

template <class Value>
void StoreTo(Value* place, Value value) {
  if (place != nullptr) *place = value;
}

}  // namespace

bool QMU_GetBaseConversionConstants(char base, long* radix, char** digits) {
  SQMNumberBase const found = FindNumberBase(base);
  StoreTo(radix, found.radix);
  StoreTo(digits, const_cast<char*>(found.digits));
  return found.digits != nullptr;
}

char* QMU_ConvertNumberFromBaseTen(double value, char base, char radixMark, int precision, char* out) {
  char* const written = WriteText(out, [=] { return NumberToBasedText(value, base, radixMark, precision); });
  return FindNumberBase(base).digits != nullptr ? written : nullptr;
}

char* QMU_ConvertIntegerFromBaseTen(unsigned long long n, long radix, char const* digits, char* out) {
  return WriteText(out, [=] { return IntegerToDigits(n, {radix, digits}); });
}

char* QMU_ConvertFractionFromBaseTen(double fraction, long radix, char const* digits, int precision,
                                     char* out) {
  return WriteText(out, [=] { return FractionToDigits(fraction, {radix, digits}, precision); });
}

double QMU_ConvertNumberToBaseTen(char const* text, bool* isInteger, bool* flag) {
  return Guarded<double>(0.0, [=] {
    SQMBasedNumber const number = BasedTextToNumber(text != nullptr ? text : "");
    StoreTo(isInteger, number.isInteger);
    StoreTo(flag, false);
    return number.value;
  });
}

double QMU_ConvertIntegerToBaseTenDouble(char const* digits, long radix, char const* table) {
  return ReadDigits(&DigitsToDouble, digits, radix, table);
}
unsigned long long QMU_ConvertIntegerToBaseTenLong(char const* digits, long radix, char const* table) {
  return ReadDigits(&DigitsToInteger, digits, radix, table);
}
double QMU_ConvertFractionToBaseTen(char const* digits, long radix, char const* table) {
  return ReadDigits(&FractionDigitsToDouble, digits, radix, table);
}
