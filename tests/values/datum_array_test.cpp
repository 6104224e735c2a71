// Arrays of datums: extents, indices, bounds, and what is left when memory runs out.
#include <climits>
#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "support/failing_allocation.h"
#include "values/datum_makers.h"

namespace qumel {
namespace {

using namespace qumel::testing;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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
      {{2, 3}, 1, true, {1, 3}, 7, 4},
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
    EXPECT_EQ(array->GetFlatIndex(c.indices), c.flat);
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

TEST(DatumArrayTest, ADoubleIsThereAtTheLastElementOfANarrowerType) {
  auto const array = MakeArray(EQMDataType::Int, {5});
  EXPECT_EQ(array->SetCurrentElement(4), Error::None);
  EXPECT_EQ(array->Real(), 0.0);
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
  auto const throws = [](auto call) {
    FailingAllocation const failing;
    try {
      call();
      return false;
    } catch (std::bad_alloc const&) {
      return true;
    }
  };
  EXPECT_FALSE(throws([&] { datum.SetIsArray(1000L); }));
  EXPECT_TRUE(throws([&] { datum.ChangeDatumType(EQMDataType::Complex); }));
  EXPECT_TRUE(throws([&] { datum.SetComplex(6.0, 7.0); }));
  EXPECT_TRUE(throws([&] { datum.GetValue(1, true); }));
  EXPECT_EQ(datum.GetType(), EQMDataType::Number);
  EXPECT_EQ(datum.Real(), 5.0);
  EXPECT_EQ(datum.GetArraySize(), 100);
  EXPECT_EQ(datum.SetCurrentElement(99), Error::None);

  CQMDatum text;
  EXPECT_TRUE(throws([&] { text.SetDatumType(EQMDataType::String); }));
  EXPECT_EQ(text.GetType(), EQMDataType::Undefined);
  text.SetDatumType(EQMDataType::String);
  text.SetWholeText("as it was");
  std::string const longText(1000, 'l');
  EXPECT_TRUE(throws([&] { text.SetWholeText(longText); }));
  EXPECT_EQ(text.GetText(), "as it was");
}

}  // namespace
}  // namespace qumel
