// What callbacks do to the run that they stand in: how they end it, and how they begin another run of the
// same parsed expression within it.
#include <functional>
#include <set>
#include <string>
#include <vector>

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

/** The parsed expression that Again evaluates, and what that does before and after. */
Handle g_expression = 0;
std::function<void(Handle)> g_before;
std::function<void(Handle)> g_after;
std::vector<Handle> g_handles;
std::vector<std::string> g_seen;

/** again(n) is 0 for n = 0. Otherwise it evaluates the expression with x = n - 1 and adds n, which it asks
 * for behind that evaluation. */
int Again(Handle op) {
  g_handles.push_back(op);
  double const n = qmGetNumParm(op, 0);
  if (n < 1.0) return static_cast<int>(qmSetNumResult(op, 0.0));
  qmSetNumVar('G', "x", n - 1.0);
  if (g_before) g_before(op);
  double const inner = qmEvalExpHndlToNum(g_expression);
  if (g_after) g_after(op);
  return static_cast<int>(qmSetNumResult(op, inner + qmGetNumParm(op, 0)));
}

/** The same with texts: againtext("abc") is what the expression gives for t = "ab", and "abc" behind it. */
int AgainText(Handle op) {
  char const* const text = qmGetStrParm(op, 0);
  char const* const signature = qmGetParmSig(op);
  std::string const kept = text;
  if (kept.empty()) return static_cast<int>(qmSetStrResult(op, "."));
  qmSetStrVar('G', "t", kept.substr(0, kept.size() - 1).c_str());
  std::string const inner = qmEvalExpHndlToStr(g_expression);
  EXPECT_EQ(text, kept) << "texts live until their own callback returns";
  EXPECT_STREQ(signature, "S");
  return static_cast<int>(qmSetStrResult(op, (inner + text).c_str()));
}

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
    Link("again", "number", "number n", &Again);
    Link("againtext", "string", "string s", &AgainText);
    g_before = g_after = nullptr;
    g_handles.clear();
    g_seen.clear();
    ASSERT_NE(qmCreateNumVar('G', "x", 0.0), 0U);
    ASSERT_NE(qmCreateStrVar('G', "t", 40, ""), 0U);
  }
  void TearDown() override {
    qmDeleteExp(g_expression);
    InterfaceTest::TearDown();
  }
  static void Parse(char const* text) {
    g_expression = qmParseExp(text);
    ASSERT_NE(g_expression, 0U) << text << " " << qmGetLastErrorID();
  }
  /** The value of the parsed expression for x. */
  static double Run(double x) {
    qmSetNumVar('G', "x", x);
    return qmEvalExpHndlToNum(g_expression);
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

// ---- a run within a run of the same expression ----

TEST_F(CallbackRuns, ARunWithinARunKeepsToItsOwnValues) {
  Define("body", "n*10 + again(n + 0)");
  Define("nested", "body(n + 0) - 0");
  Define("declared", nullptr);
  ASSERT_EQ(qmDefineExpOpStr('G', "declared",
                             "if (n > 100) then; return (declared(n - 1)); end; n*10 + again(n + 0)"),
            kNone);
  struct Case {
    char const* text;
    double values[4];  // for x = 3, 2, 1, 0
  };
  constexpr Case kCases[] = {
      {"x*10 + again(x + 0)", {66, 33, 11, 0}},
      {"x*10 + again(x)", {60, 30, 10, 0}},  // x is 0 when the callback asks for it again
      {"(x + 1)*10 + again(x + 0) + x", {106, 63, 31, 10}},
      {"x^2 * 5 + again(x + 0)", {76, 28, 6, 0}},
      {"body x", {66, 33, 11, 0}},
      {"1 + nested(x + 0)", {70, 36, 13, 1}},
      {"declared(x + 0)", {66, 33, 11, 0}},
      {"i = 0; s = 0; while (i < 2) do; i += 1; s += body(x + 0); next; return s", {121, 44, 11, 0}},
      {"select (x + 0); case (9 + again(x + 0)); return 5; case 3; return 7; default; return 8; end",
       {7, 8, 8, 8}},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.text);
    Parse(c.text);
    for (int round = 0; round < 2; ++round) {
      for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Run(3.0 - i), c.values[i]) << "x = " << 3 - i;
        EXPECT_EQ(qmGetLastErrorID(), kNone);
      }
    }
    qmDeleteExp(g_expression);
  }
}

TEST_F(CallbackRuns, ARunWithinARunSharesVariablesTextsAndHandles) {
  Parse("number runs; runs += 1; y = runs*100 + again(x)*0; return (y + runs)");
  EXPECT_EQ(Run(3.0), 104.0) << "four runs, of which the first began first";
  EXPECT_EQ(Run(0.0), 505.0);
  qmDeleteExp(g_expression);

  Parse("number i; until (again(x + 0) >= 0) do; i += 1; next; return i");
  EXPECT_EQ(Run(3.0), 4.0) << "each run enters its body once without a test";
  EXPECT_EQ(Run(2.0), 7.0);
  qmDeleteExp(g_expression);

  qmReleaseVarHandle(qmCreateNumArray('G', "a", 1, 3, -1, -1, -1, -1, -1));
  Parse("a[x] = x + 1; a[x]*100 + again(x + 0) + a[x]");
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(Run(2.0), (300 + 2 + 1) + (200 + 1 + 1) + (100 + 1.0)) << "at last the elements of x = 0";
  }
  qmDeleteExp(g_expression);

  Parse("\"<\" + t + againtext(t) + \">\"");
  for (int run = 0; run < 2; ++run) {
    qmSetStrVar('G', "t", "abc");
    EXPECT_STREQ(qmEvalExpHndlToStr(g_expression), "<abc<ab<a<.>a>ab>abc>");
  }
  qmDeleteExp(g_expression);

  Define("body", "again n");
  Parse("again(x) + body(x)*0");
  g_handles.clear();
  Run(2.0);
  EXPECT_EQ(std::set<Handle>(g_handles.begin(), g_handles.end()).size(), 2U) << "one for each place";
}

TEST_F(CallbackRuns, ARunWithinARunDoesNotSeeWhatWasDefinedSince) {
  qmReleaseVarHandle(qmCreateNumVar('C', "shared", 4.0));
  Define("body", "n*10 + shared");
  ASSERT_EQ(qmDefineExpOp('G', "text", "prefix", "string", "number n", nullptr, "\"\""), kNone);
  g_before = [](Handle) {
    qmDeleteOp('G', "body");
    Define("body", "0");
    qmReleaseVarHandle(qmCreateNumVar('G', "shared", 0.0));
    qmEvalExpStr("text 1");
    qmSetDefaultVariableScope('G');
  };
  qmEvalExpStr("2");
  Parse("last + last; body(x) + again(x + 0)*0");
  // the last result is a text in the inner run, which fails for that as any other would
  std::string codes;
  g_after = [&](Handle) { codes += std::to_string(qmGetLastErrorID()) + " "; };
  EXPECT_EQ(Run(2.0), 24.0);
  EXPECT_EQ(codes, "3090 ");
  qmDeleteExp(g_expression);
  qmDeleteVar('G', "shared");
  qmDeleteOp('G', "body");
  Define("body", "n*10 + shared");
  Parse("body(x) + again(x + 0)");
  EXPECT_EQ(Run(2.0), (24 + 2) + (14 + 1) + 4.0);
  qmDeleteExp(g_expression);
  EXPECT_EQ(qmDeleteVar('C', "shared"), kNone);
}

TEST_F(CallbackRuns, ARunWithinARunMayDeleteTheExpression) {
  Define("body", "n*10 + again(n + 0)");
  qmEvalExpStr("1 + 1");  // makes the resolver, which stays
  long const before = qmGetQumelObjectCount();
  Parse("x*10 + body(x + 0)");
  EXPECT_EQ(Run(3.0), (30 + 30 + 3) + (20 + 20 + 2) + (10 + 10 + 1.0));
  g_after = [](Handle) { qmDeleteExp(g_expression); };
  EXPECT_EQ(Run(3.0), (30 + 30 + 3) + (20 + 20 + 2) + (10 + 10 + 1.0));
  EXPECT_EQ(qmEvalExpHndl(g_expression), 'X');
  EXPECT_EQ(qmGetQumelObjectCount(), before);
}

TEST_F(CallbackRuns, RunsWithinRunsNestAsDeepAsOtherCalls) {
  Parse("x + again(x + 0)*0");
  g_before = [](Handle) { qmSetNumVar('G', "x", 1.0); };  // without end
  std::set<long> codes;
  g_after = [&](Handle) { codes.insert(qmGetLastErrorID()); };
  for (int run = 0; run < 2; ++run) {
    Run(1.0);
    EXPECT_EQ(codes, (std::set<long>{kNone, kOutOfMemory}));
  }
  g_before = g_after = nullptr;
  EXPECT_EQ(Run(3.0), 0.0);
}

TEST_F(CallbackRuns, ARunWithinARunThatBecomesComplexLeavesTheOuterOneReal) {
  qmSetAllowComplexResults(true);
  double imaginary = 0.0;
  Parse("sqrt(x - 1); again(x + 0)*0; cbrt(-8)");
  g_after = [&](Handle) {
    EXPECT_NE(qmGetLastImagResult(), 0.0) << "the root of -8 is complex in complex evaluation";
  };
  EXPECT_EQ(Run(1.0), -2.0);
  g_after = nullptr;
  EXPECT_NE(Run(1.0), -2.0) << "but the expression is complex from now on";
  qmDeleteExp(g_expression);

  // a setting is for texts that are read from now on
  Parse("again(x + 0)*0 + cbrt(-8)");
  g_before = [](Handle) { qmEvalExpStr("forcecomplex"); };
  for (int run = 0; run < 2; ++run) EXPECT_EQ(Run(1.0), -2.0);
  qmDeleteExp(g_expression);
  g_before = nullptr;
  qmSetForceComplexResults();  // ends it in a context that is there already

  // what was allowed when the text was parsed stays allowed
  Parse("again(x + 0)*0 + (x |_ 1)");
  qmSetAllowComplexResults(false);
  for (int run = 0; run < 2; ++run) {
    qmSetNumVar('G', "x", 2.0);
    EXPECT_EQ(qmEvalExpHndlToComp(g_expression, &imaginary), 0.0);
    EXPECT_EQ(imaginary, 1.0);
    EXPECT_EQ(qmGetLastErrorID(), kNone);
  }
}

TEST_F(CallbackRuns, ARunWithinARunEndsOnItsOwn) {
  Define("body", "again(n + 0)*0 + 1/(n - 1)");
  std::string codes;
  g_after = [&](Handle) { codes += std::to_string(qmGetLastErrorID()) + " "; };
  struct Case {
    char const* text;
    double value;       // for x = 2
    char const* codes;  // of the run for x = 0 and of that for 1
  };
  constexpr Case kCases[] = {
      {"body(x + 0)", 1, "0 3110 "},
      {"if (again(x + 0) > 0) then; return 50; end; return 7", 50, "0 0 "},
      {"if (again(x + 0) == 8) then; seterror 4711; end; return 7", 7, "0 4711 "},
      {"leave(x + again(x + 0))", 120, "0 0 "},
      {"if (again(x + 0) == 8) then; leave 1; end; return 7", 7, "0 0 "},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.text);
    Parse(c.text);
    for (int run = 0; run < 2; ++run) {
      codes.clear();
      EXPECT_EQ(Run(2.0), c.value);
      EXPECT_EQ(qmGetLastErrorID(), kNone);
      EXPECT_EQ(codes, c.codes);
    }
    qmDeleteExp(g_expression);
  }
}

}  // namespace

}  // namespace qumel::testing
