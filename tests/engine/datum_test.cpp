// Datums: types and their storage, promotion, arrays, values by part and element, comparison, proxies.
#include "engine/datum.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "support/failing_allocation.h"

namespace qumel {
namespace {

using testing::FailingAllocation;
using Longs = std::vector<long>;
using Doubles = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

EQMDataType Type(int code) { return static_cast<EQMDataType>(code); }

double DoubleAt(void const* address) {
  double value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

std::unique_ptr<CQMDatum> MakeNumber(double value) {
  auto datum = std::make_unique<CQMDatum>(EQMDataType::Number, "n");
  datum->SetReal(value);
  return datum;
}

std::unique_ptr<CQMDatum> MakeComplex(double real, double imaginary) {
  auto datum = std::make_unique<CQMDatum>(EQMDataType::Complex, "c");
  datum->SetComplex(real, imaginary);
  return datum;
}

std::unique_ptr<CQMDatum> MakeText(std::string_view text, EQMDataType type = EQMDataType::String) {
  auto datum = std::make_unique<CQMDatum>(type, "s");
  datum->SetText(text);
  return datum;
}

/** A datum of any type whose first bytes are those of value. */
template <class Value>
std::unique_ptr<CQMDatum> MakeRaw(int type, Value value) {
  auto datum = std::make_unique<CQMDatum>(Type(type), nullptr);
  std::memcpy(datum->Current(), &value,
              std::min<std::size_t>(sizeof value, static_cast<std::size_t>(datum->GetElementSize())));
  return datum;
}

std::unique_ptr<CQMDatum> MakeArray(EQMDataType type, Longs const& extents, long base = 0,
                                    bool invert = false) {
  auto datum = std::make_unique<CQMDatum>(type, "a");
  datum->SetArrayBase(base);
  datum->SetInvertArrayIndices(invert);
  EXPECT_EQ(datum->SetIsArray(extents), Error::None);
  return datum;
}

// ---- types ----

TEST(DatumTypeTest, SizesAndClasses) {
  struct {
    int first, last, elementSize, partSize, datumClass;
    long roomForValue;
  } const rows[] = {
      {0, 5, 1, 1, 18, 1},    {6, 8, 2, 2, 18, 2},     {9, 14, 4, 4, 18, 4},  {15, 15, 4, 4, 18, 4},
      {16, 16, 8, 8, 18, 16}, {17, 17, 16, 8, 18, 16}, {18, 18, 8, 8, 18, 0}, {19, 19, 256, 1, 19, 0},
      {20, 20, 1, 1, 20, 1},  {21, 21, 1, 1, 18, 0},   {22, 23, 6, 6, 22, 6}, {24, 24, 16, 16, 22, 16},
      {25, 25, 4, 4, 25, 4},  {26, 26, 4, 4, 26, 0},   {27, 31, 1, 1, 18, 0}, {32, 32, 4, 4, 18, 0},
      {33, 35, 1, 1, 18, 0},  {36, 36, 0, 0, 36, 0},   {37, 40, 1, 1, 18, 0}, {-3, -1, 1, 1, 18, 0},
  };
  for (auto const& row : rows) {
    for (int code = row.first; code <= row.last; ++code) {
      CQMDatum const datum(Type(code), "x");
      EXPECT_EQ(datum.GetElementSize(), row.elementSize) << code;
      EXPECT_EQ(datum.GetPartSize(), row.partSize) << code;
      EXPECT_EQ(static_cast<int>(datum.GetClass()), row.datumClass) << code;
      EXPECT_EQ(CQMDatum::GetDatumTypeSize(Type(code)), row.roomForValue) << code;
      EXPECT_EQ(datum.GetValue() == nullptr, row.elementSize == 0) << code;
      for (int i = 0; i < row.elementSize; ++i) EXPECT_EQ(datum.Current()[i], std::byte{0}) << code;
    }
  }
}

TEST(DatumTypeTest, ANewDatumIsUndefined) {
  CQMDatum datum;
  EXPECT_EQ(datum.GetType(), EQMDataType::Undefined);
  EXPECT_EQ(datum.GetValue(), nullptr);
  EXPECT_EQ(datum.GetScope(), 'D');
  EXPECT_TRUE(datum.OwnsStorage());
  EXPECT_FALSE(datum.IsArray());
  EXPECT_EQ(datum.GetArraySize(), 0);
  EXPECT_TRUE(datum.HasTypeTag("__OLOD__"));
  EXPECT_STREQ(datum.GetDatumName(), "");
}

TEST(DatumTypeTest, AStringKeepsTheLengthItHas) {
  CQMDatum datum;
  datum.SetDatumAtomSize(-1);
  datum.SetDatumAtomSize(CQMDatum::kMaximumArrayBytes + 1);
  datum.SetDatumAtomSize(40);
  datum.SetDatumAtomSize(50);  // once only
  datum.SetDatumType(EQMDataType::String);
  EXPECT_EQ(datum.GetElementSize(), 40);
  datum.SetDatumType(EQMDataType::String);
  EXPECT_EQ(datum.GetElementSize(), 40);
  datum.SetDatumAtomSize(0);
  EXPECT_EQ(datum.GetText(), "");
  datum.SetText("no room");
  datum.SetDatumType(EQMDataType::String);
  EXPECT_EQ(datum.GetElementSize(), kDefaultStringSize);
  datum.SetDatumType(EQMDataType::Number);
  datum.SetDatumType(EQMDataType::String);  // eight bytes are a length too
  EXPECT_EQ(datum.GetElementSize(), 8);
}

TEST(DatumTypeTest, ANewLengthDoesNotReachBeyondTheOldBuffer) {
  CQMDatum datum(EQMDataType::String, "s");
  datum.SetDatumAtomSize(0);
  datum.SetDatumAtomSize(100000);
  datum.SetText(std::string(5000, 'x'));
  EXPECT_EQ(datum.GetText().size(), 255U);
  EXPECT_EQ(datum.SetCurrentElement(1), Error::IndexOutOfBounds);
}

// ---- promotion ----

TEST(DatumPromotionTest, OnlyRealNumbersBecomeComplex) {
  for (int from = 0; from <= 36; ++from) {
    for (int to : {0, 16, 17, 18, 19, 36}) {
      CQMDatum datum(Type(from), nullptr);
      bool const changes = (from == 16 || from == 18) && to == 17;
      EXPECT_EQ(datum.ChangeDatumType(Type(to)), changes ? EQMDataType::Complex : Type(from));
      EXPECT_EQ(datum.GetRevision(), changes ? 1 : 0);
      EXPECT_EQ(datum.GetElementSize(), changes ? 16 : CQMDatum(Type(from), nullptr).GetElementSize());
    }
  }
}

TEST(DatumPromotionTest, WritingAnImaginaryPartPromotesAndKeepsTheRealPart) {
  CQMDatum datum(EQMDataType::Number, "x");
  datum.SetReal(2.5);
  EXPECT_EQ(DoubleAt(datum.GetValue(1, false)), 0.0);
  EXPECT_EQ(datum.GetType(), EQMDataType::Number);
  double const imaginary = -1.5;
  datum.SetValue(1, &imaginary);
  EXPECT_TRUE(datum.IsComplex());
  EXPECT_EQ(datum.Real(), 2.5);
  EXPECT_EQ(datum.Imaginary(), -1.5);
  EXPECT_EQ(DoubleAt(datum.GetValue(1, false)), -1.5);
  datum.ClearImaginary();
  EXPECT_EQ(datum.Imaginary(), 0.0);
}

TEST(DatumPromotionTest, AnArrayIsCopiedRaw) {
  auto const array = MakeArray(EQMDataType::Number, {4});
  for (long i = 0; i < 4; ++i) {
    array->SetCurrentElement(i);
    array->SetReal(static_cast<double>(i + 1));
  }
  array->SetCurrentElement(1);
  array->GetValue(1, true);
  EXPECT_EQ(array->GetArraySize(), 4);
  double const expected[8] = {1, 2, 3, 4, 0, 0, 0, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(DoubleAt(array->GetValue() + 8 * i), expected[i]);
  EXPECT_EQ(array->Real(), 3.0);
  EXPECT_EQ(array->Imaginary(), 4.0);
}

TEST(DatumPromotionTest, LinkedMemoryIsCopiedAndLeftAlone) {
  double host = 7.0;
  CQMDatum datum(EQMDataType::Number, "x");
  datum.SetOwnsStorage(false);
  datum.SetValuePointer(&host);
  datum.SetComplex(8.0, 9.0);
  EXPECT_EQ(host, 7.0);
  EXPECT_TRUE(datum.OwnsStorage());
  EXPECT_EQ(datum.Real(), 8.0);
  EXPECT_EQ(datum.Imaginary(), 9.0);
}

TEST(DatumPromotionTest, PartOneOfOtherTypesIsANobodysZero) {
  for (EQMDataType const type :
       {EQMDataType::String, EQMDataType::Boolean, EQMDataType::Undefined, EQMDataType::TimeStamp}) {
    CQMDatum datum(type, nullptr);
    double const value = 5.0;
    datum.SetValue(1, &value);
    std::memcpy(datum.GetValue(1, true), &value, sizeof value);
    EXPECT_EQ(DoubleAt(datum.GetValue(1, true)), 0.0);
    EXPECT_EQ(datum.GetText(), "");
  }
}

// ---- arrays ----

TEST(DatumArrayTest, IndicesToPositions) {
  struct {
    Longs extents;
    long base;
    bool invert;
    Longs indices;
    long flat, position;
  } const cases[] = {
      {{5}, 0, false, {0}, 0, 0},
      {{5}, 0, false, {4}, 4, 4},
      {{5}, 0, false, {5}, -1, -1},
      {{5}, 0, false, {-1}, -1, -1},
      {{5}, 0, false, {1, 1}, -1, -1},
      {{5}, 0, false, {}, -1, -1},
      {{5}, 0, false, {1, 1, 1, 1, 1, 1, 1, 1, 1}, -1, -1},
      {{2, 3}, 0, false, {1, 2}, 5, 5},
      {{2, 3}, 0, false, {2, 0}, -1, -1},
      {{2, 3}, 0, false, {0, 3}, -1, -1},  // inside the storage, outside the row
      {{2, 3, 4}, 0, false, {1, 2, 3}, 23, 23},
      {{2, 3, 4}, 0, false, {1, 0, 2}, 14, 14},
      {{2, 3, 4}, 0, true, {1, 0, 2}, 13, 13},  // stored as 4 x 3 x 2, read as (2, 0, 1)
      {{2, 3}, 1, false, {1, 1}, 4, 0},
      {{2, 3}, 1, false, {2, 3}, 9, 5},
      {{2, 3}, 1, false, {0, 1}, -1, -1},
      {{2, 3}, 1, true, {1, 3}, -1, 4},
      {{2, 3}, 1, true, {3, 2}, -1, -1},
      {{4}, 1, false, {1}, 1, 0},
      {{4}, 1, false, {4}, 4, 3},
      {{4}, -2, false, {-2}, -2, 0},
      {{4}, -2, false, {1}, 1, 3},
      {{4}, -2, false, {2}, -1, -1},
      {{3}, 2147483647, false, {2147483647}, 2147483647, 0},
      {{1, 1, 1, 1, 1, 2}, 0, false, {0, 0, 0, 0, 0, 1}, 1, 1},
      {{5}, 0, false, {LONG_MAX}, -1, -1},
      {{5}, 0, false, {LONG_MIN}, -1, -1},
  };
  for (auto const& c : cases) {
    auto const array = MakeArray(EQMDataType::Number, c.extents, c.base, c.invert);
    bool const isKnownFlat = !(c.base == 1 && c.invert);
    if (isKnownFlat) {
      EXPECT_EQ(array->GetFlatIndex(c.indices), c.flat);
    }
    EXPECT_EQ(array->GetElementPosition(c.indices), c.position);
    long const expected = c.position >= 0 ? Error::None : Error::IndexOutOfBounds;
    EXPECT_EQ(array->VerifyElement(c.indices), expected);
    EXPECT_EQ(array->SetCurrentElement(c.indices), expected);
    EXPECT_EQ(array->GetCurrentElement(), std::max(c.position, 0L));
    EXPECT_EQ(array->GetValue(0, false, c.indices) == nullptr, c.position < 0);
    Doubles truncated;
    for (long const index : c.indices)
      truncated.push_back(static_cast<double>(index) + (index < 0 ? -0.75 : 0.75));
    if (c.indices.empty() || std::fabs(truncated[0]) < 2e9) {
      EXPECT_EQ(array->VerifyElement(truncated), expected);
      EXPECT_EQ(array->GetElementPosition(truncated), c.position);
      EXPECT_EQ(array->SetCurrentElement(truncated), expected);
    }
  }
}

// With base 1 and inversion the indices (3, 2) of a 2 x 3 array are read as (2, 3).
TEST(DatumArrayTest, InversionTurnsExtentsAndIndicesRound) {
  auto const array = MakeArray(EQMDataType::Number, {3, 2}, 1, true);
  EXPECT_EQ(array->GetArrayDim(1), 2);
  EXPECT_EQ(array->GetArrayDim(2), 3);
  EXPECT_EQ(array->GetArrayDim(0), 0);
  EXPECT_EQ(array->GetArrayDim(3), 0);
  EXPECT_EQ(array->GetFlatIndex(Longs{3, 2}), 2 * 3 + 3);
  EXPECT_EQ(array->GetElementPosition(Longs{3, 2}), 5);
  EXPECT_EQ(array->VerifyElement(Longs{2, 3}), Error::IndexOutOfBounds);
  array->SetInvertArrayIndices(false);  // refused from now on
  array->SetArrayBase(0);
  EXPECT_EQ(array->GetArrayBase(), 1);
  EXPECT_EQ(array->GetElementPosition(Longs{3, 2}), 5);
}

TEST(DatumArrayTest, TheLastExtentOfAStringIsItsLength) {
  auto const scalar = MakeArray(EQMDataType::String, {40});
  EXPECT_FALSE(scalar->IsArray());
  EXPECT_EQ(scalar->GetElementSize(), 40);
  scalar->SetText(std::string(100, 'x'));
  EXPECT_EQ(scalar->GetText(), std::string(39, 'x'));

  auto const array = MakeArray(EQMDataType::String, {5, 40}, 0, true);
  EXPECT_EQ(array->GetDimensionCount(), 1);
  EXPECT_EQ(array->GetArraySize(), 5);
  for (long i = 0; i < 5; ++i) {
    array->SetCurrentElement(i);
    array->SetText(std::string(static_cast<std::size_t>(60 + i), static_cast<char>('a' + i)));
  }
  for (long i = 0; i < 5; ++i) {
    array->SetCurrentElement(i);
    EXPECT_EQ(array->GetText(), std::string(39, static_cast<char>('a' + i)));
  }
  auto const cube = MakeArray(EQMDataType::String, {2, 2, 2, 2, 2, 2, 10});
  EXPECT_EQ(cube->GetDimensionCount(), 6);
  EXPECT_EQ(cube->GetArraySize(), 64);
  EXPECT_EQ(cube->SetCurrentElement(63), Error::None);
}

TEST(DatumArrayTest, BadExtentsMakeNoArray) {
  struct {
    EQMDataType type;
    Doubles extents;
    long code;
  } const cases[] = {
      {EQMDataType::Number, {}, Error::None},
      {EQMDataType::Number, {0}, Error::IndexOutOfBounds},
      {EQMDataType::Number, {3, -1}, Error::IndexOutOfBounds},
      {EQMDataType::Number, {0.9}, Error::IndexOutOfBounds},
      {EQMDataType::Number, {kNaN}, Error::IndexOutOfBounds},
      {EQMDataType::Number, {1e10}, Error::IndexOutOfBounds},
      {EQMDataType::Number, {2147483647}, Error::OutOfMemory},
      {EQMDataType::Number, {65536, 65536}, Error::OutOfMemory},
      {EQMDataType::Number, {65536, 65536, 65536, 65536, 65536, 65536}, Error::OutOfMemory},
      {EQMDataType::Number, {1, 1, 1, 1, 1, 1, 1, 1}, Error::IndexOutOfBounds},
      {EQMDataType::Undefined, {2147483647, 2147483647}, Error::OutOfMemory},
      {EQMDataType::String, {2147483647}, Error::OutOfMemory},
      {EQMDataType::String, {100000, 100000}, Error::OutOfMemory},
      {EQMDataType::String, {4, 0}, Error::IndexOutOfBounds},
      {EQMDataType::String, {1, 1, 1, 1, 1, 1, 1, 9}, Error::IndexOutOfBounds},
  };
  for (auto const& c : cases) {
    CQMDatum datum(c.type, "x");
    std::int32_t const size = datum.GetElementSize();
    EXPECT_EQ(datum.SetIsArray(c.extents), c.code);
    EXPECT_FALSE(datum.IsArray());
    EXPECT_EQ(datum.GetElementSize(), size);
    EXPECT_EQ(datum.SetCurrentElement(1), Error::IndexOutOfBounds);
  }
}

TEST(DatumArrayTest, SevenExtentsOfANumberAreRecordedOnly) {
  auto const datum = MakeArray(EQMDataType::Number, {10, 10, 10, 10, 10, 10, 10});
  EXPECT_EQ(datum->GetDimensionCount(), 7);
  EXPECT_EQ(datum->GetArraySize(), 10000000);
  long const last = datum->GetElementPosition(Longs{9, 9, 9, 9, 9, 9, 9});
  EXPECT_EQ(last, 9999999);
  EXPECT_EQ(datum->SetCurrentElement(last), Error::IndexOutOfBounds);
  double const value = 5.0;
  datum->SetValue(0, &value, last);
  EXPECT_EQ(DoubleAt(datum->GetValue(0, false, last)), 0.0);
  datum->ClearValue();
  datum->GetValue(1, true, last);
  EXPECT_TRUE(datum->IsComplex());
  datum->SetComplex(1.0, 2.0);
  auto const huge = MakeArray(EQMDataType::Number, Longs(7, 1 << 30));
  EXPECT_EQ(huge->GetArraySize(), LONG_MAX);
  EXPECT_EQ(huge->GetFlatIndex(Longs(7, (1 << 30) - 1)), -1);
}

TEST(DatumArrayTest, AnArrayIsMadeOnce) {
  auto const array = MakeArray(EQMDataType::Number, {3});
  EXPECT_EQ(array->SetIsArray(Longs{7, 7}), Error::None);
  EXPECT_EQ(array->GetDimensionCount(), 1);
  EXPECT_EQ(array->GetArraySize(), 3);
  array->SetIsArray(10L);  // storage only
  EXPECT_EQ(array->GetArraySize(), 3);
  EXPECT_EQ(array->SetCurrentElement(9), Error::None);
  EXPECT_EQ(array->SetCurrentElement(10), Error::IndexOutOfBounds);
  for (long const count : {0L, -5L, LONG_MIN, LONG_MAX}) array->SetIsArray(count);
  EXPECT_EQ(array->SetCurrentElement(-1), Error::IndexOutOfBounds);
  EXPECT_EQ(array->GetCurrentElement(), 9);
}

TEST(DatumArrayTest, ANewTypeLeavesOneElementUntilDimensionedAgain) {
  auto const array = MakeArray(EQMDataType::Number, {5});
  array->SetCurrentElement(4);
  array->SetDatumType(EQMDataType::Boolean);
  array->SetBoolean(true);
  array->ClearValue();
  EXPECT_EQ(array->BooleanByte(), 0);
  EXPECT_EQ(array->SetCurrentElement(3), Error::IndexOutOfBounds);
  array->SetIsArray(array->GetArraySize());
  array->SetBoolean(true);
  EXPECT_EQ(*static_cast<std::uint8_t*>(array->GetValue(0, false, 4)), 1);
}

TEST(DatumArrayTest, WithoutMemoryNothingChanges) {
  CQMDatum datum(EQMDataType::Number, "x");
  datum.SetReal(4.0);
  Longs const extents = {100};
  for (long spared = 0; spared < 2; ++spared) {  // the dimensions, then the elements
    long code;
    {
      FailingAllocation const failing(spared);
      code = datum.SetIsArray(extents);
    }
    EXPECT_EQ(code, Error::OutOfMemory);
    EXPECT_FALSE(datum.IsArray());
    EXPECT_EQ(datum.Real(), 4.0);
  }
  datum.SetIsArray(extents);
  datum.SetReal(5.0);
  {
    FailingAllocation const failing;
    EXPECT_EQ(datum.ChangeDatumType(EQMDataType::Complex), EQMDataType::Number);
    datum.SetIsArray(1000L);
    datum.SetComplex(6.0, 7.0);
  }
  EXPECT_EQ(datum.Real(), 6.0);
  EXPECT_EQ(datum.SetCurrentElement(99), Error::None);
  {
    FailingAllocation const failing;
    datum.SetDatumType(EQMDataType::String);
    datum.SetDatumAtomSize(0);
    datum.SetDatumType(EQMDataType::String);
  }
  EXPECT_EQ(datum.GetValue(), nullptr);
  datum.SetText("a text longer than what is left");
  EXPECT_LT(datum.GetText().size(), 16U);
}

// ---- values ----

TEST(DatumValueTest, OneDimensionIsWrittenAtItsFirstElementByFlatIndex) {
  auto const array = MakeArray(EQMDataType::Number, {5});
  array->SetCurrentElement(2);
  double const value = 3.0;
  array->SetValue(0, &value, 3);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 3)), 0.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 0)), 3.0);
  array->SetValue(0, &value, Longs{4});
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 4)), 3.0);
  array->SetValue(&value);
  EXPECT_EQ(array->Real(), 3.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false)), 3.0);

  auto const table = MakeArray(EQMDataType::Number, {2, 3});
  table->SetValue(1, &value, 4);
  EXPECT_EQ(DoubleAt(table->GetValue(1, false, 4)), 3.0);
  table->SetValue(0, &value, 6);
  table->SetValue(0, &value, -1);
  table->SetValue(0, &value, LONG_MAX);
  for (long i = 0; i < 6; ++i) EXPECT_EQ(DoubleAt(table->GetValue(0, false, i)), 0.0) << i;
}

TEST(DatumValueTest, ATextIsAlwaysEnded) {
  CQMDatum datum(EQMDataType::String, "s");
  datum.SetValue("a rather long text");
  datum.SetValue(0, "short");
  EXPECT_EQ(datum.GetText(), "short");
  for (int i = 5; i < kDefaultStringSize; ++i) ASSERT_EQ(datum.Current()[i], std::byte{0}) << i;
  std::string const full(300, 'y');
  EXPECT_EQ(datum.CopyDataLength(full.c_str()), 256);
  EXPECT_EQ(datum.CopyDataLength("abc"), 3);
  datum.SetValue(full.c_str());
  EXPECT_EQ(datum.GetText(), full.substr(0, 255));
  datum.SetText(datum.GetText().substr(250));  // out of its own buffer
  EXPECT_EQ(datum.GetText(), "yyyyy");
  datum.SetText({});
  EXPECT_EQ(datum.GetText(), "");
  datum.SetValue(nullptr);
  datum.SetValue(0, nullptr);
  EXPECT_EQ(datum.CopyDataLength(nullptr), 0);
}

TEST(DatumValueTest, AWholeTextMakesRoomForItself) {
  CQMDatum datum(EQMDataType::String, "s");
  std::string expected = "0123456789";
  datum.SetWholeText(expected);
  EXPECT_EQ(datum.GetElementSize(), kDefaultStringSize);
  while (expected.size() < 100000) {
    datum.SetWholeText(std::string(datum.GetText()) + std::string(datum.GetText()));
    expected += expected;
    ASSERT_EQ(datum.GetText(), expected);
  }
  std::string_view const inside = datum.GetText().substr(1);
  datum.SetWholeText(inside);
  EXPECT_EQ(datum.GetText(), expected.substr(1));
  CQMDatum proxy(datum);
  proxy.SetWholeText(std::string(1000000, 'z'));
  EXPECT_EQ(datum.GetText().size() + 1, static_cast<std::size_t>(datum.GetElementSize()));
}

TEST(DatumValueTest, LinkedMemoryIsNeitherZeroedNorOverrun) {
  std::array<char, 12> host;
  host.fill('#');
  CQMDatum datum;
  datum.SetOwnsStorage(false);
  datum.SetDatumAtomSize(8);
  datum.SetDatumType(EQMDataType::String);
  EXPECT_EQ(datum.GetValue(), nullptr);
  datum.SetValuePointer(host.data());
  EXPECT_EQ(datum.GetText(), "########");  // the host left no end
  datum.ClearValue();
  EXPECT_EQ(host[0], '#');
  datum.SetText("ab");
  EXPECT_EQ(std::string(host.data(), 5), std::string("ab\0##", 5));  // what stands behind is the host's
  datum.SetText("abcdefghijkl");
  EXPECT_EQ(std::string(host.data(), 12), std::string("abcdefg\0####", 12));
  datum.SetDatumType(EQMDataType::Number);
  EXPECT_EQ(datum.GetValue(), nullptr);
  EXPECT_EQ(host[0], 'a');
}

TEST(DatumValueTest, ALinkedArrayTakesItsSizeFromTheDimensions) {
  std::array<double, 6> host = {1, 2, 3, 4, 5, 6};
  CQMDatum datum;
  datum.SetOwnsStorage(false);
  datum.SetDatumType(EQMDataType::Number);
  EXPECT_EQ(datum.SetIsArray(Longs{2, 3}), Error::None);
  EXPECT_EQ(datum.GetValue(), nullptr);  // nothing is made that the link would throw away
  datum.SetValuePointer(host.data());
  EXPECT_EQ(datum.SetCurrentElement(Longs{1, 2}), Error::None);
  EXPECT_EQ(datum.Real(), 6.0);
  EXPECT_EQ(datum.SetCurrentElement(6), Error::IndexOutOfBounds);
  datum.SetReal(60.0);
  EXPECT_EQ(host[5], 60.0);
  datum.ClearValue();
  EXPECT_EQ(host[5], 60.0);
}

TEST(DatumValueTest, ALinkToNothingIsSafe) {
  for (int code = 0; code <= 36; ++code) {
    CQMDatum datum;
    datum.SetOwnsStorage(false);
    datum.SetDatumType(Type(code));
    datum.SetIsArray(Longs{3, 7});
    datum.SetValuePointer(nullptr);
    EXPECT_EQ(datum.GetValue(), nullptr);
    datum.SetReal(1.0);
    datum.SetValue(0, "0123456789abcdefghij");
    datum.SetValue(0, "0123456789abcdefghij", 2);
    datum.SetText("0123456789abcdefghij");
    datum.GetText();
    EXPECT_NE(datum.GetValue(0, false, 2), nullptr);
    EXPECT_EQ(datum.SetCurrentElement(1), Error::IndexOutOfBounds);
    CQMDatum other(Type(code), nullptr);
    datum.CompareValue(&other);
    other.CompareValue(&datum);
    datum.ClearValue();
  }
}

// ---- comparison ----

TEST(DatumComparisonTest, ValuesOfOneType) {
  using Fields = std::array<std::int16_t, 3>;
  struct Case {
    std::unique_ptr<CQMDatum> a, b;
    int order;
  };
  std::vector<Case> cases;
  auto const add = [&cases](std::unique_ptr<CQMDatum> a, std::unique_ptr<CQMDatum> b, int order) {
    cases.push_back({std::move(a), std::move(b), order});
  };
  for (int const type : {0, 5}) add(MakeRaw<std::int8_t>(type, -1), MakeRaw<std::int8_t>(type, 1), -1);
  for (int const type : {6, 8}) add(MakeRaw<std::int16_t>(type, -300), MakeRaw<std::int16_t>(type, 1), -1);
  for (int const type : {9, 14}) add(MakeRaw<std::int32_t>(type, 70000), MakeRaw<std::int32_t>(type, -1), 1);
  add(MakeRaw(15, 1.5F), MakeRaw(15, 2.5F), -1);
  add(MakeRaw(18, -1.0), MakeRaw(18, -2.0), 1);
  add(MakeNumber(1), MakeNumber(1), 0);
  add(MakeNumber(kNaN), MakeNumber(1), 0);
  add(MakeNumber(1), MakeNumber(kNaN), 0);
  add(MakeNumber(-HUGE_VAL), MakeNumber(1), -1);
  add(MakeComplex(3, 4), MakeComplex(5, 0), 0);  // by magnitude
  add(MakeComplex(-3, 4), MakeComplex(1, 0), -1);
  add(MakeComplex(0, -9), MakeComplex(8, 0), 1);  // signed by the real part only
  add(MakeText("abc"), MakeText("abd"), -1);
  add(MakeText("abc"), MakeText("ab"), 'c');
  add(MakeText("\xFF"), MakeText("a"), 0xFF - 'a');
  add(MakeText(""), MakeText("a"), -'a');
  add(MakeRaw<std::uint8_t>(20, 1), MakeRaw<std::uint8_t>(20, 0), 1);
  add(MakeRaw<std::uint8_t>(20, 0), MakeRaw<std::uint8_t>(20, 1), -1);
  add(MakeRaw<std::uint8_t>(20, 2), MakeRaw<std::uint8_t>(20, 0), -1);  // only 1 is true here
  add(MakeRaw<std::uint8_t>(20, 2), MakeRaw<std::uint8_t>(20, 2), 0);
  add(MakeRaw(22, Fields{1, -5, 9}), MakeRaw(22, Fields{1, 5, 0}), -1);
  add(MakeRaw(23, Fields{1, -5, 9}), MakeRaw(23, Fields{1, 5, 0}), 1);  // unsigned
  add(MakeRaw(24, SQMTimeStamp{{1, 2, 3}, {4, 5, 6}, 7}),
      MakeRaw(24, SQMTimeStamp{{1, 2, 3}, {4, 5, 6}, 0x80000000}), -1);
  add(MakeRaw(24, SQMTimeStamp{{1, 2, 3}, {4, 6, 0}, 0}), MakeRaw(24, SQMTimeStamp{{1, 2, 3}, {4, 5, 6}, 7}),
      1);
  add(MakeRaw<std::uint32_t>(25, 1), MakeRaw<std::uint32_t>(25, 2), 0);          // no word lies behind them
  add(MakeRaw<std::uint32_t>(26, 0xFF), MakeRaw<std::uint32_t>(26, 0x0100), 1);  // by bytes as they lie
  add(MakeRaw<std::uint8_t>(34, 3), MakeRaw<std::uint8_t>(34, 200), -1);
  add(std::make_unique<CQMDatum>(), std::make_unique<CQMDatum>(), 0);
  for (auto const& c : cases) {
    EXPECT_EQ(c.a->CompareValue(c.b.get()), c.order) << "type " << Code(c.a->GetType());
    EXPECT_EQ(*c.a > *c.b, c.order > 0);
    EXPECT_EQ(*c.a >= *c.b, c.order >= 0);
    EXPECT_EQ(*c.a == *c.b, c.order == 0);
    EXPECT_EQ(*c.a <= *c.b, c.order <= 0);
    EXPECT_EQ(*c.a < *c.b, c.order < 0);
    EXPECT_EQ(c.a->CompareValue(nullptr), 0);
  }
}

TEST(DatumComparisonTest, PointersAreComparedEightElementsAhead) {
  auto const a = MakeArray(EQMDataType::Pointer, {10});
  auto const b = MakeArray(EQMDataType::Pointer, {10});
  std::uint32_t const word = 5;
  std::memcpy(a->GetValue(0, false, 8), &word, sizeof word);
  EXPECT_EQ(a->CompareValue(b.get()), 1);
  EXPECT_EQ(b->CompareValue(a.get()), -1);
  a->SetCurrentElement(1);
  EXPECT_EQ(a->CompareValue(b.get()), 0);
  a->SetCurrentElement(2);  // the storage ends before
  b->SetCurrentElement(0);
  EXPECT_EQ(a->CompareValue(b.get()), 0);
}

TEST(DatumComparisonTest, ValuesOfDifferentTypes) {
  using Fields = std::array<std::int16_t, 3>;
  struct Case {
    std::unique_ptr<CQMDatum> a, b;
    int order;
  };
  std::vector<Case> cases;
  auto const add = [&cases](std::unique_ptr<CQMDatum> a, std::unique_ptr<CQMDatum> b, int order) {
    cases.push_back({std::move(a), std::move(b), order});
  };
  add(MakeText("5"), MakeNumber(5), -1);  // by element size
  add(MakeNumber(5), MakeText("5"), 1);
  add(MakeNumber(5), MakeRaw<std::uint8_t>(20, 1), -1);
  add(MakeRaw(22, Fields{1, 2, 3}), MakeRaw<std::uint32_t>(26, 1), -1);
  add(MakeComplex(3, 4), MakeNumber(5), 0);
  add(MakeComplex(-3, 4), MakeNumber(-4), -1);
  add(MakeNumber(5), MakeComplex(3, 4), 0);
  add(MakeNumber(-6), MakeComplex(-3, 4), -1);
  add(MakeNumber(-2), MakeRaw(18, -2.0), 0);
  add(MakeRaw(18, 3.0), MakeNumber(2), 1);
  add(MakeComplex(kNaN, 0), MakeNumber(5), 0);
  add(MakeRaw(22, Fields{1, 2, 3}), MakeRaw(24, SQMTimeStamp{{1, 2, 3}, {0, 0, 0}, 0}), 0);
  add(MakeRaw(22, Fields{1, 2, 3}), MakeRaw(23, Fields{4, 5, 6}), 1);
  add(MakeText("b"), MakeText("a", EQMDataType::Text), 0);
  for (auto const& c : cases) {
    EXPECT_EQ(c.a->CompareValue(c.b.get()), c.order)
        << "types " << Code(c.a->GetType()) << " and " << Code(c.b->GetType());
  }
}

// Eight bytes are read, and sixteen, whatever the types; the sanitizers see whether they are there.
TEST(DatumComparisonTest, NoPairOfTypesReadsBeyondItsStorage) {
  for (int first = 0; first <= 36; ++first) {
    for (int second = 0; second <= 36; ++second) {
      for (bool const isArray : {false, true}) {
        CQMDatum a(Type(first), nullptr), b(Type(second), nullptr);
        auto const linked =
            std::make_unique<std::byte[]>(static_cast<std::size_t>(std::max(b.GetElementSize(), 1)));
        CQMDatum c;
        c.SetOwnsStorage(false);
        c.SetDatumType(Type(second));
        c.SetValuePointer(linked.get());
        if (isArray && !a.IsString()) {
          a.SetIsArray(Longs{3});
          a.SetCurrentElement(2);
        }
        a.CompareValue(&b);
        a.CompareValue(&c);
        c.CompareValue(&a);
        SQMTimeStamp stamp;
        CQMDatum::ConvertToTimeStamp(&c, &stamp);
        CQMDatum::ConvertToDouble(&c);
      }
    }
  }
}

TEST(DatumComplexityTest, SignsOfBothParts) {
  struct {
    double real, imaginary;
    long complexity;
  } const cases[] = {{-1, -1, 11},  {0, -1, 12}, {1, -1, 13},   {-1, 0, 21},      {-0.0, 0, 22},
                     {kNaN, 0, 23}, {-1, 1, 31}, {0, kNaN, 32}, {HUGE_VAL, 1, 33}};
  for (auto const& c : cases) {
    EXPECT_EQ(MakeComplex(c.real, c.imaginary)->GetDatumComplexity(), c.complexity);
    EXPECT_EQ(MakeNumber(c.real)->GetDatumComplexity(), 20 + c.complexity % 10);
  }
  EXPECT_EQ(MakeRaw(18, 1.0)->GetDatumComplexity(), 0);
  EXPECT_EQ(MakeText("1")->GetDatumComplexity(), 0);
}

TEST(DatumConversionTest, ToDoubleAndTimeStamp) {
  struct {
    std::unique_ptr<CQMDatum> datum;
    double value;
  } const cases[] = {
      {MakeRaw<std::int8_t>(3, -7), -7},
      {MakeRaw<std::int16_t>(7, -700), -700},
      {MakeRaw<std::int32_t>(12, -70000), -70000},
      {MakeRaw(15, 0.25F), 0.25},
      {MakeNumber(0.5), 0.5},
      {MakeComplex(1.5, 9), 1.5},
      {MakeRaw(18, 2.0), 0},
      {MakeText("5"), 0},
      {MakeRaw<std::uint8_t>(20, 7), 1},
      {MakeRaw<std::uint8_t>(20, 0), 0},
      {MakeRaw<std::uint32_t>(25, 7), 0},
      {std::make_unique<CQMDatum>(), 0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(CQMDatum::ConvertToDouble(c.datum.get()), c.value) << Code(c.datum->GetType());
  EXPECT_EQ(CQMDatum::ConvertToDouble(nullptr), 0.0);

  using Fields = std::array<std::int16_t, 3>;
  SQMTimeStamp const whole{{1, 2, 3}, {4, 5, 6}, 7};
  struct {
    std::unique_ptr<CQMDatum> datum;
    SQMTimeStamp stamp;
  } const stamps[] = {{MakeRaw(22, Fields{1, 2, 3}), {{1, 2, 3}, {0, 0, 0}, 0}},
                      {MakeRaw(23, Fields{4, 5, 6}), {{0, 0, 0}, {4, 5, 6}, 0}},
                      {MakeRaw(24, whole), whole},
                      {MakeNumber(5), {}}};
  for (auto const& c : stamps) {
    SQMTimeStamp stamp = whole;
    CQMDatum::ConvertToTimeStamp(c.datum.get(), &stamp);
    EXPECT_EQ(std::memcmp(&stamp, &c.stamp, sizeof stamp), 0) << Code(c.datum->GetType());
  }
}

// ---- proxies ----

TEST(DatumProxyTest, ACopyStandsForItsSource) {
  CQMDatum source(EQMDataType::Number, "x");
  source.SetScope(Scope::kGlobal);
  source.SetLiteral(true);
  source.SetLiteralAttributes(true, false);
  source.SetTemporary(true);
  source.SetReal(1.0);
  CQMDatum proxy(source);
  CQMDatum second(proxy);
  EXPECT_EQ(second.GetProxyTarget(), &source);  // never a proxy of a proxy
  EXPECT_EQ(source.GetChildCount(), 2);
  EXPECT_STREQ(second.GetDatumName(), "x");
  EXPECT_EQ(second.GetScope(), Scope::kGlobal);
  EXPECT_TRUE(second.IsLiteral() && second.GetLiteralAttribute(0) && !second.GetLiteralAttribute(1) &&
              second.IsTemporary());
  EXPECT_FALSE(second.OwnsStorage());
  EXPECT_EQ(second.GetValue(), source.GetValue());
  second.SetReal(2.0);
  EXPECT_EQ(source.Real(), 2.0);
  source.SetPending(true);
  EXPECT_TRUE(second.IsPending());
}

TEST(DatumProxyTest, ElementsOfOneArrayDoNotDisturbEachOther) {
  auto const array = MakeArray(EQMDataType::Number, {4});
  CQMDatum first(*array), second(*array);
  EXPECT_EQ(first.GetArraySize(), 4);
  EXPECT_EQ(first.SetCurrentElement(1), Error::None);
  EXPECT_EQ(second.SetCurrentElement(3), Error::None);
  EXPECT_EQ(second.SetCurrentElement(4), Error::IndexOutOfBounds);
  first.SetReal(10.0);
  second.SetReal(30.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 1)), 10.0);
  EXPECT_EQ(DoubleAt(array->GetValue(0, false, 3)), 30.0);
  EXPECT_EQ(first.GetValue(), array->GetValue() + 8);
  EXPECT_EQ(array->GetCurrentElement(), 0);
  CQMDatum third(second);  // at the same element
  EXPECT_EQ(third.Real(), 30.0);
}

TEST(DatumProxyTest, FollowsEveryChangeOfTypeAndStorage) {
  CQMDatum target(EQMDataType::Number, "x");
  CQMDatum proxy(target);
  long revision = proxy.GetRevision();
  auto const expectFollowed = [&](EQMDataType type) {
    EXPECT_GT(proxy.GetRevision(), revision);
    revision = proxy.GetRevision();
    EXPECT_EQ(proxy.GetType(), type);
    EXPECT_EQ(proxy.GetElementSize(), target.GetElementSize());
    EXPECT_EQ(proxy.Current(), target.Current());
  };
  proxy.SetDatumType(EQMDataType::String);  // acts on the target
  expectFollowed(EQMDataType::String);
  target.SetWholeText(std::string(1000, 'x'));
  expectFollowed(EQMDataType::String);
  EXPECT_EQ(proxy.GetText().size(), 1000U);
  proxy.SetDatumType(EQMDataType::Number);
  expectFollowed(EQMDataType::Number);
  proxy.SetComplex(1.0, 2.0);
  expectFollowed(EQMDataType::Complex);
  EXPECT_EQ(target.Imaginary(), 2.0);
  EXPECT_EQ(proxy.SetIsArray(Longs{3}), Error::None);
  expectFollowed(EQMDataType::Complex);
  EXPECT_TRUE(target.IsArray());
  EXPECT_TRUE(proxy.IsArray());
  target.SetIsArray(30L);
  expectFollowed(EQMDataType::Complex);
  std::array<double, 6> host = {};
  target.SetValuePointer(host.data());
  expectFollowed(EQMDataType::Complex);
  EXPECT_EQ(proxy.SetCurrentElement(2), Error::None);
  proxy.SetComplex(5.0, 6.0);
  EXPECT_EQ(host[5], 6.0);
  target.SetValuePointer(nullptr);
  EXPECT_EQ(proxy.GetValue(), nullptr);
  EXPECT_EQ(proxy.Real(), 0.0);
}

TEST(DatumProxyTest, AssignmentMakesAProxyAndHandsOnItsOwn) {
  CQMDatum first(EQMDataType::Number, "first"), second(EQMDataType::Number, "second");
  CQMDatum user(first);
  second.SetReal(5.0);
  first = second;
  EXPECT_EQ(first.GetProxyTarget(), &second);
  EXPECT_EQ(user.GetProxyTarget(), &second);
  EXPECT_EQ(user.Real(), 5.0);
  EXPECT_EQ(second.GetChildCount(), 2);
  second = user;  // its own target: nothing to do
  second = second;
  EXPECT_FALSE(second.IsProxy());
  EXPECT_EQ(second.Real(), 5.0);
  CQMDatum third(EQMDataType::Boolean, "third");
  first = third;
  EXPECT_EQ(second.GetChildCount(), 1);
  EXPECT_TRUE(first.IsBoolean());
}

TEST(DatumProxyTest, OutlivesItsTarget) {
  auto target = MakeArray(EQMDataType::Number, {4});
  auto const proxy = std::make_unique<CQMDatum>(*target);
  auto early = std::make_unique<CQMDatum>(*target);
  proxy->SetCurrentElement(3);
  target->SetPending(true);
  early.reset();
  EXPECT_EQ(target->GetChildCount(), 1);
  target.reset();
  EXPECT_FALSE(proxy->IsProxy());
  EXPECT_FALSE(proxy->IsArray());
  EXPECT_TRUE(proxy->IsPending());
  EXPECT_EQ(proxy->GetType(), EQMDataType::Number);
  EXPECT_EQ(proxy->Real(), 0.0);
  proxy->SetComplex(1.0, 2.0);
  EXPECT_EQ(proxy->Imaginary(), 2.0);
}

TEST(DatumProxyTest, ThreadsShareTheLinksOfAProcessWideDatum) {
  auto const target = MakeArray(EQMDataType::Number, {8});
  target->SetScope(Scope::kCosmic);
  std::vector<std::thread> threads;
  for (long id = 0; id < 4; ++id) {
    threads.emplace_back([&target, id] {
      for (int turn = 0; turn < 500; ++turn) {
        CQMDatum element(*target);
        element.SetCurrentElement(id);
        element.SetReal(element.Real() + 1.0);
        CQMDatum const other(element);
        EXPECT_EQ(other.Real(), static_cast<double>(turn + 1));
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(target->GetFirstChildObject(), nullptr);
}

}  // namespace
}  // namespace qumel
