// Types of datums and their storage, promotion, values by part, texts, linked memory.
#include <array>
#include <string>

#include "values/datum_makers.h"

namespace qumel {
namespace {

using namespace qumel::testing;

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

}  // namespace
}  // namespace qumel
