// The rows of a table and the values in them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "tables/table.h"

namespace qumel {

// ---- where rows live ----

namespace {

/** A row number kept in a column of row numbers; 0 when there is none. */
long NumberAt(CQMColumn const& column, long position) {
  std::byte const* const atom = column.GetColumnValueLocation(position);
  if (atom == nullptr) return 0;
  std::int32_t number;
  std::memcpy(&number, atom, sizeof number);
  return number;
}

}  // namespace

long CQMTable::LogicalRow(long position) const {
  if (position < 1 || position > m_rowCount) return 0;
  if (m_currentIndex == 0) return position;
  CQMColumn const* const rows = CurrentIndex().rows.get();
  long const row = rows != nullptr ? NumberAt(*rows, position) : 0;
  return row >= 1 && row <= m_rowCount
             ? row
             : 0;  // an index that was not sorted lately may name a row that is gone
}

long CQMTable::SlotOfLogicalRow(long row) const { return NumberAt(RowMap(), row); }

long CQMTable::GetColumnRowNumber(long row) {
  CloseGaps();
  long const logical = LogicalRow(row);
  return logical != 0 ? SlotOfLogicalRow(logical) : 0;
}

/** Rows beyond the last are appended to the row map, where room is left of deleted ones or not. */
bool CQMTable::SetSlotOfLogicalRow(long row, long slot) {
  CQMColumn& map = RowMap();
  if (row > map.GetAtomsInColumn() && map.AppendValue() != TableResult::Done) return false;
  auto const number = static_cast<std::int32_t>(slot);
  return map.SetColumnValue(row, static_cast<void const*>(&number)) == TableResult::Done;
}

/** Where a living slot stands; 0 where it does not. */
long CQMTable::PlaceInRowMap(long slot) const {
  long first = 1;
  if (RowMapLength() == 0) return 0;
  if (m_isInSlotOrder) {
    for (long behind = RowMapLength() + 1; behind - first > 1;) {
      long const middle = (first + behind) / 2;
      (std::abs(SlotOfLogicalRow(middle)) <= slot ? first : behind) = middle;
    }
    return SlotOfLogicalRow(first) == slot ? first : 0;
  }
  while (first <= RowMapLength() && SlotOfLogicalRow(first) != slot) ++first;
  return first <= RowMapLength() ? first : 0;
}

void CQMTable::CloseGaps() {
  if (m_gaps == 0) return;
  long kept = 0;
  for (long position = 1; position <= RowMapLength(); ++position) {
    if (long const slot = SlotOfLogicalRow(position); slot > 0) SetSlotOfLogicalRow(++kept, slot);
  }
  m_gaps = 0;
}

// ---- rows ----

/** Whether a column has no values for rows that were there before it. */
bool CQMTable::HasLateColumn() const {
  return std::any_of(m_columns.begin(), m_columns.end(),
                     [this](auto const& column) { return column->GetAtomsInColumn() < m_nextSerial - 1; });
}

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
  if (m_nextSerial == std::numeric_limits<std::int32_t>::max()) return 0;
  long const slot = m_nextSerial++;
  SwitchIndex(0);
  // The columns first: without memory the row map stays as it is, and the slot is never used.
  if (AppendAtoms(slot) != TableResult::Done || !SetSlotOfLogicalRow(RowMapLength() + 1, slot)) return 0;
  if (row <= m_rowCount) {
    if (!RowMap().GetRegion().MoveAtoms(row, row + 1, m_rowCount - row + 1)) return 0;
    SetSlotOfLogicalRow(row, slot);
    m_isInSlotOrder = false;
  }
  ++m_changeCount;
  ++m_rowCount;
  return slot;
}

long CQMTable::AppendRow() { return AppendRow({}); }

long CQMTable::AppendRow(std::initializer_list<void const*> values) {
  bool const hadLateColumn = HasLateColumn();
  long const slot = TakeSlot(m_rowCount + 1);
  if (slot == 0) return TableResult::OutOfMemory;
  auto column = m_columns.begin();
  for (void const* const value : values) {
    if ((*column++)->SetColumnValue(slot, value) != TableResult::Done) {
      DeleteSlot(slot);
      return TableResult::OutOfMemory;
    }
  }
  ForEachIndex([this, slot, hadLateColumn](SQMTableIndex& index) {
    hadLateColumn ? EnterAll(index) : Enter(index, slot);
  });
  return slot;
}

long CQMTable::InsertRow(long row) {
  if (row < 1 || row > m_rowCount) return TableResult::RowOutOfRange;
  CloseGaps();
  long const slot = TakeSlot(row);
  ForEachIndex([this](SQMTableIndex& index) { EnterAll(index); });
  return slot != 0 ? TableResult::Done : TableResult::OutOfMemory;
}

long CQMTable::DeleteRowByRowNumber(long row) {
  CloseGaps();
  long const logical = LogicalRow(row);
  if (logical == 0) return TableResult::RowOutOfRange;
  long const slot = SlotOfLogicalRow(logical);
  if (!RowMap().GetRegion().MoveAtoms(logical + 1, logical, m_rowCount - logical))
    return TableResult::OutOfMemory;
  CountOut(slot);
  return TableResult::Done;
}

void CQMTable::DeleteSlot(long slot) {
  long const place = slot > 0 ? PlaceInRowMap(slot) : 0;
  if (place == 0 || !SetSlotOfLogicalRow(place, -slot)) return;
  ++m_gaps;
  CountOut(slot);
  DropDeadSlots();
}

/** What the end of a row changes beside the row map. */
void CQMTable::CountOut(long slot) {
  --m_rowCount;
  ++m_changeCount;
  ForEachIndex([slot](SQMTableIndex& index) { index.slots.Remove(slot); });
}

/** Makes up for the memory that rows which come and go take. */
void CQMTable::DropDeadSlots() {
  constexpr long kSpared = 16;  // not worth the work
  long const dead = m_nextSerial - 1 - m_rowCount;
  if (dead <= kSpared + 2 * m_rowCount || !m_isInSlotOrder || RowMap().GetRegion().IsMovable()) return;
  std::vector<std::int32_t> slots;
  try {
    slots.reserve(static_cast<std::size_t>(m_rowCount));
  } catch (std::bad_alloc const&) {
    return;  // later, then
  }
  CloseGaps();
  for (long row = 1; row <= m_rowCount; ++row)
    slots.push_back(static_cast<std::int32_t>(SlotOfLogicalRow(row)));
  for (auto const& column : m_columns) column->KeepValues(slots);
  for (long row = 1; row <= m_rowCount; ++row) SetSlotOfLogicalRow(row, row);
  ForEachIndex([&slots](SQMTableIndex& index) { index.slots.Keep(slots); });
  m_nextSerial = static_cast<std::int32_t>(m_rowCount + 1);
}

// ---- values ----

template <class Action>
long CQMTable::AtRow(SQMColumnKey key, long row, Action action) {
  CQMColumn* const column = FindColumn(key);
  if (column == nullptr) return TableResult::NameNotFound;
  long const slot = GetColumnRowNumber(row);
  return slot != 0 && slot <= column->GetAtomsInColumn() ? action(*column, slot) : TableResult::RowOutOfRange;
}

void const* CQMTable::GetValueByRowNumber(SQMColumnKey column, long row) {
  void const* value = nullptr;
  AtRow(column, row, [&value](CQMColumn const& found, long slot) {
    value = found.GetColumnValue(slot);
    return TableResult::Done;
  });
  return value;
}

/** Looking for the row may take away the value that is to be set. */
template <class Value>
long CQMTable::SetHeldValue(SQMColumnKey column, Value const* value, long row) {
  std::unique_ptr<std::byte[]> copy;
  CQMColumn const* const target = GetColumn(column);
  if (target != nullptr && !target->HoldStill(value, copy)) return TableResult::OutOfMemory;
  return AtRow(column, row, [this, value](CQMColumn& found, long slot) {
    long const result = found.SetColumnValue(slot, value);
    ForEachIndex([this, &found, slot](SQMTableIndex& index) {
      if (!index.HasKey(found)) return;
      index.slots.Remove(slot);
      Enter(index, slot);
    });
    return result;
  });
}

long CQMTable::SetValueByRowNumber(SQMColumnKey column, char const* text, long row) {
  return SetHeldValue(column, text, row);
}
long CQMTable::SetValueByRowNumber(SQMColumnKey column, void const* value, long row) {
  return SetHeldValue(column, value, row);
}

}  // namespace qumel
