// What the types of columns know: the size of a value, how it is read from text, shown and compared.
#pragma once

#include <cstddef>
#include <string>

#include "base/data_type.h"

namespace qumel {

/** The size of the largest atom that is parsed from text. */
inline constexpr long kLargestParsedAtom = sizeof(SQMTimeStamp);

struct SQMColumnType {
  long atomSize;  // 0: the declared length decides
  long displayWidth;
  /** Reads text into an atom of zeros. Null for texts, which are copied. */
  void (*parse)(char const* text, std::byte* atom);
  /** Appends the text form of an atom, or a text itself. */
  void (*format)(void const* value, std::string& out);
  /** 1, 0 or -1 as a is greater than, equal to or less than b; both as format takes them, and a text may be
   * null. */
  int (*compare)(void const* a, void const* b);
};

SQMColumnType const& ColumnTypeOf(EQMDataType type);

/** The bytes of one value of the type; declaredLength counts for fixed texts. */
long AtomSizeOf(EQMDataType type, long declaredLength);

}  // namespace qumel
