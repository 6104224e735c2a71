// Comparison of datums of every pair of types, their complexity and their conversions.
#include <array>
#include <cmath>
#include <limits>

#include "values/datum_makers.h"

namespace qumel {
namespace {

using namespace qumel::testing;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Fields = std::array<std::int16_t, 3>;

/** Pairs of datums, and how the first of each compares to the second. */
class CQMOrders {
 public:
  struct Case {
    std::unique_ptr<CQMDatum> a, b;
    int order;
  };
  void operator()(std::unique_ptr<CQMDatum> a, std::unique_ptr<CQMDatum> b, int order) {
    cases.push_back({std::move(a), std::move(b), order});
  }
  std::vector<Case> cases;
};

TEST(DatumComparisonTest, ValuesOfOneType) {
  CQMOrders add;
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
  for (auto const& c : add.cases) {
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
  CQMOrders add;
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
  for (auto const& c : add.cases) {
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

}  // namespace
}  // namespace qumel
