// Error codes, their texts, messages of hosts, and the callback.
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class Errors : public InterfaceTest {};

std::vector<long> g_reported;
void Report(long code) { g_reported.push_back(code); }

TEST_F(Errors, TextsOfCodes) {
  struct SQMCase {
    long code;
    char const* text;
  };
  constexpr SQMCase kCases[] = {
      {0, "No error"},
      {1000, "Normal exit"},
      {1210, "Attempt to shrink stack depth failed"},
      {2010, "Postfixer: unknown token found"},
      {3010, "Executor: not initialized"},
      {3110, "Executor: division by zero attempted"},
      {3390, "Define Operator: target operator is not recursive"},
      {3480, "Executor: complex operand found during expression verify phase"},
      {9040, "Diagnostic marker 4"},
      {9999, "Unknown error"},
      {4711, "Unknown error"},
      {-1, "Unknown error"},
      {2147483647, "Unknown error"},
  };
  for (auto const& [code, text] : kCases) {
    SCOPED_TRACE(code);
    EXPECT_STREQ(qmGetErrorText(code), text);
  }
}

TEST_F(Errors, TheLastError) {
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_STREQ(qmGetLastErrorText(), "No error");
  EXPECT_EQ(qmSetLastError(3110), 3110);
  EXPECT_EQ(qmSetLastError(-5), -5);
  EXPECT_EQ(qmGetLastErrorID(), 3110);
  EXPECT_STREQ(qmGetLastErrorText(), "Executor: division by zero attempted");
  qmClearLastError();
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  qmSetLastError(123456);
  EXPECT_STREQ(qmGetLastErrorText(), "Unknown error");
  EXPECT_EQ(qmSetLastError(0), 0);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
}

TEST_F(Errors, MessagesOfHosts) {
  qmSetLastError(77);
  EXPECT_FALSE(qmDefineError('G', 500, "too low"));
  EXPECT_FALSE(qmDefineError('C', 9999, "too low"));
  EXPECT_FALSE(qmDefineError('G', -10001, "too low"));
  EXPECT_EQ(qmGetLastErrorID(), 77);

  EXPECT_TRUE(qmDefineError('G', 10001, "mine"));
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_STREQ(qmGetErrorText(10001), "mine");
  EXPECT_FALSE(qmDefineError('G', 10001, "again"));
  EXPECT_EQ(qmGetLastErrorID(), kMessageNotLoaded);
  EXPECT_STREQ(qmGetErrorText(10001), "mine");
  for (char const* const text : {static_cast<char const*>(nullptr), ""}) {
    EXPECT_FALSE(qmDefineError('G', 10002, const_cast<char*>(text)));
    EXPECT_EQ(qmGetLastErrorID(), kMessageNotLoaded);
  }
  std::string const longText(100000, 'x');
  EXPECT_TRUE(qmDefineError('?', 10003, const_cast<char*>(longText.c_str())));
  EXPECT_EQ(qmGetErrorText(10003), longText);
}

TEST_F(Errors, MessagesOfAllContextsAndOfOne) {
  // process-wide messages live as long as any context: each test takes codes of its own
  EXPECT_TRUE(qmDefineError('C', 20001, "everywhere"));
  EXPECT_TRUE(qmDefineError('L', 20002, "here"));
  EXPECT_FALSE(qmDefineError('G', 20001, "not twice"));
  qmSetContext("Qumel", false);
  EXPECT_STREQ(qmGetErrorText(20001), "everywhere");
  EXPECT_STREQ(qmGetErrorText(20002), "Unknown error");
  EXPECT_TRUE(qmDefineError('C', 20002, "now everywhere"));
  qmSetContext("test", false);
  EXPECT_STREQ(qmGetErrorText(20002), "here");
}

TEST_F(Errors, TheCallbackFiresOnceForEachFailedEvaluation) {
  EXPECT_TRUE(qmSetErrorCallback(Report));
  double imaginary = 0.0;
  ASSERT_NE(qmCreateNumVar('G', "zero", 0.0), 0U);
  Handle const divided = qmParseExp("1/zero");
  ASSERT_NE(divided, 0U);
  struct SQMCase {
    char const* name;
    void (*call)(Handle, double*);
    long code;
  };
  constexpr SQMCase kCases[] = {
      {"any", [](Handle, double*) { qmEvalExpStr("1/0"); }, kDivisionByZero},
      {"number", [](Handle, double*) { qmEvalExpStrToNum("1/0"); }, kDivisionByZero},
      {"complex", [](Handle, double* i) { qmEvalExpStrToComp("(1", i); }, kMissingRightParen},
      {"boolean", [](Handle, double*) { qmEvalExpStrToBool("sqrt(0-1)"); }, kResultIsComplex},
      {"text", [](Handle, double*) { qmEvalExpStrToStr(""); }, kBadExpression},
      {"null text", [](Handle, double*) { qmEvalExpStr(nullptr); }, kBadExpression},
      {"unknown name", [](Handle, double*) { qmEvalExpStr("1+unknown"); }, kNotDefined},
      {"parse", [](Handle, double*) { qmParseExp(" "); }, kBadExpression},
      {"handle", [](Handle h, double*) { qmEvalExpHndl(h); }, kDivisionByZero},
      {"handle to number", [](Handle h, double*) { qmEvalExpHndlToNum(h); }, kDivisionByZero},
      {"handle to complex", [](Handle h, double* i) { qmEvalExpHndlToComp(h, i); }, kDivisionByZero},
      {"handle to boolean", [](Handle h, double*) { qmEvalExpHndlToBool(h); }, kDivisionByZero},
      {"handle to text", [](Handle h, double*) { qmEvalExpHndlToStr(h); }, kDivisionByZero},
  };
  for (auto const& [name, call, code] : kCases) {
    SCOPED_TRACE(name);
    g_reported.clear();
    call(divided, &imaginary);
    EXPECT_EQ(qmGetLastErrorID(), code);
    EXPECT_EQ(g_reported, std::vector{code});
  }
  // these set the last error, but are no evaluations; nor is what succeeds
  g_reported.clear();
  qmCheckExp("(1");
  qmAnnotateExp("(1");
  qmDefineError('G', 10001, nullptr);
  qmSetLastError(4);
  qmEvalExpStr("1+1");
  EXPECT_TRUE(qmClearErrorCallback());
  qmEvalExpStr("1/0");
  EXPECT_TRUE(g_reported.empty());
}

TEST_F(Errors, ACallbackThatEvaluatesAndFailsEndsAtALimit) {
  static int calls = 0;
  calls = 0;
  qmSetErrorCallback([](long) {
    ++calls;
    qmEvalExpStr("1/0");
  });
  qmEvalExpStr("1/0");
  EXPECT_GT(calls, 100);
  EXPECT_LT(calls, 1000);
  EXPECT_EQ(qmGetLastErrorID(), kOutOfMemory);  // of the call that was one too many
}

TEST_F(Errors, ACallbackThatThrowsIsNoneOfTheHostsProblems) {
  qmSetErrorCallback([](long) { throw 1; });
  EXPECT_EQ(qmEvalExpStr("1/0"), 'X');
  EXPECT_EQ(qmGetLastErrorID(), kOutOfMemory);
}

}  // namespace
}  // namespace qumel::testing
