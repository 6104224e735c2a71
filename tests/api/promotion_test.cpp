// Variables that were numbers when a text was compiled and are complex when it runs: whoever made them so,
// the result is that of the same text with the variable complex from its start.
#include <cmath>
#include <functional>
#include <string>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

/** Stores 1 + 2i in the variable v and in the element a[1], which were numbers. */
void MakeComplex() {
  qmSetComplexVar('G', "v", 1.0, 2.0);
  qmClearLastError();
  qmEvalExpStr("a[1] = z");
}

int Poke(Handle op) {
  MakeComplex();
  return static_cast<int>(qmSetNumResult(op, 0.0));
}
int PokeByText(Handle op) {
  qmEvalExpStr("v = z; a[1] = z");
  return static_cast<int>(qmSetNumResult(op, 0.0));
}
int PokeAndLeave(Handle op) {
  MakeComplex();
  qmSetNumResult(op, 8.0);
  return 1000;
}
int PokeAndBeComplex(Handle op) {
  MakeComplex();
  qmSetRealResult(op, 3.0);
  return static_cast<int>(qmSetImagResult(op, 4.0));
}
/** Makes v complex and evaluates the expression that it stands in again; nothing when called within that. */
Handle g_expression = 0;
bool g_isInside = false;
int PokeInside(Handle op) {
  double imaginary = 0.0;
  if (g_isInside) {
    MakeComplex();
  } else {
    g_isInside = true;
    qmSetRealResult(op, qmEvalExpHndlToComp(g_expression, &imaginary));
    g_isInside = false;
  }
  return static_cast<int>(qmSetImagResult(op, imaginary));
}
int Nothing(Handle op) { return static_cast<int>(qmSetNumResult(op, 0.0)); }
int Double(Handle op) {
  qmSetRealResult(op, 2.0 * qmGetRealParm(op, 0));
  return static_cast<int>(qmSetImagResult(op, 2.0 * qmGetImagParm(op, 0)));
}

/** Every test has number variables v, u and w and a number array a of three, a complex variable z = 1 + 2i,
 * and operators on them. */
class Promotion : public InterfaceTest {
 protected:
  void SetUp() override {
    InterfaceTest::SetUp();
    Refresh();
  }
  /** A fresh context with everything at its start. */
  static void Refresh() {
    static int contexts = 0;
    qmDestroyPrivateContext(("fresh" + std::to_string(contexts)).c_str());
    UseContextWith(("fresh" + std::to_string(++contexts)).c_str(),
                   [] { qmSetFormattedResultPrecisionLimit(6); });
    qmSetFormattedResultPrecisionLimit(6);
    qmReleaseVarHandle(qmCreateNumVar('G', "v", 4.0));
    qmReleaseVarHandle(qmCreateNumVar('G', "u", 5.0));
    qmReleaseVarHandle(qmCreateNumVar('G', "w", 6.0));
    qmReleaseVarHandle(qmCreateNumArray('G', "a", 1, 3, -1, -1, -1, -1, -1));
    qmReleaseVarHandle(qmCreateComplexVar('G', "z", 1.0, 2.0));
    Link("poke", "prefix", "number n", &Poke);
    Link("poketext", "prefix", "number n", &PokeByText);
    Link("pokeleave", "prefix", "number n", &PokeAndLeave);
    Link("pokecomplex", "prefix", "number n", &PokeAndBeComplex);
    Link("pokeinside", "prefix", "number n", &PokeInside);
    Link("nothing", "prefix", "number n", &Nothing);
    Link("double", "prefix", "complex n", &Double);
    Define("number", "twice", "n * 2", true);
    Define("complex", "ctwice", "n * 2", true);
    Define("number", "size", "abs(n + v)", true);
    Define("number", "swap", "n <=> u; 0", true);
    Define("number", "swapv", "u <=> v; n", true);
    Define("number", "store", "n = z; 0", true);
    Define("number", "storeelement", "n; a[1] = z; 0", true);
    Define("number", "storedeep", "store n; 0", true);
    Define("number", "storelater", "if (1 < 2) then; n = z; end; 0", false);
    Define("number", "storeandsee", "store n; abs(n)", true);
    Define("number", "pokeandsee", "poke 1; abs(v) + abs(n)", true);
  }
  static void Link(char const* name, char const* fix, char const* parameters, int (*callback)(Handle)) {
    ASSERT_EQ(qmLinkCallbackOp('G', name, fix, "number", parameters, nullptr, callback), kNone);
  }
  static void Define(char const* returns, char const* name, char const* text, bool atOnce) {
    ASSERT_EQ(qmDefineExpOp('G', name, "prefix", returns, "number n", nullptr, atOnce ? text : nullptr),
              kNone);
    if (!atOnce) {
      ASSERT_EQ(qmDefineExpOpStr('G', name, text), kNone);
    }
  }

  /** What an evaluation gave: an error, or both parts of its result. */
  static std::string Outcome(char type) {
    if (qmGetLastErrorID() != kNone) return "error " + std::to_string(qmGetLastErrorID());
    if (type == 'S') return qmGetLastStrResult();
    if (type == 'B') return qmGetLastBoolResult() ? "true" : "false";
    auto const part = [](double value) { return std::to_string(std::isnan(value) ? NAN : value + 0.0); };
    return part(qmGetLastRealResult()) + " " + part(type == 'C' ? qmGetLastImagResult() : 0.0);
  }
  static std::string OfText(std::string const& text) { return Outcome(qmEvalExpStr(text.c_str())); }
  static std::string OfHandle(Handle handle) { return Outcome(qmEvalExpHndl(handle)); }

  /** Puts the variables back to their values; what became complex stays so. */
  static void RestoreValues() {
    for (char const* text : {"v = 4", "u = 5", "w = 6", "a[0] = 0; a[1] = 0; a[2] = 0", "z = 1"}) {
      qmEvalExpStr(text);
    }
    qmSetComplexVar('G', "z", 1.0, 2.0);
    qmClearLastError();
  }
};

/** Texts whose results depend on v or on an element of a. */
constexpr char const* kTexts[] = {"v + 1",
                                  "1 + v",
                                  "v - u",
                                  "v * v",
                                  "v / u",
                                  "u / v",
                                  "v % 3",
                                  "v ^ 2",
                                  "v ^ 3",
                                  "2 ^ v",
                                  "v ^ u",
                                  "-v",
                                  "+v",
                                  "v!",
                                  "abs v",
                                  "sqrt v",
                                  "cbrt v",
                                  "root(3, v)",
                                  "ln v",
                                  "log v",
                                  "sin v",
                                  "cos v",
                                  "tan v",
                                  "arcsin v",
                                  "sinh v",
                                  "real v",
                                  "imag v",
                                  "real v + imag v * 100",
                                  "int v",
                                  "sign v",
                                  "floor v",
                                  "sum(v, 1)",
                                  "min(v, 2)",
                                  "v == 1",
                                  "v < u",
                                  "v > 0 && u > 0",
                                  "v & 3",
                                  "v | 4",
                                  "~v",
                                  "return v",
                                  "w = v",
                                  "w = v + 1; return w",
                                  "w += v; return w",
                                  "w -= v",
                                  "w *= v; return w",
                                  "w /= v",
                                  "w %= v",
                                  "v = 7; v + 0",
                                  "v += 1; return v",
                                  "v *= v",
                                  "v++",
                                  "++v; return v",
                                  "x = v; return x",
                                  "x = y = v; x + y",
                                  "v <=> u",
                                  "u <=> v",
                                  "v <=> v",
                                  "x = 1; x <=> v",
                                  "if (1 > 2) then; u <=> v; end; return 1",
                                  "u + 1; u <=> v; u + 2",
                                  "if (v == 1) then; return 5; end; return v",
                                  "select v; case 1; return 8; end; 9",
                                  "i = 0; s = 0; while (i < 3) do; i += 1; s += v * i; next; return s",
                                  "twice v",
                                  "twice(v + 1)",
                                  "ctwice v",
                                  "size 2",
                                  "1 + size v",
                                  "swap v",
                                  "swap u",
                                  "u + swap v",
                                  "double v",
                                  "double(v) + 1",
                                  "left(\"abc\", v)",
                                  "seterror v",
                                  "a[1]",
                                  "a[1] + 1",
                                  "a[1] * v",
                                  "w = a[1]; return w",
                                  "a[0] = v; a[0] + 1",
                                  "a[2] = a[1]",
                                  "a[0] <=> a[1]; return (a[0])",
                                  "a[0] <=> u",
                                  "sum a",
                                  "u <=> a[1]",
                                  "cbrt(-8) + v*0",
                                  "sqrt(-4) + v*0",
                                  "twice(cbrt(-8)) + v*0",
                                  "v * 0 + cbrt(-8)",
                                  "u + 1",
                                  "cbrt(-8)",
                                  "sqrt(-4)",
                                  "size(0 - 8)"};

// ---- before the run ----

TEST_F(Promotion, BeforeARunCountsAsInTheSameText) {
  struct Way {
    char const* name;
    void (*makeComplex)();
  };
  static Handle assignment = 0;
  constexpr Way kWays[] = {
      {"by the host", &MakeComplex},
      {"by a text", [] { qmEvalExpStr("v = z; a[1] = z"); }},
      {"by a parsed expression", [] { qmEvalExpHndl(assignment); }},
      {"by a callback", [] { qmEvalExpStr("poke 1"); }},
      {"by bodies", [] { qmEvalExpStr("storedeep v; storeelement 1"); }},
  };
  for (Way const& way : kWays) {
    for (char const* const text : kTexts) {
      SCOPED_TRACE(std::string(way.name) + ": " + text);
      for (bool const isAllowed : {false, true}) {
        if (isAllowed && &way != &kWays[0]) continue;
        Refresh();
        assignment = qmParseExp("v = z; a[1] = z");
        way.makeComplex();
        qmSetAllowComplexResults(isAllowed);
        std::string const expected = OfText(text);

        Refresh();
        assignment = qmParseExp("v = z; a[1] = z");
        qmSetAllowComplexResults(isAllowed);
        Handle const handle = qmParseExp(text);
        EXPECT_NE(handle, 0U) << qmGetLastErrorID();
        OfHandle(handle);  // a real run
        RestoreValues();
        way.makeComplex();
        EXPECT_EQ(OfHandle(handle), expected);
        // and again, where the same run meets the same values
        RestoreValues();
        way.makeComplex();
        EXPECT_EQ(OfHandle(handle), expected) << "the second time";
        qmDeleteExp(handle);
      }
    }
  }
}

// ---- within the run ----

TEST_F(Promotion, WithinARunCountsAsInTheTextThatFollows) {
  constexpr char const* kWays[] = {"poke 1",
                                   "u + poketext w",
                                   "store v; storeelement 1",
                                   "storedeep v; storeelement 1",
                                   "storelater v; storeelement u",
                                   "w = 6 + poke(1)*2"};
  for (char const* const way : kWays) {
    for (char const* const text : kTexts) {
      std::string const whole = std::string(way) + "; " + text;
      SCOPED_TRACE(whole);
      for (bool const isAllowed : {false, true}) {
        if (isAllowed && way != kWays[0]) continue;
        Refresh();
        MakeComplex();
        qmSetAllowComplexResults(isAllowed);
        std::string const expected = OfText(text);
        RestoreValues();
        MakeComplex();
        std::string const expectedAgain = OfText(whole);

        Refresh();
        qmSetAllowComplexResults(isAllowed);
        EXPECT_EQ(OfText(whole), expected);

        Refresh();
        qmSetAllowComplexResults(isAllowed);
        Handle const handle = qmParseExp(whole.c_str());
        EXPECT_NE(handle, 0U) << qmGetLastErrorID();
        EXPECT_EQ(OfHandle(handle), expected);
        RestoreValues();
        MakeComplex();
        EXPECT_EQ(OfHandle(handle), expectedAgain) << "the second time";
        qmDeleteExp(handle);
      }
    }
  }
}

TEST_F(Promotion, CountsFromTheOperatorOnThatMadeIt) {
  struct Case {
    char const* text;
    char const* first;  // as a text and by handle
    char const* again;  // by handle, v complex from the start
  };
  constexpr Case kCases[] = {
      {"i = 0; s = 0; while (i < 3) do; i += 1; s += v * i; if (i == 1) then; poke 1; end; next; return s",
       "9.000000 10.000000", "6.000000 12.000000"},
      {"i = 0; label back; i += 1; s = v + i; if (i == 1) then; poke 1; goto back; end; return s",
       "3.000000 2.000000", "3.000000 2.000000"},
      {"v + 1 + poke 1", "5.000000 0.000000", "2.000000 2.000000"},
      // only what may follow is verified; in the next run that is all
      {"u <=> v; poke 1; return v", "1.000000 2.000000", "error 3090"},
      {"if (u > 9) then; u <=> v; end; poke 1; return v", "1.000000 2.000000", "error 3090"},
      {"poke 1; return v; if (u > 9) then; u <=> v; end", "error 3090", "error 3090"},
      {"i = 0; while (i < 2) do; i += 1; if (i > 5) then; u <=> v; end; poke 1; next; return v", "error 3090",
       "error 3090"},
      {"u <=> v; i = 0; while (i < 2) do; i += 1; poke 1; next; return v", "1.000000 2.000000", "error 3090"},
      {"i = 0; select (i); default; u <=> v; break; case (1 + poke(1)); 5; end", "error 3090", "error 3090"},
      {"u <=> v; pokeleave 1; v", "8.000000 0.000000", "error 3090"},
      {"z * 0 + poke 1; u <=> v", "error 3090", "error 3090"},
      {"w += 1; swapv 1; poke 1; return w", "7.000000 0.000000", "error 3090"},
      // in bodies
      {"pokeandsee v", "4.472136 0.000000", "4.472136 0.000000"},
      {"pokeandsee u + v", "8.236068 2.000000", "8.236068 2.000000"},
      {"storeandsee v", "2.236068 0.000000", "2.236068 0.000000"},
      {"storeandsee(v + u)", "2.236068 0.000000", "2.236068 0.000000"},
      {"i = 0; s = 0; while (i < 2) do; i += 1; s += storeandsee(i + 0); next; return s", "4.472136 0.000000",
       "4.472136 0.000000"},
      {"x = 3; storeandsee x", "2.236068 0.000000", "2.236068 0.000000"},
      // variables and elements of the expression itself
      {"x = 3; store x; x + 1", "2.000000 2.000000", "2.000000 2.000000"},
      {"x = 3; y = 1; if (u > 9) then; x <=> y; end; store x; x + y", "2.000000 2.000000",
       "2.000000 2.000000"},
      {"number t; s = t + 0; store t; return s", "0.000000 0.000000", "1.000000 2.000000"},
      {"store(a[2]); a[2] + a[0]", "1.000000 2.000000", "1.000000 2.000000"},
      // a result that somebody still reads keeps its value
      {"i = 0; while (i < 1) do; i += 1; select (w = v); case (9 + poke 1); return 1; case 4; return 2; "
       "default; return 3; end; next; return 4",
       "2.000000 0.000000", "3.000000 0.000000"},
      // complex results need no permission when a variable made the run complex
      {"pokecomplex 1 + v", "4.000000 6.000000", "4.000000 6.000000"},
      {"pokecomplex 1 + u", "error 3140", "error 3140"},
      {"v = sqrt(0 - v)", "error 3140", "0.786151 -1.272020"},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.text);
    Refresh();
    EXPECT_EQ(OfText(c.text), c.first);
    Refresh();
    Handle const handle = qmParseExp(c.text);
    EXPECT_NE(handle, 0U) << qmGetLastErrorID();
    EXPECT_EQ(OfHandle(handle), c.first);
    for (int run = 0; run < 2; ++run) {
      RestoreValues();
      MakeComplex();
      EXPECT_EQ(OfHandle(handle), c.again);
    }
    qmDeleteExp(handle);
  }
}

TEST_F(Promotion, AFailureLastsAsLongAsItsCause) {
  Handle const exchange = qmParseExp("w += 1; u <=> v; return w");
  Handle const inBody = qmParseExp("w += 1; swapv 1; return w");
  Handle const inPassing = qmParseExp("w += 1; poke 1; u <=> v");
  for (Handle const handle : {exchange, inBody}) EXPECT_NE(OfHandle(handle), "error 3090");
  EXPECT_EQ(qmGetNumVarValue('G', "w"), 8.0);
  EXPECT_EQ(OfHandle(inPassing), "error 3090");
  EXPECT_EQ(qmGetNumVarValue('G', "w"), 9.0);
  for (int run = 0; run < 3; ++run) {
    for (Handle const handle : {exchange, inBody, inPassing}) EXPECT_EQ(OfHandle(handle), "error 3090");
    EXPECT_EQ(qmGetNumVarValue('G', "w"), 9.0) << "as with a text, nothing has run";
  }
  qmEvalExpStr("u = z * 2");
  EXPECT_EQ(OfHandle(exchange), "10.000000 0.000000");
  EXPECT_EQ(OfText("v"), "2.000000 4.000000");
  EXPECT_EQ(OfHandle(inBody), "11.000000 0.000000");
  EXPECT_EQ(OfText("v"), "1.000000 2.000000");
  EXPECT_EQ(OfHandle(inPassing), "1.000000 2.000000");
}

TEST_F(Promotion, PermissionIsAskedForAsInATextButNotForWhatTheExpressionDoesItself) {
  qmSetAllowComplexResults(true);
  Handle const mixed = qmParseExp("w + (u |_ 1) + v");
  Handle const own = qmParseExp("v = (u |_ 1); v + 0");
  EXPECT_EQ(OfHandle(mixed), "15.000000 1.000000");
  qmSetAllowComplexResults(false);
  EXPECT_EQ(OfHandle(mixed), "15.000000 1.000000");
  for (int run = 0; run < 3; ++run) EXPECT_EQ(OfHandle(own), "5.000000 1.000000");
  for (int run = 0; run < 2; ++run) EXPECT_EQ(OfHandle(mixed), OfText("w + (u |_ 1) + v"));
  EXPECT_EQ(OfHandle(mixed), "error 3140");
  qmSetAllowComplexResults(true);
  EXPECT_EQ(OfHandle(mixed), "16.000000 2.000000");

  for (char const* const text : {"v = sqrt(-4); v <=> u", "v = sqrt(-4); nothing 1; v <=> u",
                                 "x = 4; x = sqrt(-x); x <=> u", "x = 4; x = sqrt(-x); swap x; x + 0"}) {
    SCOPED_TRACE(text);
    Refresh();
    qmSetAllowComplexResults(true);
    EXPECT_EQ(OfText(text), "5.000000 0.000000");
    Refresh();
    qmSetAllowComplexResults(true);
    Handle const handle = qmParseExp(text);
    for (int run = 0; run < 2; ++run) {
      EXPECT_EQ(OfHandle(handle), "5.000000 0.000000");
      qmSetComplexVar('G', "u", 5.0, 0.0);
    }
  }
}

TEST_F(Promotion, OfOtherVariablesLeavesARunReal) {
  Handle const handle = qmParseExp("cbrt(-8) + u*0 + nothing 1");
  EXPECT_EQ(OfHandle(handle), "-2.000000 0.000000");
  MakeComplex();
  EXPECT_EQ(OfHandle(handle), "-2.000000 0.000000");
  EXPECT_EQ(OfText("poke 1; cbrt(-8) + u*0 + poke 1"), "-2.000000 0.000000");
}

TEST_F(Promotion, ReachesEveryContextAndRunThatSeesTheVariable) {
  qmReleaseVarHandle(qmCreateNumVar('C', "shared", 4.0));
  double linked = 3.0;
  ASSERT_TRUE(qmLinkNumVar('G', "linked", &linked));
  Handle const cosmic = qmParseExp("shared + 1");
  Handle const link = qmParseExp("linked + 1");
  EXPECT_EQ(OfHandle(cosmic), "5.000000 0.000000");
  EXPECT_EQ(OfHandle(link), "4.000000 0.000000");
  OnAnotherThread([] {
    qmClearContext();
    qmCreatePrivateContext("other");
    qmSetContext("other", false);
    qmSetComplexVar('C', "shared", 1.0, 2.0);
  });
  qmSetComplexVar('G', "linked", 5.0, 6.0);
  qmClearLastError();
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(OfHandle(cosmic), "2.000000 2.000000");
    EXPECT_EQ(OfHandle(link), "6.000000 6.000000");
  }
  qmDeleteExp(cosmic);
  EXPECT_EQ(qmDeleteVar('C', "shared"), kNone);

  // the inner run, the outer one after it, and both again
  g_expression = qmParseExp("pokeinside 1 + v + w");
  ASSERT_NE(g_expression, 0U);
  for (int run = 0; run < 3; ++run) EXPECT_EQ(OfHandle(g_expression), "14.000000 4.000000");
  qmDeleteExp(g_expression);
}

}  // namespace

}  // namespace qumel::testing
