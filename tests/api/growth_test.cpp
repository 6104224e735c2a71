// How work grows with the size of what is asked: counted in bytes allocated, which four times the size must
// not make more than about four times as many.
#include <functional>
#include <random>
#include <string>

#include "api/interface_test.h"
#include "support/failing_allocation.h"

namespace qumel::testing {

namespace {

class Growth : public InterfaceTest {
 protected:
  static std::string Chain(std::string const& first, std::string const& link, int links) {
    std::string text = first;
    for (int i = 0; i < links; ++i) text += link;
    return text;
  }
  /** Runs work for one size and for four times that size. */
  static void ExpectLinear(int size, std::function<void(int)> const& work) {
    auto const bytesFor = [&](int n) {
      CountedAllocations const counted;
      work(n);
      EXPECT_EQ(qmGetLastErrorID(), kNone);
      return static_cast<double>(counted.Bytes());
    };
    bytesFor(size);  // what is made once is made here
    double const few = bytesFor(size);
    EXPECT_LT(bytesFor(4 * size), 5 * few);
  }
};

constexpr int kLinks = 2000;

TEST_F(Growth, OfChainsOfTexts) {
  qmCreateStrVar('G', "s", 10, "abc");
  qmDefineExpOp('G', "same", "prefix", "string", "string t", nullptr, "t + \"\"");
  struct {
    char const *name, *first, *link, *last;
    double length, each;  // of the text: in all, and for each link
  } const cases[] = {
      {"literals", "\"a\"", " + \"a\"", "", 1, 1},
      {"the word for texts", "\"a\"", " $+ \"a\"", "", 1, 1},
      {"variables", "s", " + s", "", 3, 3},
      {"results on both sides", "\"a\" + s", " + left(s, 2)", "", 4, 2},
      {"bodies on both sides", "same s", " + same \"ab\"", "", 3, 2},
      {"chains in chains", "(\"a\" + s)", " + (\"a\" + s + \"b\")", "", 4, 5},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectLinear(kLinks, [&](int links) {
      std::string const text = "length(" + Chain(c.first, c.link, links) + ")";
      double const length = c.length + c.each * links;
      EXPECT_EQ(qmEvalExpStrToNum(text.c_str()), length);
      Handle const handle = qmParseExp(text.c_str());
      for (int run = 0; run < 3; ++run) EXPECT_EQ(qmEvalExpHndlToNum(handle), length);
      qmDeleteExp(handle);
    });
  }
}

TEST_F(Growth, OfWhatAChainKeepsBetweenItsRuns) {
  constexpr int kAdded = 200;
  qmCreateStrVar('G', "s", 1001, std::string(1000, 's').c_str());
  Handle const handle = qmParseExp(("length(" + Chain("s", " + s", kAdded) + ")").c_str());
  CountedAllocations const counted;
  for (int run = 0; run < 2 * kAdded; ++run) ASSERT_EQ(qmEvalExpHndlToNum(handle), 1000.0 * (kAdded + 1));
  EXPECT_LT(counted.KeptBytes(), 5 * 1000 * kAdded) << "the text twice, and short buffers";
}

TEST_F(Growth, ChainsGiveTheirTextsHoweverOftenTheyRun) {
  struct Shape {
    char const* expression;
    std::function<std::string(std::string const& a, std::string const& b, std::string const& c)> model;
  };
  using Text = std::string const&;
  Shape const shapes[] = {
      {"a + b + c", [](Text a, Text b, Text c) { return a + b + c; }},
      {"a + (b + (c + \"!\"))", [](Text a, Text b, Text c) { return a + b + c + "!"; }},
      {"(a + \"-\" + b) + (\"-\" + c)", [](Text a, Text b, Text c) { return a + "-" + b + "-" + c; }},
      {"left(a + b, 5) + (b + c)", [](Text a, Text b, Text c) { return (a + b).substr(0, 5) + b + c; }},
      {"twofold(a + b) + c", [](Text a, Text b, Text c) { return a + b + "/" + a + b + c; }},
      {"c + twofold(a + \"\")", [](Text a, Text, Text c) { return c + a + "/" + a; }},
      {"(t = left(a + b, 9)) + (t + c)",
       [](Text a, Text b, Text c) { return (a + b).substr(0, 9) + (a + b).substr(0, 9) + c; }},
      {"n = 0; while n < 3 do n = n + 1; t = \"<\" + left(a, n) + b; next return (t + c)",
       [](Text a, Text b, Text c) { return "<" + a.substr(0, 3) + b + c; }},
      {"if (a + b == b + a) then return (a + b + a); end return (b + a + c)",
       [](Text a, Text b, Text c) { return a + b == b + a ? a + b + a : b + a + c; }},
  };
  for (char const* name : {"a", "b", "c"}) qmCreateStrVar('G', name, 256, "");
  qmDefineExpOp('G', "twofold", "prefix", "string", "string t", nullptr, "t + \"/\" + t");
  std::mt19937 random(11);
  for (Shape const& shape : shapes) {
    SCOPED_TRACE(shape.expression);
    Handle const handle = qmParseExp(shape.expression);
    for (int run = 0; run < 60; ++run) {
      std::string texts[3];
      for (int i = 0; i < 3; ++i) {
        std::size_t const length = random() % (run % 5 == 0 ? 220 : 9);
        texts[i].assign(length, static_cast<char>('a' + random() % 26));
        qmSetStrVar('G', &"a\0b\0c"[2 * i], texts[i].c_str());
      }
      std::string const expected = shape.model(texts[0], texts[1], texts[2]);
      ASSERT_EQ(qmEvalExpHndlToStr(handle), expected);
      ASSERT_EQ(ToText(shape.expression), expected);
    }
  }
}

TEST_F(Growth, OfTextsInParentheses) {
  ExpectLinear(kLinks, [](int links) {
    std::string const text = "length(" + Chain("", "\"ab\" + (", links) + "\"c\"" + Chain(")", ")", links);
    EXPECT_EQ(qmEvalExpStrToNum(text.c_str()), 2.0 * links + 1);
  });
}

TEST_F(Growth, OfBodiesAndLoops) {
  int number = 0;
  ExpectLinear(kLinks, [&](int links) {
    std::string const op = "f" + std::to_string(++number);
    std::string const body = Chain("s", " + s", links);
    ASSERT_EQ(qmDefineExpOp('G', op.c_str(), "prefix", "string", "string s", nullptr, body.c_str()), kNone);
    std::string const loop =
        "n = 0; i = 0; while i < 3 do i = i + 1; n = n + length(" + op + " \"ab\"); next return n";
    EXPECT_EQ(qmEvalExpStrToNum(loop.c_str()), 6.0 * (links + 1));
  });
}

TEST_F(Growth, OfDeletingOperatorsAndVariables) {
  auto const nameOf = [](char const* kind, int i) { return kind + std::to_string(i); };
  for (char const scope : {'G', 'C'}) {
    ExpectLinear(1000, [&](int count) {
      for (int i = 0; i < count; ++i)
        qmDefineExpOp(scope, nameOf("op", i).c_str(), "prefix", "number", "number x", nullptr, "x");
      for (int i = 0; i < count; ++i) EXPECT_EQ(qmDeleteOp(scope, nameOf("op", i).c_str()), kNone);
      EXPECT_FALSE(qmIsOp('L', "op0"));
    });
    ExpectLinear(1000, [&](int count) {
      for (int i = 0; i < count; ++i) qmReleaseVarHandle(qmCreateNumVar(scope, nameOf("v", i).c_str(), i));
      for (int i = 0; i < count; ++i) {
        EXPECT_EQ(qmGetNumVarValue(scope, nameOf("v", i).c_str()), i);
        EXPECT_EQ(qmDeleteVar(scope, nameOf("v", i).c_str()), kNone);
      }
      EXPECT_FALSE(qmIsVar('L', "v0"));
    });
  }
}

}  // namespace

}  // namespace qumel::testing
