// The rules of booleans, of comparisons and of the bits of signed 32-bit integers.
#pragma once

#include <cstdint>

#include "base/conversions.h"

namespace qumel {

// ---- booleans ----

// The byte of a boolean in a host's memory may be neither. Only 1 counts as true here, and only 0 as false.
inline constexpr std::uint8_t kTrueByte = 1;
inline constexpr std::uint8_t kFalseByte = 0;

inline bool BothTrue(std::uint8_t x, std::uint8_t y) { return x == kTrueByte && y == kTrueByte; }
inline bool EitherTrue(std::uint8_t x, std::uint8_t y) { return x == kTrueByte || y == kTrueByte; }
inline bool OneTrueOneFalse(std::uint8_t x, std::uint8_t y) {
  return (x == kTrueByte && y == kFalseByte) || (x == kFalseByte && y == kTrueByte);
}

// ---- comparisons, of 1, 0 or -1 for the first value against the second; texts compare by any number ----

inline bool IsLess(long comparison) { return comparison < 0; }
inline bool IsGreater(long comparison) { return comparison > 0; }
inline bool IsLessOrEqual(long comparison) { return comparison <= 0; }
inline bool IsGreaterOrEqual(long comparison) { return comparison >= 0; }
inline bool IsEqual(long comparison) { return comparison == 0; }
inline bool IsNotEqual(long comparison) { return comparison != 0; }

/** How two numbers compare. Those that are not ordered count as equal. */
inline long ComparisonOf(double x, double y) { return (x > y ? 1 : 0) - (x < y ? 1 : 0); }

// ---- bits ----

using Bits = std::int32_t;

/** The rule of numbers that Rule makes of the bits of their integer parts. Of complex operands the real parts
 * count. */
template <class Rule>
struct SQMOfBits {
  template <class... Number>
  static double Real(Number... x) {
    return Rule::Of(TruncateToInt32(x)...);
  }
  template <class... Number>
  static double OfComplex(Number... z) {
    return Rule::Of(TruncateToInt32(z.real())...);
  }
};

struct SQMBitwiseAndRule : SQMOfBits<SQMBitwiseAndRule> {
  static Bits Of(Bits x, Bits y) { return x & y; }
};
struct SQMBitwiseOrRule : SQMOfBits<SQMBitwiseOrRule> {
  static Bits Of(Bits x, Bits y) { return x | y; }
};
struct SQMBitwiseExOrRule : SQMOfBits<SQMBitwiseExOrRule> {
  static Bits Of(Bits x, Bits y) { return x ^ y; }
};
struct SQMImplicationRule : SQMOfBits<SQMImplicationRule> {
  static Bits Of(Bits x, Bits y) { return ~x | y; }
};
struct SQMEquivalenceRule : SQMOfBits<SQMEquivalenceRule> {
  static Bits Of(Bits x, Bits y) { return ~(x ^ y); }
};
struct SQMComplementRule : SQMOfBits<SQMComplementRule> {
  static Bits Of(Bits x) { return ~x; }
};

}  // namespace qumel
