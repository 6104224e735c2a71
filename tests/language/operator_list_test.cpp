// Operator lists: the standard rows, host rows beside them, and reading while another thread changes them.
#include "language/operator_list.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>

#include "base/operator_ids.h"
#include "language/dialect.h"

namespace qumel {
namespace {

struct SQMMasks {
  long id;
  int left, right;
  bool enclose;
};

TEST(OperatorList, MasksOfTheStandardDialect) {
  static constexpr SQMMasks kWithout[] = {
      {OpId::True, 49, 41, false},
      {OpId::ArrayIndex, 202, 118, false},
      {OpId::PreIncrement, 53, 118, false},
      {OpId::PostIncrement, 74, 121, false},
      {OpId::TightMinus, 53, 2, false},
      {OpId::TightNotWord, 53, 2, true},
      {OpId::LooseNotWord, 53, 244, true},
      {OpId::Sine, 53, 118, true},
      {OpId::Assign, 10, 118, false},
      {OpId::Append, 202, 118, false},
      {OpId::GlobalScope, 255, 255, false},
      {OpId::NumberWord, 53, 118, false},
      {OpId::If, 255, 118, false},
      {OpId::Unless, 255, 118, true},
      {OpId::Precision, 255, 118, false},
      {OpId::Then, 255, 255, false},
      {OpId::Pi, 53, 41, false},
      {OpId::LastResult, 53, 41, false},
  };
  static constexpr SQMMasks kWith[] = {
      {OpId::Sine, 63, 118, true},        {OpId::TightNotWord, 53, 2, true},
      {OpId::NumberWord, 53, 118, false}, {OpId::Pi, 53, 43, false},
      {OpId::LastResult, 53, 43, false},  {OpId::True, 49, 41, false},
      {OpId::TightMinus, 53, 2, false},   {OpId::ImpliedMultiplication, 202, 118, false},
  };
  auto const check = [](bool multiplies, std::span<SQMMasks const> rows) {
    CQMDialect dialect({.impliedMultiplication = multiplies});
    for (auto const& [id, left, right, enclose] : rows) {
      CQMOpInfo info;
      ASSERT_TRUE(dialect.fixer.FindOperatorByID(id, info)) << id;
      EXPECT_EQ(info.leftContext, left) << id;
      EXPECT_EQ(info.rightContext, right) << id;
      EXPECT_EQ(info.enclose, enclose) << id;
    }
    EXPECT_EQ(dialect.own.HasToken("_*"), multiplies);
  };
  check(false, kWithout);
  check(true, kWith);
}

TEST(OperatorList, PrecedenceFollowsTheHierarchy) {
  CQMDialect dialect({.hierarchical = false});
  long const id = dialect.Define(dialect.own, {"twice", EQMFix::Prefix, 1});
  for (long const found :
       {static_cast<long>(OpId::Power), static_cast<long>(OpId::If), static_cast<long>(OpId::Pi), id}) {
    CQMOpInfo info;
    ASSERT_TRUE(dialect.fixer.FindOperatorByID(found, info));
    EXPECT_EQ(info.precedence, 1U) << found;
  }
}

TEST(OperatorList, LetterRuleOfTheSharedListOnly) {
  CQMDialect dialect;
  struct {
    CQMOperatorList& list;
    SQMHostOperator op;
    int left;
    bool enclose;
  } const cases[] = {
      {dialect.shared, {"word", EQMFix::Prefix, 1}, 63, true},
      {dialect.shared, {"word2", EQMFix::Prefix, 1}, 53, false},
      {dialect.shared, {"tail", EQMFix::Postfix, 1}, 74, false},
      {dialect.own, {"word", EQMFix::Prefix, 1}, 53, false},
  };
  for (auto const& [list, op, left, enclose] : cases) {
    CQMOpInfoRef const row = list.FindById(dialect.Define(list, op));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->leftContext, left) << op.token;
    EXPECT_EQ(row->enclose, enclose) << op.token;
  }
  // the context that loaded the list decides, not the one that defines
  auto info = std::make_unique<CQMOpInfo>("later");
  info->id = OpId::FirstExternal + 99;
  info->fix = EQMFix::Prefix;
  dialect.shared.Load(std::move(info));
  EXPECT_EQ(dialect.shared.FindByToken("later")->leftContext, 63);
}

TEST(OperatorList, RowsOfOneTokenKeepTheirOrder) {
  CQMDialect dialect;
  SQMTokenRows const rows = dialect.shared.Find("-");
  ASSERT_EQ(rows.Count(), 3U);
  EXPECT_EQ(rows.standard[0]->id, OpId::TightMinus);
  EXPECT_EQ(rows.standard[1]->id, OpId::LooseMinus);
  EXPECT_EQ(rows.standard[2]->id, OpId::Subtraction);
  EXPECT_EQ(dialect.shared.FindByToken("-")->id, OpId::TightMinus);
  EXPECT_EQ(dialect.shared.FindByToken("pi"), nullptr);
}

TEST(OperatorList, OperatorsOfHostsFollowAPlainMap) {
  CQMDialect dialect;
  CQMOperatorList* const lists[] = {&dialect.shared, &dialect.own};
  std::map<std::string, CQMOpInfoRef> models[2];
  std::mt19937 random(6);
  for (int step = 0; step < 5000; ++step) {
    unsigned const l = random() % 2;
    CQMOperatorList& list = *lists[l];
    std::string const token = std::string(random() % 2 * 10, 'o') + std::to_string(random() % 20);
    auto const known = models[l].find(token);
    if (random() % 2 == 0) {
      auto info = std::make_unique<CQMOpInfo>(token);
      long const id = info->id = OpId::FirstExternal + step;
      ASSERT_EQ(list.Load(std::move(info)), known == models[l].end()) << "of one token a host has one row";
      if (known == models[l].end()) models[l][token] = list.FindById(id);
    } else {
      ASSERT_EQ(list.DeleteDefined(token), known != models[l].end() ? Error::None : Error::NotFound);
      if (known != models[l].end()) {
        ASSERT_EQ(known->second->token, token) << "a descriptor stays while it is held";
        ASSERT_EQ(list.FindById(known->second->id), nullptr);
        models[l].erase(known);
      }
    }
    for (auto const& [name, info] : models[l]) {
      ASSERT_EQ(list.FindByToken(name), info);
      ASSERT_EQ(list.FindById(info->id), info);
    }
    ASSERT_EQ(list.HasToken(token), models[l].contains(token));
  }
  EXPECT_EQ(dialect.shared.DeleteDefined("sin"), Error::DeleteNotAllowed);
  EXPECT_EQ(dialect.shared.DeleteDefined("unheard"), Error::NotFound);
  dialect.Define(dialect.shared, {"pi", EQMFix::Prefix, 1});  // standard in each context's own list
  EXPECT_EQ(dialect.shared.DeleteDefined("pi"), Error::None);
}

TEST(OperatorList, ThreadsConvertWhileAnotherDefines) {
  CQMDialect dialect;
  std::atomic<bool> done{false};
  std::thread definer([&] {
    for (int i = 0; i < 300; ++i) {
      dialect.Define(dialect.shared, {"twice", EQMFix::Prefix, 1});
      dialect.shared.DeleteDefined("twice");
    }
    done = true;
  });
  CQMPostFixer fixer;
  fixer.SetOperatorLists(&dialect.shared, &dialect.own);
  CQMItemList items;
  while (!done) {
    ASSERT_EQ(fixer.ConvertExpression("1 + twice x * 2", items), Error::None);
    ASSERT_TRUE(items.GetPostfix().starts_with("#d1")) << items.GetPostfix();
  }
  definer.join();
}

}  // namespace
}  // namespace qumel
