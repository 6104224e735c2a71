// Blocks, loops, selections and jumps: how they are linked and what they do.
#include <gtest/gtest.h>

#include "program_runner.h"

namespace qumel::test {
namespace {

std::string Repeat(std::string const& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

TEST(ControlFlow, BranchesAndLoops) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 0 = ; true if then x 1 = ; else x 2 = ; end ; x return", "1"},
      {"x 0 = ; true unless then x 1 = ; else x 2 = ; end ; x return", "2"},
      {"x 0 = ; 2 1 < if then x 1 = ; end ; x return", "0"},
      {"x 0 = ; 2 1 < unless then x 1 = ; end ; x return", "1"},
      {"x 0 = ; while x 5 < do x 1 += ; next ; x return", "5"},
      {"x 9 = ; while x 5 < do x 1 += ; next ; x return", "9"},
      {"x 9 = ; until 5 x < do x 1 += ; next ; x return", "10"},  // the body runs before the condition counts
      {"x 0 = ; until 5 x < do x 1 += ; next ; x return", "6"},
      {"x 0 = ; always do x 1 += ; 4 x < if then break ; end ; next ; x return", "5"},
      {"x 0 = ; n 0 = ; while x 9 < do x 1 += ; x 5 < if then continue ; end ; n 1 += ; next ; n return",
       "5"},
      // continue goes to the opener, so until runs its body once more untested
      {"x 0 = ; n 0 = ; until 2 x < do x 1 += ; x 3 == if then continue ; end ; n 1 += ; next ; n return",
       "3"},
      {"n 0 = ; i 0 = ; while i 3 < do j 0 = ; while j 4 < do j 2 == if then break ; end ; n 1 += ; j 1 += ; "
       "next ; "
       "i 1 += ; next ; n return",
       "6"},
      {"i 0 = ; while i 5 < do i 1 += ; i select 3 case break ; end ; next ; i return",
       "5"},  // leaves the select only
      {"i 0 = ; n 0 = ; while i 5 < do i 1 += ; i select 3 case continue ; end ; n 1 += ; next ; n return",
       "4"},
      {"i 0 = ; while i 100000 < do i 1 += ; next ; i return", "100000"},
      // what is open at the end of the text runs to the end
      {"true if then x 3 =", "3"},
      {"x 0 = ; 2 1 < if then x 3 =", "0"},
      {"x 0 = ; while x 5 < do x 1 +=", "1"},
      {"1 select 1 case x 7 =", "7"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ControlFlow, Selects) {
  // x is what was selected: 1 and 2 by the cases, 9 by the default
  std::string const defaultLast =
      "x select ; 1 case n 1 += ; break ; 2 case n 2 += ; break ; default n 9 += ; end ; n return";
  std::string const defaultFirst =
      "x select ; default n 9 += ; break ; 1 case n 1 += ; break ; 2 case n 2 += ; end ; n return";
  std::string const defaultAmid =
      "x select ; 1 case n 1 += ; break ; default n 9 += ; break ; 2 case n 2 += ; end ; n return";
  std::string const fallThrough =
      "x select ; 1 case n 1 += ; 2 case n 2 += ; default n 9 += ; end ; n return";
  std::string const fallsFromDefault =
      "x select ; default n 9 += ; 1 case n 1 += ; break ; 2 case n 2 += ; end ; n return";
  std::string const otherwiseFirst =
      "x when ; otherwise n 9 += ; break ; 1 is n 1 += ; break ; 2 is n 2 += ; end ; n return";
  std::string const otherwiseLast =
      "x when ; 1 is n 1 += ; break ; 2 is n 2 += ; break ; otherwise n 9 += ; end ; n return";
  std::string const computed =
      "x select ; 0 1 + case n 1 += ; break ; 1 0 + 1 + case n 2 += ; break ; default n 9 += ; end ; n "
      "return";
  std::string const assigning =
      "x select ; k 1 = case n k += ; break ; k k 1 + = case n k += ; break ; default n 9 += ; end ; n "
      "return";
  struct SQMSelection {
    std::string const& text;
    char const* one;
    char const* two;
    char const* three;
  };
  SQMSelection const selections[] = {
      {defaultLast, "1", "2", "9"},   {defaultFirst, "1", "2", "9"},      {defaultAmid, "1", "2", "9"},
      {fallThrough, "12", "11", "9"}, {fallsFromDefault, "1", "2", "10"}, {otherwiseFirst, "1", "2", "0"},
      {otherwiseLast, "1", "2", "9"}, {computed, "1", "2", "9"},          {assigning, "1", "2", "9"},
  };
  for (SQMSelection const& selection : selections) {
    char const* const outcomes[] = {selection.one, selection.two, selection.three};
    for (int x = 1; x <= 3; ++x) {
      CQMTestContext context;
      EXPECT_EQ(context.Run("n 0 = ; x " + std::to_string(x) + " = ; " + selection.text), outcomes[x - 1])
          << x << ": " << selection.text;
    }
  }
  static constexpr SQMProgram kPrograms[] = {
      {"n 0 = ; 'b select ; 'a case n 1 = ; break ; 'b case n 2 = ; end ; n return", "2"},
      {"n 0 = ; 'b select ; 5 case n 1 = ; break ; default n 2 = ; end ; n return", "2"},
      {"n 0 = ; 1 2 |_ select ; 1 case n 1 = ; break ; 1 2 |_ case n 2 = ; end ; n return", "2"},
      {"n 0 = ; 5 select ; default n 1 += ; end ; n return", "1"},
      {"n 0 = ; 5 select ; end ; n return", "0"},
      {"n 0 = ; 1 select ; 1 case 2 select ; 2 case n 1 += ; break ; end ; n 2 += ; break ; 2 case n 8 = ; "
       "end ; n return",
       "3"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ControlFlow, JumpsToLabels) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 0 = ; a goto ; x 1 = ; a label ; x return", "0"},
      {"x 0 = ; a label ; x 1 += ; x 5 < if then a goto ; end ; x return", "5"},
      {"x 0 = ; always do x 1 += ; x 3 == if then out goto ; end ; next ; x 9 = ; out label ; x return", "3"},
      {"x 0 = ; in goto ; true if then x 1 = ; in label ; x 2 += ; end ; x return", "2"},
      {"x 0 = ; a goto ; x 1 += ; a label ; x 2 += ; 9 x < if then 1 else b goto ; end ; a label ; x 4 += ; "
       "b label ; x return",
       "2"},
      {"x 0 = ; nowhere goto ; x return", "error 3270"},
      {"x 0 = ; x goto", "error 3270"},
      {"x 0 = ; x label ; x goto", "error 3270"},
      {"5 goto", "error 3270"},
      {"a goto ; A label", "error 3270"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ControlFlow, ReturnsAndExits) {
  static constexpr SQMProgram kPrograms[] = {
      {"x 1 = ; x 2 + return ; x 9 =", "3"},
      {"'text return ; 5 5 +", "'text"},
      {"true return ; 5 5 +", "true"},
      {"1 2 |_ return ; 5 5 +", "1+2i"},
      {"4 neg sqrt return ; 5 5 +", "0+2i"},  // complex only when it ran
      {"a 3 [1 ; a 2 [1 7 = ; a 2 [1 return ; 1 1 +", "7"},
      {"x 1 = ; exit ; x 2 =", "none"},
      {"u return", "error 3060"},
      {"return", "error 3190"},
  };
  ExpectOutcomes(kPrograms);
  CQMTestContext context;
  std::string const text(600, 'y');
  EXPECT_EQ(context.Run("'" + text + " return ; 1 1 +"), "'" + text);
}

TEST(ControlFlow, SetsAndClearsTheErrorState) {
  static constexpr SQMProgram kPrograms[] = {
      {"0 seterror ; 1 1 +", "2"},           {"3110 seterror ; 1 1 +", "error 3110"},
      {"77.9 seterror ; 1 1 +", "error 77"}, {"clearerror ; 1 1 +", "2"},
      {"'a seterror", "error 3160"},         {"true seterror", "error 3160"},
  };
  ExpectOutcomes(kPrograms);
  CQMTestContext context;
  auto const fails = context.Compile("3110 seterror");
  CQMTestContext::Resolve(*fails);
  EXPECT_EQ(fails->GetErrorState(), 3110);
}

TEST(ControlFlow, AsksForConditions) {
  static constexpr SQMProgram kPrograms[] = {
      {"1 if then end", "error 3170"},   {"'a unless then end", "error 3170"},
      {"while 1 do next", "error 3170"}, {"u if then end", "error 3060"},
      {"if then end", "error 3190"},     {"while do next", "error 3190"},
      {"u select ; end", "error 3060"},  {"1 select ; u case end", "error 3060"},
  };
  ExpectOutcomes(kPrograms);
}

TEST(ControlFlow, TakesBytesThatAreNoTruthValuesForNeither) {
  CQMTestContext context;
  std::uint8_t odd = 2;
  auto linked = std::make_unique<CQMDatum>(EQMDataType::Boolean, "b");
  linked->SetValuePointer(&odd);
  linked->SetOwnsStorage(false);
  context.AddGlobal(std::move(linked));
  EXPECT_EQ(context.Run("x 0 = ; b if then x 1 = ; end ; x return"), "0");
  EXPECT_EQ(context.Run("x 0 = ; b unless then x 1 = ; end ; x return"), "0");
  EXPECT_EQ(context.Run("x 0 = ; while b do x 1 = ; next ; x return"), "0");
}

TEST(ControlFlow, RunsAgainAsTheFirstTime) {
  CQMTestContext context;
  auto const program = context.Compile(
      "n 0 = ; i 0 = ; until 2 i < do i select ; default n 9 += ; break ; 1 case n 1 += ; end ; i 1 += ; "
      "next ; n return");
  std::string const first = CQMTestContext::Resolve(*program);
  EXPECT_EQ(first, "19");
  EXPECT_EQ(CQMTestContext::Resolve(*program), first);
}

TEST(Linking, RefusesFaultsOfStructure) {
  for (char const* program : {
           "then",
           "else",
           "end",
           "next",
           "true do",
           "break",
           "continue",
           "1 case",
           "default",
           "otherwise",
           "1 is",
           "true if then next",
           "true if else end",
           "true if then then end",
           "true if end",
           "true if",
           "while true do end",
           "while next",
           "always next",
           "true if then break ; end",
           "1 select 1 case continue ; end",
           "1 select default default end",
           "1 select 1 case next",
           "1 select then end",
           "true if then 1 case end",
           "1 select true do end",
           "while true do true if then next end",
           "always do next next",
           "true if then end end",
       }) {
    CQMTestContext context;
    EXPECT_EQ(context.Run(program), "error 3130") << program;
  }
}

TEST(Linking, NestsThirtyTwoBlocksDeep) {
  struct SQMNest {
    char const* open;
    char const* close;
  };
  static constexpr SQMNest kNests[] = {
      {"true if then ", "end "},   {"2 1 < unless then ", "end "}, {"always do ", "break ; next "},
      {"until true do ", "next "}, {"1 select 1 case ", "end "},
  };
  for (SQMNest const& nest : kNests) {
    for (int depth : {32, 33}) {
      CQMTestContext context;
      std::string const program =
          "n 0 = ; " + Repeat(nest.open, depth) + "n 1 += ; " + Repeat(nest.close, depth) + "n 0 +";
      EXPECT_EQ(context.Run(program), depth == 32 ? "1" : "error 3130") << nest.open << depth;
    }
  }
  // one after another, any number
  CQMTestContext context;
  EXPECT_EQ(context.Run("n 0 = ; " + Repeat("true if then n 1 += ; end ", 100) + "n 0 +"), "100");
}

}  // namespace
}  // namespace qumel::test
