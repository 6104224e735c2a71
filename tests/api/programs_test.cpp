// Programs in the language, through the exported interface: declarations, scopes, arrays, control flow, and
// what programs leave behind in the tables of names.
#include <array>
#include <barrier>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

constexpr long kInUse = 3440;

/** A program of one or more texts, each on a line of its own and evaluated one after the other, and what they
 * give, one outcome a line. */
struct Program {
  std::string_view texts;
  std::string_view outcomes;
};

std::string Repeat(std::string_view text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

class Programs : public InterfaceTest {
 protected:
  static void SetUpFresh(char defaultScope = 'L', bool invertsIndices = false) {
    static int contexts = 0;
    std::string const name = "fresh" + std::to_string(++contexts);
    UseContextWith(name.c_str(), [=] {
      qmSetDefaultVariableScope(defaultScope);
      qmSetInvertArrayIndices(invertsIndices);
      qmSetAllowComplexResults(true);
    });
  }

  /** The value of the evaluation just made, or its error. */
  static std::string Outcome(char type) {
    std::ostringstream text;
    if (long const code = qmGetLastErrorID(); code != kNone) {
      text << "error " << code;
      return text.str();
    }
    switch (type) {
      case 'N': text << qmGetLastNumResult(); break;
      case 'C': text << qmGetLastRealResult() << " |_ " << qmGetLastImagResult(); break;
      case 'B': text << std::boolalpha << qmGetLastBoolResult(); break;
      case 'S': text << '\'' << qmGetLastStrResult() << '\''; break;
      default: text << "none"; break;
    }
    return text.str();
  }
  static std::string Evaluate(std::string const& text) { return Outcome(qmEvalExpStr(text.c_str())); }

  static std::string EvaluateLines(std::string_view texts) {
    std::istringstream lines{std::string(texts)};
    std::string outcomes;
    for (std::string line; std::getline(lines, line);) {
      outcomes += (outcomes.empty() ? "" : "\n") + Evaluate(line);
    }
    return outcomes;
  }

  /** The outcomes of two runs by handle; one when reading fails already. */
  static std::vector<std::string> RunTwiceByHandle(std::string_view text) {
    Handle const handle = qmParseExp(std::string(text).c_str());
    if (handle == 0) return {Outcome('X')};
    std::vector<std::string> outcomes;
    for (int run = 0; run < 2; ++run) outcomes.push_back(Outcome(qmEvalExpHndl(handle)));
    qmDeleteExp(handle);
    return outcomes;
  }

  /** Each program in a context of its own. */
  template <std::size_t count>
  static void Expect(Program const (&programs)[count], char defaultScope = 'L', bool invertsIndices = false) {
    for (Program const& program : programs) {
      SCOPED_TRACE(program.texts);
      SetUpFresh(defaultScope, invertsIndices);
      EXPECT_EQ(EvaluateLines(program.texts), program.outcomes);
    }
  }

  /** Programs of one text. They must do the same when they are parsed and run by handle, once and again. */
  template <std::size_t count>
  static void ExpectInEveryRun(Program const (&programs)[count]) {
    Expect(programs);
    for (Program const& program : programs) {
      SCOPED_TRACE(program.texts);
      for (std::string const& outcome : RunTwiceByHandle(program.texts)) EXPECT_EQ(outcome, program.outcomes);
    }
  }
};

// ---- names ----

TEST_F(Programs, Declarations) {
  static constexpr Program kPrograms[] = {
      {"x = 5; return x", "5"},
      {"t = \"ab\" + \"cd\"; return t", "'abcd'"},
      {"b = 1 < 2; return b", "true"},
      {"z = (1|_2); return z", "1 |_ 2"},
      {"number x; return x", "0"},
      {"string t; return t", "''"},
      {"boolean b; return b", "false"},
      {"complex number z; return z", "0 |_ 0"},
      {"number x = 5; return x", "5"},
      {"string t = \"text\"; return t", "'text'"},
      {"boolean b = true; return b", "true"},
      {"complex number z = 5; return z", "5 |_ 0"},
      {"number x; string t; x = 2; t = \"a\"; return x", "2"},
      // who comes second changes nothing
      {"x = 5; string x; return x", "5"},
      {"number number x", "error 3190"},
      {"string t = 5", "error 3090"},
      {"boolean b = 1", "error 3090"},
      {"x = 1; x = \"a\"", "error 3090"},
      {"t = \"a\"; t = true", "error 3090"},
      {"x = y", "error 3060"},
      {"x = x", "error 3060"},
      {"x += 1", "error 3060"},
      {"x = 1; x += y", "error 3060"},
      {"1 + x", "error 3060"},
      {"x", "none"},
      {"5 = 3", "error 3040"},
      {"(pi) = 3", "error 3050"},
      {"x = y = 3; return (x + y)", "6"},
      {"x = 1; x += y = 3; return (x + y)", "7"},
      {"x = 1; y = 2; x <=> y; return (x - y)", "1"},
      {"x = 7; y = 2; x <=> y; y <=> z; return (x * 100 + y * 10 + z)", "error 3060"},
      {"y = 2; z <=> y; return z", "2"},
      {"x <=> y", "error 3060"},
      {"x = 1; t = \"a\"; x <=> t", "error 3090"},
      {"x = 7; x %= 2.5; return x", "1"},
      {"t = \"ab\"; t += \"cd\"; return t", "'abcd'"},
  };
  ExpectInEveryRun(kPrograms);
}

TEST_F(Programs, ScopesAndOneShotWords) {
  static constexpr Program kPrograms[] = {
      {"x = 5\nx", "5\nnone"},
      {"global x = 5\nx", "5\n5"},
      {"global x = 5\nx = 6\nx", "5\n6\n6"},
      // a name that is known is no new one, whatever word stands before it
      {"global x = 5\nlocal x = 6\nx", "5\n6\n6"},
      {"global number x\nx", "0\n0"},
      {"global complex number z\nz", "0\n0 |_ 0"},
      {"global string t = \"a\"\nt", "'a'\n'a'"},
      // a word serves one name of its own statement
      {"global x = 1; y = 2\nx\ny", "2\n1\nnone"},
      {"global number x; number y\nx\ny", "0\n0\nnone"},
      {"global; x = 5\nx", "5\nnone"},
      {"global x = y = 4\nx\ny", "4\nnone\n4"},
      {"complex; number x; return x", "0"},
      {"complex number z; number x; return x", "0"},
      {"complex x = 5; return x", "5"},
      {"complex string t; number x; return x", "0"},
      {"global label there; x = 5\nthere\nx", "5\nnone\nnone"},
      // what does not run declares all the same
      {"if (2 < 1) then; global x = 5; end; return 1\nx", "1\n0"},
      {"return 1; global x = 5\nx", "1\n0"},
      // what stands before a fault is declared, what stands behind it is not
      {"global x = 5; 1 + u; global y = 6\nx\ny", "error 3060\n0\nnone"},
      {"global x = 5; 1 / 0; global y = 6\nx\ny", "error 3110\n5\n0"},
      {"global x = u\nx", "error 3060\nnone"},
      {"global x = 5; then\nx", "error 3130\n0"},
  };
  Expect(kPrograms);
  static constexpr Program kGlobals[] = {
      {"x = 5\nx\nlocal y = 6; return y\ny", "5\n5\n6\nnone"},
      {"local y = 5\ny", "5\nnone"},
      {"local x = 1; y = 2\nx\ny", "2\nnone\n2"},
      {"a[3]\na[1] = 7\nreturn (a[1])", "0\n7\n7"},
      {"goto there; label there; return 1\nthere", "1\nnone"},
  };
  Expect(kGlobals, 'G');
}

TEST_F(Programs, ProcessWideNames) {
  SetUpFresh();
  EXPECT_EQ(EvaluateLines("cosmic number shared = 5\nglobal own = 6\nshared"), "5\n6\n5");
  SetUpFresh('C');
  EXPECT_EQ(EvaluateLines("shared\nown\nshared = 7\nsecond = 8\nglobal shared = 9\nlocal shared = 10"),
            "5\nnone\n7\n8\n9\n10");
  EXPECT_TRUE(qmIsVar('C', "second"));
  EXPECT_FALSE(qmIsVar('G', "second"));
  EXPECT_FALSE(qmIsVar('G', "shared"))
      << "a name that is known is no new one, whatever word stands before it";
  EXPECT_EQ(qmGetNumVarValue('C', "shared"), 10.0);
  for (char const* name : {"shared", "second"}) EXPECT_EQ(qmDeleteVar('C', name), kNone);
}

TEST_F(Programs, ParsedExpressionsHoldTheirNames) {
  SetUpFresh();
  EXPECT_EQ(qmParseExp("global x = 5; y + 1"), 0U);
  EXPECT_EQ(qmDeleteVar('G', "x"), kNone) << "what failed holds nothing";
  qmClearLastError();
  Handle const writes = qmParseExp("global x = 5");
  ASSERT_NE(writes, 0U);
  EXPECT_EQ(Evaluate("x"), "0") << "declared, and not yet assigned";
  EXPECT_EQ(qmGetVarType('G', "x"), 'N');
  Handle const reads = qmParseExp("x + 1");
  EXPECT_EQ(qmEvalExpHndlToNum(reads), 1.0);
  EXPECT_EQ(qmEvalExpHndlToNum(writes), 5.0);
  EXPECT_EQ(qmEvalExpHndlToNum(reads), 6.0);
  qmDeleteExp(writes);
  EXPECT_EQ(qmDeleteVar('G', "x"), kInUse);
  qmDeleteExp(reads);
  EXPECT_EQ(qmDeleteVar('G', "x"), kNone);
  EXPECT_EQ(Evaluate("x"), "none");

  // locals live as long as their expression, and keep their values between its runs
  Handle const counts = qmParseExp("number n; n += 1; return n");
  for (double const count : {1.0, 2.0, 3.0}) EXPECT_EQ(qmEvalExpHndlToNum(counts), count);
  EXPECT_EQ(Evaluate("n"), "none");
}

TEST_F(Programs, ThreadsThatDeclareOneNameShareOneVariable) {
  constexpr int kThreads = 4, kTurns = 500;
  std::barrier turn(kThreads);
  std::array<std::vector<Handle>, kThreads> created;
  std::array<int, kThreads> failures{};
  auto const declare = [&](int thread) {
    qmCreatePrivateContext("declares");
    qmSetContext("declares", false);
    for (int i = 0; i < kTurns; ++i) {
      turn.arrive_and_wait();
      std::string const number = std::to_string(i);
      qmEvalExpStr(("cosmic number shared" + number).c_str());
      if (qmGetLastErrorID() != kNone) ++failures[static_cast<std::size_t>(thread)];
      Handle const handle = qmCreateNumVar('C', ("made" + number).c_str(), 1.0);
      if (handle != 0) created[static_cast<std::size_t>(thread)].push_back(handle);
    }
    qmClearContext();
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(declare, thread);
  for (std::thread& thread : threads) thread.join();

  std::size_t successes = 0;
  for (std::size_t thread = 0; thread < kThreads; ++thread) {
    EXPECT_EQ(failures[thread], 0);
    successes += created[thread].size();
    for (Handle const handle : created[thread]) EXPECT_TRUE(qmReleaseVarHandle(handle));
  }
  EXPECT_EQ(successes, static_cast<std::size_t>(kTurns)) << "one thread makes the variable";
  for (int i = 0; i < kTurns; ++i) {
    for (char const* const stem : {"shared", "made"}) {
      std::string const name = stem + std::to_string(i);
      EXPECT_EQ(qmDeleteVar('C', name.c_str()), kNone) << name;
      EXPECT_FALSE(qmIsSymbol('C', name.c_str())) << name << " was entered more than once";
    }
  }
}

// ---- arrays ----

TEST_F(Programs, Arrays) {
  static constexpr Program kPrograms[] = {
      {"number a[5]; return (a[4])", "0"},
      {"number a[5]; a[0] = 3; a[3] = 4; return (a[0] + a[3])", "7"},
      {"number a[5]; a[0] = 3; a[3] = 4; a[0] <=> a[3]; return (a[0] * 10 + a[3])", "43"},
      {"number a[5]; a[0] = 3; a[3] = 4; return (a[0] < a[3])", "true"},
      {"number a[5]; a[0] = 3; a[3] = 4; a[0] = a[3]; return (a[0])", "4"},
      {"number a[5]; a[3] = 4; a[3] = a[3] + a[3]; return (a[3])", "8"},
      {"number a[5]; a[1] = 1; a[1] += 4; a[1]++; return (a[1])", "6"},
      {"number a[3]; a[a[0] + 1] = 2; a[a[1]] = 9; return (a[2])", "9"},
      {"number a[3,4]; a[2,3] = 9; a[2,2] = 1; return (a[2,3] - a[2,2])", "8"},
      {"number a[3,4]; a[0,4]", "error 3210"},
      {"number a[3,4]; a[3,0]", "error 3210"},
      {"number a[3,4]; a[1]", "error 3210"},
      {"number a[3]; a[3]", "error 3210"},
      {"number a[3]; a[-1]", "error 3210"},
      {"number a[3]; a[1.9] = 5; return (a[1])", "5"},
      {"number a[1,1,1,1,1,1]; a[0,0,0,0,0,0] = 5; return (a[0,0,0,0,0,0])", "5"},
      {"a[1,1,1,1,1,1,1]", "error 3210"},
      {"a[1,1,1,1,1,1,1,1]", "error 3200"},
      {"a[0]", "error 3210"},
      {"a[u]", "error 3060"},
      {"a[\"x\"]", "error 3160"},
      {"a[1 < 2]", "error 3160"},
      {"5[3]", "error 3040"},
      {"boolean f[2]; f[0] = true; f[0] <=> f[1]; return (f[1] && !f[0])", "true"},
      {"boolean f[2]; f[0] = 1", "error 3090"},
      {"string t[2,6]; t[0] = \"ab\"; t[1] = \"cd\"; return (t[0] + t[1])", "'abcd'"},
      {"string t[2,6]; t[0] = \"ab\"; t[1] = \"cd\"; t[0] <=> t[1]; return (t[0] + t[1])", "'cdab'"},
      {"string t[2,6]; t[0] = \"ab\"; t[1] = \"cd\"; return (t[0] < t[1])", "true"},
      {"string t[2,6]; t[1] = \"much too long\"; return (t[1])", "'much '"},
      {"string t[2,6]; t[1] = \"ab\"; t[1] += \"cd\"; return (t[1])", "'abcd'"},
      {"string t[2,6]; t[1] = \"abc\"; t[1] += \"def\"", "error 3100"},
      {"string t[2,3,6]; t[1,2] = \"x\"; return (t[1,2] + t[0,0])", "'x'"},
      {"string t[2,6]; t[2]", "error 3210"},
      {"complex number z[3]; z[1] = (1|_2); return (z[1] + z[2])", "1 |_ 2"},
      {"a[3]; a[2] = 7; return (a[2]); 1 + 1", "7"},
      // declared by the first run, an element ever after
      {"a[5]\nreturn (a[5])", "0\n0"},
      {"global a[5]\na[4] = 6\na[5]\nreturn (a[4])", "0\n6\nerror 3210\n6"},
  };
  Expect(kPrograms);
  static constexpr Program kInverted[] = {
      {"number a[2,3]; a[1,2] = 9; a[0,1] = 4; return (a[1,2] * 10 + a[0,1])", "94"},
      {"number a[2,3]; a[2,1]", "error 3210"},
  };
  Expect(kInverted, 'L', true);
}

TEST_F(Programs, TheFirstRunOfAParsedExpressionMakesItsArrays) {
  SetUpFresh();
  Handle const counts =
      qmParseExp("number made; if (made == 0) then; a[3]; made = 1; end; a[2] += 1; return (a[2])");
  for (double const count : {1.0, 2.0, 3.0}) EXPECT_EQ(qmEvalExpHndlToNum(counts), count);
  Handle const makes = qmParseExp("a[3]; return (a[2])");
  EXPECT_EQ(Outcome(qmEvalExpHndl(makes)), "0");
  EXPECT_EQ(Outcome(qmEvalExpHndl(makes)), "error 3210") << "an element by now, behind the last one";
}

TEST_F(Programs, ElementsMadeByExpressionsLieWhereHostsFindThem) {
  for (bool const inverts : {false, true}) {
    SCOPED_TRACE(inverts);
    SetUpFresh('G', inverts);
    EXPECT_EQ(EvaluateLines("number a[2,3]; a[1,2] = 9; return (a[1,2])"), "9");
    EXPECT_EQ(qmGetNumArrayElement('G', "a", 2, 1, 2, -1, -1, -1, -1), 9.0);
    double memory[6] = {0, 1, 2, 3, 4, 5};
    ASSERT_TRUE(qmLinkNumArray('G', "linked", memory, 2, 2, 3, -1, -1, -1, -1));
    EXPECT_EQ(Evaluate("return (linked[1,0])"), inverts ? "1" : "3")
        << "the last index varies fastest, or slowest";
    EXPECT_EQ(Evaluate("linked[0,1] <=> linked[1,2]; return (linked[0,1])"), "5");
  }
}

TEST_F(Programs, PromotionToComplex) {
  static constexpr Program kPrograms[] = {
      {"x = 5; x = (1|_2); return x", "1 |_ 2"},
      {"x = 5; x += (1|_2); return x", "6 |_ 2"},
      {"z = (1|_2); z = 5; return z", "5 |_ 0"},
      {"z = (7|_4); z %= 4; return z", "3 |_ 0"},
      {"z = (7|_4); z /= 0; return z", "error 3110"},
      {"number a[3]; a[0] = 6; a[2] = (1|_2); return (a[0])", "6 |_ 0"},
      {"number a[3]; a[2] = (1|_2); return (a[2])", "1 |_ 2"},
      {"number a[3]; a[0] = 6; a[0] <=> a[2]; a[2] += (0|_1); return (a[2])", "6 |_ 1"},
      {"global x = 4\nx = sqrt(-x)\nx\nx = 3\nx", "4\n0 |_ 2\n0 |_ 2\n3 |_ 0\n3 |_ 0"},
  };
  Expect(kPrograms);
}

// ---- control flow ----

TEST_F(Programs, BranchesLoopsAndSelects) {
  static constexpr Program kPrograms[] = {
      {"x = 0; if (1 < 2) then; x = 1; else; x = 2; end; return x", "1"},
      {"x = 0; if (2 < 1) then; x = 1; else; x = 2; end; return x", "2"},
      {"x = 0; if (2 < 1) then; x = 1; end; return x", "0"},
      {"x = 0; unless (2 < 1) then; x = 1; else; x = 2; end; return x", "1"},
      {"x = 0; unless (2 < 1) then; x = 1; end; return x", "1"},
      {"x = 0; unless (1 < 2) then; x = 1; else; x = 2; end; return x", "2"},
      {"x = 0; while (x < 5) do; x += 1; next; return x", "5"},
      {"x = 9; while (x < 5) do; x += 1; next; return x", "9"},
      {"x = 9; until (x > 5) do; x += 1; next; return x", "10"},
      {"x = 0; until (x > 5) do; x += 1; next; return x", "6"},
      {"i = 0; while (i < 100000) do; i += 1; next; return i", "100000"},
      {"x = 0; always do; x += 1; if (x > 4) then; break; end; next; return x", "5"},
      {"x = 0; n = 0; while (x < 9) do; x += 1; if (x > 5) then; continue; end; n += 1; next; return n", "5"},
      // one turn more without a test, as when the loop was entered
      {"x = 0; until (x >= 2) do; x += 1; if (x == 2) then; continue; end; next; return x", "3"},
      {"x = 0; n = 0; until (x > 2) do; x += 1; if (x == 3) then; continue; end; n += 1; next; return n",
       "3"},
      {"n = 0; i = 0; while (i < 3) do; j = 0; while (j < 4) do; if (j == 2) then; break; end; n += 1; "
       "j += 1; next; i += 1; next; return n",
       "6"},
      {"n = 0; i = 0; while (i < 3) do; j = 0; always do; if (j == i) then; break; end; n += 1; j += 1; "
       "next; "
       "i += 1; next; return n",
       "3"},
      {"i = 0; n = 0; while (i < 5) do; i += 1; select i; case 3; continue; case 4; break; end; n += i; "
       "next; return n",
       "12"},
      {"i = 0; while (i < 5) do; i += 1; select i; case 3; break; end; next; return i", "5"},
      {"i = 0; n = 0; while (i < 5) do; i += 1; select i; case 3; continue; end; n += 1; next; return n",
       "4"},
      {"n = 0; select 2; case 1; n += 1; case 2; n += 2; case 3; n += 4; default; n += 8; end; return n",
       "14"},
      {"n = 0; select 7; default; n = 9; break; case 1; n = 1; end; return n", "9"},
      {"n = 0; select 7; default; n += 4; case 1; n += 1; end; return n", "5"},
      {"n = 0; select 1; default; n = 9; break; case 1; n = 1; end; return n", "1"},
      {"n = 0; when 7; otherwise; n = 9; break; is 1; n = 1; end; return n", "0"},
      {"n = 0; when 7; is 1; n = 1; break; otherwise; n = 9; end; return n", "9"},
      {"n = 0; select \"b\"; case \"a\"; n = 1; break; case \"b\"; n = 2; end; return n", "2"},
      {"n = 0; select \"b\"; case 5; n = 1; break; default; n = 2; end; return n", "2"},
      {"n = 0; select (1|_2); case 1; n = 1; break; case (1|_2); n = 2; end; return n", "2"},
      {"n = 0; select 5; default; n += 1; end; return n", "1"},
      {"n = 0; select 5; end; return n", "0"},
      {"n = 0; select 1; case 1; select 2; case 2; n += 1; break; end; n += 2; break; case 2; n = 8; end; "
       "return n",
       "3"},
      {"n = 0; select 3; case (1 + 1); n = 1; break; case (1 + 2); n = 2; end; return n", "2"},
      // cases passed by on the way to the end count as failed
      {"n = 0; select 7; break; case 1; n = 1; default; n += 9; end; return n", "9"},
      {"n = 0; select 1; break; default; n = 9; case 1; n = 2; end; return n", "2"},
      {"n = 0; goto in; select 9; case 1; label in; n = 5; case 2; n = 7; default; n += 10; end; return n",
       "15"},
      // the last "else" counts, and a second "do" leaves the program when its predecessor's condition fails
      {"x = 0; if (1 < 2) then; x = 1; else; x = 2; else; x = 3; end; return x", "1"},
      {"x = 0; if (2 < 1) then; x = 1; else; x = 2; else; x = 3; end; return x", "3"},
      {"x = 0; while (x < 9) do; x += 1; (x < 3) do; x += 10; next; return x", "0"},
      // what is open at the end runs to the end
      {"x = 0; if (1 < 2) then; x = 3; return x", "3"},
      {"x = 0; while (x < 9) do; x += 1; return x", "1"},
      {"if (1 < 2) then; x = 3", "3"},
      {"x = 0; if (2 < 1) then; x = 3", "0"},
      {"x = 0; while (x < 5) do; x += 1", "1"},
      {"select 1; case 1; x = 7", "7"},
      {"if 1 then; end", "error 3170"},
      {"unless \"a\" then; end", "error 3170"},
      {"while 1 do; next", "error 3170"},
      {"if then; end", "error 3190"},
      {"while do; next", "error 3190"},
      {"select 1; case u; end", "error 3060"},
      {"while \"a\" do; next", "error 3170"},
      {"if u then; end", "error 3060"},
      {"select u; end", "error 3060"},
  };
  ExpectInEveryRun(kPrograms);
}

TEST_F(Programs, SelectsOfEachOrder) {
  struct Selection {
    char const* text;
    std::array<char const*, 3> outcomes;  // for 1 and 2, which have cases, and 3
  };
  constexpr Selection kSelections[] = {
      {"select x; case 1; n += 1; break; case 2; n += 2; break; default; n += 9; end", {"1", "2", "9"}},
      {"select x; default; n += 9; break; case 1; n += 1; break; case 2; n += 2; end", {"1", "2", "9"}},
      {"select x; case 1; n += 1; break; default; n += 9; break; case 2; n += 2; end", {"1", "2", "9"}},
      {"select x; case 1; n += 1; case 2; n += 2; default; n += 9; end", {"12", "11", "9"}},
      {"select x; default; n += 9; case 1; n += 1; break; case 2; n += 2; end", {"1", "2", "10"}},
      {"when x; otherwise; n += 9; break; is 1; n += 1; break; is 2; n += 2; end", {"1", "2", "0"}},
      {"when x; is 1; n += 1; break; is 2; n += 2; break; otherwise; n += 9; end", {"1", "2", "9"}},
      {"select x; case (0 + 1); n += 1; break; case (1 + 0 + 1); n += 2; break; default; n += 9; end",
       {"1", "2", "9"}},
      {"select x; case (k = 1); n += k; break; case (k = k + 1); n += k; break; default; n += 9; end",
       {"1", "2", "9"}},
  };
  for (Selection const& selection : kSelections) {
    for (std::size_t i = 0; i < selection.outcomes.size(); ++i) {
      std::string const text = "n = 0; x = " + std::to_string(i + 1) + "; " + selection.text + "; return n";
      Program const program[] = {{text, selection.outcomes[i]}};
      ExpectInEveryRun(program);
    }
  }
}

TEST_F(Programs, JumpsToLabels) {
  static constexpr Program kPrograms[] = {
      {"x = 0; goto past; x = 1; label past; return x", "0"},
      {"x = 0; label again; x += 1; if (x < 5) then; goto again; end; return x", "5"},
      {"x = 0; always do; x += 1; if (x == 3) then; goto out; end; next; label out; return x", "3"},
      {"x = 0; goto in; if (2 < 1) then; x = 1; label in; x += 2; end; return x", "2"},
      {"x = 0; goto a; x += 1; label a; x += 2; if (x > 9) then; return x; end; x += 4; goto b; label a; x "
       "+= 8; "
       "label b; return x",
       "6"},
      // "do" does not test before a loop that was entered past its opener comes round; so in every run
      {"x = 0; goto in; while (x < 0) do; label in; x += 1; next; return x", "2"},
      {"x = 0; goto a; x += 1; label a; x += 2; if (x > 9) then; 1; else; goto b; end; label a; x += 4; "
       "label b; return x",
       "2"},
      {"goto nowhere", "error 3270"},
      {"x = 0; goto nowhere; return x", "error 3270"},
      {"x = 0; label x; goto x", "error 3270"},
      {"goto There; label there", "error 3270"},
      {"x = 1; goto x", "error 3270"},
      {"goto 5", "error 3270"},
      {"x = 0; label x; return x", "0"},
      {"label a; a = 5", "error 3040"},
  };
  ExpectInEveryRun(kPrograms);
}

TEST_F(Programs, LeavingEarly) {
  static constexpr Program kPrograms[] = {
      {"return 5; 6", "5"},
      {"x = 1; return (x + 2); x = 9", "3"},
      {"return \"text\"; 6", "'text'"},
      {"return (1 < 2); 6", "true"},
      {"return (1|_2); 6", "1 |_ 2"},
      {"return (sqrt(-4)); 6", "0 |_ 2"},
      {"return u", "error 3060"},
      {"x = 1; exit; x = 2", "0"},
      {"x = 0; while (x < 9) do; x += 1; if (x == 4) then; return (x * 2); end; next; return x", "8"},
      {"seterror 0; return 5", "5"},
      {"seterror 3110; return 5", "error 3110"},
      {"seterror 12345.9; return 5", "error 12345"},
      {"seterror 77.9; return 5", "error 77"},
      {"if (2 < 1) then; seterror 3110; end; return 5", "5"},
      {"clearerror; return 5", "5"},
      {"seterror \"a\"", "error 3160"},
      {"seterror (1 < 2)", "error 3160"},
  };
  ExpectInEveryRun(kPrograms);
  SetUpFresh();
  std::string const text(600, 'y');
  EXPECT_EQ(Evaluate("return \"" + text + "\"; 6"), "'" + text + "'");
}

TEST_F(Programs, FaultsOfStructureAreFoundBeforeAnythingRuns) {
  SetUpFresh();
  ASSERT_NE(qmCreateNumVar('G', "ran", 0.0), 0U);
  for (char const* const fault : {
           "then",
           "else",
           "end",
           "next",
           "break",
           "continue",
           "case 1",
           "is 1",
           "default",
           "otherwise",
           "(1 < 2) do",
           "if (1 < 2) then; next",
           "if (1 < 2) then; break; end",
           "if (1 < 2); end",
           "if (1 < 2) then; case 1; end",
           "if (1 < 2) then; end; end",
           "while (1 < 2) do; end",
           "while (1 < 2) do; else; next",
           "always do; next; next",
           "select 1; then; end",
           "select 1; next",
           "select 1; case 1; continue; end",
           "select 1; default; default; end",
           "when 1; otherwise; otherwise; end",
           "if (1 < 2)",
           "if (1 < 2) else; end",
           "if (1 < 2) then; then; end",
           "while next",
           "always next",
           "while (1 < 2) do; if (1 < 2) then; next; end",
           "select 1; case 1; next",
           "select 1; (1 < 2) do; end",
       }) {
    EXPECT_EQ(Evaluate(std::string("ran = 1; ") + fault), "error 3130") << fault;
    EXPECT_EQ(qmParseExp(fault), 0U) << fault;
    EXPECT_EQ(qmGetLastErrorID(), 3130) << fault;
  }
  EXPECT_EQ(qmGetNumVarValue('G', "ran"), 0.0);
}

TEST_F(Programs, BlocksNestThirtyTwoDeep) {
  struct Nest {
    char const* open;
    char const* close;
  };
  static constexpr Nest kNests[] = {
      {"if (1 < 2) then; ", "end; "},   {"unless (2 < 1) then; ", "end; "}, {"always do; ", "break; next; "},
      {"while (n < 1) do; ", "next; "}, {"until (1 < 2) do; ", "next; "},   {"select 1; case 1; ", "end; "},
      {"when 1; is 1; ", "end; "},
  };
  for (Nest const& nest : kNests) {
    for (int const depth : {32, 33}) {
      SetUpFresh();
      std::string const program =
          "n = 0; " + Repeat(nest.open, depth) + "n += 1; " + Repeat(nest.close, depth) + "return n";
      EXPECT_EQ(Evaluate(program), depth == 32 ? "1" : "error 3130") << nest.open << depth;
    }
  }
  EXPECT_EQ(Evaluate("n = 0; " + Repeat("if (1 < 2) then; n += 1; end; ", 1000) + "return n"), "1000");
}

TEST_F(Programs, LongRunsAndLateFaults) {
  SetUpFresh();
  EXPECT_EQ(
      qmEvalExpStrToNum("i = 0; t = 0; while (i < 1000000) do; i += 1; if (i % 3 == 0) then; continue; end; "
                        "t += i; next; return t"),
      333333666667.0);
  // a run that failed half-way leaves the next one a clean start
  ASSERT_NE(qmCreateNumVar('G', "divisor", 0.0), 0U);
  Handle const handle =
      qmParseExp("n = 0; until (n > 2) do; n += 1; select n; case 2; n += 1 / divisor; end; next; return n");
  ASSERT_NE(handle, 0U);
  EXPECT_EQ(Outcome(qmEvalExpHndl(handle)), "error 3110");
  qmClearLastError();
  ASSERT_TRUE(qmSetNumVar('G', "divisor", 0.5));
  for (int run = 0; run < 2; ++run) EXPECT_EQ(Outcome(qmEvalExpHndl(handle)), "4");
}

}  // namespace
}  // namespace qumel::testing
