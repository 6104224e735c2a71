// Tables against a plain list of rows: columns, rows, indexes and slots; and their dumps.
#include "tables/table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <random>
#include <set>
#include <sstream>

#include "support/failing_allocation.h"
#include "support/scratch_folder.h"
#include "tables/data_space.h"

namespace qumel {
namespace {

constexpr EQMDataType kInteger{10}, kFixedText = EQMDataType::String;

/** As the column shows it; empty for no row. */
std::string TextOf(CQMTable& table, SQMColumnKey column, long row) {
  return table.GetColumn(column)->GetFormatedColumnValue(table.GetColumnRowNumber(row));
}

/** A table with a column "name" of texts and one "number", filled with rows. */
struct Sample {
  explicit Sample(std::initializer_list<std::pair<char const*, int>> rows, CQMDataSpace* space = nullptr)
      : table(space) {
    table.AppendColumn("name", kFixedText, 10);
    table.AppendColumn("number", kInteger);
    for (auto const& [name, number] : rows) table.AppendRow({name, &number});
  }
  /** In the order of the current index. */
  std::string Numbers() {
    std::string numbers;
    for (long row = 1; row <= table.GetRowCount(); ++row) numbers += TextOf(table, "number", row) + " ";
    return numbers;
  }
  CQMTable table;
};

// ---- rows, indexes and slots ----

struct Row {
  std::string name;
  int number;
  long slot;
};

/** A table, changed at random, beside the list that it should be. */
class Model {
 public:
  Model(CQMDataSpace* space, unsigned seed, bool inserts)
      : m_sample({}, space), m_inserts(inserts), m_random(seed) {
    EXPECT_EQ(m_table.DefineIndex("both", {{"name", 'D'}, {"number"}}), 0);
    EXPECT_EQ(m_table.DefineIndex("name", {{"name"}}), 0);
    EXPECT_EQ(m_table.DefineIndex("number", {{"number"}}), 0);
  }

  void Step() {
    long const count = static_cast<long>(m_rows.size()), at = count > 0 ? Below(count) : 0;
    std::string const name = AnyName();
    int const number = static_cast<int>(Below(20));
    m_table.SelectIndex(nullptr);
    switch (count > 0 ? Below(10) : 0) {
      case 0:
      case 1:
      case 2: {
        long const slot = m_table.AppendRow({name.c_str(), &number});
        ASSERT_GT(slot, 0);
        m_rows.push_back({name, number, slot});
        break;
      }
      case 3:
        if (!m_inserts) return;
        ASSERT_EQ(m_table.InsertRow(at + 1), 0);
        ASSERT_EQ(m_table.SetValueByRowNumber("number", &number, at + 1), 0);
        m_rows.insert(m_rows.begin() + at, {"", number, m_table.GetColumnRowNumber(at + 1)});
        break;
      case 4:
        ASSERT_EQ(m_table.DeleteRowByRowNumber(at + 1), 0);
        m_rows.erase(m_rows.begin() + at);
        break;
      case 5:
      case 6:
        m_table.DeleteSlot(m_rows[static_cast<std::size_t>(at)].slot);
        m_rows.erase(m_rows.begin() + at);
        break;
      case 7:
        ASSERT_EQ(m_table.SetValueByRowNumber("name", name.c_str(), at + 1), 0);
        m_rows[static_cast<std::size_t>(at)].name = name;
        break;
      case 8:
        ASSERT_EQ(m_table.SetValueByRowNumber(2, &number, at + 1), 0);
        m_rows[static_cast<std::size_t>(at)].number = number;
        break;
      default: {  // by a position of an index
        m_table.SelectIndex("both");
        auto const found = First([&](Row const& row) { return row.name == name && row.number == number; });
        long const row = m_table.GetRowNumberByKey({name.c_str(), &number});
        ASSERT_EQ(row > 0, found != m_rows.end());
        if (row <= 0) return;
        ASSERT_EQ(m_table.DeleteRowByRowNumber(row), 0);
        m_rows.erase(found);
      }
    }
    ASSERT_EQ(m_table.GetRowCount(), static_cast<long>(m_rows.size()));
  }

  /** All rows in their order, and slots by keys that are there and that are not. */
  void Compare() {
    m_table.SelectIndex(nullptr);
    long number = 0;
    for (Row& row : m_rows) {
      ASSERT_EQ(TextOf(m_table, 1, ++number), row.name);
      ASSERT_EQ(TextOf(m_table, 2, number), std::to_string(row.number));
      row.slot = m_table.GetColumnRowNumber(number);  // may be a new one after a deletion by slot
    }
    for (int i = 0; i < 5; ++i) {
      std::string const name = AnyName();
      int const key = static_cast<int>(Below(20));
      auto const slotOf = [this](auto fits) {
        auto const found = First(fits);
        return found != m_rows.end() ? found->slot : 0;
      };
      long const named = slotOf([&](Row const& row) { return row.name == name; });
      ASSERT_EQ(m_table.FindSlotByText(2, name), named) << name;
      ASSERT_EQ(m_table.FindSlotByKey(2, {name.c_str()}), named);
      ASSERT_EQ(m_table.FindSlotByKey(3, {&key}), slotOf([&](Row const& row) { return row.number == key; }));
      ASSERT_EQ(m_table.FindSlotByKey(1, {name.c_str(), &key}),
                slotOf([&](Row const& row) { return row.number == key && row.name == name; }));
    }
  }

  /** The order of an index, and the rows found in it. */
  void CompareSorted() {
    m_table.SelectIndex("both");
    ASSERT_EQ(m_table.UpdateIndex(), 0);
    auto sorted = m_rows;
    std::ranges::stable_sort(sorted, [](Row const& a, Row const& b) {
      return a.name != b.name ? a.name > b.name : a.number < b.number;
    });
    for (std::size_t i = 0; i < sorted.size(); ++i) {
      ASSERT_EQ(m_table.GetColumnRowNumber(static_cast<long>(i) + 1), sorted[i].slot);
      auto const isSame = [&](Row const& row) {
        return row.name == sorted[i].name && row.number == sorted[i].number;
      };
      long const first = std::ranges::find_if(sorted, isSame) - sorted.begin() + 1;
      void const* const values[] = {sorted[i].name.c_str(), &sorted[i].number};
      ASSERT_EQ(m_table.GetRowNumberByKey(std::span(values)), first);
    }
    int const none = 20;
    EXPECT_EQ(m_table.GetRowNumberByKey({"a", &none}), -4);
    EXPECT_EQ(m_table.GetRowNumberByKey({"a"}), -4) << "a key is missing";
  }

 private:
  long Below(long bound) { return static_cast<long>(m_random() % static_cast<unsigned long>(bound)); }
  /** One of twelve; some of them are long. */
  std::string AnyName() {
    return std::string(static_cast<std::size_t>(Below(4)) * 3, static_cast<char>('a' + Below(4)));
  }
  template <class Test>
  std::vector<Row>::iterator First(Test fits) {
    return std::ranges::find_if(m_rows, fits);
  }

  Sample m_sample;
  CQMTable& m_table = m_sample.table;
  bool m_inserts;
  std::mt19937 m_random;
  std::vector<Row> m_rows;
};

TEST(Table, RowsIndexesAndSlotsFollowAPlainList) {
  CQMTestFolder const folder;
  CQMDataSpace memory, fileBacked(folder.Path().c_str());
  ASSERT_TRUE(fileBacked.SetFileBacked(true));
  for (CQMDataSpace* space : {&memory, &fileBacked}) {
    for (unsigned seed = 0; seed < 6; ++seed) {
      SCOPED_TRACE(seed);
      Model model(space, seed, seed % 2 == 1);
      for (int step = 1; step <= 500; ++step) {
        ASSERT_NO_FATAL_FAILURE(model.Step());
        ASSERT_NO_FATAL_FAILURE(model.Compare());
        if (step % 50 != 0) continue;
        ASSERT_NO_FATAL_FAILURE(model.CompareSorted());
      }
    }
  }
}

TEST(Table, RowsThatComeAndGoTakeNoMemoryForGood) {
  CQMDataSpace space;
  Sample sample({{"first", 1}, {"second", 2}}, &space);
  sample.table.DefineIndex("name", {{"name"}});
  for (int turn = 0; turn < 5000; ++turn) {
    sample.table.AppendRow({"passing", &turn});
    sample.table.DeleteSlot(sample.table.FindSlotByText(1, "passing"));
  }
  EXPECT_LT(space.GetSize(), 2000);
  EXPECT_EQ(sample.table.FindSlotByText(1, "passing"), 0);
  EXPECT_EQ(sample.table.FindSlotByText(1, "second"), 2);
  EXPECT_EQ(sample.Numbers(), "1 2 ");
}

TEST(Table, WordsOfShortTextsAreTheTexts) {
  std::string text;
  std::set<std::uint64_t> words{WordOf("")};
  for (char c = 'a'; c <= 'z';
       ++c) {  // of each length, texts that differ in the first, a middle or the last place
    text += c;
    EXPECT_EQ(IsExact(WordOf(text)), text.size() <= 7) << text;
    EXPECT_TRUE(words.insert(WordOf(text)).second) << text;
    for (std::size_t place : {std::size_t{0}, text.size() / 2, text.size() - 1}) {
      std::string other = text;
      other[place] = '!';
      words.insert(WordOf(other));
      EXPECT_NE(WordOf(other), WordOf(text)) << other;
    }
  }
}

TEST(Table, FindsEveryKeyInAnyNumberOfRows) {
  for (char direction : {SortDirection::kAscending, SortDirection::kDescending}) {
    for (int rows = 0; rows <= 130; ++rows) {
      Sample sample({});
      for (int key = rows; key >= 1; --key) {
        int const number = 2 * ((key * 7) % rows + 1);
        sample.table.AppendRow({"x", &number});
      }
      sample.table.DefineIndex("numbers", {{"number", direction}});
      sample.table.SelectIndex("numbers");
      for (int number = 1; rows % 7 != 0 && number <= 2 * rows + 1; ++number) {
        long const position = direction == SortDirection::kAscending ? number / 2 : rows + 1 - number / 2;
        ASSERT_EQ(sample.table.GetRowNumberByKey({&number}), number % 2 == 0 ? position : -4)
            << rows << number;
      }
    }
  }
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
  int const three = 3;
  table.AppendRow({"k", &three});  // which makes the row map current
  EXPECT_FALSE(table.IndexIsStale());
  table.SelectIndex("names");
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetRowNumberByKey({"z"}), 3);
  EXPECT_EQ(sample.Numbers(), "1 3 2 ");
  table.DeleteRowByRowNumber(2);  // a position of the index: "k"
  EXPECT_TRUE(table.IndexIsStale());
  EXPECT_EQ(table.GetRowNumberByKey({"z"}), 2);
  table.DeleteSlot(1);
  table.SelectIndex("names");
  EXPECT_TRUE(table.IndexIsStale());
}

TEST(Table, KeepsIndexesByName) {
  Sample sample({{"b", 2}, {"a", 1}});
  CQMTable& table = sample.table;
  std::string const longest(63, 'n'), tooLong(64, 'n');
  EXPECT_EQ(table.DefineIndex(longest.c_str(), {{"name"}}), 0);
  for (char const* name : {tooLong.c_str(), "", static_cast<char const*>(nullptr), "*ROW_MAP"})
    EXPECT_EQ(table.DefineIndex(name, {{"name"}}), -3);
  EXPECT_EQ(table.DefineIndex("x", {{"none"}}), -3);
  for (int i = 2; i <= 31; ++i)
    EXPECT_EQ(table.DefineIndex(("i" + std::to_string(i)).c_str(), {{"number"}}), 0);
  EXPECT_EQ(table.DefineIndex("one more", {{"number"}}), -1);
  EXPECT_EQ(table.SelectIndex("I7"), -3);
  EXPECT_EQ(table.SelectIndex("i7"), 0);
  EXPECT_EQ(table.DefineIndex("i7", {{"name"}}), 0) << "in the same place";
  EXPECT_EQ(table.FindSlotByText(7, "a"), 2);
  EXPECT_EQ(table.GetRowNumberByKey({"b"}), 2);
  EXPECT_EQ(table.DefineIndex("i7", {{"none"}}), -3);
  EXPECT_EQ(table.GetRowNumberByKey({"b"}), 2) << "a failure leaves the old one";
  EXPECT_EQ(table.SelectIndex(""), 0);
  EXPECT_EQ(sample.Numbers(), "2 1 ");
  EXPECT_EQ(table.DefineIndex("i7", {}), 0);  // which makes it current
  EXPECT_EQ(table.GetRowNumberByKey({}), 1);
}

// ---- columns and rows ----

TEST(Table, FindsColumnsByPositionAndName) {
  Sample sample({{"b", 1}, {"a", 2}});
  CQMTable& table = sample.table;
  for (char const* name : {"number", "NuMBer", "Table.Number", ".number"})
    EXPECT_EQ(table.GetColumn(name), table.GetColumn(2)) << name;
  for (char const* name :
       {"a.b.number", "numbe", "numbers", "number.", "", static_cast<char const*>(nullptr)})
    EXPECT_EQ(table.GetColumn(name), nullptr);
  for (long position : {0L, 3L, -1L}) EXPECT_EQ(table.GetColumn(position), nullptr);

  table.AppendColumn("late", kInteger);  // has no values for the rows that are there
  table.DefineIndex("late", {{"late"}});
  int const zero = 0, six = 6;
  EXPECT_EQ(table.GetValueByRowNumber("late", 1), nullptr);
  EXPECT_EQ(table.SetValueByRowNumber("late", "5", 1), -2);
  EXPECT_EQ(table.FindSlotByKey(1, {&zero}), 0);
  EXPECT_EQ(table.AppendRow({"c", &six, &six}), 3);
  EXPECT_EQ(table.FindSlotByKey(1, {&zero}), 1);
  EXPECT_EQ(table.FindSlotByKey(1, {&six}), 3);
}

TEST(Table, AnswersForRowsAndColumnsThatAreNotThere) {
  Sample sample({{"a", 1}, {"b", 2}});
  CQMTable& table = sample.table;
  for (long row : {0L, 3L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    EXPECT_EQ(table.InsertRow(row), -2);
    EXPECT_EQ(table.DeleteRowByRowNumber(row), -2);
    EXPECT_EQ(table.SetValueByRowNumber(1, "x", row), -2);
    EXPECT_EQ(table.GetValueByRowNumber(1, row), nullptr);
    EXPECT_EQ(table.GetColumnRowNumber(row), 0);
    table.DeleteSlot(row);
  }
  EXPECT_EQ(table.SetValueByRowNumber("none", "x", 1), -3);
  EXPECT_EQ(table.GetValueByRowNumber("none", 1), nullptr);
  EXPECT_EQ(table.SetValueByRowNumber("number", "30", 2), 0) << "a text is parsed";
  EXPECT_EQ(*static_cast<std::int32_t const*>(table.GetValueByRowNumber("number", 2)), 30);
  EXPECT_EQ(sample.Numbers(), "1 30 ");
}

TEST(Table, TakesItsOwnValuesFromAFile) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  constexpr long kLongest = 32766, kRows = 2 * CQMDataSpace::kMemoryLimit + 20;  // two to a chunk
  CQMTable table(&space);
  for (char const* name : {"a", "b"}) table.AppendColumn(name, kFixedText, kLongest);
  CQMColumn others("others", kFixedText, kLongest, &space);
  for (long row = 1; row <= kRows; ++row) {
    table.AppendRow({std::to_string(1000 + row).c_str(), ""});
    others.AppendValue();
  }
  table.DefineIndex("a", {{"a"}});
  // a value of the chunk that the next one to be read takes away
  auto const oldest = [&](long row) {
    space.ScramRAM();
    for (long other = 1; other < 2 * CQMDataSpace::kMemoryLimit - 1; other += 2) {
      if (other == 1) table.GetColumn("a")->Operand(row);
      others.GetColumnValue(other);
    }
    return table.GetColumn("a")->Operand(row);
  };
  for (long row : {1L, kRows / 2, kRows}) {
    std::string const text = std::to_string(1000 + row);
    long const other = kRows + 1 - row;
    int const order = row < other ? -1 : 1;
    EXPECT_EQ(table.GetColumn("a")->CompareValue(oldest(row), other), order);
    table.SelectIndex(nullptr);
    EXPECT_EQ(table.SetValueByRowNumber("b", oldest(row), other), 0);
    EXPECT_EQ(TextOf(table, "b", other), text);
    table.SelectIndex("a");
    EXPECT_EQ(table.GetRowNumberByKey({oldest(row)}), row);
    EXPECT_EQ(table.SetValueByRowNumber("b", static_cast<char const*>(oldest(row)), 7), 0);
    EXPECT_EQ(TextOf(table, "b", 7), text);
  }
}

TEST(Table, UnorderedValuesAreSearchedFromTheFirstRowAndSortedSomehow) {
  CQMTable table;
  table.AppendColumn("d", EQMDataType::Number);
  for (int i = 0; i < 300; ++i) {
    double const value = i % 3 == 2 ? std::numeric_limits<double>::quiet_NaN() : 100.0 - i;
    table.AppendRow({&value});
  }
  table.DefineIndex("d", {{"d"}});
  double const key = 99.0;
  EXPECT_EQ(table.FindSlotByKey(1, {&key}), 2);
  table.SelectIndex("d");
  table.GetRowNumberByKey({&key});
  std::vector<long> slots;
  for (long row = 1; row <= 300; ++row) slots.push_back(table.GetColumnRowNumber(row));
  std::ranges::sort(slots);
  for (long row = 1; row <= 300; ++row) EXPECT_EQ(slots[static_cast<std::size_t>(row - 1)], row);
}

TEST(Table, RunningOutOfMemoryLeavesRowsInStep) {
  Sample sample({});
  CQMTable& table = sample.table;
  table.AppendColumn("heap", EQMDataType::Text);
  table.DefineIndex("number", {{"number"}});
  table.DefineIndex("name", {{"name"}});
  for (int number = 1; number < 3000; ++number) {
    long const rows = table.GetRowCount();
    std::string const name = std::to_string(number);
    long slot;
    {
      testing::FailingAllocation const failing(number % 7);
      slot = table.AppendRow({name.c_str(), &number, name.c_str()});
    }
    ASSERT_EQ(table.GetRowCount(), rows + (slot > 0));
    ASSERT_EQ(table.FindSlotByText(2, name), std::max(slot, 0L));
    ASSERT_EQ(table.FindSlotByKey(1, {&number}), std::max(slot, 0L));
    if (slot <= 0) table.AppendRow({name.c_str(), &number, name.c_str()});
  }
  table.SelectIndex("number");
  int const last = 2999;
  {
    testing::FailingAllocation const failing;
    EXPECT_EQ(table.GetRowNumberByKey({&last}), -1);
  }
  EXPECT_EQ(table.GetRowNumberByKey({&last}), 2999);
}

TEST(Table, DumpsSlotsInOrderWithDeletedRows) {
  CQMTestWorkingFolder const folder;
  Sample sample({{"b", 1}, {"a", 2}, {"c", 3}});
  CQMTable& table = sample.table;
  table.DeleteRowByRowNumber(1);
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
