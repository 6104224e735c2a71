// What callbacks do to the run that they stand in: how they end it.
#include <string>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

constexpr int kEndsEvaluation = 1000;

int g_calls = 0;

int Leave(Handle op) {
  ++g_calls;
  qmSetNumResult(op, 10.0 * qmGetNumParm(op, 0));
  return kEndsEvaluation;
}
int LeaveWithText(Handle op) {
  qmSetStrResult(op, "left");
  return kEndsEvaluation;
}
int LeaveWithComplex(Handle op) {
  ++g_calls;
  qmSetRealResult(op, qmGetNumParm(op, 0));
  qmSetImagResult(op, 5.0);
  return kEndsEvaluation;
}
int LeaveWithoutResult(Handle) { return kEndsEvaluation; }

class CallbackRuns : public InterfaceTest {
 protected:
  void SetUp() override {
    InterfaceTest::SetUp();
    qmSetFormattedResultPrecisionLimit(0);
    Link("leave", "number", "number x", &Leave);
    Link("leavetext", "string", "number x", &LeaveWithText);
    Link("leavecomplex", "complex", "number x", &LeaveWithComplex);
    Link("leaveempty", "number", "number x", &LeaveWithoutResult);
    g_calls = 0;
  }
  static void Link(char const* name, char const* returns, char const* parameters, int (*callback)(Handle)) {
    ASSERT_EQ(qmLinkCallbackOp('G', name, "prefix", returns, parameters, nullptr, callback), kNone);
  }
  static void Define(char const* name, char const* text) {
    ASSERT_EQ(qmDefineExpOp('G', name, "prefix", "number", "number n", nullptr, text), kNone);
  }
  /** Evaluates text as it is and then twice by handle. */
  static void ExpectEveryWay(char const* text, char const* result) {
    SCOPED_TRACE(text);
    EXPECT_EQ(ToText(text), result);
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    Handle const handle = qmParseExp(text);
    for (int run = 0; run < 2; ++run) EXPECT_STREQ(qmEvalExpHndlToStr(handle), result) << run;
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    qmDeleteExp(handle);
  }
};

TEST_F(CallbackRuns, AStopGivesTheEvaluationTheResultOfTheCallback) {
  Define("twice", "leave n; 99");
  Define("outer", "1 + twice n");
  Define("deep", nullptr);
  ASSERT_EQ(qmDefineExpOpStr('G', "deep", "if (n < 1) then; leave 7; end; return (1 + deep(n - 1))"), kNone);
  struct Case {
    char const *text, *result;
  };
  constexpr Case kCases[] = {
      {"leave 3", "30"},
      {"1 + leave 3", "30"},
      {"leave 3; 99", "30"},
      {"sqrt(leave 3)", "30"},
      {"if (1 < 2) then; leave 4; end; 99", "40"},
      {"i = 0; while (i < 10) do; i += 1; if (i == 3) then; leave i; end; next; 99", "30"},
      {"s = leavetext 1 + \"!\"; 99", "left"},
      {"5; leaveempty 3; 99", "0"},
      // a body ends, and what it stands in goes on
      {"1 + twice 2", "21"},
      {"outer 3 + outer 4", "72"},
      {"deep 2", "72"},
      {"i = 0; while (i < 30) do; i += 1 + twice 1; next; return i", "33"},
  };
  for (Case const& c : kCases) ExpectEveryWay(c.text, c.result);
}

TEST_F(CallbackRuns, AStopWithAComplexResultNeedsPermission) {
  Define("ends", "leavecomplex n; 99");
  for (char const* const text : {"leavecomplex 2", "5; leavecomplex 2; 99", "ends 2"}) {
    SCOPED_TRACE(text);
    qmEvalExpStr(text);
    EXPECT_EQ(qmGetLastErrorID(), kResultIsComplex);
  }
  EXPECT_EQ(g_calls, 3);
  qmSetAllowComplexResults(true);
  ExpectEveryWay("leavecomplex 2", "( 2 |_ 5 )");
  ExpectEveryWay("1 + leavecomplex 2; 99", "( 2 |_ 5 )");
  ExpectEveryWay("1 + ends 2", "3");
  EXPECT_EQ(g_calls, 12) << "once a run";
}

}  // namespace

}  // namespace qumel::testing
