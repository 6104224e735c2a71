// What the types of columns know: the size of a value, how it is read from text, shown and compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/data_type.h"

namespace qumel {

/** The size of the largest atom that is parsed from text. */
inline constexpr long kLargestParsedAtom = sizeof(SQMTimeStamp);

/** How values are compared and found. */
struct SQMOrder {
  /** 1, 0 or -1 as a is greater than, equal to or less than b; both as format takes them, and a text may be
   * null. */
  int (*compare)(void const* a, void const* b);
  /** Equal values have equal words. Null where values may be equal to others that differ, as a NaN is. */
  std::uint64_t (*word)(void const* value);
};

struct SQMColumnType {
  long atomSize;  // 0: the declared length decides
  /** Reads text into an atom of zeros. Null for texts, which are copied. */
  void (*parse)(char const* text, std::byte* atom);
  /** Appends the text form of an atom, or a text itself. */
  void (*format)(void const* value, std::string& out);
  SQMOrder order;
};

SQMColumnType const& ColumnTypeOf(EQMDataType type);

/** The bytes of one value of the type; declaredLength counts for fixed texts. */
long AtomSizeOf(EQMDataType type, long declaredLength);

}  // namespace qumel
