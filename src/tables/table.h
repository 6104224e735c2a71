// A relational table in memory: typed columns, rows, and indexes, which find rows by a hash of their keys
// and are sorted when their order is asked for.
#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "objects/object.h"
#include "tables/column.h"
#include "tables/row_hash.h"
#include "tables/text_hash.h"

namespace qumel {

/** A column by position (from 1) or by name (any case, a prefix up to the first '.' is dropped). */
class SQMColumnKey {
 public:
  SQMColumnKey(int position) : m_position(position) {}
  SQMColumnKey(long position) : m_position(position) {}
  SQMColumnKey(char const* name) : m_name(name != nullptr ? name : ""), m_isName(true) {}

  bool IsName() const { return m_isName; }
  long Position() const { return m_position; }
  std::string_view Name() const { return m_name; }

 private:
  long m_position = 0;
  std::string_view m_name;
  bool m_isName = false;
};

/** The values looked for: one address for each key column of the current index, in key order. */
struct SQMKeyValues : std::span<void const* const> {
  using std::span<void const* const>::span;
  SQMKeyValues(std::initializer_list<void const*> keys) : span(keys.begin(), keys.size()) {}
  SQMKeyValues(std::span<void const* const> keys) : span(keys) {}
};

namespace SortDirection {
constexpr char kAscending = 'A', kDescending = 'D';
}

/** A key column of an index and its direction. */
struct SQMIndexKey {
  char const* column;
  char direction = SortDirection::kAscending;
};

/** An index: positions in sort order, each holding a logical row number, and slots by the hash of their keys.
 */
struct SQMTableIndex {
  static constexpr long kLongestName = 63;
  struct SQMKey {
    CQMColumn* column;
    char direction;
    std::uint32_t seenChanges;  // the column's change counter when the index was last sorted
  };
  std::string name;
  std::vector<SQMKey> keys;
  std::unique_ptr<CQMColumn> rows;  // made when the index is sorted first
  long seenRowCount = -1;           // when it was last sorted; a new index is stale
  std::uint32_t seenChangeCount = 0;
  CQMRowHash slots;
  bool isHashed = false;  // whether slots holds all rows

  bool HasKey(CQMColumn const& column) const;
};

/** Row numbers count in the order of the current index (the row map gives the order of the rows themselves),
 * from 1. Results are those of TableResult, or as told. Indexes are sorted by keyed lookups only, when rows
 * have come or gone and the key columns have changed since; a key value set since the last lookup does not
 * alone make an index stale. Slots are found by their keys without sorting. A table belongs to one thread at
 * a time; const operations may run in any number of threads while none changes the table. */
class CQMTable : public CQMObject {
 public:
  static constexpr long kIndexSlots = 32;  // the row map's included
  static constexpr char const* kRowMapName = "*ROW_MAP";

  /** space holds the values: null is the library's shared data space. Throws where there is no memory. */
  explicit CQMTable(CQMDataSpace* space = nullptr);
  ~CQMTable() override;

  // Columns.
  long AppendColumn(char const* name, EQMDataType type, long declaredLength = 0);
  /** Values are changed through the table only, which keeps its indexes in step. */
  CQMColumn const* GetColumn(SQMColumnKey column) const { return FindColumn(column); }

  // Rows.
  /** Returns the new row's physical slot, or OutOfMemory. Makes the row map current. */
  long AppendRow();
  /** The same with a value for each column, in the column's own form; where one cannot be kept there is no
   * row. */
  long AppendRow(std::initializer_list<void const*> values);
  /** Inserts before row, which must exist. Makes the row map current. */
  long InsertRow(long row);
  long DeleteRowByRowNumber(long row);
  long GetRowCount() const { return m_rowCount; }

  /** The first row in index order with these keys, or KeyNotFound. */
  long GetRowNumberByKey(SQMKeyValues keys);

  // Physical slots: the row numbers of the columns.
  /** The slot of a row number in the order of the current index; 0 when there is none. */
  long GetColumnRowNumber(long row);
  /** The slot of the first row, in the order of the rows, that has these keys in the index of a number; 0
   * when there is none. In constant time, unless rows were inserted before others or a key is a real number:
   * then rows are searched one by one. The current index does not matter. */
  long FindSlotByKey(long index, SQMKeyValues keys) const;
  /** The same for an index of one column of texts. */
  long FindSlotByText(long index, SQMHashedText const& key) const {
    SQMTableIndex const& searched = *m_indexes[static_cast<std::size_t>(index)];
    long const slot = searched.slots.FindFirst(key.word);
    return searched.isHashed && (slot == 0 || IsExact(key.word)) ? slot : FindText(searched, slot, key.text);
  }
  /** Deletes the row of a slot without moving those behind it. When most slots are dead, the others are
   * numbered anew, from 1 in the order of the rows. */
  void DeleteSlot(long slot);

  // Values: null or a result code when the column or row is not found.
  void const* GetValueByRowNumber(SQMColumnKey column, long row);
  /** A text is parsed, what is void is a value in the column's own form. */
  long SetValueByRowNumber(SQMColumnKey column, char const* text, long row);
  long SetValueByRowNumber(SQMColumnKey column, void const* value, long row);

  // Indexes.
  /** Defines or replaces an index. OutOfMemory without a free slot; NameNotFound for an unknown column, or
   * for a name that is empty, the row map's or longer than SQMTableIndex::kLongestName. */
  long DefineIndex(char const* name, std::span<SQMIndexKey const> keys);
  long DefineIndex(char const* name, std::initializer_list<SQMIndexKey> keys) {
    return DefineIndex(name, std::span(keys.begin(), keys.size()));
  }
  /** Null or empty selects the row map. */
  long SelectIndex(char const* name);
  long UpdateIndex();
  bool IndexIsStale() const;

  /** Writes "table_NUMBER_DUMP_LABEL.txt", or without the label for null, into the working folder: every
   * physical slot, deleted rows included. A file that cannot be opened is not written. */
  void DumpTable(char const* label) const;

 private:
  static std::atomic<long> sm_lDumpID;  // of the next dump of any table

  CQMColumn* FindColumn(SQMColumnKey key) const;
  SQMTableIndex const& CurrentIndex() const { return *m_indexes[static_cast<std::size_t>(m_currentIndex)]; }
  SQMTableIndex& CurrentIndex() { return *m_indexes[static_cast<std::size_t>(m_currentIndex)]; }
  /** The slots of the rows; negative ones were deleted, and stay until CloseGaps takes them out. */
  CQMColumn& RowMap() const { return *m_indexes[0]->rows; }
  long RowMapLength() const { return m_rowCount + m_gaps; }
  long PlaceInRowMap(long slot) const;
  void CloseGaps();
  void CountOut(long slot);
  void DropDeadSlots();
  long LogicalRow(long position) const;
  long SlotOfLogicalRow(long row) const;
  bool SetSlotOfLogicalRow(long row, long slot);
  bool HasLateColumn() const;
  long AppendAtoms(long slot);
  /** Makes a row at a row number, which may be one beyond the last; its slot, or 0 without memory. */
  long TakeSlot(long row);
  template <class Action>
  long AtRow(SQMColumnKey column, long row, Action action);
  template <class Value>
  long SetHeldValue(SQMColumnKey column, Value const* value, long row);
  struct SQMHeldKeys {
    std::vector<std::unique_ptr<std::byte[]>> copies;
    std::vector<void const*> addresses;
  };
  bool HoldStill(SQMKeyValues& keys, SQMHeldKeys& held) const;
  long FindIndex(std::string_view name) const;
  void SwitchIndex(long number) { m_currentIndex = number; }
  /** Sorts the current index's column as it stands. */
  long SortTable();
  /** How many rows a keyed lookup looks at before it gives up. */
  long GetProbeLimit() const;
  template <class Action>
  void ForEachIndex(Action action) {  // but the row map
    for (std::size_t i = 1; i < m_indexes.size(); ++i) action(*m_indexes[i]);
  }
  void EnterAll(SQMTableIndex& index);
  void Enter(SQMTableIndex& index, long slot);
  template <class Test>
  long FirstSlotWhere(Test test) const;
  long FindText(SQMTableIndex const& index, long slot, std::string_view text) const;
  int CompareKeys(SQMKeyValues keys, long position) const;

  CQMDataSpace* m_space;
  std::vector<std::unique_ptr<CQMColumn>> m_columns;
  long m_rowCount = 0;
  std::int32_t m_nextSerial = 1;  // the physical slot of the next row
  std::uint32_t m_changeCount = 0;
  std::vector<std::unique_ptr<SQMTableIndex>> m_indexes;  // the first is the row map
  long m_currentIndex = 0;
  bool m_isInSlotOrder = true;  // no row was inserted before another
  long m_gaps = 0;              // negative slots in the row map
};

}  // namespace qumel
