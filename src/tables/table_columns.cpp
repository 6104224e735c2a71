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
  m_indexes.push_back(std::move(map));
}

CQMTable::~CQMTable() = default;

CQMColumn* CQMTable::FindColumn(SQMColumnKey key) const {
  auto const column = std::find_if(m_columns.begin(), m_columns.end(), [this, &key](auto const& candidate) {
    return key.IsName() ? !key.Name().empty() && NamesColumn(key.Name(), *candidate)
                        : &candidate - m_columns.data() + 1 == key.Position();
  });
  return column != m_columns.end() ? column->get() : nullptr;
}

long CQMTable::AppendColumn(char const* name, EQMDataType type, long declaredLength) {
  try {
    m_columns.push_back(std::make_unique<CQMColumn>(name, type, declaredLength, m_space));
    return TableResult::Done;
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
}

}  // namespace qumel
