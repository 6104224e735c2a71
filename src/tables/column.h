// A typed column of values, each of which can be read, parsed, formatted and compared by the column's type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/data_type.h"
#include "objects/linked_object.h"
#include "tables/column_types.h"
#include "tables/data_space_region.h"
#include "tables/text_hash.h"

namespace qumel {

class CQMDataSpace;

/** Result codes of columns and tables. */
namespace TableResult {
enum EQMTableResult : long {
  Done = 0,
  OutOfMemory = -1,
  RowOutOfRange = -2,
  NameNotFound = -3,
  KeyNotFound = -4,  // or no further equal row
};
}  // namespace TableResult

/** Names of columns are kept in small letters, whatever the locale. */
constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/** What a text set into a column does with the text that is there. */
enum class EQMTextMode : int { Prepend = -1, Replace = 0, Append = 1 };

/** One atom a value; rows of a column count from 1. A value handed in or out by address is the atom's own
 * form, except that both text types hand out and take NUL-terminated text. An address handed out holds until
 * the value changes (in a file-backed data space: until the next operation). A char const* is a text in the
 * column's text form. */
class CQMColumn : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kColumn;

  /** Keeps the name in lower case. declaredLength counts for fixed texts; space as CQMDataSpaceRegion takes
   * it. Throws where there is no memory. */
  CQMColumn(char const* name, EQMDataType type, long declaredLength = 0, CQMDataSpace* space = nullptr);
  ~CQMColumn() override;

  /** Appends a value of zeros. 0 or OutOfMemory, as all forms. */
  long AppendValue();
  /** Appends a copy; null appends zeros. A text too long for a fixed-text column is cut. */
  long AppendValue(void const* value);
  /** Parses and appends; null appends zeros. */
  long AppendValue(char const* text);

  /** mode counts for texts only. A text that does not fit a fixed-text column is dropped without a word. Null
   * clears the value (mode Replace). */
  long SetColumnValue(long row, void const* value, EQMTextMode mode = EQMTextMode::Replace);
  long SetColumnValue(long row, char const* text, EQMTextMode mode = EQMTextMode::Replace);

  /** The value, or null for an invalid row. A text that was never set is given as an empty one. */
  void const* GetColumnValue(long row) const;
  /** The atom itself, or null. */
  std::byte* GetColumnValueLocation(long row) const { return m_region.GetAtomPtr(row); }
  /** The value as text; empty for an invalid row or a type without text form. */
  std::string GetFormatedColumnValue(long row) const;
  /** Drops all values but those of the rows named, in ascending order; these count anew from 1. As
   * CQMDataSpaceRegion::KeepAtoms. */
  void KeepValues(std::span<std::int32_t const> rows);

  /** Where values move in memory, puts a copy in the place of a value or text handed in: it may itself be a
   * value that the next look for another takes away. False without memory. */
  bool HoldStill(void const*& value, std::unique_ptr<std::byte[]>& copy) const;
  bool HoldStill(char const*& text, std::unique_ptr<std::byte[]>& copy) const;

  /** 1, 0 or -1 as key is greater than, equal to or less than the value. An invalid row gives 1. */
  int CompareValue(void const* key, long row) const;
  int CompareValue(long rowA, long rowB) const;
  /** Equal values have equal words; only where HasWords tells so. */
  std::uint64_t WordFor(void const* value) const {
    return value != nullptr ? m_rules->order.word(value) : ~std::uint64_t{0};
  }
  /** What text forms and comparisons read: the atom, or the text (null when never set). Null for an invalid
   * row. */
  void const* Operand(long row) const {
    if (!IsValid(row)) return nullptr;
    return HasHeapTexts() ? static_cast<void const*>(m_heapTexts[static_cast<std::size_t>(row - 1)].get())
                          : m_region.GetAtomPtr(row);
  }
  bool HasWords() const { return m_rules->order.word != nullptr; }
  /** Empties a column of row numbers and fills it with 1..count. */
  long InflateIndex(long count);

  long GetAtomsInColumn() const { return m_region.GetAtomCount(); }
  /** Writes "NAME.txt", or "column_NUMBER.txt" for null, into the working folder. A file that cannot be
   * opened is not written. */
  void DumpColumn(char const* name) const;

  EQMDataType GetType() const { return m_type; }
  CQMDataSpaceRegion const& GetRegion() const { return m_region; }
  CQMDataSpaceRegion& GetRegion() { return m_region; }
  /** Changes with every append and set of a value. */
  std::uint32_t GetChangeCount() const { return m_changeCount; }

 private:
  bool HasHeapTexts() const { return m_type == EQMDataType::Text; }
  bool HasFixedTexts() const { return m_type == EQMDataType::String; }
  bool IsValid(long row) const { return m_region.ValidateItemNumber(row); }
  /** Appends an atom of zeros and returns its number, or 0. */
  long AppendAtom();
  template <class Use>
  long WithParsed(char const* text, Use use) const;
  long SetFixedText(long row, std::string_view text, EQMTextMode mode);
  long SetHeapText(long row, std::string_view text, EQMTextMode mode);
  long SetAtom(long row, void const* value);
  std::size_t ValueSize(void const* value) const;
  std::unique_ptr<std::byte[]> CopyOf(void const* value) const;
  /** As CompareValue, with a key that stays where it is. */
  int CompareHeld(void const* key, long row) const;

  EQMDataType m_type;
  SQMColumnType const* m_rules;
  CQMDataSpaceRegion m_region;
  std::vector<std::unique_ptr<char[]>> m_heapTexts;  // owner of what the atoms of a Text column point to
  std::uint32_t m_changeCount = 0;
};

}  // namespace qumel
