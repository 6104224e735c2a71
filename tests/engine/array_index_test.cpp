// Arrays made and reached by indices.
#include <gtest/gtest.h>

#include "program_runner.h"

namespace qumel::test {
namespace {

TEST(ArrayIndex, DimensionsAtFirstUseAndReachesElementsAfterwards) {
  static constexpr SQMProgram kPrograms[] = {
      {"a 5 [1 ; a 4 [1 9 = ; a 4 [1", "9"},
      {"a 5 [1 number ; a 2 [1 3 = ; a 2 [1 a 2 [1 +", "6"},
      {"a 5 [1 ; a 5 [1", "error 3210"},
      {"a 5 [1 ; a 1 neg [1", "error 3210"},
      {"a 5 [1 ; a 1 1 [2", "error 3210"},
      {"a 3 [1 7 = ; a 0 [1", "7"},
      {"a 2 3 [2 ; a 1 2 [2 8 = ; a 0 2 [2 5 = ; a 1 2 [2", "8"},
      // index by index: the flat position alone would be inside
      {"a 2 3 [2 ; a 0 3 [2", "error 3210"},
      {"a 1 2 1 2 1 2 [6 ; a 0 1 0 1 0 1 [6 4 = ; a 0 1 0 1 0 1 [6", "4"},
      {"a 1 1 1 1 1 1 1 [7", "error 3210"},
      {"a 1 1 1 1 1 1 1 1 [8", "error 3200"},
      {"s 2 3 9 [3 string ; s 1 2 [2 'text = ; s 1 2 [2", "'text"},
      {"s 1 1 1 1 1 1 9 [7 string ; s 0 0 0 0 0 0 [6 'deep = ; s 0 0 0 0 0 0 [6", "'deep"},
      {"b 3 [1 boolean ; b 1 [1 true = ; b 1 [1", "true"},
      {"a 2 [1 ; b 3 [1 ; b 1 [1 2 = ; a 0 [1 7 = ; a b 0 [1 [1", "7"},
      {"a a 2 [1 [1", "0"},
      {"5 3 [1", "error 3040"},
      {"a u [1", "error 3060"},
      {"a 'x [1", "error 3160"},
      {"a true [1", "error 3160"},
      {"a label ; a 2 [1", "error 3090"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ArrayIndex, RefusesExtentsThatMakeNoArray) {
  for (char const* extents : {"0 [1", "1 neg [1", "3 0 [2", "0.5 [1"}) {
    CQMTestContext context;
    EXPECT_EQ(context.Run(std::string("a ") + extents), "error 3210") << extents;
  }
  for (char const* extents : {"2000000000 [1", "65536 65536 [2", "65536 65536 65536 65536 65536 65536 [6"}) {
    CQMTestContext context;
    EXPECT_EQ(context.Run(std::string("a ") + extents), "error 3230") << extents;
  }
  CQMTestContext context;
  std::string const code = context.Run("a 1E99 [1");
  EXPECT_TRUE(code == "error 3210" || code == "error 3230") << code;
}

TEST(ArrayIndex, GivesEveryIndexExpressionItsOwnElement) {
  static constexpr SQMProgram kPrograms[] = {
      {"a 5 [1 ; a 0 [1 3 = ; a 3 [1 4 = ; a 0 [1 a 3 [1 +", "7"},
      {"a 5 [1 ; a 0 [1 3 = ; a 3 [1 4 = ; a 0 [1 a 3 [1 <=> ; a 0 [1", "4"},
      {"a 5 [1 ; a 0 [1 3 = ; a 3 [1 4 = ; a 0 [1 a 3 [1 <", "true"},
      {"a 5 [1 ; a 3 [1 4 = ; a 0 [1 a 3 [1 = ; a 0 [1", "4"},
      {"a 5 [1 ; a 3 [1 4 = ; a 3 [1 a 3 [1 += ; a 3 [1", "8"},
      {"s 3 9 [2 string ; s 0 [1 'ab = ; s 1 [1 'cd = ; s 0 [1 s 1 [1 <=> ; s 0 [1 s 1 [1 +", "'cdab"},
      {"s 3 9 [2 string ; s 0 [1 'ab = ; s 0 [1 'cd += ; s 0 [1", "'abcd"},
      {"a 4 [1 ; i 1 = ; a i [1 5 = ; i 2 = ; a i [1 6 = ; a 1 [1 a 2 [1 +", "11"},
      // a name that is met twice before it is declared
      {"a 5 [1 a 3 [1 +", "0"},
      {"a 5 [1 a 3 [1 = ; a 4 [1", "0"},
      {"a 5 [1 a 3 [1 1 = +", "1"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ArrayIndex, AppliesBaseAndInversionOfTheContext) {
  CQMTestContext context;
  context.defaultScope = Scope::kGlobal;
  context.arrayBase = 1;
  EXPECT_EQ(context.Run("a 5 [1 ; a 5 [1 9 = ; a 1 [1 8 = ; a 5 [1 a 1 [1 +"), "17");
  EXPECT_EQ(context.Run("a 0 [1"), "error 3210");
  EXPECT_EQ(context.Run("a 6 [1"), "error 3210");
  context.arrayBase = 0;
  context.invertIndices = true;
  EXPECT_EQ(context.Run("m 2 3 [2 ; m 1 2 [2 9 = ; m 1 2 [2"), "9");
  EXPECT_EQ(context.Run("m 2 1 [2"), "error 3210");
  CQMDatum& m = *context.Find('G', "m");
  ASSERT_EQ(m.GetArraySize(), 6);
  EXPECT_EQ(reinterpret_cast<double*>(m.GetValue())[5], 9.0);
  EXPECT_EQ(context.Run("m 0 2 [2 4 = ; m 0 2 [2"), "4");
  EXPECT_EQ(reinterpret_cast<double*>(m.GetValue())[4], 4.0);  // the last index varies slowest
}

TEST(ArrayIndex, KeepsElementsReachableWhenOneBecomesComplex) {
  static constexpr SQMProgram kPrograms[] = {
      {"a 3 [1 ; a 1 [1 1 2 |_ = ; a 1 [1", "1+2i"},
      {"a 3 [1 ; a 0 [1 6 = ; a 2 [1 1 2 |_ = ; a 0 [1", "6+0i"},
      {"a 3 [1 ; a 0 [1 6 = ; a 0 [1 a 2 [1 1 2 |_ = = ; a 0 [1", "1+2i"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ArrayIndex, ShowsAnElementOfAnArrayAsAScalar) {
  CQMTestContext context;
  context.defaultScope = Scope::kGlobal;
  context.Run("a 3 [1");
  auto const element = context.Compile("a 1 [1");
  CQMTestContext::Resolve(*element);
  EXPECT_FALSE(element->GetResultDatum()->IsArray());
  EXPECT_TRUE(context.Find('G', "a")->IsArray());
}

TEST(ArrayIndex, LeavesTheMemoryOfAHostAsItIs) {
  CQMTestContext context;
  double numbers[] = {1.5, 2.5, 3.5};
  static constexpr long kExtents[] = {3};
  double scalar = 4.0;
  auto const link = [&context](char const* name, double* memory, std::span<long const> extents) {
    auto variable = std::make_unique<CQMDatum>();
    variable->SetDatumName(name);
    variable->SetOwnsStorage(false);
    variable->SetDatumType(EQMDataType::Number);
    if (!extents.empty()) variable->SetIsArray(extents);
    variable->SetValuePointer(memory);
    context.AddGlobal(std::move(variable));
  };
  link("a", numbers, kExtents);
  link("x", &scalar, {});
  EXPECT_EQ(context.Run("a 2 [1 a 0 [1 = ; a 2 [1"), "1.5");
  EXPECT_EQ(numbers[2], 1.5);
  EXPECT_EQ(context.Run("a 3 [1"), "error 3210");
  EXPECT_EQ(context.Run("x 2 [1"), "error 3210");
  EXPECT_EQ(context.Run("x 5 ="), "5");
  EXPECT_EQ(scalar, 5.0);
}

}  // namespace
}  // namespace qumel::test
