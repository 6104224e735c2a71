// What hosts see when memory runs out: the right answer or 3230, nothing half done, and a library that goes
// on.
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

#include "api/interface_test.h"
#include "support/failing_allocation.h"

namespace qumel::testing {

namespace {

std::string const kLong(300, 'l');  // more than the buffer that a text starts with
// whatever a step compares or evaluates is made before its allocations fail
std::string const kLongLiteral = '"' + kLong + '"';
std::string const kTwoLiterals = kLongLiteral + " + " + kLongLiteral;
std::string const kTwice = kLong + kLong;
std::string const kShouted = kLong + '!';
std::string const kShout = "shout " + kLongLiteral;
std::string const kSayIt = "say " + kLongLiteral;

/** Of a step: the right answer, the value that stands for a failure, or neither. */
enum class Answer { Right, Failure, Wrong };

std::ostream& operator<<(std::ostream& out, Answer answer) {
  constexpr char const* kNames[] = {"right", "failure", "wrong"};
  return out << kNames[static_cast<int>(answer)];
}

Answer Classify(bool isRight, bool isFailure) {
  return isRight ? Answer::Right : isFailure ? Answer::Failure : Answer::Wrong;
}
/** Of functions that return what they made. */
Answer OfHandle(Handle handle) { return Classify(handle != 0, handle == 0); }
/** Of functions that return the code. */
Answer OfCode(long code) { return Classify(code == kNone, code == kOutOfMemory); }
Answer OfFlag(bool flag) { return Classify(flag, !flag); }

/** A failed evaluation returns what was the result before; its code alone tells. */
Answer OfText(char const* expression, std::string_view result) {
  char const* const text = qmEvalExpStrToStr(expression);
  if (qmGetLastErrorID() != kNone) return Answer::Failure;
  return Classify(text != nullptr && text == result, false);
}
Answer OfNumber(char const* expression, double result) {
  double const number = qmEvalExpStrToNum(expression);
  return qmGetLastErrorID() != kNone ? Answer::Failure : Classify(number == result, false);
}

Answer OfShown(char const* text, std::string_view expected) {
  if (qmGetLastErrorID() != kNone) return Answer::Failure;
  return Classify(text != nullptr && text == expected, false);
}

Handle g_expression = 0;
Answer OfParsed(std::string_view result) {
  char const* const text = qmEvalExpHndlToStr(g_expression);
  if (qmGetLastErrorID() != kNone) return Answer::Failure;
  return Classify(text != nullptr && text == result, false);
}
Answer ParseAnew(char const* text) { return OfHandle(g_expression = qmParseExp(text)); }

int SayLong(Handle handle) {
  qmSetStrResult(handle, kLong.c_str());
  return 0;
}
int SayParameter(Handle handle) {
  char const* const text = qmGetStrParm(handle, 0);
  qmSetStrResult(handle, text != nullptr ? text : "none");
  return 0;
}

double g_linked = 4;

/** Until the next handle needs memory. */
void UseUpHandles() {
  qmEvalExpStr("global withoutHandle = 4");
  for (int i = 0;; ++i) {
    std::string const name = "v" + std::to_string(i);
    qmEvalExpStr(("global " + name + " = 1").c_str());
    FailingAllocation const failing;
    if (qmGetVarHandle('G', name.c_str()) == 0) break;
  }
}

struct Step {
  char const* name;
  void (*prepare)();
  Answer (*run)();
  bool (*isDone)();  // whether anything shows of the step
};

void Nothing() {}
bool NeverShows() { return false; }
/** Whether the context is there, and works. */
bool HasNewContext() {
  if (qmGetContextHandle("new") == 0) return false;
  std::string const current = qmGetCurrentContextName();
  qmSetContext("new", false);
  bool const works = qmEvalExpStrToNum("6*7") == 42.0;
  qmSetContext(current.c_str(), false);
  return works;
}

Step const kSteps[] = {
    {"Literal", Nothing, [] { return OfText("\"a text\"", "a text"); }, NeverShows},
    {"LongLiteral", Nothing, [] { return OfText(kLongLiteral.c_str(), kLong); }, NeverShows},
    {"TextResult", Nothing, [] { return OfText("\"abc\" + \"def\"", "abcdef"); }, NeverShows},
    {"LongTextResult", Nothing, [] { return OfText(kTwoLiterals.c_str(), kTwice); }, NeverShows},
    {"TextOfABody", [] { qmDefineExpOp('G', "shout", "prefix", "string", "string s", nullptr, "s + \"!\""); },
     [] { return OfText(kShout.c_str(), kShouted); }, NeverShows},
    {"TextOfACallback", [] { qmLinkCallbackOp('G', "say", "nofix", "string", nullptr, nullptr, &SayLong); },
     [] { return OfText("say", kLong); }, NeverShows},
    {"TextForACallback",
     [] { qmLinkCallbackOp('G', "say", "prefix", "string", "string s", nullptr, &SayParameter); },
     [] { return OfText(kSayIt.c_str(), kLong); }, NeverShows},
    {"Parsing", Nothing,
     [] {
       Answer const answer = ParseAnew("\"abc\" + \"def\"");
       return answer == Answer::Right ? OfParsed("abcdef") : answer;
     },
     NeverShows},
    {"ParsedTextResult",
     [] {
       qmCreateStrVar('G', "s", 400, kLong.c_str());
       ParseAnew("s + s");
     },
     [] { return OfParsed(kTwice); }, NeverShows},
    {"ParsedTextResultGrownOnce",
     [] {
       qmCreateStrVar('G', "s", 400, "short");
       ParseAnew("left(s, 400) + s");
       OfParsed("shortshort");
       qmSetStrVar('G', "s", kLong.c_str());
     },
     [] { return OfParsed(kTwice); }, NeverShows},
    {"TextsInALoop",
     [] {
       qmCreateStrVar('G', "s", 400, kLong.c_str());
       qmDefineExpOp('G', "twofold", "prefix", "string", "string t", nullptr, "t + t");
       ParseAnew("n = 0; i = 0; while i < 3 do i = i + 1; n = n + length(s + twofold s); next return n");
     },
     [] { return OfParsed("2700.000000000000"); }, NeverShows},
    {"ComplexAfterAll",
     [] {
       qmSetAllowComplexResults(true);
       qmCreateNumVar('G', "v", 4);
       ParseAnew("sqrt(v) + 0");
       OfParsed("2.000000000000");
       qmSetNumVar('G', "v", -4);
     },
     [] { return OfParsed("( 0.000000000000 |_ 2.000000000000 )"); }, NeverShows},
    {"ArrayMadeComplex",
     [] {
       qmSetAllowComplexResults(true);
       qmEvalExpStr("global a[100]");
     },
     [] { return OfText("a[1] = sqrt(-4); a[1]", "( 0.000000000000 |_ 2.000000000000 )"); }, NeverShows},
    {"Recursion",
     [] {
       qmDefineExpOp('G', "fact", "prefix", "number", "number n", nullptr, nullptr);
       qmDefineExpOpStr('G', "fact", "if (n < 2) then return 1; end return (n * fact(n - 1))");
     },
     [] { return OfNumber("fact(4)", 24); }, NeverShows},
    {"Definition", Nothing,
     [] { return OfCode(qmDefineExpOp('G', "f", "prefix", "number", "number x", nullptr, "x + 1")); },
     [] { return qmIsOp('L', "f"); }},
    {"DefinitionForAll", [] { qmDeleteOp('C', "f"); },
     [] { return OfCode(qmDefineExpOp('C', "f", "prefix", "number", "number x", nullptr, "x + 1")); },
     [] { return qmIsOp('L', "f"); }},
    {"Body", [] { qmDefineExpOp('G', "f", "prefix", "number", "number x", nullptr, nullptr); },
     [] { return OfCode(qmDefineExpOpStr('G', "f", "x + 1")); },
     [] {
       qmEvalExpStr("f 1");
       return qmGetLastErrorID() == kNone;
     }},
    {"Callback", Nothing,
     [] { return OfCode(qmLinkCallbackOp('G', "say", "nofix", "string", "", nullptr, &SayLong)); },
     [] { return qmIsOp('L', "say"); }},
    {"CallbackForAll", [] { qmDeleteOp('C', "say"); },
     [] { return OfCode(qmLinkCallbackOp('C', "say", "nofix", "string", "", nullptr, &SayLong)); },
     [] { return qmIsOp('L', "say"); }},
    {"NumberVariable", Nothing, [] { return OfHandle(qmCreateNumVar('G', "x", 4)); },
     [] { return qmIsVar('G', "x"); }},
    {"TextVariable", Nothing, [] { return OfHandle(qmCreateStrVar('G', "x", 300, "text")); },
     [] { return qmIsVar('G', "x"); }},
    {"Array", Nothing, [] { return OfHandle(qmCreateNumArray('G', "x", 2, 3, 4, -1, -1, -1, -1)); },
     [] { return qmIsVar('G', "x"); }},
    {"LinkedVariable", Nothing, [] { return OfFlag(qmLinkNumVar('G', "x", &g_linked)); },
     [] { return qmIsVar('G', "x"); }},
    {"HandleOfAVariable", UseUpHandles, [] { return OfHandle(qmGetVarHandle('G', "withoutHandle")); },
     NeverShows},
    {"VariableWithoutHandle", UseUpHandles, [] { return OfHandle(qmCreateNumVar('G', "x", 4)); },
     [] { return qmIsVar('G', "x"); }},
    {"ExpressionWithoutHandle", UseUpHandles, [] { return ParseAnew("1 + 1"); }, NeverShows},
    {"ContextWithoutHandle", UseUpHandles, [] { return OfHandle(qmCreatePublicContext("new")); },
     [] { return qmGetContextHandle("new") != 0; }},
    {"CallbackWithoutHandle",
     [] {
       qmLinkCallbackOp('G', "say", "nofix", "string", nullptr, nullptr, &SayLong);
       UseUpHandles();
     },
     [] { return OfText("say", kLong); }, NeverShows},
    {"VariableOfAnExpression", Nothing, [] { return OfNumber("global x = 4; x + 1", 5); }, NeverShows},
    {"ErrorText", Nothing, [] { return OfFlag(qmDefineError('G', 10001, "an error of the host")); },
     [] { return std::strcmp(qmGetErrorText(10001), "an error of the host") == 0; }},
    {"PublicContext", Nothing, [] { return OfHandle(qmCreatePublicContext("new")); }, HasNewContext},
    {"PrivateContext", Nothing, [] { return OfHandle(qmCreatePrivateContext("new")); }, HasNewContext},
    {"Check", Nothing, [] { return OfShown(qmCheckExp("1 + 2"), "1+2"); }, NeverShows},
    {"Annotation", Nothing, [] { return OfShown(qmAnnotateExp("1"), "\n\n#d1\t\td1\n;"); }, NeverShows},
};

class Memory : public InterfaceTest, public ::testing::WithParamInterface<Step> {
 protected:
  void TearDown() override {
    qmDeleteOp('C', "f");
    qmDeleteOp('C', "say");
    InterfaceTest::TearDown();
  }
  /** A fresh context, with what the step needs. */
  void Prepare(Step const& step) {
    InterfaceTest::SetUp();
    step.prepare();
    qmClearLastError();
  }
  /** Runs the step in a context of its own; allocations fail after the spared ones. False when none had to.
   */
  bool FailsAfter(long spared, long failures) {
    Step const& step = GetParam();
    Prepare(step);
    Answer answer;
    bool hasFailed;
    {
      FailingAllocation const failing(spared, failures);
      answer = step.run();
      hasFailed = FailingAllocation::HasFailed();
    }
    if (long const code = qmGetLastErrorID(); code == kNone) {
      EXPECT_EQ(answer, Answer::Right);
    } else {
      EXPECT_EQ(code, kOutOfMemory);
      EXPECT_EQ(answer, Answer::Failure);
      EXPECT_FALSE(step.isDone());
      qmClearLastError();
      EXPECT_EQ(step.run(), Answer::Right) << "when memory is there again";
    }
    EXPECT_EQ(qmGetLastErrorID(), kNone);
    EXPECT_TRUE(step.isDone == &NeverShows || step.isDone());
    EXPECT_EQ(OfNumber("1 + 1", 2), Answer::Right);
    return hasFailed;
  }
};

TEST_P(Memory, AStepSucceedsOrFailsAsAWhole) {
  for (long const failures : {1L, FailingAllocation::kAll}) {
    long spared = 0;
    while (FailsAfter(spared, failures)) {
      ASSERT_FALSE(HasFailure()) << (failures == 1 ? "one allocation failed" : "all failed") << " after "
                                 << spared;
      ++spared;
    }
    EXPECT_GT(spared, 0) << "nothing was allocated";
  }
}

void PrintTo(Step const& step, std::ostream* out) { *out << step.name; }
std::string NameOf(::testing::TestParamInfo<Step> const& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Steps, Memory, ::testing::ValuesIn(kSteps), NameOf);

}  // namespace

}  // namespace qumel::testing
