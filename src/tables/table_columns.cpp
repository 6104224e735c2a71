// The columns of a table, and its life.
#include <algorithm>
#include <new>

#include "tables/table.h"

namespace qumel {

namespace {

/** What a name in any case, perhaps qualified, says of a column. */
bool NamesColumn(std::string_view name, CQMColumn const& column) {
  name.remove_prefix(name.find('.') + 1);  // nothing where there is no '.'
  return std::equal(name.begin(), name.end(), column.Name().begin(), column.Name().end(),
                    [](char given, char kept) { return ToLower(given) == kept; });
}

}  // namespace

CQMTable::CQMTable(CQMDataSpace* space) : m_space(space) {
  SetTypeTag(TypeTag::kTable);
  auto map = std::make_unique<SQMTableIndex>();
  map->name = kRowMapName;
  map->rows = std::make_unique<CQMColumn>(kRowMapName, EQMDataType::RowNumber, 0, m_space);
  if (map->rows->GetRegion() == nullptr) throw std::bad_alloc();
  m_indexes.push_back(std::move(map));
}

CQMTable::~CQMTable() = default;

// ---- finding ----

CQMTable::Columns::const_iterator CQMTable::Locate(SQMColumnKey key) const {
  if (!key.IsName()) {
    bool const exists = key.Position() >= 1 && key.Position() <= GetColumnCount();
    return exists ? m_columns.begin() + (key.Position() - 1) : m_columns.end();
  }
  if (key.Name().empty()) return m_columns.end();
  return std::find_if(m_columns.begin(), m_columns.end(),
                      [name = key.Name()](auto const& column) { return NamesColumn(name, *column); });
}

CQMColumn* CQMTable::FindColumn(SQMColumnKey key) const {
  auto const found = Locate(key);
  return found != m_columns.end() ? found->get() : nullptr;
}

CQMColumn const* CQMTable::GetColumn(SQMColumnKey column) const { return FindColumn(column); }

long CQMTable::GetColumnNumber(char const* name) const {
  auto const found = Locate(name);
  return found != m_columns.end() ? static_cast<long>(found - m_columns.begin()) + 1
                                  : TableResult::NameNotFound;
}

char const* CQMTable::GetColumnName(long position) const {
  CQMColumn const* const column = GetColumn(position);
  return column != nullptr ? column->Name().data() : nullptr;
}

long CQMTable::VerifyColumn(SQMColumnKey column) const {
  return GetColumn(column) != nullptr ? TableResult::Done : TableResult::NameNotFound;
}

long CQMTable::GetTableSize() const {
  long size = 0;
  for (auto const& column : m_columns) size += column->GetBytesInColumn();
  return size;
}

// ---- adding and removing ----

long CQMTable::AppendColumn(std::unique_ptr<CQMColumn> column) {
  if (column == nullptr) return TableResult::OutOfMemory;
  try {
    m_columns.push_back(std::move(column));
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
  return TableResult::Done;
}

long CQMTable::AppendColumn(char const* name, EQMDataType type, long declaredLength) {
  try {
    auto column = std::make_unique<CQMColumn>(name, type, declaredLength, m_space);
    if (column->GetRegion() == nullptr) return TableResult::OutOfMemory;  // it would never hold a value
    return AppendColumn(std::move(column));
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
}

long CQMTable::DeleteColumn(SQMColumnKey column) {
  return ExtractColumn(column) != nullptr ? TableResult::Done : TableResult::NameNotFound;
}

std::unique_ptr<CQMColumn> CQMTable::ExtractColumn(SQMColumnKey column) {
  auto const found = Locate(column);
  if (found == m_columns.end()) return nullptr;
  auto const place = m_columns.begin() + (found - m_columns.cbegin());
  std::unique_ptr<CQMColumn> extracted = std::move(*place);
  m_columns.erase(place);
  for (std::size_t i = 1; i < m_indexes.size(); ++i) {
    if (m_indexes[i] != nullptr && m_indexes[i]->HasKey(*extracted)) DropIndex(static_cast<long>(i));
  }
  return extracted;
}

// ---- filling ----

template <class Value>
long CQMTable::InitializeColumnWith(SQMColumnKey key, Value value) {
  CQMColumn* const column = FindColumn(key);
  if (column == nullptr) return TableResult::NameNotFound;
  // slots of deleted rows too, to keep the others in step
  long const result = column->InflateColumn(m_nextSerial - 1, value);
  EnterColumnAnew(*column);
  return result;
}

long CQMTable::InitializeColumn(SQMColumnKey column, char const* text) {
  return InitializeColumnWith(column, text);
}
long CQMTable::InitializeColumn(SQMColumnKey column, void const* value) {
  return InitializeColumnWith(column, value);
}

}  // namespace qumel
