// What a parsed expression keeps of the operators that hosts define: it goes on with the definitions that it
// was parsed with, whatever is deleted or defined anew.
#include <atomic>
#include <string>
#include <vector>

#include "api/interface_test.h"
#include "support/failing_allocation.h"

namespace qumel::testing {

namespace {

/** An operator of numbers, made in one step or, where it awaits its body, in two. */
struct Definition {
  char const* name;
  char const* body;
  bool awaits = true;
};

class KeptDefinitions : public InterfaceTest {
 protected:
  static void Declare(Definition const& d, char scope = 'G') {
    ASSERT_EQ(
        qmDefineExpOp(scope, d.name, "prefix", "number", "number n", nullptr, d.awaits ? nullptr : d.body),
        kNone)
        << d.name;
  }
  static void GiveBody(Definition const& d, char scope = 'G') {
    if (!d.awaits) return;
    ASSERT_EQ(qmDefineExpOpStr(scope, d.name, d.body), kNone) << d.name;
  }
  static void Delete(Definition const& d, char scope = 'G') {
    ASSERT_EQ(qmDeleteOp(scope, d.name), kNone) << d.name;
  }
  static void ExpectTwice(Handle handle, double value) {
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(qmEvalExpHndlToNum(handle), value);
      EXPECT_EQ(qmGetLastErrorID(), kNone);
    }
  }
};

Definition const kFactorial{"fact", "if (n <= 1) then return 1; end return (n * fact(n - 1))"};
Definition const kIsEven{"iseven", "if (n == 0) then return 1; end return (isodd(n - 1))"};
Definition const kIsOdd{"isodd", "if (n == 0) then return 0; end return (iseven(n - 1))"};

struct Case {
  char const* name;
  std::vector<Definition> definitions;
  char const* expression;
  double value;
};

Case const kCases[] = {
    {"recursion", {kFactorial}, "fact 5", 120},
    {"two in an expression", {kFactorial}, "fact 3 + fact(2 + 2)", 30},
    {"in a loop", {kFactorial}, "s = 0; i = 0; while i < 4 do i = i + 1; s = s + fact i; next return s", 33},
    {"in a body", {kFactorial, {"twice", "2 * fact n", false}}, "twice 4", 48},
    {"in a body of a body",
     {kFactorial, {"twice", "2 * fact n", false}, {"thrice", "twice n + fact n", false}},
     "thrice 3",
     18},
    {"each other", {kIsEven, kIsOdd}, "iseven 7 + 10 * isodd 7", 10},
    {"another after all", {kIsEven, kIsOdd, {"ask", "isodd n + iseven n"}}, "ask 9", 1},
};

TEST_F(KeptDefinitions, OutliveTheirDeletion) {
  for (Case const& c : kCases) {
    for (char const scope : {'G', 'C'}) {
      SCOPED_TRACE(std::string(c.name) + ' ' + scope);
      for (Definition const& d : c.definitions) Declare(d, scope);
      for (Definition const& d : c.definitions) GiveBody(d, scope);
      Handle const unused = qmParseExp(c.expression);
      Handle const used = qmParseExp(c.expression);
      ExpectTwice(used, c.value);
      for (Definition const& d : c.definitions) Delete(d, scope);
      ExpectTwice(used, c.value);
      ExpectTwice(unused, c.value);
      EXPECT_EQ(qmParseExp(c.expression), 0U) << "no new text reaches them";

      for (Definition const& d : c.definitions) Declare({d.name, "n + 1000", false}, scope);
      ExpectTwice(used, c.value);
      ExpectTwice(unused, c.value);
      EXPECT_GT(qmEvalExpStrToNum(c.expression), 900.0);
      for (Definition const& d : c.definitions) Delete(d, scope);
      qmDeleteExp(unused);
      ExpectTwice(used, c.value);
      qmDeleteExp(used);
    }
  }
}

TEST_F(KeptDefinitions, BodiesThatComeLaterAddWhatTheyName) {
  // a body is given, and what it names deleted, before the expression runs again
  Definition const late{"late", "if (n <= 0) then return 0; end return (named n + later(n - 1))"};
  Definition const later{"later", "if (n <= 0) then return 0; end return (named n + late(n - 1))"};
  Definition const named{"named", "10 * n", false};
  Definition const top{"top", "if (n < 0) then return 0; end return (1 + late n)"};
  for (char const scope : {'G', 'C'}) {
    SCOPED_TRACE(scope);
    Declare(top, scope), Declare(late, scope), Declare(later, scope);
    GiveBody(top, scope);
    Handle const handle = qmParseExp("top 3 + 0");
    ASSERT_NE(handle, 0U);
    qmEvalExpHndlToNum(handle);
    EXPECT_EQ(qmGetLastErrorID(), 3450) << "no body yet";
    Declare(named, scope);
    GiveBody(late, scope);
    Delete(named, scope), Delete(late, scope), Delete(top, scope);
    qmEvalExpHndlToNum(handle);
    EXPECT_EQ(qmGetLastErrorID(), 3450) << "one body more to come";
    Declare({"named", "n + 0", false}, scope), Declare({"late", "n + 0", false}, scope);
    GiveBody(later, scope);
    Delete(later, scope), Delete(named, scope), Delete(late, scope);
    // the first late names the first named, later the second of both: 30 + (2 + 1) + 1
    ExpectTwice(handle, 34);
    qmDeleteExp(handle);
  }
}

TEST_F(KeptDefinitions, WhatIsGoneBeforeIsNotReached) {
  Declare({"gone", "n", false});
  Declare({"names", "if (n == 0) then return 0; end return (gone n)"});
  GiveBody({"names", "if (n == 0) then return 0; end return (gone n)"});
  Handle const before = qmParseExp("names 4");
  ASSERT_EQ(qmDeleteOp('G', "gone"), kNone);
  Handle const after = qmParseExp("names 4");
  ExpectTwice(before, 4);
  qmEvalExpHndl(after);
  EXPECT_EQ(qmGetLastErrorID(), 3450);
  qmEvalExpStr("names 4");
  EXPECT_EQ(qmGetLastErrorID(), 3450);
}

TEST_F(KeptDefinitions, WhatOneContextHasIsNotReachedByAnother) {
  Declare({"outer", nullptr}, 'C');
  Declare({"inner", "n + 1", false});
  GiveBody({"outer", "if (n == 0) then return 0; end return (inner n)"}, 'C');
  EXPECT_EQ(qmEvalExpStrToNum("outer 3"), 4.0);
  Handle const handle = qmParseExp("outer 3");
  qmCreatePrivateContext("other");
  qmSetContext("other", false);
  Handle const others = qmParseExp("outer 3");
  qmEvalExpHndl(others);
  EXPECT_EQ(qmGetLastErrorID(), 3450);
  Declare({"inner", "n + 2", false});
  qmEvalExpHndl(others);
  EXPECT_EQ(qmGetLastErrorID(), 3450) << "the body names another inner";
  qmSetContext("test", false);
  Delete({"outer", nullptr}, 'C');
  ExpectTwice(handle, 4);
}

TEST_F(KeptDefinitions, AnOperatorDeletedWhileItRunsIsKeptForTheRun) {
  Declare(kFactorial);
  auto const forget = [](Handle) -> int {
    qmDeleteOp('G', "fact");
    return 0;
  };
  ASSERT_EQ(qmLinkCallbackOp('G', "forget", "nofix", "number", nullptr, nullptr, forget), kNone);
  GiveBody({"fact", "if (n <= 1) then return 1; end forget; return (n * fact(n - 1))"});
  EXPECT_EQ(qmEvalExpStrToNum("fact 4"), 24.0);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_FALSE(qmIsOp('G', "fact"));
}

TEST_F(KeptDefinitions, ThreadsGoOnWhileAnotherDeletesAndGivesBodies) {
  for (int turn = 0; turn < 20; ++turn) {
    Declare(kIsEven, 'C'), Declare(kIsOdd, 'C');
    GiveBody(kIsEven, 'C');
    std::atomic<int> ready{0};
    std::atomic<bool> gone{false};
    auto const run = [&](char const* context) {
      qmCreatePrivateContext(context);
      qmSetContext(context, false);
      Handle const handle = qmParseExp("iseven 6");
      ++ready;
      bool isLast = false;
      do {
        isLast = gone;
        double const value = qmEvalExpHndlToNum(handle);
        long const code = qmGetLastErrorID();
        EXPECT_TRUE(code == kNone ? value == 1.0 : code == 3450 && !isLast);
      } while (!isLast);
      qmDeleteExp(handle);
    };
    std::thread one(run, "one"), two(run, "two");
    while (ready < 2) std::this_thread::yield();
    GiveBody(kIsOdd, 'C');
    Delete(kIsEven, 'C'), Delete(kIsOdd, 'C');
    gone = true;
    one.join(), two.join();
  }
}

TEST_F(KeptDefinitions, NothingIsKeptForGood) {
  auto const turn = [] {
    Declare(kIsEven), Declare(kIsOdd);
    GiveBody(kIsEven);
    Handle const early = qmParseExp("iseven 4");
    qmDeleteExp(qmParseExp("iseven 6"));  // while it awaits a body
    GiveBody(kIsOdd);
    Handle const handle = qmParseExp("iseven 4");
    Delete(kIsEven), Delete(kIsOdd);
    ExpectTwice(handle, 1);
    ExpectTwice(early, 1);
    for (Handle const h : {early, handle}) qmDeleteExp(h);
  };
  turn();
  CountedAllocations const counted;
  constexpr int kTurns = 200;
  for (int i = 0; i < kTurns; ++i) turn();
  EXPECT_LT(counted.KeptBytes(), 64 * kTurns) << "not even a name a turn";
}

}  // namespace

}  // namespace qumel::testing
