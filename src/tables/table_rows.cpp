// The rows of a table, the current row, and the values in them.
#include <algorithm>
#include <cstring>
#include <limits>

#include "tables/table.h"

namespace qumel {

// ---- where rows live ----

namespace {

/** A row number kept in a column of row numbers; 0 when there is none. */
long NumberAt(CQMColumn const* column, long position) {
  std::byte const* const atom = column != nullptr ? column->GetColumnValueLocation(position) : nullptr;
  if (atom == nullptr) return 0;
  std::int32_t number;
  std::memcpy(&number, atom, sizeof number);
  return number;
}

}  // namespace

long CQMTable::LogicalRow(long position) const {
  if (position < 1 || position > m_rowCount) return 0;
  if (m_currentIndex == 0) return position;
  long const row = NumberAt(CurrentIndex().rows.get(), position);
  return row >= 1 && row <= m_rowCount
             ? row
             : 0;  // an index that was not sorted lately may name a row that is gone
}

long CQMTable::SlotOfLogicalRow(long row) const { return NumberAt(RowMap(), row); }

long CQMTable::GetColumnRowNumber(long row) const {
  long const logical = LogicalRow(row);
  return logical != 0 ? SlotOfLogicalRow(logical) : 0;
}

/** Rows beyond the last are appended to the row map, where room is left of deleted ones or not. */
bool CQMTable::SetSlotOfLogicalRow(long row, long slot) {
  CQMColumn* const map = RowMap();
  if (map == nullptr) return false;
  if (row > map->GetAtomsInColumn() && map->AppendValue() != TableResult::Done) return false;
  auto const number = static_cast<std::int32_t>(slot);
  return map->SetColumnValue(row, static_cast<void const*>(&number)) == TableResult::Done;
}

// ---- rows ----

/** Appends zeros to every column up to slot, so that a column that came late is in step from here on. */
long CQMTable::AppendAtoms(long slot) {
  for (auto const& column : m_columns) {
    while (column->GetAtomsInColumn() < slot) {
      if (long const result = column->AppendValue(); result != TableResult::Done) return result;
    }
  }
  return TableResult::Done;
}

long CQMTable::TakeSlot(long row) {
  if (RowMap() == nullptr || m_nextSerial == std::numeric_limits<std::int32_t>::max()) return 0;
  long const slot = m_nextSerial++;
  SwitchIndex(0);
  // The columns first: without memory the row map stays as it is, and the slot is never used.
  if (AppendAtoms(slot) != TableResult::Done || !SetSlotOfLogicalRow(m_rowCount + 1, slot)) return 0;
  if (row <= m_rowCount) {
    if (!RowMap()->GetRegion()->MoveAtoms(row, row + 1, m_rowCount - row + 1)) return 0;
    SetSlotOfLogicalRow(row, slot);
  }
  ++m_changeCount;
  ++m_rowCount;
  m_currentRow = row;
  return slot;
}

long CQMTable::AppendRow() {
  long const slot = TakeSlot(m_rowCount + 1);
  return slot != 0 ? slot : TableResult::OutOfMemory;
}

long CQMTable::InsertRow(long row) {
  if (row < 1 || row > m_rowCount) return TableResult::RowOutOfRange;
  return TakeSlot(row) != 0 ? TableResult::Done : TableResult::OutOfMemory;
}

long CQMTable::DeleteRowByRowNumber(long row) {
  if (row == 0) row = m_currentRow;
  long const logical = LogicalRow(row);
  if (logical == 0) return TableResult::RowOutOfRange;
  if (!RowMap()->GetRegion()->MoveAtoms(logical + 1, logical, m_rowCount - logical))
    return TableResult::OutOfMemory;
  --m_rowCount;
  m_currentRow = std::min(row, m_rowCount);
  ++m_changeCount;
  for (auto const& column : m_columns) column->CountChange();
  return TableResult::Done;
}

long CQMTable::DeleteRowByKey(SQMKeyValues keys) {
  long const row = GetRowNumberByKey(keys);
  return row > 0 ? DeleteRow() : row;
}

// ---- the current row ----

long CQMTable::ResetCurrentRow() { return m_currentRow = std::min(m_rowCount, 1L); }

long CQMTable::GetNextRow() {
  if (m_currentRow < m_rowCount) ++m_currentRow;
  return m_currentRow;
}

long CQMTable::GetPreviousRow() {
  if (m_currentRow > 1) --m_currentRow;
  return m_currentRow;
}

long CQMTable::GetLastRow() { return m_currentRow = m_rowCount; }

long CQMTable::SetCurrentRowByNumber(long row) {
  return m_currentRow = row >= 1 && row <= m_rowCount ? row : 0;
}

// ---- values ----

long CQMTable::UseRow(long row) {
  if (row == 0) row = m_currentRow;
  if (row < 1 || row > m_rowCount) return 0;
  m_currentRow = row;
  return GetColumnRowNumber(row);
}

template <class Action>
long CQMTable::AtRow(SQMColumnKey key, long row, Action action) {
  CQMColumn* const column = GetColumn(key);
  if (column == nullptr) return TableResult::NameNotFound;
  long const slot = UseRow(row);
  return slot != 0 && slot <= column->GetAtomsInColumn() ? action(*column, slot) : TableResult::RowOutOfRange;
}

template <class Action>
long CQMTable::AtKey(SQMKeyValues keys, Action action) {
  long const row = GetRowNumberByKey(keys);
  return row > 0 ? action() : row;
}

void const* CQMTable::GetValueByRowNumber(SQMColumnKey column, long row) {
  void const* value = nullptr;
  AtRow(column, row, [&value](CQMColumn& found, long slot) {
    value = found.GetColumnValue(slot);
    return TableResult::Done;
  });
  return value;
}

void const* CQMTable::GetValueByKey(SQMColumnKey column, SQMKeyValues keys) {
  return GetRowNumberByKey(keys) > 0 ? GetValue(column) : nullptr;
}

long CQMTable::GetFormattedValueByRowNumber(SQMColumnKey column, std::string& buffer, long row) {
  return AtRow(column, row,
               [&buffer](CQMColumn& found, long slot) { return found.GetColumnValueString(slot, buffer); });
}

long CQMTable::GetFormattedValueByKey(SQMColumnKey column, std::string& buffer, SQMKeyValues keys) {
  return AtKey(keys, [&] { return GetFormattedValue(column, buffer); });
}

/** Looking for the row may take away the value that is to be set. */
template <class Value>
long CQMTable::SetHeldValue(SQMColumnKey column, Value const* value, long row) {
  std::unique_ptr<std::byte[]> copy;
  CQMColumn const* const target = GetColumn(column);
  if (target != nullptr && !target->HoldStill(value, copy)) return TableResult::OutOfMemory;
  return AtRow(column, row,
               [value](CQMColumn& found, long slot) { return found.SetColumnValue(slot, value); });
}

template <class Value>
long CQMTable::SetHeldValueByKey(SQMColumnKey column, Value const* value, SQMKeyValues keys) {
  std::unique_ptr<std::byte[]> copy;
  CQMColumn const* const target = GetColumn(column);
  if (target != nullptr && !target->HoldStill(value, copy)) return TableResult::OutOfMemory;
  return AtKey(keys, [&] { return SetValue(column, value); });
}

long CQMTable::SetValueByRowNumber(SQMColumnKey column, char const* text, long row) {
  return SetHeldValue(column, text, row);
}
long CQMTable::SetValueByRowNumber(SQMColumnKey column, void const* value, long row) {
  return SetHeldValue(column, value, row);
}
long CQMTable::SetValueByKey(SQMColumnKey column, char const* text, SQMKeyValues keys) {
  return SetHeldValueByKey(column, text, keys);
}
long CQMTable::SetValueByKey(SQMColumnKey column, void const* value, SQMKeyValues keys) {
  return SetHeldValueByKey(column, value, keys);
}

}  // namespace qumel
