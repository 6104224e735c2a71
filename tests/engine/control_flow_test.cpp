// Of blocks, loops and selections what does not show outside, or needs postfix text of its own.
#include <gtest/gtest.h>

#include "program_runner.h"

namespace qumel::test {
namespace {

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

TEST(ControlFlow, LeavesWithoutAValue) {
  static constexpr SQMProgram kPrograms[] = {{"x 1 = ; exit ; x 2 =", "none"}, {"return", "error 3190"}};
  ExpectOutcomes(kPrograms);
}

TEST(ControlFlow, SetsTheErrorState) {
  CQMTestContext context;
  auto const fails = context.Compile("3110 seterror");
  CQMTestContext::Resolve(*fails);
  EXPECT_EQ(fails->GetErrorState(), 3110);
}

}  // namespace
}  // namespace qumel::test
