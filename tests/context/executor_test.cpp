// What a context does inside: its life and that of the process-wide tables, its resolvers, and exhausted
// memory.
#include "context/executor.h"

#include <gtest/gtest.h>

#include <string>

#include "context/variables.h"
#include "engine/expression.h"
#include "engine/resolver.h"
#include "support/failing_allocation.h"

namespace qumel {
namespace {

TEST(Executor, DoesNothingBeforeItIsInitialized) {
  CQMExecutor executor;
  EXPECT_EQ(executor.Evaluate("1+1"), TypeLetter::kNone);
  EXPECT_EQ(executor.GetLastErrorID(), Error::NotInitialized);
  EXPECT_EQ(executor.ParseExpression("1+1"), 0U);
  EXPECT_EQ(executor.GetLastErrorID(), Error::NotInitialized);
  EXPECT_STREQ(executor.AnnotateExpression("1+1"), "");
  EXPECT_STREQ(executor.CheckExpression("1+1"), nullptr);
  EXPECT_EQ(executor.GetErrorText(Error::None), nullptr);
  EXPECT_FALSE(executor.DefineError(Scope::kGlobal, 10001, "text"));
  EXPECT_FALSE(executor.IsSymbol(Scope::kLocal, "pi"));
  EXPECT_TRUE(executor.Initialize());
  EXPECT_TRUE(executor.Initialize());
  EXPECT_EQ(executor.EvaluateToNumber("1+1"), 2.0);
}

TEST(Executor, ParsingSettingsAreFixedByInitialization) {
  CQMExecutor executor;
  executor.SetHierarchical(false);
  executor.SetArrayBase(1);
  ASSERT_TRUE(executor.Initialize());
  executor.SetHierarchical(true);
  executor.SetArrayBase(0);
  executor.SetAllowImpliedMult(false);
  executor.SetRadixMark(RadixMark::kComma);
  executor.SetQuoteMark(QuoteMark::kSingle);
  executor.SetBooleanTrue(BooleanTrue::kMinusOne);
  executor.SetInvertArrayIndices(true);
  SQMSettings const& settings = executor.GetSettings();
  EXPECT_TRUE(settings.allowImpliedMultiplication);
  EXPECT_EQ(settings.radixMark, RadixMark::kPoint);
  EXPECT_EQ(settings.quoteMark, QuoteMark::kDouble);
  EXPECT_EQ(settings.booleanTrue, BooleanTrue::kOne);
  EXPECT_FALSE(settings.invertArrayIndices);
  EXPECT_EQ(executor.GetArrayBase(), 1);
  EXPECT_EQ(executor.EvaluateToNumber("1+2*3"), 9.0);
}

TEST(Executor, TheArrayBaseReachesArraysOfHostsAndExpressions) {
  CQMExecutor executor;
  executor.SetArrayBase(1);
  ASSERT_TRUE(executor.Initialize());
  CQMVariables variables(executor);
  ASSERT_NE(variables.CreateArray<NumberKind>(Scope::kGlobal, "hosts", {1, {3, -1, -1, -1, -1, -1}}), 0U);
  EXPECT_EQ(executor.EvaluateToNumber("global made[3]; made[1] = 7; made[3] = 9"), 9.0);
  for (char const* name : {"hosts", "made"}) {
    SCOPED_TRACE(name);
    for (long const index : {1L, 3L}) {
      SQMIndices const element{1, {index, -1, -1, -1, -1, -1}};
      EXPECT_TRUE(variables.SetElement<NumberAccess>(Scope::kGlobal, name, 10.0 * static_cast<double>(index),
                                                     element));
      std::string const read = std::string(name) + "[" + std::to_string(index) + "]";
      EXPECT_EQ(executor.EvaluateToNumber(read.c_str()), 10.0 * static_cast<double>(index));
    }
    for (long const index : {0L, 4L}) {
      SQMIndices const element{1, {index, -1, -1, -1, -1, -1}};
      EXPECT_FALSE(variables.SetElement<NumberAccess>(Scope::kGlobal, name, 5.0, element));
      executor.EvaluateToNumber((std::string(name) + "[" + std::to_string(index) + "]").c_str());
      EXPECT_EQ(executor.GetLastErrorID(), Error::IndexOutOfBounds);
      executor.ClearLastError();
    }
  }
}

TEST(Executor, TheLastContextTakesTheSharedTablesWithIt) {
  ASSERT_EQ(CQMExecutor::sm_lExecutorCount, 0);
  {
    CQMExecutor first;
    EXPECT_EQ(CQMExecutor::GetCosmicOperatorList(), nullptr);
    ASSERT_TRUE(first.Initialize());
    CQMOperatorList const* const list = CQMExecutor::GetCosmicOperatorList();
    ASSERT_NE(list, nullptr);
    CQMExecutor second;
    ASSERT_TRUE(second.Initialize());
    EXPECT_EQ(CQMExecutor::GetCosmicOperatorList(), list);
    EXPECT_TRUE(first.DefineError(Scope::kCosmic, 10001, "shared"));
    EXPECT_STREQ(second.GetErrorText(10001), "shared");
    EXPECT_EQ(CQMExecutor::sm_lExecutorCount, 2);
  }
  EXPECT_EQ(CQMExecutor::GetCosmicOperatorList(), nullptr);
  EXPECT_EQ(CQMExecutor::sm_pCosmicSymTab, nullptr);
  EXPECT_EQ(CQMExecutor::sm_pCosmicErrTab, nullptr);
  CQMExecutor again;
  ASSERT_TRUE(again.Initialize());
  EXPECT_STREQ(again.GetErrorText(10001), "Unknown error");
  EXPECT_EQ(again.EvaluateToNumber("2*pi+1"), 7.283185307179586);
}

TEST(Executor, MakesOneResolverOfEachKind) {
  CQMExecutor executor;
  ASSERT_TRUE(executor.Initialize());
  CQMResolver* const optimized = executor.GetResolver(EQMResolverClass::RealOptimized);
  CQMResolver* const baseline = executor.GetResolver(EQMResolverClass::RealBaseline);
  CQMResolver* const complex = executor.GetResolver(EQMResolverClass::Complex);
  EXPECT_NE(dynamic_cast<CQMRealOptimizedResolver*>(optimized), nullptr);
  EXPECT_NE(dynamic_cast<CQMRealBaselineResolver*>(baseline), nullptr);
  EXPECT_NE(dynamic_cast<CQMComplexBaselineResolver*>(complex), nullptr);
  EXPECT_EQ(executor.GetChildCount(), 3);
  for (long const kind : {0L, 1L, 3L, 7L, -1L}) {
    EXPECT_EQ(executor.GetResolver(static_cast<EQMResolverClass>(kind)), optimized);
  }
  EXPECT_EQ(executor.GetResolver(EQMResolverClass::RealBaseline), baseline);
  for (EQMResolverClass const kind :
       {EQMResolverClass::Complex, EQMResolverClass::Complex5, EQMResolverClass::Complex6}) {
    EXPECT_EQ(executor.GetResolver(kind), complex);
  }
  EXPECT_EQ(executor.GetChildCount(), 3);
}

TEST(Executor, ParsedTextOfAnExpression) {
  CQMExecutor executor;
  ASSERT_TRUE(executor.Initialize());
  auto* const expression = ObjectFromHandle<CQMExpression>(executor.ParseExpression("1+2"));
  ASSERT_NE(expression, nullptr);
  EXPECT_STREQ(executor.GetParsedExpression(expression), "#d1#d2!1101.2;");
  EXPECT_STREQ(executor.GetParsedExpression(nullptr), "");
  EXPECT_EQ(executor.GetLastErrorID(), Error::NotFound);

  std::string sum = "1";
  for (int i = 0; i < 100; ++i) sum += "+1";
  auto* const longer = ObjectFromHandle<CQMExpression>(executor.ParseExpression(sum.c_str()));
  CQMExecutor fresh;  // without the room that a conversion left
  ASSERT_TRUE(fresh.Initialize());
  {
    testing::FailingAllocation const failing;
    fresh.GetParsedExpression(longer);
  }
  EXPECT_EQ(fresh.GetLastErrorID(), Error::OutOfMemory);
  EXPECT_EQ(fresh.GetParsedExpression(longer), longer->GetItems().GetPostfix());
}

}  // namespace
}  // namespace qumel
