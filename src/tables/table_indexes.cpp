// The indexes of a table: defining, sorting, and finding rows by their keys.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>

#include "tables/table.h"

namespace qumel {

// ---- defining and selecting ----

long CQMTable::FindIndex(std::string_view name) const {
  auto const found = std::find_if(m_indexes.begin(), m_indexes.end(),
                                  [name](auto const& index) { return index->name == name; });
  return found != m_indexes.end() ? static_cast<long>(found - m_indexes.begin()) : TableResult::NameNotFound;
}

long CQMTable::DefineIndex(char const* name, std::span<SQMIndexKey const> keys) {
  std::string_view const wanted = name != nullptr ? name : "";
  if (wanted.empty() || wanted.size() > SQMTableIndex::kLongestName || wanted == kRowMapName)
    return TableResult::NameNotFound;
  long const known = FindIndex(wanted);
  bool const isNew = known < 0;
  try {
    auto index = std::make_unique<SQMTableIndex>();
    index->name = wanted;
    index->keys.reserve(keys.size());
    for (auto const& [columnName, direction] : keys) {
      CQMColumn* const column = FindColumn(columnName);
      if (column == nullptr) return TableResult::NameNotFound;
      index->keys.push_back({column, direction, column->GetChangeCount()});
    }
    EnterAll(*index);
    if (!isNew) {
      m_indexes[static_cast<std::size_t>(known)] = std::move(index);
    } else {
      if (m_indexes.size() == kIndexSlots) return TableResult::OutOfMemory;
      m_indexes.push_back(std::move(index));
    }
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
  if (!isNew) m_currentIndex = known;
  return TableResult::Done;
}

long CQMTable::SelectIndex(char const* name) {
  long const number = name != nullptr && *name != '\0' ? FindIndex(name) : 0;
  if (number < 0) return number;
  SwitchIndex(number);
  return TableResult::Done;
}

// ---- sorting ----

bool CQMTable::IndexIsStale() const {
  if (m_currentIndex == 0) return false;
  SQMTableIndex const& index = CurrentIndex();
  if (index.seenRowCount != m_rowCount) return true;
  if (index.seenChangeCount == m_changeCount) return false;
  return std::any_of(index.keys.begin(), index.keys.end(),
                     [](auto const& key) { return key.column->GetChangeCount() != key.seenChanges; });
}

long CQMTable::UpdateIndex() {
  if (m_currentIndex == 0) return TableResult::Done;
  SQMTableIndex& index = CurrentIndex();
  if (index.rows == nullptr) {
    try {
      index.rows = std::make_unique<CQMColumn>(index.name.c_str(), EQMDataType::RowNumber, 0, m_space);
    } catch (std::bad_alloc const&) {
      return TableResult::OutOfMemory;
    }
  }
  index.seenRowCount = m_rowCount;
  index.seenChangeCount = m_changeCount;
  for (auto& key : index.keys) key.seenChanges = key.column->GetChangeCount();
  long result = index.rows->InflateIndex(m_rowCount);
  if (result == TableResult::Done && !index.keys.empty()) result = SortTable();
  if (result != TableResult::Done) index.seenRowCount = -1;  // the next lookup tries again
  return result;
}

long CQMTable::SortTable() {
  if (m_currentIndex == 0 || CurrentIndex().rows == nullptr) return TableResult::Done;
  CloseGaps();
  SQMTableIndex& index = CurrentIndex();
  struct SQMEntry {
    std::int32_t row;
    long slot;
  };
  long const count = std::min(index.rows->GetAtomsInColumn(), m_rowCount);
  std::vector<SQMEntry> entries;
  try {
    entries.reserve(static_cast<std::size_t>(count));
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
  for (long position = 1; position <= count; ++position) {
    long const row = LogicalRow(position);
    entries.push_back({static_cast<std::int32_t>(row), SlotOfLogicalRow(row)});
  }

  auto const comesFirst = [&index](SQMEntry const& a, SQMEntry const& b) {
    for (auto const& key : index.keys) {
      int const order = key.column->CompareValue(a.slot, b.slot);
      if (order != 0) return key.direction == SortDirection::kDescending ? order > 0 : order < 0;
    }
    return a.row < b.row;
  };
  // A Shell sort: values that cannot be ordered (NaN) leave it with some order, where others would go astray.
  constexpr std::int64_t kStep = 3;
  std::int64_t gap = 1;
  while (gap <= count) gap = kStep * gap + 1;
  while (gap > 1) {
    gap /= kStep;
    auto const distance = static_cast<std::size_t>(gap);
    for (std::size_t i = distance; i < entries.size(); ++i) {
      SQMEntry const moved = entries[i];
      std::size_t place = i;
      for (; place >= distance && comesFirst(moved, entries[place - distance]); place -= distance)
        entries[place] = entries[place - distance];
      entries[place] = moved;
    }
  }

  for (long position = 1; position <= count; ++position)
    index.rows->SetColumnValue(
        position, static_cast<void const*>(&entries[static_cast<std::size_t>(position - 1)].row));
  return TableResult::Done;
}

// ---- words ----

namespace {

/** The word for the values that value gives for each key column. */
template <class ValueOf>
std::uint64_t WordForKeys(SQMTableIndex const& index, ValueOf valueOf) {
  constexpr int kTurn = 5;
  std::uint64_t word = 0;
  for (auto const& key : index.keys)
    word = std::rotl(word, kTurn) ^ key.column->WordFor(valueOf(*key.column));
  return word;
}

}  // namespace

template <class Test>
long CQMTable::FirstSlotWhere(Test test) const {
  for (long position = 1; position <= RowMapLength(); ++position) {
    long const slot = SlotOfLogicalRow(position);
    if (slot > 0 && test(slot)) return slot;
  }
  return 0;
}

bool SQMTableIndex::HasKey(CQMColumn const& column) const {
  return std::any_of(keys.begin(), keys.end(), [&column](auto const& key) { return key.column == &column; });
}

/** Where rows have another order than their slots, or values no words, the index finds none by their words.
 */
void CQMTable::EnterAll(SQMTableIndex& index) {
  index.slots.Clear();
  index.isHashed = m_isInSlotOrder && std::all_of(index.keys.begin(), index.keys.end(),
                                                  [](auto const& key) { return key.column->HasWords(); });
  FirstSlotWhere([this, &index](long slot) {
    Enter(index, slot);
    return !index.isHashed;
  });
}

void CQMTable::Enter(SQMTableIndex& index, long slot) {
  if (!index.isHashed) return;
  try {
    index.slots.Insert(slot,
                       WordForKeys(index, [slot](CQMColumn const& column) { return column.Operand(slot); }));
  } catch (std::bad_alloc const&) {  // slower, then
    index.slots.Clear();
    index.isHashed = false;
  }
}

/** From slot on, the first row with the word of text. */
long CQMTable::FindText(SQMTableIndex const& index, long slot, std::string_view text) const {
  auto const fits = [&index, text](long candidate) {
    auto const* const held = static_cast<char const*>(index.keys.front().column->Operand(candidate));
    return held != nullptr && held == text;
  };
  if (!index.isHashed) return FirstSlotWhere(fits);
  while (slot != 0 && !fits(slot)) slot = index.slots.FindNext(slot);
  return slot;
}

long CQMTable::FindSlotByKey(long number, SQMKeyValues keys) const {
  SQMTableIndex const& index = *m_indexes[static_cast<std::size_t>(number)];
  if (keys.size() < index.keys.size()) return 0;
  auto const fits = [&index, keys](long slot) {
    auto value = keys.begin();
    return std::all_of(index.keys.begin(), index.keys.end(), [&value, slot](auto const& key) {
      return key.column->CompareValue(*value++, slot) == 0;
    });
  };
  if (!index.isHashed) return FirstSlotWhere(fits);
  auto value = keys.begin();
  long slot = index.slots.FindFirst(WordForKeys(index, [&value](CQMColumn const&) { return *value++; }));
  while (slot != 0 && !fits(slot)) slot = index.slots.FindNext(slot);
  return slot;
}

// ---- looking up ----

long CQMTable::GetProbeLimit() const {
  // The quotient mixes the natural with the decimal logarithm; lookups depend on the limit it gives.
  constexpr double kLog10Of2 = 0.301029995664;
  return m_rowCount > 0 ? static_cast<long>(std::log(static_cast<double>(m_rowCount)) / kLog10Of2 + 1.0) : 0;
}

/** Above 0 when the keys come behind the row at position, 0 when they are its keys. */
int CQMTable::CompareKeys(SQMKeyValues keys, long position) const {
  long const slot = SlotOfLogicalRow(LogicalRow(position));
  auto value = keys.begin();
  for (auto const& key : CurrentIndex().keys) {
    int const order = key.column->CompareValue(*value++, slot);
    if (order != 0) return key.direction == SortDirection::kDescending ? -order : order;
  }
  return 0;
}

/** Where values move in memory, puts copies in the place of the keys, which may be such values. False without
 * memory. */
bool CQMTable::HoldStill(SQMKeyValues& keys, SQMHeldKeys& held) const {
  auto const& indexKeys = CurrentIndex().keys;
  bool const areMoving = std::any_of(indexKeys.begin(), indexKeys.end(),
                                     [](auto const& key) { return key.column->GetRegion().IsMovable(); });
  if (!areMoving) return true;
  try {
    for (std::size_t i = 0; i < indexKeys.size(); ++i) {
      held.addresses.push_back(keys[i]);
      if (!indexKeys[i].column->HoldStill(held.addresses[i], held.copies.emplace_back())) return false;
    }
  } catch (std::bad_alloc const&) {
    return false;
  }
  keys = std::span<void const* const>(held.addresses);
  return true;
}

long CQMTable::GetRowNumberByKey(SQMKeyValues keys) {
  if (keys.size() < CurrentIndex().keys.size()) return TableResult::KeyNotFound;
  CloseGaps();
  SQMHeldKeys held;
  if (!HoldStill(keys, held)) return TableResult::OutOfMemory;
  if (IndexIsStale()) {
    if (long const result = UpdateIndex(); result != TableResult::Done) return result;
  }
  long low = 1;
  long high = m_rowCount;
  long position = std::max((m_rowCount + 1) / 2, 1L);
  bool isLast = false;
  for (long probes = GetProbeLimit(); probes > 0; --probes) {
    int const order = CompareKeys(keys, position);
    if (order == 0) {
      while (position > 1 && CompareKeys(keys, position - 1) == 0) --position;
      return position;
    }
    if (isLast) break;
    (order < 0 ? high : low) = position;
    long next = std::max((low + high) / 2, 1L);
    if (next == position && position < m_rowCount) {
      next = position + 1;
      isLast = true;
    }
    position = next;
  }
  return TableResult::KeyNotFound;
}

}  // namespace qumel
