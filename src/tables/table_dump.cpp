// Writing a table to a text file.
#include <algorithm>
#include <new>

#include "tables/column_dump.h"
#include "tables/table.h"

namespace qumel {

std::atomic<long> CQMTable::sm_lDumpID{0};

void CQMTable::DumpTable(char const* label) const {
  long const dump = sm_lDumpID.fetch_add(1, std::memory_order_relaxed);
  try {
    std::string name = "table_" + std::to_string(GetSerialNumber()) + "_" + std::to_string(dump);
    if (label != nullptr) name += "_" + std::string(label);
    CQMDumpFile file(name + ".txt");

    std::vector<CQMColumn const*> columns;
    if (CurrentIndex().rows != nullptr && m_currentIndex != 0) columns.push_back(CurrentIndex().rows.get());
    for (auto const& column : m_columns) columns.push_back(column.get());

    std::string text = "Total rows: " + std::to_string(m_rowCount) +
                       "\nBinary chops: " + std::to_string(GetProbeLimit()) + "\n";
    long slots = 0;
    for (auto const* column : columns) {
      text.append(column->Name()).append("\t");
      slots = std::max(slots, column->GetAtomsInColumn());
    }
    file.Write(text + "\n");
    for (long slot = 1; slot <= slots; ++slot) {
      text.clear();
      for (auto const* column : columns) {
        text.append(column->GetFormatedColumnValue(slot)).append("\t");
      }
      file.Write(text + "\n");
    }
  } catch (std::bad_alloc const&) {
  }
}

}  // namespace qumel
