// Operators that hosts define by an expression or from a file: their errors and their recursion.
#include <pthread.h>

#include <atomic>
#include <barrier>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "api/operator_fixture.h"

namespace qumel::testing {

namespace {

TEST_F(Operators, DeclarationsAreCheckedInOrder) {
  std::string const longest(64, 'n');
  std::string const tooLong(65, 'n');
  struct Case {
    char const *name, *fix, *returns, *parameters, *text;
    long code;
  };
  Case const cases[] = {
      {nullptr, nullptr, nullptr, nullptr, nullptr, 3300},
      {"", "prefix", "number", "", "1", 3300},
      {tooLong.c_str(), nullptr, nullptr, nullptr, nullptr, 3310},
      {longest.c_str(), "prefix", "number", "number x", "x", 0},
      {longest.c_str(), nullptr, nullptr, nullptr, nullptr, 3320},
      {"f", nullptr, nullptr, nullptr, nullptr, 3330},
      {"f", "", "number", "", "1", 3330},
      {"f", "Prefix", nullptr, nullptr, nullptr, 3340},
      {"f", "prefix", nullptr, "number x", nullptr, 3350},
      {"f", "prefix", "double", "float x", nullptr, 3360},
      {"f", "prefix", "number", "float x", "1+", 3370},
      {"f", "prefix", "number", "void x", "1", 3370},
      {"f", "prefix", "number", "number x;number y", "1", 3370},
      {"f", "prefix", "number", "number x,", "1", 3370},
      {"f", "prefix", "number", "number x y", "1", 3370},
      {"f", "prefix", "number", "number x", "1+", 2030},
      {"f", "prefix", "number", "number x", " ", 3030},
      {"f", "prefix", "number", "number x", "", 3030},
      {"f", "prefix", "number", " \tnumber  x ,\nstring s ", "x", 0},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(std::string(c.name != nullptr ? c.name : "(null)") + " " + std::to_string(c.code));
    EXPECT_EQ(qmDefineExpOp('G', c.name, c.fix, c.returns, c.parameters, nullptr, c.text), c.code);
    EXPECT_EQ(qmGetLastErrorID(), c.code);
  }
  EXPECT_TRUE(qmIsOp('G', "f"));
  EXPECT_FALSE(qmIsOp('C', "f"));
  EXPECT_EQ(Number("f(7, \"s\")"), 7.0);
  EXPECT_EQ(qmDeleteOp('C', "sin"), 3420);
  EXPECT_EQ(qmDeleteOp('G', "sin"), kNotFound);
  EXPECT_EQ(qmDeleteOp('G', nullptr), kNotFound);
  EXPECT_EQ(qmDeleteOp('G', "f"), kNone);
  EXPECT_FALSE(qmIsOp('L', "f"));
}

TEST_F(Operators, BodiesRunInEveryPosition) {
  struct Case {
    char const *name, *fix, *parameters, *precedence, *body, *expression;
    double value;
  };
  constexpr Case kCases[] = {
      {"twice", "prefix", "number x", nullptr, "2*x", "twice 4 + 1", 9.0},
      {"plus", "infix", "number a, number b", "$+", "a+b", "2 * 3 plus 4 * 5", 26.0},
      // the first "+" of the language is the sign, which binds tighter than products
      {"tight", "infix", "number a, number b", "+", "a+b", "2 * 3 tight 4 * 5", 70.0},
      {"times", "infix", "number a, number b", "*", "a*b", "2 + 3 times 4", 14.0},
      {"squared", "postfix", "number x", nullptr, "x*x", "3 squared + 1", 10.0},
      {"#", "infix", "number a, number b", "^", "a*10+b", "1 # 2 * 2", 24.0},
      {"answer", "nofix", nullptr, nullptr, "42", "answer", 42.0},
      {"three", "prefix", "number a, number b, number c", nullptr, "a*100+b*10+c", "three(1, 2+0, twice 1.5)",
       123.0},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(qmDefineExpOp('G', c.name, c.fix, "number", c.parameters, c.precedence, c.body), kNone);
    EXPECT_EQ(Number(c.expression), c.value);
    Handle const handle = qmParseExp(c.expression);
    EXPECT_EQ(qmEvalExpHndlToNum(handle), c.value);
    EXPECT_EQ(qmEvalExpHndlToNum(handle), c.value);
    qmDeleteExp(handle);
  }
  qmDefineExpOp('G', "shout", "prefix", "string", "string s", nullptr, "s + \"!\"");
  EXPECT_EQ(ToText("shout \"hey\""), "hey!");
  qmDefineExpOp('G', "isbig", "prefix", "boolean", "number x", nullptr, "x > 10");
  EXPECT_TRUE(qmEvalExpStrToBool("isbig 11"));
  EXPECT_EQ(ErrorOf("isbig \"11\""), 3090);
  EXPECT_EQ(ErrorOf("isbig nothing"), kNotDefined);
  EXPECT_EQ(ErrorOf("three(1, 2)"), 3190);
}

TEST_F(Operators, ParametersAreBoundByReference) {
  ASSERT_EQ(Define("bump", "number x", "x = x + 1"), kNone);
  EXPECT_EQ(Number("v = 5; bump v; v + 0"), 6.0);
  EXPECT_EQ(ErrorOf("bump 5"), 3040);
}

/** Operators of one parameter that store in it, and what their result is; each also by a body that calls it,
 * and by one that is compiled anew for every run. */
struct Storing {
  char const *type, *body;
  char const* expression;  // with F for the name of the operator
  char const* result;
};

// What a body leaves in a computed operand is gone when the operand is computed again.
TEST_F(Operators, ComputedOperandsStartAnewInEveryRunAndEveryTurn) {
  qmSetAllowComplexResults(true);
  qmSetFormattedResultPrecisionLimit(4);
  static constexpr Storing kCases[] = {
      // constants that were folded
      {"number", "n = n * 2; n + 0", "F(3+0)", "6.0000"},
      {"number", "n = n * 2; n + 0", "F(1+2+3) + F(3+0)", "18.0000"},
      {"number", "n = n * 2; n + 0", "F(F(3+0))", "12.0000"},
      {"number", "n = n * 2; n + 0", "x = 5; F(x^0) + F(3+0)", "8.0000"},
      {"number", "n = n * 2; n + 0", "t = 0; while (t < 18) do; t += F(3+0); next; return t", "18.0000"},
      {"number", "m = 7; n <=> m; 10 * n + m", "F(3+0)", "73.0000"},
      // numbers that become complex
      {"number", "n = sqrt(n); n + 0",
       "t = 0; x = -18; while (x < 8) do; x += 13; t = 100 * t + F(x + 1); next; return t", "3.0000"},
      {"number", "n = sqrt(n - 5); n = n * n; n + 0", "x = 5; F(x^0)", "-4.0000"},
      {"complex", "n = sqrt(n); n + 0", "F(0-4) + F(4+0)", "( 2.0000 |_ 2.0000 )"},
      {"complex", "n = sqrt(n); n + 0", "F(F(16+0) - 8)", "( 0.0000 |_ 2.0000 )"},
      // scalars that become arrays
      {"number", "n[3]; n[1] = 7; n[1] + 0", "F(3+0) + F(0-1)", "14.0000"},
      {"complex", "n[3]; n[1] = sqrt(0-4); n[1] + 0",
       "i = 0; t = 0; while (i < 3) do; t += F(i+1); i += 1; next; return t", "( 0.0000 |_ 6.0000 )"},
      // results that were taken for numbers until their operands were known
      {"string", "n = \"a longer text\"; n + \"\"", "F(\"ab\" + \"c\")", "a longer text"},
      {"string", "n = \"a longer text\"; n + \"\"", "F(F(\"ab\" + \"c\") + \"d\")", "a longer text"},
      {"string", "n = n + n; n + \"\"", "s = \"ab\"; F(t = s + \"c\") + t", "abcabcabc"},
      {"string", "n[3, 40]; n[1] = \"0123456789\"; n[1] + \"\"", "F(\"ab\" + \"c\")", "0123456789"},
      // all of them in complex evaluation, which lasts from here on
      {"number", "n += 1; n += 1; n + 0", "forcecomplex; F(3+0)", "5.0000"},
      {"number", "n = sqrt(n - 5); n = n * n; n + 0", "x = 5; F(x^0) + F(3+0)", "-6.0000"},
  };
  for (Storing const& c : kCases) {
    std::string const type = c.type;
    std::string const parameter = (type == "string" ? "string" : "number") + std::string(" n");
    auto const define = [&](char const* name, char const* body) {
      ASSERT_EQ(qmDefineExpOp('G', name, "prefix", c.type, parameter.c_str(), nullptr, body), kNone);
    };
    define("kept", c.body);
    define("outer", "kept n");
    define("again", nullptr);
    ASSERT_EQ(qmDefineExpOpStr('G', "again", c.body), kNone);
    for (char const* const name : {"kept", "outer", "again"}) {
      std::string text = c.expression;
      for (std::size_t at; (at = text.find('F')) != std::string::npos;) text.replace(at, 1, name);
      SCOPED_TRACE(text + " with " + c.body);
      EXPECT_EQ(ToText(text.c_str()), c.result);
      EXPECT_EQ(qmGetLastErrorID(), kNone);
      Handle const handle = qmParseExp(text.c_str());
      for (int run = 1; run <= 3; ++run) {
        EXPECT_STREQ(qmEvalExpHndlToStr(handle), c.result) << "run " << run;
        EXPECT_EQ(qmGetLastErrorID(), kNone) << "run " << run;
      }
      qmDeleteExp(handle);
    }
    for (char const* const name : {"outer", "kept", "again"}) EXPECT_EQ(qmDeleteOp('G', name), kNone);
  }
}

TEST_F(Operators, AnOperandThatBecameComplexInOneRunIsANumberInTheNext) {
  qmSetAllowComplexResults(true);
  ASSERT_NE(qmCreateNumVar('G', "x", 0.0), 0U);
  ASSERT_EQ(Define("h", "number n", "n = sqrt(n); n + 0"), kNone);
  ASSERT_EQ(Define("g", "number n", "h(n + 0)"), kNone);
  ASSERT_EQ(Define("again", "number n", nullptr), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "again", "n = sqrt(n); n + 0"), kNone);
  ASSERT_EQ(Define("reciprocal", "number n", "n = sqrt(n); 1 / real n"), kNone);
  struct Run {
    double x, root;
  };
  constexpr Run kRuns[] = {{-5.0, 0.0}, {8.0, 3.0}, {-10.0, 0.0}, {15.0, 4.0}};
  for (char const* const text : {"h(x+1)", "g(x+1)", "again(x+1)", "h(x+1) * 2 - h(x+1)"}) {
    SCOPED_TRACE(text);
    Handle const handle = qmParseExp(text);
    for (Run const& run : kRuns) {
      ASSERT_TRUE(qmSetNumVar('G', "x", run.x));
      EXPECT_NEAR(qmEvalExpHndlToNum(handle), run.root, 1e-15) << run.x;
      EXPECT_EQ(qmGetLastErrorID(), kNone);
    }
    qmDeleteExp(handle);
  }
  Handle const handle = qmParseExp("reciprocal(x+1)");
  qmSetNumVar('G', "x", -5.0);
  qmEvalExpHndlToNum(handle);
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
  qmSetNumVar('G', "x", 3.0);
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 0.5) << "after a body that failed";
  // a variable stays what the body made of it
  EXPECT_EQ(ToText("y = 0-4; h y; return y"), "( 0.000000000000 |_ 2.000000000000 )");
}

TEST_F(Operators, ADeclaredOperatorGetsItsBodyLaterAndMayNameItself) {
  ASSERT_EQ(Define("fact", "number n", nullptr), kNone);
  EXPECT_EQ(ErrorOf("fact 3"), 3450) << "no body yet";
  EXPECT_EQ(qmDefineExpOpStr('G', "fact", nullptr), 3410);
  EXPECT_EQ(qmDefineExpOpStr('G', "fact", ""), kBadExpression);
  EXPECT_EQ(qmDefineExpOpStr('C', "fact", "1"), kNotFound);
  EXPECT_EQ(qmDefineExpOpStr('G', "fact", "1+"), 2030);
  ASSERT_EQ(qmDefineExpOpStr('G', "fact", "if (n <= 1) then return 1; end return (n * fact(n - 1))"), kNone);
  EXPECT_EQ(qmDefineExpOpStr('G', "fact", "1"), 3320);
  EXPECT_EQ(Number("fact 10"), 3628800.0);
  ASSERT_EQ(Define("fib", "number n", nullptr), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "fib", "if (n < 2) then return n; end return (fib(n-1) + fib(n-2))"),
            kNone);
  EXPECT_EQ(Number("fib 12"), 144.0);
  ASSERT_EQ(Define("ack", "number m, number n", nullptr), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "ack",
                             "if (m == 0) then return (n+1); end "
                             "if (n == 0) then return (ack(m-1, 1)); end "
                             "return (ack(m-1, ack(m, n-1)))"),
            kNone);
  EXPECT_EQ(Number("ack(2, 3)"), 9.0);
  ASSERT_EQ(Define("isodd", "number n", nullptr), kNone);
  ASSERT_EQ(Define("iseven", "number n", nullptr), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "iseven", "if (n == 0) then return 1; end return (isodd(n-1))"), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "isodd", "if (n == 0) then return 0; end return (iseven(n-1))"), kNone);
  EXPECT_EQ(Number("iseven 20"), 1.0);
  ASSERT_EQ(Define("forever", "number n", nullptr), kNone);
  ASSERT_EQ(qmDefineExpOpStr('G', "forever", "forever(n + 1)"), kNone);
  EXPECT_EQ(ErrorOf("forever 1"), kOutOfMemory)
      << "a recursion without end fails, and does not exhaust the stack";
  EXPECT_EQ(Number("fact 5"), 120.0);
  ASSERT_EQ(Define("plain", "number n", "n"), kNone);
  EXPECT_EQ(qmDefineExpOpStr('G', "plain", "1"), 3320);
}

TEST_F(Operators, ALongChainOfBodiesFailsCleanly) {
  ASSERT_EQ(Define("c0", "number n", "n + 1"), kNone);
  for (int i = 1; i < 3000; ++i) {
    std::string const name = "c" + std::to_string(i);
    std::string const body = "c" + std::to_string(i - 1) + " n";
    ASSERT_EQ(Define(name.c_str(), "number n", body.c_str()), kNone);
  }
  EXPECT_EQ(Number("c100 1"), 2.0);
  EXPECT_EQ(ErrorOf("c2999 1"), kOutOfMemory);
  // a fault at the bottom is looked for once at each level, not twice
  ASSERT_EQ(Define("m0", "number n", "n + \"a\""), kNone);
  for (int i = 1; i <= 60; ++i) {
    std::string const body = "m" + std::to_string(i - 1) + " n";
    ASSERT_EQ(Define(("m" + std::to_string(i)).c_str(), "number n", body.c_str()), kNone);
  }
  EXPECT_EQ(ErrorOf("m60 1"), 3090);
}

TEST_F(Operators, BodiesAreReadFromFiles) {
  std::string const path = ::testing::TempDir() + "qumel_operator_body.txt";
  std::ofstream(path, std::ios::binary) << "// doubles\nx * 2\n";
  EXPECT_EQ(qmReadExpOp('G', "dbl", "prefix", "number", "number x", nullptr, path.c_str()), kNone);
  EXPECT_EQ(Number("dbl 21"), 42.0);
  EXPECT_EQ(qmReadExpOp('G', "later", "prefix", "number", "number x", nullptr, nullptr), kNone);
  EXPECT_EQ(qmReadExpOpStr('G', "later", (path + ".none").c_str()), kNotFound);
  EXPECT_EQ(qmReadExpOpStr('G', "later", nullptr), kNotFound) << "the last error, unchanged";
  EXPECT_EQ(qmReadExpOpStr('G', "later", ::testing::TempDir().c_str()), kNotFound) << "a folder is no text";
  EXPECT_EQ(qmReadExpOpStr('G', "later", path.c_str()), kNone);
  EXPECT_EQ(Number("later 4"), 8.0);
  for (std::string const& content : {std::string(), std::string(" \n"), std::string("\0x", 2)}) {
    SCOPED_TRACE(content);
    std::ofstream(path, std::ios::binary) << content;
    EXPECT_EQ(qmReadExpOp('G', "empty", "prefix", "number", "number x", nullptr, path.c_str()),
              kBadExpression);
    EXPECT_FALSE(qmIsOp('G', "empty"));
    EXPECT_EQ(qmReadExpOp('G', "awaits", "prefix", "number", "number x", nullptr, nullptr), kNone);
    EXPECT_EQ(qmReadExpOpStr('G', "awaits", path.c_str()), kBadExpression);
    EXPECT_EQ(qmDefineExpOpStr('G', "awaits", "x + 1"), kNone) << "it still waits for its body";
    EXPECT_EQ(Number("awaits 4"), 5.0);
    EXPECT_EQ(qmDeleteOp('G', "awaits"), kNone);
  }
  std::remove(path.c_str());
}

TEST_F(Operators, TheProcessWideOneWinsAndADeletedOneLivesOnInParsedExpressions) {
  ASSERT_EQ(qmDefineExpOp('G', "both", "prefix", "number", "number x", nullptr, "x + 1"), kNone);
  ASSERT_EQ(qmDefineExpOp('C', "both", "prefix", "number", "number x", nullptr, "x + 2"), kNone);
  EXPECT_EQ(Number("both 10"), 12.0);
  Handle const handle = qmParseExp("both 20");
  EXPECT_EQ(qmDeleteOp('C', "both"), kNone);
  EXPECT_EQ(qmEvalExpHndlToNum(handle), 22.0);
  EXPECT_EQ(Number("both 10"), 11.0);
  qmDeleteExp(handle);
}

TEST_F(Operators, ComplexBodiesSwitchTheEvaluationOnce) {
  ASSERT_EQ(qmDefineExpOp('G', "root", "prefix", "complex", "number x", nullptr, "1"), kNone);
  ASSERT_EQ(qmDefineExpOp('G', "croot", "prefix", "complex", "number x", nullptr,
                          "global count = count + 1; sqrt x"),
            kNone);
  ASSERT_NE(qmCreateNumVar('G', "count", 0.0), 0U);
  EXPECT_EQ(ErrorOf("croot(0-4)"), kResultIsComplex);
  qmSetNumVar('G', "count", 0.0);
  qmSetAllowComplexResults(true);
  qmClearLastError();
  qmSetNumVar('G', "count", 0.0);
  EXPECT_EQ(ToText("croot(0-4)"), "( 0.000000000000 |_ 2.000000000000 )");
  EXPECT_EQ(qmGetNumVarValue('G', "count"), 1.0) << "the body's effects happen once";
}

// The result of "|_" is complex only when it runs, after the body was compiled.
TEST_F(Operators, BodiesComputeWithOperandsThatBecomeComplex) {
  qmSetAllowComplexResults(true);
  for (char const* text : {"x*x", static_cast<char const*>(nullptr)}) {
    SCOPED_TRACE(text != nullptr ? "kept" : "recursive");
    ASSERT_EQ(qmDefineExpOp('G', "square", "prefix", "complex", "complex x", nullptr, text), kNone);
    if (text == nullptr) {
      ASSERT_EQ(qmDefineExpOpStr('G', "square", "x*x"), kNone);
    }
    EXPECT_EQ(ToText("square(1 |_ 2)"), "( -3.000000000000 |_ 4.000000000000 )");
    EXPECT_EQ(ToText("square(3) + square(1 |_ 2)"), "( 6.000000000000 |_ 4.000000000000 )");
    EXPECT_EQ(ToText("square 3"), "9.000000000000");
    EXPECT_EQ(qmDeleteOp('G', "square"), kNone);
  }
}

TEST_F(Operators, OfThreadsThatDefineAProcessWideOneOnlyOneIsFirst) {
  constexpr int kRounds = 300;
  constexpr int kThreads = 4;
  std::atomic<int> defined{0};
  std::atomic<int> given{0};
  std::barrier meeting(kThreads);
  auto const define = [&](int number) {
    qmClearContext();
    qmCreatePrivateContext(std::to_string(number).c_str());
    qmSetContext(std::to_string(number).c_str(), false);
    for (int i = 0; i < kRounds; ++i) {
      meeting.arrive_and_wait();
      defined += qmDefineExpOp('C', "contested", "prefix", "number", "number x", nullptr, "x+1") == kNone;
      EXPECT_EQ(qmEvalExpStrToNum("contested 1"), 2.0);
      qmDefineExpOp('C', "promised", "prefix", "number", "number x", nullptr, nullptr);
      given += qmDefineExpOpStr('C', "promised", "x+2") == kNone;
      EXPECT_EQ(qmEvalExpStrToNum("promised 1"), 3.0);
      meeting.arrive_and_wait();
      if (number == 0) {
        qmDeleteOp('C', "contested");
        qmDeleteOp('C', "promised");
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(define, i);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(defined, kRounds);
  EXPECT_EQ(given, kRounds);
}

}  // namespace

}  // namespace qumel::testing
