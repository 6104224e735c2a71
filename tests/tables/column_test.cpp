// Columns: the size, text form, order and ranges of every type, and what setting, joining and refilling leave
// behind.
#include "tables/column.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>

#include "support/failing_allocation.h"
#include "support/scratch_folder.h"
#include "tables/data_space.h"

namespace qumel {
namespace {

constexpr EQMDataType Type(int code) { return EQMDataType{code}; }

CQMColumn MakeColumn(int code) { return CQMColumn("c", Type(code), 10); }

template <class T>
T ValueAt(CQMColumn& column, long row) {
  T value;
  std::memcpy(&value, column.GetColumnValue(row), sizeof value);
  return value;
}

std::string TextAt(CQMColumn& column, long row) {
  return static_cast<char const*>(column.GetColumnValue(row));
}

// ---- types ----

TEST(Column, TypesDecideSizeAndWidth) {
  constexpr long kPointer = sizeof(void*);
  struct Case {
    int first, last;
    long declared, size;
  };
  for (auto const& [first, last, declared, size] : {Case{0, 5, 0, 1},
                                                    {6, 8, 0, 2},
                                                    {9, 15, 0, 4},
                                                    {16, 18, 0, 8},
                                                    {19, 19, 10, 11},
                                                    {19, 19, 1, 2},
                                                    {19, 19, 32766, 32767},
                                                    {19, 19, 32767, 32767},
                                                    {19, 19, 0, 32767},
                                                    {19, 19, -5, 32767},
                                                    {20, 20, 7, 1},
                                                    {21, 21, 9, kPointer},
                                                    {22, 23, 0, 6},
                                                    {24, 24, 0, 16},
                                                    {25, 25, 0, kPointer},
                                                    {26, 26, 0, 4},
                                                    {27, 36, 0, 1},
                                                    {-7, -7, 3, 1},
                                                    {1 << 30, 1 << 30, 0, 1}}) {
    for (int code = first; code <= last; ++code) {
      SCOPED_TRACE(code);
      CQMColumn column("Mixed.CASE", Type(code), declared);
      EXPECT_EQ(column.SetColumnAttributes("Mixed.CASE", Type(code), declared), size);
      EXPECT_EQ(column.GetRegion()->GetAtomSize(), size);
      EXPECT_EQ(column.Name(), "mixed.case");
    }
  }
}

TEST(Column, ReadsAndShowsEveryType) {
  struct Case {
    std::vector<int> codes;
    char const* in;
    char const* out;
  };
  Case const cases[] = {
      {{0, 1, 2}, "Ab", "A"},
      {{0, 1, 2}, " A", " "},
      {{0, 3, 5}, "", ""},
      {{3, 4, 5}, "65", "A"},
      {{3, 4, 5}, "321", "A"},  // the low byte
      {{6, 7}, " -12x", "-12"},
      {{6, 7}, "65535", "-1"},
      {{6, 7}, "9999999999", "-1"},
      {{8}, "9999999999", "65535"},
      {{8}, "65535", "65535"},
      {{8}, "-1", "65535"},
      {{9, 10, 12, 13}, "+2147483647", "2147483647"},
      {{9, 10, 12, 13}, "-99999999999999999999", "-2147483648"},
      {{9, 10, 12, 13}, "2147483648", "2147483647"},
      {{9, 10, 11, 14}, "x1", "0"},
      {{9, 10, 11, 14}, "-", "0"},
      {{11, 14}, "4294967295", "4294967295"},
      {{11, 14}, "-1", "4294967295"},
      {{11, 14}, "-99999999999", "4294967295"},
      {{15, 16, 17}, " 1.5e1z", "15.000000"},
      {{15, 16, 17}, "-0.25", "-0.250000"},
      {{15, 16}, "none", "0.000000"},
      {{15}, "1e39", "inf"},
      {{15}, "-1e39", "-inf"},
      {{15}, "0.1", "0.100000"},
      {{15}, "3.5e38", "inf"},
      {{15}, "16777217.000000001", "16777218.000000"},  // not by way of the double 16777217
      {{15}, "nan", "nan"},
      {{15}, "3.40282347e38", "340282346638528859811704183484516925440.000000"},
      {{18, 25, 26, 27, 34, 36, -1}, "7", ""},
      {{19, 21}, "a text", "a text"},
      {{19, 21}, "", ""},
      {{21}, "0123456789x", "0123456789x"},
      {{20}, "yes", "true"},
      {{20}, "Yonder", "true"},
      {{20}, "t", "true"},
      {{20}, "True", "true"},
      {{20}, "1", "true"},
      {{20}, "on", "false"},
      {{20}, "", "false"},
      {{20}, " yes", "false"},
      {{22}, "5/6/99", "05/06/99"},
      {{22}, " 5/ 6/7 ", "05/06/07"},
      {{22}, "9/9/9", "09/09/09"},
      {{22}, "10/10/10", "10/10/10"},
      {{22}, "123/4/5", "12/00/00"},  // two characters a field, then no mark
      {{22}, "-5/-0/+7", "-5/00/07"},
      {{22}, "1/x/3", "01/00/00"},
      {{22}, "-51/2/3", "-5/00/00"},
      {{22}, "1 /2/3", "01/00/00"},
      {{23}, "23:59:1", "23:59:01"},
      {{23}, "9:9:9", "09:09:09"},
      {{23}, "10:09:10", "10:09:10"},
      {{23}, "23/59", "23:00:00"},
      {{24}, "1/2/3 4:5:6", "01/02/03 04:05:06"},
      {{24}, "9/10/9 9:9:10", "09/10/09 09:09:10"},
      {{24}, "1/2/34:5:6", "01/02/34 00:00:00"},
      {{24}, "01/02/03\t 14:15", "01/02/03 14:15:00"},
  };
  for (auto const& [codes, in, out] : cases) {
    for (int code : codes) {
      SCOPED_TRACE(std::to_string(code) + " " + in);
      CQMColumn column = MakeColumn(code);
      ASSERT_EQ(column.AppendValue(in), 0);
      std::string shown = "[";
      EXPECT_EQ(column.AppendFormattedColumnValue(1, &shown), 0);
      EXPECT_EQ(shown.substr(1), out);
      EXPECT_EQ(column.AppendValue(), 0);
      EXPECT_EQ(column.SetColumnValue(2, in), 0);
      EXPECT_EQ(column.GetFormatedColumnValue(2), out);
    }
  }
}

TEST(Column, KeepsDatesLastFieldFirst) {
  CQMColumn date = MakeColumn(22), stamp = MakeColumn(24);
  date.AppendValue("1/2/3");
  stamp.AppendValue("1/2/3 4:5:6");
  using Words = std::array<std::int16_t, 3>;
  EXPECT_EQ(ValueAt<Words>(date, 1), (Words{3, 1, 2}));
  auto const kept = ValueAt<SQMTimeStamp>(stamp, 1);
  EXPECT_EQ(std::to_array(kept.date), (Words{3, 1, 2}));
  EXPECT_EQ(std::to_array(kept.time), (Words{4, 5, 6}));
  EXPECT_EQ(kept.fraction, 0u);
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
    }
  }
}

TEST(Column, ComparesStampFractionsAndPointersUnsigned) {
  CQMColumn stamp = MakeColumn(24);
  SQMTimeStamp early{}, late{};
  early.fraction = 1;
  late.fraction = 0x80000000u;
  stamp.AppendValue(static_cast<void const*>(&early));
  stamp.AppendValue(static_cast<void const*>(&late));
  EXPECT_EQ(stamp.CompareValue(1, 2), -1);

  CQMColumn pointer = MakeColumn(25);
  std::uintptr_t const low = 1, high = ~std::uintptr_t{0};
  pointer.AppendValue(static_cast<void const*>(&high));
  EXPECT_EQ(pointer.CompareValue(&low, 1), -1);
  EXPECT_EQ(ValueAt<std::uintptr_t>(pointer, 1), high);
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
  EXPECT_EQ(column.GetFormatedColumnValue(1), "");
  EXPECT_EQ(TextAt(column, 1), "");  // which sets it
  EXPECT_EQ(column.CompareValue(1, 3), 0);
}

TEST(Column, TestsRanges) {
  struct Case {
    int value, bothIn, bothOut, minIn, maxIn;
  };
  CQMColumn column = MakeColumn(10);
  int const min = 10, max = 20;
  long row = 0;
  for (auto const& [value, bothIn, bothOut, minIn, maxIn] :
       {Case{9, -1, -1, -1, -1}, {10, 0, -1, 0, -1}, {15, 0, 0, 0, 0}, {20, 0, 1, 1, 0}, {21, 1, 1, 1, 1}}) {
    SCOPED_TRACE(value);
    column.AppendValue(std::to_string(value).c_str());
    ++row;
    EXPECT_EQ(column.CompareRangeBothIn(&min, &max, row), bothIn);
    EXPECT_EQ(column.CompareRangeBothOut(&min, &max, row), bothOut);
    EXPECT_EQ(column.CompareRangeMinIn(&min, &max, row), minIn);
    EXPECT_EQ(column.CompareRangeMaxIn(&min, &max, row), maxIn);
  }
  for (long bad : {0L, -1L, row + 1}) {
    EXPECT_EQ(column.CompareRangeBothIn(&min, &max, bad), -1);
    EXPECT_EQ(column.CompareRangeMaxIn(&min, &max, bad), -1);
  }
}

// ---- setting texts ----

TEST(Column, JoinsAndReplacesTextsThatFit) {
  using enum EQMTextMode;
  struct Case {
    EQMTextMode mode;
    char const *old, *text, *fixed, *heap;
  };
  Case const cases[] = {
      {Replace, "old", "new", "new", "new"},
      {Replace, "a longer", "b", "b", "b"},
      {Replace, "old", "0123456789", "0123456789", "0123456789"},
      {Replace, "old", "0123456789x", "old", "0123456789x"},  // dropped without a word
      {Append, "old", "new", "oldnew", "oldnew"},
      {Prepend, "old", "new", "newold", "newold"},
      {Append, "01234", "5678", "012345678", "012345678"},
      {Append, "01234", "56789", "01234", "0123456789"},  // a joined text needs a byte more
      {Prepend, "01234", "56789", "01234", "5678901234"},
      {Append, "", "0123456789", "", "0123456789"},
      {Append, "", "new", "new", "new"},
      {Prepend, "", "new", "new", "new"},
      {Append, "old", "", "old", "old"},
  };
  for (auto const& [mode, old, text, fixed, heap] : cases) {
    SCOPED_TRACE(std::string(old) + " " + text);
    for (int code : {19, 21}) {
      CQMColumn column = MakeColumn(code);
      column.AppendValue(old);
      auto const before = column.GetChangeCount();
      EXPECT_EQ(column.SetColumnValue(1, text, mode), 0);
      EXPECT_EQ(TextAt(column, 1), code == 19 ? fixed : heap);
      EXPECT_EQ(column.GetChangeCount(), before + 1);
    }
  }
}

TEST(Column, CutsAppendedTextsToTheDeclaredLength) {
  CQMColumn column = MakeColumn(19);
  column.AppendValue("0123456789");
  column.AppendValue("0123456789x");
  EXPECT_EQ(TextAt(column, 1), "0123456789");
  EXPECT_EQ(TextAt(column, 2), "0123456789");
}

TEST(Column, TakesItsOwnValues) {
  CQMDataSpace space;
  CQMTestFolder const folder;
  CQMDataSpace fileBacked(folder.Path().c_str());
  ASSERT_TRUE(fileBacked.SetFileBacked(true));
  for (CQMDataSpace* where : {&space, &fileBacked}) {
    for (int code : {19, 21}) {
      SCOPED_TRACE(code);
      CQMColumn column("c", Type(code), 32, where);
      column.AppendValue("ab");
      for (auto mode : {EQMTextMode::Append, EQMTextMode::Prepend, EQMTextMode::Replace})
        column.SetColumnValue(1, column.GetColumnValue(1), mode);
      EXPECT_EQ(TextAt(column, 1), "abababab");
      column.AppendValue(column.GetColumnValue(1));
      EXPECT_EQ(column.InflateColumn(3, column.GetColumnValue(2)), 0);
      EXPECT_EQ(TextAt(column, 3), "abababab");
    }
  }
}

// ---- rows ----

TEST(Column, AnswersForRowsThatAreNotThere) {
  for (int code : {10, 19, 21}) {
    CQMColumn column = MakeColumn(code);
    column.AppendValue("1");
    char buffer[16];
    int const value = 5;
    for (long row : {0L, 2L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
      EXPECT_EQ(column.SetColumnValue(row, "2"), TableResult::RowOutOfRange);
      EXPECT_EQ(column.SetColumnValue(row, static_cast<void const*>(&value)), TableResult::RowOutOfRange);
      EXPECT_EQ(column.GetColumnValue(row), nullptr);
      EXPECT_EQ(column.GetColumnValue(row, buffer), 0);
      EXPECT_EQ(column.GetColumnValueLocation(row), nullptr);
      EXPECT_EQ(column.GetFormatedColumnValue(row), "");
      EXPECT_EQ(column.AppendFormattedColumnValue(row, nullptr), 1);
      EXPECT_EQ(column.CompareValue("1", row), 1);
      EXPECT_EQ(column.CompareValue(1, row), 1);
    }
    EXPECT_EQ(column.AppendFormattedColumnValue(1, nullptr), 0);
    EXPECT_EQ(column.GetColumnValue(1, nullptr), 0);
    EXPECT_EQ(column.GetColumnValue(1, buffer), code == 10 ? 4 : 2);
    EXPECT_EQ(column.SetColumnValue(1, static_cast<char const*>(nullptr)), TableResult::OutOfMemory);
    EXPECT_EQ(column.SetColumnValue(1, static_cast<void const*>(nullptr)), 0);
    EXPECT_EQ(column.GetFormatedColumnValue(1), code == 10 ? "0" : "");
  }
}

TEST(Column, WithoutStorageRefusesValues) {
  CQMColumn column;
  EXPECT_EQ(Code(column.GetType()), 10);
  EXPECT_EQ(column.AppendValue(), TableResult::OutOfMemory);
  EXPECT_EQ(column.AppendValue("1"), TableResult::OutOfMemory);
  EXPECT_EQ(column.InflateColumn(2, "1"), TableResult::OutOfMemory);
  EXPECT_EQ(column.InflateIndex(2, false), TableResult::OutOfMemory);
  EXPECT_EQ(column.GetAtomsInColumn(), 0);
}

TEST(Column, RefillsAndDeletes) {
  CQMColumn column = MakeColumn(12);
  EXPECT_EQ(column.InflateIndex(2000, false), 0);
  EXPECT_EQ(column.GetFormatedColumnValue(1) + column.GetFormatedColumnValue(2000), "12000");
  EXPECT_EQ(column.InflateIndex(3, true), 0);
  EXPECT_EQ(column.GetAtomsInColumn(), 3);
  EXPECT_EQ(column.GetBytesInColumn(), 12);
  EXPECT_EQ(column.GetFormatedColumnValue(1) + column.GetFormatedColumnValue(3), "31");
  EXPECT_EQ(column.InflateColumn(2, "42"), 0);
  EXPECT_EQ(column.GetFormatedColumnValue(1) + column.GetFormatedColumnValue(2), "4242");
  EXPECT_EQ(column.InflateColumn(2), 0);
  EXPECT_EQ(column.GetFormatedColumnValue(2), "0");
  EXPECT_EQ(column.InflateColumn(5, static_cast<char const*>(nullptr)), 0);
  EXPECT_EQ(column.GetAtomsInColumn(), 0);
  EXPECT_EQ(column.InflateIndex(-1, false), 0);

  CQMColumn texts = MakeColumn(21);
  texts.InflateColumn(3, "old");
  texts.InflateColumn(1);
  EXPECT_EQ(texts.GetFormatedColumnValue(1), "");
  texts.InflateColumn(3, "gone");
  texts.SetColumnAttributes("now", Type(25), 0);  // what looked like texts must not be taken for pointers
  EXPECT_EQ(texts.GetAtomsInColumn(), 0);
  CQMColumn numbers = MakeColumn(16);
  numbers.AppendValue("1.1");
  numbers.SetColumnAttributes("now", Type(18), 0);
  EXPECT_EQ(numbers.GetAtomsInColumn(), 1);
  numbers.SetColumnAttributes("now", Type(19), 7);  // as large, but without a NUL at the end
  EXPECT_EQ(numbers.GetAtomsInColumn(), 0);
}

TEST(Column, FileBackedValuesSurviveTheScratchFile) {
  CQMTestFolder const folder;
  CQMDataSpace space(folder.Path().c_str());
  ASSERT_TRUE(space.SetFileBacked(true));
  constexpr long kRows = 400;  // two a chunk of the first, one page of the second
  CQMColumn fixed("fixed", Type(19), 32766, &space), heap("heap", Type(21), 0, &space);
  for (long row = 1; row <= kRows; ++row) {
    ASSERT_EQ(fixed.AppendValue(std::to_string(10000 + row).c_str()), 0);
    ASSERT_EQ(heap.AppendValue(std::to_string(row).c_str()), 0);
    fixed.SetColumnValue(row, "!", EQMTextMode::Append);
  }
  ASSERT_GT(space.GetChunkCount(), CQMDataSpace::kMemoryLimit);
  for (long row = 1; row <= kRows; ++row) {
    ASSERT_EQ(TextAt(fixed, row), std::to_string(10000 + row) + "!");
    ASSERT_EQ(TextAt(heap, row), std::to_string(row));
    ASSERT_EQ(fixed.CompareValue(row, kRows / 2), row < kRows / 2 ? -1 : row > kRows / 2 ? 1 : 0);
    space.ScramRAM();
  }
  // The first row's chunk is the next to go when the last one's is read.
  for (long row = 1; row <= 2 * CQMDataSpace::kMemoryLimit; ++row) fixed.GetColumnValue(row);
  EXPECT_EQ(fixed.CompareValue(1, kRows), -1);
}

TEST(Column, AppendsThatFindNoMemoryChangeNothing) {
  CQMColumn column = MakeColumn(21);
  column.AppendValue("kept");
  for (long spared = 0; spared < 20; ++spared) {
    long const rows = column.GetAtomsInColumn();
    long result;
    {
      testing::FailingAllocation const failing(spared);
      result = column.AppendValue("a text that is longer than what fits in place");
    }
    if (result == 0) return;
    EXPECT_EQ(result, TableResult::OutOfMemory);
    EXPECT_LE(column.GetAtomsInColumn(), rows + 1);
    EXPECT_EQ(TextAt(column, 1), "kept");
  }
  FAIL() << "never enough memory";
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
