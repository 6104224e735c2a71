// Assignment, compound assignment, exchange and declarations.
#include <gtest/gtest.h>

#include "program_runner.h"

namespace qumel::test {
namespace {

TEST(Assignment, GivesNewNamesTheTypeOfTheValue) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 5 = ; x return", "5"},
      {"s 'abc = ; s return", "'abc"},
      {"b true = ; b return", "true"},
      {"z 1 2 |_ = ; z return", "1+2i"},
      {"x 5 =", "5"},
      {"x y 3 = = ; x y +", "6"},
      {"s 'a 'b + = ; s return", "'ab"},
      {"x x 5 = 1 + = ; x return", "6"},
      {"s t 'ab = 'c + = ; s return", "'abc"},
      {"x 4 = ; x x = ; x return", "4"},
      {"s 'same = ; s s = ; s return", "'same"},
      {"x", "none"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(Assignment, RefusesWhatIsNoTargetOrNoValue) {
  static constexpr SQMProgram kPrograms[] = {
      {"5 3 =", "error 3040"},
      {"'a 'b =", "error 3040"},
      {"pi 3 =", "error 3050"},
      {"x y =", "error 3060"},
      {"x x =", "error 3060"},
      {"3 =", "error 3060"},
      {"x 1 = ; x 'a =", "error 3090"},
      {"x 1 = ; x true =", "error 3090"},
      {"s 'a = ; s 1 =", "error 3090"},
      {"b true = ; b 1 =", "error 3090"},
      // a result is a place as good as any other, and forgotten afterwards
      {"x 3 = 4 = ; x return", "3"},
      // a label is neither
      {"a label ; a 5 =", "error 3040"},
      {"a label ; x a =", "error 3090"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(Assignment, CutsTextsToTheBufferOfTheVariable) {
  static constexpr SQMProgram kPrograms[] = {
      {"s 5 [1 string ; s 'abcdefgh = ; s return", "'abcd"},
      {"s 5 [1 string ; s 'abcdefgh =", "'abcdefgh"},
      {"s 3 9 [2 string ; s 1 [1 'abcdefghij = ; s 1 [1", "'abcdefgh"},
  };
  ExpectOutcomes(kPrograms);
  CQMTestContext context;
  std::string const text(700, 'x');
  EXPECT_EQ(context.Run("s 900 [1 string ; s '" + text + " = ; s return"), "'" + text);
  EXPECT_EQ(context.Run("s '" + text + " = ; s return"), "'" + text.substr(0, kDefaultStringSize - 1));
}

TEST(Assignment, PromotesVariablesToComplex) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 5 = ; x 1 2 |_ = ; x return", "1+2i"},
      {"z 1 2 |_ = ; z 7 = ; z return", "7+0i"},
      {"z 1 2 |_ = ; x 7 = ; x return", "7"},
      {"x 1 = ; x 4 neg sqrt = ; x return", "0+2i"},
      {"x 1 = ; x 1 2 |_ += ; x return", "2+2i"},
      {"x 3 4 |_ = ; x 0 1 |_ *= ; x return", "-4+3i"},
      {"x 3 4 |_ = ; x 0 1 |_ /= ; x return", "4-3i"},
      {"x 7 4 |_ = ; x 4 1 |_ %= ; x return", "3+0i"},
      {"x 7 4 |_ = ; x 0 0 |_ /=", "error 3110"},
      {"x 7 4 |_ = ; y 1 0 |_ = ; x y <=> ; y return", "7+4i"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(Assignment, ClearsTheImaginaryPartOfVariablesThatBecameComplexElsewhere) {
  CQMTestContext context;
  context.defaultScope = Scope::kGlobal;
  context.Run("x 1 =");
  auto const store = context.Compile("x 7 =");
  EXPECT_EQ(context.Run("x 1 2 |_ = ; x return"), "1+2i");
  EXPECT_EQ(CQMTestContext::Resolve(*store), "7+0i");
  EXPECT_EQ(context.Run("x"), "7+0i");
}

TEST(CompoundAssignment, ComputesWithTheTarget) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 7 = ; x 2 += ; x return", "9"},
      {"x 7 = ; x 2 -= ; x return", "5"},
      {"x 7 = ; x 2 *= ; x return", "14"},
      {"x 7 = ; x 2 /= ; x return", "3.5"},
      {"x 7.9 = ; x 2.5 %= ; x return", "1"},
      {"x 7 neg = ; x 3 %= ; x return", "-1"},
      {"x 2147483647 neg = ; x 1 neg %= ; x return", "0"},
      {"x 2147483648 neg = ; x 1 neg %=", "error 3110"},
      {"x 2147483648 neg 5 |_ = ; x 1 neg %=", "error 3110"},
      {"x 1 = ; x y 3 = += ; x return", "4"},
      {"x 1 = ; x x += ; x return", "2"},
      {"x 8 = ; x 0 /=", "error 3110"},
      {"x 8 = ; x 0.5 %=", "error 3110"},
      {"s 'ab = ; s 'cd += ; s return", "'abcd"},
      {"u 1 +=", "error 3060"},
      {"u 'a +=", "error 3060"},
      {"x 1 = ; x u +=", "error 3060"},
      {"5 1 +=", "error 3040"},
      {"s 'ab = ; s 1 +=", "error 3160"},
      {"s 'ab = ; s 'cd -=", "error 3160"},
      {"b true = ; b 1 +=", "error 3160"},
      {"x 1 = ; x true +=", "error 3160"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(CompoundAssignment, LeavesTheTargetWhenTheDivisorIsZero) {
  for (char const* program : {"x 0 /=", "x 0 %=", "x 0 0 |_ /="}) {
    CQMTestContext context;
    context.defaultScope = Scope::kGlobal;
    context.Run("x 8 =");
    EXPECT_EQ(context.Run(program), "error 3110");
    EXPECT_EQ(context.Run("x"), "8") << program;
  }
}

TEST(Exchange, SwapsValuesOfOneType) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 1 = ; y 2 = ; x y <=> ; x return", "2"},
      {"x 1 = ; y 2 = ; x y <=> ; y return", "1"},
      {"x 1 = ; y 2 = ; x y <=>", "2"},
      {"s 'ab = ; t 'cde = ; s t <=>", "'cde"},
      {"s 'ab = ; t 'cde = ; t s <=>", "'ab"},
      {"b true = ; c 2 1 < = ; b c <=>", "false"},
      {"b true = ; c 2 1 < = ; c b <=>", "true"},
      {"s 3 [1 string ; s 'ab = ; t 'long = ; s t <=> ; s return", "'lo"},
      {"s 3 [1 string ; s 'ab = ; t 'long = ; s t <=> ; t return", "'ab"},
      {"b true = ; c 1 2 < = ; d 2 1 < = ; b d <=> ; b return", "false"},
      {"y 2 = ; x y <=> ; x return", "2"},
      {"x 1 = ; x y <=>", "error 3060"},
      {"x 1 = ; x 5 <=>", "error 3040"},
      {"x 1 = ; 5 x <=>", "error 3040"},
      {"x 1 = ; y 'a = ; x y <=>", "error 3090"},
      {"x 1 = ; complex y number ; x y <=>", "error 3090"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(Declaration, TypesNames) {
  static constexpr SQMProgram kPrograms[] = {
      {"x number ; x return", "0"},
      {"s string ; s return", "'"},
      {"b boolean ; b return", "false"},
      {"complex z number ; z return", "0+0i"},
      {"x number 5 = ; x return", "5"},
      {"s string 5 =", "error 3090"},
      {"x 5 = ; x string ; x return", "5"},
      // the word serves its own statement only
      {"complex ; x number ; x return", "0"},
      {"complex z number ; y number ; y return", "0"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(Declaration, LeavesNamesThatOthersLeftWithoutAType) {
  for (EQMDataType const type : {EQMDataType::Untyped, EQMDataType::Undefined}) {
    for (char const* word : {"number", "string", "boolean"}) {
      CQMTestContext context;
      context.AddGlobal(std::make_unique<CQMDatum>(type, "u"));
      EXPECT_EQ(context.Run(std::string("u ") + word), "error 3060") << word;
      EXPECT_EQ(context.Find(Scope::kGlobal, "u")->GetType(), type) << word;
    }
  }
}

TEST(Declaration, PlacesNamesByScope) {
  struct SQMPlacement {
    char const* program;
    char defaultScope;
    char const* global;
    char const* cosmic;
  };
  static constexpr SQMPlacement kPlacements[] = {
      {"x 5 =", 'L', "none", "none"},
      {"x 5 =", 'G', "5", "none"},
      {"x 5 =", 'C', "none", "5"},
      {"local x 5 =", 'G', "none", "none"},
      {"global x 5 =", 'L', "5", "none"},
      {"cosmic x number 5 =", 'G', "none", "5"},
      {"global complex x number", 'L', "0+0i", "none"},
      {"global y 1 = ; x 5 =", 'L', "none", "none"},
      {"global x y 2 = =", 'L', "none", "none"},  // the inner name comes first
      {"global ; x 5 =", 'L', "none", "none"},
      // a branch that never runs declares all the same
      {"1 2 < if then else global x 5 = ; end", 'L', "0", "none"},
  };
  for (SQMPlacement const& placement : kPlacements) {
    CQMTestContext context;
    context.defaultScope = placement.defaultScope;
    context.Run(placement.program);
    EXPECT_EQ(CQMTestContext::Describe(context.Find('G', "x")), placement.global) << placement.program;
    EXPECT_EQ(CQMTestContext::Describe(context.Find('C', "x")), placement.cosmic) << placement.program;
  }
}

}  // namespace
}  // namespace qumel::test
