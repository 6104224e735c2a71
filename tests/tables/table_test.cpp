// Tables: columns by position and name, rows against a plain model, indexes against a stable sort, and the
// dumps.
#include "tables/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <numeric>
#include <random>
#include <sstream>

#include "support/failing_allocation.h"
#include "support/scratch_folder.h"
#include "tables/data_space.h"

namespace qumel {
namespace {

constexpr EQMDataType kInteger{10}, kFixedText = EQMDataType::String;

std::string TextOf(CQMTable& table, SQMColumnKey column, long row) {
  std::string text = "none";
  table.GetFormattedValueByRowNumber(column, text, row);
  return text;
}

/** A table with a column "name" of texts and one "number", filled with rows. */
struct Sample {
  explicit Sample(std::initializer_list<std::pair<char const*, int>> rows) {
    table.AppendColumn("name", kFixedText, 10);
    table.AppendColumn("number", kInteger);
    for (auto const& [name, number] : rows) Append(name, number);
  }
  void Append(char const* name, int number) {
    table.AppendRow();
    table.SetValue("name", name);
    table.SetValue("number", &number);
  }
  /** The numbers in the order of the current index. */
  std::vector<int> Numbers() {
    std::vector<int> numbers;
    for (long row = 1; row <= table.GetRowCount(); ++row)
      numbers.push_back(std::stoi(TextOf(table, "number", row)));
    return numbers;
  }
  CQMTable table;
};

// ---- columns ----

TEST(Table, FindsColumnsByPositionAndName) {
  Sample sample({});
  CQMTable& table = sample.table;
  EXPECT_STREQ(table.GetTypeTag(), "__OT");
  table.AppendColumn("Last", kInteger);
  CQMColumn const* const number = table.GetColumn(2);
  ASSERT_NE(number, nullptr);
  struct Case {
    char const* name;
    long position;
  };
  for (auto const& [name, position] : {Case{"number", 2},
                                       {"NuMBer", 2},
                                       {"Table.Number", 2},
                                       {".number", 2},
                                       {"last", 3},
                                       {"a.b.number", -3},
                                       {"numbe", -3},
                                       {"numbers", -3},
                                       {"number.", -3},
                                       {"", -3},
                                       {nullptr, -3},
                                       {"**INDEX", -3},
                                       {"*row_map", -3}}) {
    SCOPED_TRACE(name != nullptr ? name : "null");
    EXPECT_EQ(table.GetColumnNumber(name), position);
    EXPECT_EQ(table.GetColumn(name), position > 0 ? table.GetColumn(position) : nullptr);
    EXPECT_EQ(table.VerifyColumn(name), position > 0 ? 0 : -3);
  }
  EXPECT_STREQ(table.GetColumnName(1), "name");
  for (long position : {0L, 4L, -1L, std::numeric_limits<long>::max()}) {
    EXPECT_EQ(table.GetColumn(position), nullptr);
    EXPECT_EQ(table.GetColumnName(position), nullptr);
    EXPECT_EQ(table.DeleteColumn(position), -3);
  }
  EXPECT_EQ(table.AppendColumn(nullptr), -1);
}

TEST(Table, RemovesColumnsWithTheirIndexes) {
  Sample sample({{"b", 1}, {"a", 2}});
  CQMTable& table = sample.table;
  table.DefineIndex("names", {{"name"}});
  table.DefineIndex("numbers", {{"number"}});
  table.SelectIndex("names");
  EXPECT_EQ(table.GetRowNumberByKey({"a"}), 1);
  std::unique_ptr<CQMColumn> const names = table.ExtractColumn("NAME");
  ASSERT_NE(names, nullptr);
  EXPECT_EQ(names->GetFormatedColumnValue(1), "b");
  EXPECT_EQ(table.SelectIndex("names"), -3);
  EXPECT_EQ(table.GetIndexCount(), 2);
  EXPECT_EQ(TextOf(table, 1, 2), "2");
  EXPECT_EQ(table.ExtractColumn("name"), nullptr);
  EXPECT_EQ(table.DeleteColumn("number"), 0);
  EXPECT_EQ(table.GetIndexCount(), 1);
  EXPECT_EQ(table.GetColumnCount(), 0);
}

TEST(Table, InitializesColumnsAndCountsBytes) {
  Sample sample({{"a", 1}, {"b", 2}, {"c", 3}});
  CQMTable& table = sample.table;
  EXPECT_EQ(table.GetTableSize(), 3 * 11 + 3 * 4);
  table.DeleteRowByRowNumber(1);
  EXPECT_EQ(table.InitializeColumn("number", "9"), 0);
  EXPECT_EQ(TextOf(table, 2, 1) + TextOf(table, 2, 2), "99");
  int const value = 4;
  EXPECT_EQ(table.InitializeColumn(2, &value), 0);
  EXPECT_EQ(TextOf(table, 2, 2), "4");
  EXPECT_EQ(table.InitializeColumn("none", "9"), -3);

  table.AppendColumn("late", kInteger);  // has no values for the rows that are there
  EXPECT_EQ(table.GetValueByRowNumber("late", 1), nullptr);
  EXPECT_EQ(table.SetValueByRowNumber("late", "5", 1), -2);
  table.AppendRow();
  EXPECT_EQ(table.SetValue("late", "6"), 0);
  EXPECT_EQ(TextOf(table, "late", 3), "6");
}

// ---- rows ----

TEST(Table, RowsFollowAPlainList) {
  CQMTestFolder const folder;
  CQMDataSpace memory, fileBacked(folder.Path().c_str());
  ASSERT_TRUE(fileBacked.SetFileBacked(true));
  for (CQMDataSpace* space : {&memory, &fileBacked}) {
    for (bool inserts : {false, true}) {
      CQMTable table(space);
      table.AppendColumn("v", kInteger);
      std::vector<std::pair<int, long>> model;  // value, slot
      std::mt19937 random(3);
      for (int step = 1; step <= 1500; ++step) {
        long const rows = static_cast<long>(model.size());
        long const row = rows > 0 ? static_cast<long>(random() % static_cast<unsigned>(rows)) + 1 : 0;
        unsigned const choice = random() % 10;
        if (choice < 3 && rows > 0) {
          ASSERT_EQ(table.DeleteRowByRowNumber(row), 0);
          model.erase(model.begin() + (row - 1));
          ASSERT_EQ(table.GetCurrentRow(), std::min(row, rows - 1));
          continue;
        }
        long const at = inserts && choice < 6 && rows > 0 ? row : rows + 1;
        if (at > rows) {
          long const slot = table.AppendRow();
          ASSERT_EQ(slot, table.GetColumn(1)->GetAtomsInColumn());
        } else {
          ASSERT_EQ(table.InsertRow(at), 0);
        }
        ASSERT_EQ(table.GetCurrentRow(), at);
        ASSERT_EQ(table.SetValue(1, &step), 0);
        model.insert(model.begin() + (at - 1), {step, table.GetColumn(1)->GetAtomsInColumn()});
      }
      ASSERT_EQ(table.GetRowCount(), static_cast<long>(model.size()));
      long row = 0;
      for (auto const& [value, slot] : model) {
        ASSERT_EQ(TextOf(table, 1, ++row), std::to_string(value));
        ASSERT_EQ(table.GetColumnRowNumber(row), slot);
      }
      for (long none : {0L, -1L, 100000L, std::numeric_limits<long>::max()})
        EXPECT_EQ(table.GetColumnRowNumber(none), 0);
      while (table.DeleteRowByRowNumber(1) == 0) continue;
      EXPECT_EQ(table.GetRowCount(), 0);
    }
  }
}

TEST(Table, AnswersForRowsAndColumnsThatAreNotThere) {
  Sample sample({{"a", 1}, {"b", 2}});
  CQMTable& table = sample.table;
  std::string text;
  for (long row : {3L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    EXPECT_EQ(table.InsertRow(row), -2);
    EXPECT_EQ(table.DeleteRowByRowNumber(row), -2);
    EXPECT_EQ(table.SetValueByRowNumber(1, "x", row), -2);
    EXPECT_EQ(table.GetFormattedValueByRowNumber(1, text, row), -2);
    EXPECT_EQ(table.GetValueByRowNumber(1, row), nullptr);
    EXPECT_EQ(table.GetCurrentRow(), 2) << "a row that is not there does not become the current one";
  }
  EXPECT_EQ(table.InsertRow(0), -2);
  EXPECT_EQ(table.SetValue("none", "x"), -3);
  EXPECT_EQ(table.SetValueByKey("none", "x", {"a"}), -3);
  EXPECT_EQ(table.GetFormattedValue(9, text), -3);
  EXPECT_EQ(table.GetValue("none"), nullptr);
  EXPECT_EQ(table.SetCurrentRowByNumber(3), 0);
  EXPECT_EQ(table.GetValue("name"), nullptr);
  EXPECT_EQ(table.SetValue("name", "x"), -2);
  EXPECT_EQ(table.DeleteRow(), -2);
}

TEST(Table, WalksTheCurrentRow) {
  Sample sample({});
  CQMTable& table = sample.table;
  for (auto step : {&CQMTable::ResetCurrentRow, &CQMTable::GetFirstRow, &CQMTable::GetNextRow,
                    &CQMTable::GetPreviousRow, &CQMTable::GetLastRow})
    EXPECT_EQ((table.*step)(), 0);
  for (int i = 1; i <= 3; ++i) sample.Append("x", i);
  struct Case {
    long (CQMTable::*step)();
    long row;
  };
  for (auto const& [step, row] : {Case{&CQMTable::GetFirstRow, 1},
                                  {&CQMTable::GetPreviousRow, 1},
                                  {&CQMTable::GetNextRow, 2},
                                  {&CQMTable::GetNextRow, 3},
                                  {&CQMTable::GetNextRow, 3},
                                  {&CQMTable::GetPreviousRow, 2},
                                  {&CQMTable::GetLastRow, 3},
                                  {&CQMTable::DeleteRow, 0},
                                  {&CQMTable::GetLastRow, 2},
                                  {&CQMTable::ResetCurrentRow, 1}}) {
    EXPECT_EQ((table.*step)(), row);
  }
  table.GetValueByRowNumber(1, 2);
  EXPECT_EQ(table.GetCurrentRow(), 2);
}

// ---- indexes ----

TEST(Table, FindsEveryKeyAndNoOther) {
  for (char direction : {SortDirection::kAscending, SortDirection::kDescending}) {
    for (int rows = 0; rows <= 130; ++rows) {
      SCOPED_TRACE(std::to_string(rows) + direction);
      Sample sample({});
      CQMTable& table = sample.table;
      std::vector<int> keys(static_cast<std::size_t>(rows));
      std::iota(keys.begin(), keys.end(), 1);
      std::shuffle(keys.begin(), keys.end(), std::mt19937(static_cast<unsigned>(rows)));
      for (int key : keys) sample.Append(std::to_string(key).c_str(), 2 * key);
      ASSERT_EQ(table.DefineIndex("numbers", {{"number", direction}}), 0);
      ASSERT_EQ(table.SelectIndex("numbers"), 0);
      for (int number = 1; number <= 2 * rows + 1; ++number) {
        long const position = direction == SortDirection::kAscending ? number / 2 : rows + 1 - number / 2;
        ASSERT_EQ(table.GetRowNumberByKey({&number}), number % 2 == 0 ? position : -4) << number;
        ASSERT_EQ(table.GetCurrentRow(), number % 2 == 0 ? position : 0);
        ASSERT_EQ(TextOf(table, "name", 0), number % 2 == 0 ? std::to_string(number / 2) : "none");
      }
    }
  }
}

TEST(Table, SortsByEachKeyInItsDirectionAndStably) {
  struct Row {
    int a;
    char const* b;
    int id;
  };
  std::mt19937 random(5);
  std::vector<Row> rows;
  for (int id = 0; id < 700; ++id) {
    constexpr char const* kNames[] = {"", "x", "xx", "y", "Z"};
    rows.push_back({static_cast<int>(random() % 7), kNames[random() % 5], id});
  }
  CQMTable table;
  for (char const* name : {"a", "id"}) table.AppendColumn(name, kInteger);
  table.AppendColumn("b", EQMDataType::Text);
  for (auto const& row : rows) {
    table.AppendRow();
    table.SetValue("a", &row.a);
    table.SetValue("b", row.b);
    table.SetValue("id", &row.id);
  }
  for (auto const& [first, second] : {std::pair{'A', 'A'}, {'A', 'D'}, {'D', 'A'}, {'D', 'D'}}) {
    SCOPED_TRACE(std::string() + first + second);
    ASSERT_EQ(table.DefineIndex("both", {{"a", first}, {"b", second}}), 0);
    ASSERT_EQ(table.SelectIndex("both"), 0);
    ASSERT_EQ(table.UpdateIndex(), 0);
    auto sorted = rows;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [first = first, second = second](Row const& x, Row const& y) {
                       if (x.a != y.a) return first == 'A' ? x.a < y.a : x.a > y.a;
                       int const order = std::strcmp(x.b, y.b);
                       return second == 'A' ? order < 0 : order > 0;
                     });
    for (std::size_t i = 0; i < sorted.size(); ++i)
      ASSERT_EQ(TextOf(table, "id", static_cast<long>(i) + 1), std::to_string(sorted[i].id));
    for (std::size_t i = 0; i < sorted.size(); i += 50) {
      auto const isEqual = [&](Row const& row) {
        return row.a == sorted[i].a && std::strcmp(row.b, sorted[i].b) == 0;
      };
      auto const begin = std::find_if(sorted.begin(), sorted.end(), isEqual);
      long const firstEqual = begin - sorted.begin() + 1;
      ASSERT_EQ(table.GetRowNumberByKey({&sorted[i].a, sorted[i].b}), firstEqual);
      ASSERT_EQ(table.GetEqualRowCount({&sorted[i].a, sorted[i].b}),
                std::count_if(sorted.begin(), sorted.end(), isEqual));
      ASSERT_EQ(table.GetCurrentRow(), 0);
    }
  }
}

TEST(Table, StepsThroughEqualRowsInTheirOrder) {
  Sample sample({{"b", 1}, {"a", 2}, {"b", 3}, {"c", 4}, {"a", 5}});
  CQMTable& table = sample.table;
  table.DefineIndex("names", {{"name"}});
  table.SelectIndex("names");
  EXPECT_EQ(table.SetCurrentRowByKey({"b"}), 3);
  EXPECT_EQ(TextOf(table, "number", 0), "1");
  EXPECT_EQ(table.GetNextEqualRow(), 4);
  EXPECT_EQ(TextOf(table, "number", 0), "3");
  EXPECT_EQ(table.GetNextEqualRow(), -4);
  EXPECT_EQ(table.GetCurrentRow(), 0);
  EXPECT_EQ(table.GetNextEqualRow(), -4);
  EXPECT_EQ(table.GetEqualRowCount({"c"}), 1);
  EXPECT_EQ(table.GetCurrentRow(), 0);
  EXPECT_EQ(table.GetEqualRowCount({"d"}), 0);
  EXPECT_EQ(table.GetRowNumberByKey({}), -4) << "a key is missing";
}

TEST(Table, ActsOnRowsByKey) {
  Sample sample({{"b", 1}, {"a", 2}, {"c", 3}});
  CQMTable& table = sample.table;
  table.DefineIndex("names", {{"name"}});
  table.SelectIndex("names");
  std::string text;
  EXPECT_EQ(table.GetFormattedValueByKey("number", text, {"c"}), 0);
  EXPECT_EQ(text, "3");
  int const ten = 10;
  EXPECT_EQ(table.SetValueByKey(2, &ten, {"a"}), 0);
  EXPECT_EQ(table.SetValueByKey("number", "30", {"c"}), 0);
  EXPECT_EQ(*static_cast<std::int32_t const*>(table.GetValueByKey("number", {"a"})), 10);
  EXPECT_EQ(table.GetValueByKey("number", {"x"}), nullptr);
  EXPECT_EQ(table.SetValueByKey("number", "1", {"x"}), -4);
  EXPECT_EQ(table.DeleteRowByKey({"x"}), -4);
  EXPECT_EQ(table.DeleteRowByKey({"b"}), 0);
  EXPECT_EQ(table.GetCurrentRow(), 2);
  EXPECT_EQ(table.GetRowNumberByKey({"b"}), -4);
  EXPECT_EQ(table.GetRowNumberByKey({"c"}), 2);
  EXPECT_EQ(sample.Numbers(), (std::vector{10, 30}));
  table.SelectIndex(nullptr);
  EXPECT_EQ(sample.Numbers(), (std::vector{10, 30}));
}

TEST(Table, SortsIndexesOnlyWhenALookupFindsThemStale) {
  Sample sample({{"b", 1}, {"a", 2}});
  CQMTable& table = sample.table;
  EXPECT_FALSE(table.IndexIsStale()) << "the row map never is";
  table.DefineIndex("names", {{"name"}});
  table.SelectIndex("names");
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetValueByRowNumber("name", 1), nullptr) << "not sorted yet";
  EXPECT_EQ(table.DeleteRowByRowNumber(1), -2);
  EXPECT_EQ(table.GetRowNumberByKey({"a"}), 1);
  EXPECT_FALSE(table.IndexIsStale());

  table.SetValueByRowNumber("name", "z", 1);  // no row came or went: taken for fresh
  EXPECT_FALSE(table.IndexIsStale());
  sample.Append("k", 3);
  table.SelectIndex("names");
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetRowNumberByKey({"z"}), 3);
  EXPECT_EQ(sample.Numbers(), (std::vector{1, 3, 2}));

  table.DeleteRowByRowNumber(2);  // a position of the index: "k"
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetRowNumberByKey({"z"}), 2);
  table.InsertRow(1);
  table.SelectIndex("names");
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetRowNumberByKey({""}), 1);
}

TEST(Table, KeepsIndexesByName) {
  Sample sample({{"b", 2}, {"a", 1}});
  CQMTable& table = sample.table;
  std::string const longest(63, 'n'), tooLong(64, 'n');
  struct Case {
    char const* name;
    char const* column;
    long result;
  };
  for (auto const& [name, column, result] : {Case{longest.c_str(), "name", 0},
                                             {tooLong.c_str(), "name", -3},
                                             {"", "name", -3},
                                             {nullptr, "name", -3},
                                             {"*ROW_MAP", "name", -3},
                                             {"x", "none", -3},
                                             {"x", nullptr, -3}})
    EXPECT_EQ(table.DefineIndex(name, {{column}}), result);
  EXPECT_EQ(table.GetIndexCount(), 2);
  for (int i = 2; i <= 31; ++i)
    EXPECT_EQ(table.DefineIndex(("i" + std::to_string(i)).c_str(), {{"number"}}), 0);
  EXPECT_EQ(table.DefineIndex("one more", {{"number"}}), -1);
  EXPECT_EQ(table.GetIndexCount(), 32);

  EXPECT_EQ(table.SelectIndex("I7"), -3);
  EXPECT_EQ(table.SelectIndex("i7"), 0);
  EXPECT_EQ(table.DefineIndex("i7", {{"name"}}), 0) << "in the same slot";
  EXPECT_EQ(table.GetRowNumberByKey({"b"}), 2);
  EXPECT_EQ(table.DefineIndex("i7", {{"none"}}), -3);
  EXPECT_EQ(table.GetRowNumberByKey({"b"}), 2) << "a failure leaves the old one";
  EXPECT_EQ(table.DeleteIndex("i7"), 0);
  EXPECT_EQ(table.DeleteIndex("i7"), -3);
  for (char const* name : {"", "*ROW_MAP", static_cast<char const*>(nullptr)})
    EXPECT_EQ(table.DeleteIndex(name), -3);
  for (long number : {7L, 32L, -1L, std::numeric_limits<long>::max()}) {
    table.SwitchIndex(number);
  }
  EXPECT_EQ(table.DefineIndex("keyless", {}), 0);
  table.SelectIndex("keyless");
  EXPECT_EQ(table.GetRowNumberByKey({}), 1);
  EXPECT_EQ(sample.Numbers(), (std::vector{2, 1}));
}

TEST(Table, TakesItsOwnValuesInMemoryAndFileBacked) {
  CQMTestFolder const folder;
  CQMDataSpace memory, fileBacked(folder.Path().c_str());
  ASSERT_TRUE(fileBacked.SetFileBacked(true));
  for (CQMDataSpace* space : {&memory, &fileBacked}) {
    SCOPED_TRACE(space == &memory ? "in memory" : "file-backed");
    constexpr long kLongest = 32766, kRows = 2 * CQMDataSpace::kMemoryLimit + 20;  // two to a chunk
    CQMTable table(space);
    table.AppendColumn("a", kFixedText, kLongest);
    table.AppendColumn("b", kFixedText, kLongest);
    CQMColumn others("others", kFixedText, kLongest, space);
    for (long row = 1; row <= kRows; ++row) {
      table.AppendRow();
      table.SetValue("a", std::to_string(1000 + row).c_str());
      others.AppendValue();
    }
    table.DefineIndex("a", {{"a"}});
    CQMColumn& a = const_cast<CQMColumn&>(*table.GetColumn("a"));
    // A value of the chunk that the next one to be read takes away.
    auto const oldest = [&](long row) {
      space->ScramRAM();
      a.GetColumnValue(row);
      for (long other = 1; other < 2 * CQMDataSpace::kMemoryLimit - 1; other += 2)
        others.GetColumnValue(other);
      return a.GetColumnValue(row);
    };
    for (long row : {1L, 2L, kRows / 2, kRows}) {
      SCOPED_TRACE(row);
      std::string const text = std::to_string(1000 + row);
      long const other = kRows + 1 - row;
      int const order = row < other ? -1 : 1;
      EXPECT_EQ(a.CompareValue(oldest(row), other), order);
      void const* value = oldest(row);
      EXPECT_EQ(a.CompareRangeBothIn(value, value, other), -order);

      table.SelectIndex(nullptr);
      EXPECT_EQ(table.SetValueByRowNumber("b", oldest(row), other), 0);
      EXPECT_EQ(TextOf(table, "b", other), text);
      EXPECT_EQ(table.SetValueByRowNumber("b", static_cast<char const*>(oldest(row)), row), 0);
      EXPECT_EQ(TextOf(table, "b", row), text);

      table.SelectIndex("a");
      EXPECT_EQ(table.GetRowNumberByKey({oldest(row)}), row);
      EXPECT_EQ(table.SetValueByKey("b", oldest(row), {"1005"}), 0);
      EXPECT_EQ(TextOf(table, "b", 5), text);
      EXPECT_EQ(table.SetValueByKey("b", static_cast<char const*>(oldest(row)), {"1007"}), 0);
      EXPECT_EQ(TextOf(table, "b", 7), text);
    }
  }
}

TEST(Table, UnorderedValuesNeitherHangNorCrash) {
  CQMTable table;
  table.AppendColumn("d", EQMDataType::Number);
  for (int i = 0; i < 300; ++i) {
    table.AppendRow();
    double const value = i % 3 == 0 ? std::numeric_limits<double>::quiet_NaN() : 100.0 - i;
    table.SetValue(1, &value);
  }
  table.DefineIndex("d", {{"d"}});
  table.SelectIndex("d");
  double const key = 42.0;
  table.GetRowNumberByKey({&key});
  std::vector<long> slots;
  for (long row = 1; row <= 300; ++row) slots.push_back(table.GetColumnRowNumber(row));
  std::sort(slots.begin(), slots.end());
  for (long row = 1; row <= 300; ++row) EXPECT_EQ(slots[static_cast<std::size_t>(row - 1)], row);
}

TEST(Table, RunningOutOfMemoryLeavesRowsInStep) {
  Sample sample({{"a", 1}});
  CQMTable& table = sample.table;
  table.AppendColumn("heap", EQMDataType::Text);
  for (long spared = 0; spared < 40; ++spared) {
    for (int i = 0; i < 400; ++i) {  // a first chunk is needed now and then
      long const rows = table.GetRowCount();
      long slot;
      {
        testing::FailingAllocation const failing(spared);
        slot = table.AppendRow();
      }
      ASSERT_EQ(table.GetRowCount(), rows + (slot > 0));
    }
    table.AppendRow();
    std::string const text = std::to_string(spared);
    ASSERT_EQ(table.SetValue("heap", text.c_str()), 0);
    ASSERT_EQ(table.SetValue("number", text.c_str()), 0);
    ASSERT_EQ(TextOf(table, "heap", 0), text);
    ASSERT_EQ(TextOf(table, "number", 0), text);
  }
  table.DefineIndex("heap", {{"heap"}});
  table.SelectIndex("heap");
  {
    testing::FailingAllocation const failing;
    EXPECT_EQ(table.GetRowNumberByKey({"39"}), -1);
  }
  EXPECT_GT(table.GetRowNumberByKey({"39"}), 0);
  EXPECT_EQ(TextOf(table, "number", 0), "39");
}

// ---- dumps ----

TEST(Table, DumpsSlotsInOrderWithDeletedRows) {
  CQMTestWorkingFolder const folder;
  Sample sample({{"b", 1}, {"a", 2}, {"c", 3}});
  CQMTable& table = sample.table;
  table.DeleteRowByRowNumber(1);
  EXPECT_EQ(table.GetLastRow(), 2);

  auto const dump = [&](char const* label) {
    table.DumpTable(label);
    for (auto const& file : std::filesystem::directory_iterator(".")) {
      std::string const name = file.path().filename();
      std::ostringstream text;
      text << std::ifstream(name).rdbuf();
      std::filesystem::remove(name);
      return std::pair{name, text.str()};
    }
    return std::pair{std::string("no file"), std::string()};
  };
  auto const [name, text] = dump("label");
  std::string const prefix = "table_" + std::to_string(table.GetSerialNumber()) + "_";
  ASSERT_TRUE(name.starts_with(prefix) && name.ends_with("_label.txt")) << name;
  long const number = std::stol(name.substr(prefix.size()));
  EXPECT_EQ(text, "Total rows: 2\nBinary chops: 3\nname\tnumber\t\nb\t1\t\na\t2\t\nc\t3\t\n");

  table.DefineIndex("By Number", {{"number", SortDirection::kDescending}});
  table.SelectIndex("By Number");
  int const three = 3;
  table.GetRowNumberByKey({&three});
  auto const [second, indexed] = dump(nullptr);
  EXPECT_EQ(second, prefix + std::to_string(number + 1) + ".txt");
  EXPECT_EQ(indexed,
            "Total rows: 2\nBinary chops: 3\nby number\tname\tnumber\t\n2\tb\t1\t\n1\ta\t2\t\n\tc\t3\t\n");
  EXPECT_EQ(dump("no/such/folder").first, "no file");
}

}  // namespace
}  // namespace qumel
