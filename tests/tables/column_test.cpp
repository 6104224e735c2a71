// Columns: the size, text form, order and ranges of every type, and their values against a plain list.
#include "tables/column.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

#include "support/failing_allocation.h"
#include "support/scratch_folder.h"
#include "tables/data_space.h"

namespace qumel {
namespace {

constexpr EQMDataType Type(int code) { return EQMDataType{code}; }

CQMColumn MakeColumn(int code) { return CQMColumn("c", Type(code), 10); }

std::string TextAt(CQMColumn& column, long row) {
  return static_cast<char const*>(column.GetColumnValue(row));
}

// ---- types ----

TEST(Column, TypesDecideSizes) {
  constexpr long kPointer = sizeof(void*), kDeclared = 10;
  constexpr long kSizes[] = {1, 1, 1, 1, 1, 1,  2, 2,        2, 4, 4,  4,        4, 4,
                             4, 4, 8, 8, 8, 11, 1, kPointer, 6, 6, 16, kPointer, 4, 1};
  auto const expect = [](int code, long declared, long size) {
    SCOPED_TRACE(code);
    CQMColumn column("Mixed.CASE", Type(code), declared);
    EXPECT_EQ(column.GetRegion().GetAtomSize(), size);
    EXPECT_EQ(column.Name(), "mixed.case");
  };
  for (int code = 0; code < static_cast<int>(std::size(kSizes)); ++code)
    expect(code, kDeclared, kSizes[code]);
  for (int code : {36, -7, 1 << 30}) expect(code, kDeclared, 1);
  for (long longest : {32766L, 32767L, 0L, -5L}) expect(19, longest, 32767);
}

/** The parts of a text between marks. */
std::vector<std::string> Split(std::string const& text, char mark) {
  std::vector<std::string> parts(1);
  for (char const c : text) {
    if (c == mark) parts.emplace_back();
    else parts.back() += c;
  }
  return parts;
}

TEST(Column, ReadsAndShowsEveryType) {
  struct Case {
    std::vector<int> codes;
    char const* texts;  // read and shown
  };
  Case const cases[] = {
      {{0, 1, 2}, "Ab=A| A= "},
      {{0, 3, 5}, "="},
      {{3, 4, 5}, "65=A|321=A"},
      {{6, 7}, " -12x=-12|65535=-1|9999999999=-1"},
      {{8}, "9999999999=65535|65535=65535|-1=65535"},
      {{9, 10, 12, 13}, "+2147483647=2147483647|-99999999999999999999=-2147483648|2147483648=2147483647"},
      {{9, 10, 11, 14}, "x1=0|-=0"},
      {{11, 14}, "4294967295=4294967295|-1=4294967295|-99999999999=4294967295"},
      {{15, 16, 17}, " 1.5e1z=15.000000|-0.25=-0.250000"},
      {{15, 16}, "none=0.000000"},
      {{15},
       "1e39=inf|-1e39=-inf|0.1=0.100000|3.5e38=inf|16777217.000000001=16777218.000000|nan=nan|3.40282347e38="
       "340282346638528859811704183484516925440.000000"},
      {{18, 25, 26, 27, 34, 36, -1}, "7="},
      {{19, 21}, "a text=a text|="},
      {{21}, "0123456789x=0123456789x"},
      {{20}, "yes=true|Yonder=true|t=true|True=true|1=true|on=false|=false| yes=false"},
      {{22},
       "5/6/99=05/06/99| 5/ 6/7 "
       "=05/06/07|9/9/9=09/09/09|10/10/10=10/10/10|123/4/5=12/00/00|-5/-0/+7=-5/00/07|1/x/3=01/00/00|-51/2/"
       "3=-5/00/00|1 /2/3=01/00/00"},
      {{23}, "23:59:1=23:59:01|9:9:9=09:09:09|10:09:10=10:09:10|23/59=23:00:00"},
      {{24},
       "1/2/3 4:5:6=01/02/03 04:05:06|9/10/9 9:9:10=09/10/09 09:09:10|1/2/34:5:6=01/02/34 "
       "00:00:00|01/02/03\t 14:15=01/02/03 14:15:00"},
  };
  for (auto const& [codes, texts] : cases) {
    for (std::string const& text : Split(texts, '|')) {
      std::string const in = Split(text, '=')[0], out = Split(text, '=')[1];
      for (int code : codes) {
        SCOPED_TRACE(std::to_string(code) + " " + in);
        CQMColumn column = MakeColumn(code);
        ASSERT_EQ(column.AppendValue(in.c_str()), 0);
        ASSERT_EQ(column.AppendValue(), 0);
        ASSERT_EQ(column.SetColumnValue(2, in.c_str()), 0);
        EXPECT_EQ(column.GetFormatedColumnValue(1), out);
        EXPECT_EQ(column.GetFormatedColumnValue(2), out);
      }
    }
  }
}

TEST(Column, ComparesByType) {
  struct Case {
    std::vector<int> codes;
    char const *less, *more;
    bool areEqual = false;
  };
  Case const cases[] = {
      {{3, 4, 5}, "-1", "1"},
      {{3, 4, 5}, "200", "100"},  // signed bytes
      {{0, 1, 2}, "a", "b"},
      {{6, 7}, "-1", "1"},
      {{8}, "40000", "30000"},  // signed
      {{9, 10, 12, 13}, "-5", "3"},
      {{11, 14}, "4294967295", "1"},
      {{15, 16, 17}, "-1.5", "-1.25"},
      {{16, 17}, "1", "1.0", true},
      {{18, 26, 27, 36}, "1", "2", true},
      {{19, 21}, "Z", "a"},
      {{19, 21}, "a", "aa"},
      {{19, 21}, "z", "\xE4"},  // by bytes, not by signed characters
      {{19, 21}, "same", "same", true},
      {{20}, "no", "yes"},
      {{22}, "31/12/01", "01/01/02"},
      {{22}, "01/12/02", "02/01/02"},
      {{23}, "01:59:59", "02:00:00"},
      {{24}, "31/12/01 23:00:00", "01/01/02 01:00:00"},
      {{24}, "01/01/02 01:00:00", "01/01/02 01:00:01"},
  };
  for (auto const& [codes, less, more, areEqual] : cases) {
    for (int code : codes) {
      SCOPED_TRACE(std::to_string(code) + " " + less);
      CQMColumn column = MakeColumn(code);
      column.AppendValue(less);
      column.AppendValue(more);
      int const order = areEqual ? 0 : 1;
      EXPECT_EQ(column.CompareValue(1, 2), -order);
      EXPECT_EQ(column.CompareValue(2, 1), order);
      EXPECT_EQ(column.CompareValue(column.GetColumnValue(1), 2), -order);
      EXPECT_EQ(column.CompareValue(column.GetColumnValue(2), 1), order);
      EXPECT_EQ(column.CompareValue(1, 1), 0);
      bool const sameWord =
          column.HasWords() && column.WordFor(column.Operand(1)) == column.WordFor(column.Operand(2));
      EXPECT_EQ(sameWord, areEqual && column.HasWords());
    }
  }
}

TEST(Column, ComparesStampFractionsAndPointersUnsigned) {
  CQMColumn stamp = MakeColumn(24), pointer = MakeColumn(25);
  SQMTimeStamp early{}, late{};
  early.fraction = 1;
  late.fraction = 0x80000000u;
  stamp.AppendValue(static_cast<void const*>(&early));
  EXPECT_EQ(stamp.CompareValue(&late, 1), 1);
  std::uintptr_t const low = 1, high = ~std::uintptr_t{0};
  pointer.AppendValue(static_cast<void const*>(&high));
  EXPECT_EQ(pointer.CompareValue(&low, 1), -1);

  stamp.AppendValue("1/2/3 4:5:6");
  auto const& kept = *static_cast<SQMTimeStamp const*>(stamp.GetColumnValue(2));
  EXPECT_EQ(std::to_array(kept.date), (std::array<std::int16_t, 3>{3, 1, 2})) << "the last field first";
  EXPECT_EQ(std::to_array(kept.time), (std::array<std::int16_t, 3>{4, 5, 6}));
}

// ---- values ----

/** What a text set into another leaves behind; room is that of a fixed text with its end, 0 for any length.
 */
std::string Joined(std::string const& old, std::string const& text, EQMTextMode mode, std::size_t room) {
  std::string const joined = mode == EQMTextMode::Replace  ? text
                             : mode == EQMTextMode::Append ? old + text
                                                           : text + old;
  // a joined text needs a byte more
  bool const fits = room == 0 || joined.size() + (mode == EQMTextMode::Replace ? 1 : 2) <= room;
  return fits ? joined : old;
}

TEST(Column, TextsFollowAPlainList) {
  constexpr std::size_t kRoom = 11;
  CQMTestFolder const folder;
  CQMDataSpace memory, fileBacked(folder.Path().c_str());
  ASSERT_TRUE(fileBacked.SetFileBacked(true));
  for (CQMDataSpace* space : {&memory, &fileBacked}) {
    for (int code : {19, 21}) {
      SCOPED_TRACE(code);
      std::size_t const room = code == 19 ? kRoom : 0;
      CQMColumn column("c", Type(code), kRoom - 1, space);
      std::vector<std::string> model;
      std::mt19937 random(2);
      auto const below = [&random](std::size_t bound) { return random() % bound; };
      for (int step = 0; step < 3000; ++step) {
        std::size_t const at = model.empty() ? 0 : below(model.size());
        auto const row = static_cast<long>(at) + 1;
        std::string const text(below(14), static_cast<char>('a' + below(26)));
        auto const changes = column.GetChangeCount();
        bool changesValues = true;
        switch (model.empty() ? 0 : below(12)) {
          case 0:
          case 1:
          case 2:
            ASSERT_EQ(column.AppendValue(text.c_str()), 0);
            model.push_back(text.substr(0, room != 0 ? room - 1 : std::string::npos));
            break;
          case 3:  // the column's own value
            ASSERT_EQ(column.AppendValue(column.GetColumnValue(row)), 0);
            model.push_back(model[at]);
            break;
          case 4: {
            auto const mode = static_cast<EQMTextMode>(static_cast<int>(below(3)) - 1);
            std::size_t const other = below(model.size());
            ASSERT_EQ(column.SetColumnValue(row, column.GetColumnValue(static_cast<long>(other) + 1), mode),
                      0);
            model[at] = Joined(model[at], model[other], mode, room);
            break;
          }
          case 5:
            ASSERT_EQ(column.SetColumnValue(row, static_cast<void const*>(nullptr)), 0);
            model[at].clear();
            break;
          case 6: {
            if (space == &fileBacked || step % 10 != 0) continue;  // addresses do not hold
            std::int32_t const rows[] = {static_cast<std::int32_t>(row)};
            column.KeepValues(rows);
            model = {model[at]};
            break;
          }
          case 7:
            space->ScramRAM();
            changesValues = false;
            break;
          default: {
            auto const mode = static_cast<EQMTextMode>(static_cast<int>(below(3)) - 1);
            ASSERT_EQ(column.SetColumnValue(row, text.c_str(), mode), 0);
            model[at] = Joined(model[at], text, mode, room);
          }
        }
        ASSERT_EQ(column.GetChangeCount() != changes, changesValues);
        ASSERT_EQ(column.GetAtomsInColumn(), static_cast<long>(model.size()));
        std::size_t const a = below(model.size()), b = below(model.size());
        ASSERT_EQ(TextAt(column, static_cast<long>(a) + 1), model[a]);
        int const order = model[a].compare(model[b]);
        ASSERT_EQ(column.CompareValue(static_cast<long>(a) + 1, static_cast<long>(b) + 1),
                  (order > 0) - (order < 0));
      }
    }
  }
}

TEST(Column, TextsThatWereNeverSetComeFirst) {
  CQMColumn column = MakeColumn(21);
  column.AppendValue();
  column.AppendValue();
  column.AppendValue("");
  EXPECT_EQ(column.CompareValue(1, 2), 0);
  EXPECT_EQ(column.CompareValue(1, 3), -1);
  EXPECT_EQ(column.CompareValue("", 1), 1);
  EXPECT_EQ(column.CompareValue(static_cast<void const*>(nullptr), 1), 0);
  EXPECT_NE(column.WordFor(column.Operand(1)), column.WordFor(column.Operand(3)));
  EXPECT_EQ(column.GetFormatedColumnValue(1), "");
  EXPECT_EQ(TextAt(column, 1), "");
}

TEST(Column, AnswersForRowsThatAreNotThere) {
  for (int code : {10, 19, 21}) {
    CQMColumn column = MakeColumn(code);
    column.AppendValue("1");
    int const value = 5;
    for (long row : {0L, 2L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
      EXPECT_EQ(column.SetColumnValue(row, "2"), TableResult::RowOutOfRange);
      EXPECT_EQ(column.SetColumnValue(row, static_cast<void const*>(&value)), TableResult::RowOutOfRange);
      EXPECT_EQ(column.GetColumnValue(row), nullptr);
      EXPECT_EQ(column.GetColumnValueLocation(row), nullptr);
      EXPECT_EQ(column.GetFormatedColumnValue(row), "");
      EXPECT_EQ(column.CompareValue("1", row), 1);
      EXPECT_EQ(column.CompareValue(1, row), 1);
    }
    EXPECT_EQ(column.SetColumnValue(1, static_cast<char const*>(nullptr)), TableResult::OutOfMemory);
  }
  CQMColumn rows = MakeColumn(12);
  for (long count : {2000L, 3L, 0L}) {
    EXPECT_EQ(rows.InflateIndex(count), 0);
    EXPECT_EQ(rows.GetAtomsInColumn(), count);
    EXPECT_EQ(rows.GetFormatedColumnValue(count), count > 0 ? std::to_string(count) : "");
  }
}

TEST(Column, AppendsThatFindNoMemoryChangeNothing) {
  CQMColumn column = MakeColumn(21);
  column.AppendValue("kept");
  long result = TableResult::OutOfMemory;
  for (long spared = 0; result != TableResult::Done; ++spared) {
    long const rows = column.GetAtomsInColumn();
    {
      testing::FailingAllocation const failing(spared);
      result = column.AppendValue("a text that is longer than what fits in place");
    }
    EXPECT_LE(column.GetAtomsInColumn(), rows + 1);
    EXPECT_EQ(TextAt(column, 1), "kept");
  }
}

TEST(Column, DumpsEveryAtom) {
  CQMTestWorkingFolder const folder;
  CQMColumn column("Name", Type(21));
  column.AppendValue("a");
  column.AppendValue();
  column.AppendValue("b");
  auto const read = [](std::string const& name) {
    std::ostringstream text;
    text << std::ifstream(name).rdbuf();
    return text.str();
  };
  column.DumpColumn("given");
  column.DumpColumn(nullptr);
  column.DumpColumn("no/such/folder");
  EXPECT_EQ(read("given.txt"), "name\n1: a\n2: \n3: b\n");
  EXPECT_EQ(read("column_" + std::to_string(column.GetSerialNumber()) + ".txt"), read("given.txt"));
}

}  // namespace
}  // namespace qumel
