// Operators that hosts define by a callback: access to parameters and results, statuses, nesting.
#include <pthread.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "api/operator_fixture.h"

namespace qumel::testing {

namespace {

struct Seen {
  long count;
  std::string signature;
  std::string types;
} seen;

int Inspect(Handle op) {
  seen = {qmGetParmCount(op), qmGetParmSig(op), ""};
  for (long i = 0; i < seen.count; ++i) seen.types += qmGetParmType(op, i);
  return static_cast<int>(qmSetNumResult(op, 1.0));
}
int AddParts(Handle op) {
  return static_cast<int>(qmSetNumResult(op, qmGetNumParm(op, 0) + qmGetImagParm(op, 0)));
}
int Misuse(Handle op) {
  qmClearLastError();
  EXPECT_EQ(qmGetNumParm(op, -1), 0.0);
  EXPECT_EQ(qmGetLastErrorID(), 3190);
  qmClearLastError();
  EXPECT_EQ(qmGetParmType(op, 5), 'X');
  EXPECT_EQ(qmGetLastErrorID(), 3190);
  qmClearLastError();
  EXPECT_FALSE(qmGetBoolParm(op, 0));
  EXPECT_EQ(qmGetLastErrorID(), 3090);
  qmClearLastError();
  EXPECT_EQ(qmGetStrParm(op, 0), nullptr);
  EXPECT_EQ(qmGetLastErrorID(), 3090);
  qmClearLastError();
  EXPECT_EQ(qmSetStrResult(op, "text"), 3090);
  return 0;
}
int Greet(Handle op) {
  return static_cast<int>(qmSetStrResult(op, (std::string("hi ") + qmGetStrParm(op, 0)).c_str()));
}
int Negate(Handle op) { return static_cast<int>(qmSetBoolResult(op, !qmGetBoolParm(op, 0))); }
int MakeImaginary(Handle op) {
  qmSetRealResult(op, 1.0);
  return static_cast<int>(qmSetImagResult(op, qmGetRealParm(op, 0)));
}
int calls = 0;
int StatusOf(Handle op) {
  ++calls;
  return static_cast<int>(qmGetNumParm(op, 0));
}
int Reenter(Handle op) {
  Handle const inner = qmParseExp("2 * 3");
  double const value = qmEvalExpHndlToNum(inner) + qmEvalExpStrToNum("10 + 1");
  qmDeleteExp(inner);
  qmDefineExpOp('G', "made", "nofix", "number", nullptr, nullptr, "7");
  return static_cast<int>(qmSetNumResult(op, value));
}
Handle running = 0;
int DeleteItself(Handle op) {
  qmDeleteExp(running);
  qmDestroyPrivateContext("test");
  return static_cast<int>(qmSetNumResult(op, 1.0));
}

/** Calls itself without end, and hands on the error that ends it. */
int CallAgain(Handle op) {
  double const value = qmEvalExpStrToNum("through 1");
  long const code = qmGetLastErrorID();
  return static_cast<int>(code != kNone ? code : qmSetNumResult(op, value));
}

/** Runs call on a thread with a stack of that size. */
template <class Call>
void WithStackOf(std::size_t size, Call call) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  auto const run = [](void* argument) -> void* {
    (*static_cast<Call*>(argument))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &call), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

class Callbacks : public Operators {
 protected:
  static long Link(char const* name, char const* returns, char const* parameters, int (*callback)(Handle)) {
    return qmLinkCallbackOp('G', name, "prefix", returns, parameters, nullptr, callback);
  }
};

TEST_F(Callbacks, ReadParametersAndSetResults) {
  qmSetAllowComplexResults(true);
  ASSERT_EQ(Link("inspect", "number", "number a, string b, boolean c, complex d", &Inspect), kNone);
  EXPECT_EQ(Number("inspect(1, \"s\", 1 < 2, 1 |_ 2)"), 1.0);
  EXPECT_EQ(seen.count, 4);
  EXPECT_EQ(seen.signature, "NSBC");
  EXPECT_EQ(seen.types, "NSBC");
  ASSERT_EQ(Link("parts", "number", "complex z", &AddParts), kNone);
  EXPECT_EQ(Number("parts(3 |_ 4)"), 7.0);
  EXPECT_EQ(Number("parts 3"), 3.0);
  ASSERT_EQ(Link("misuse", "number", "number x", &Misuse), kNone);
  EXPECT_EQ(Number("misuse 5"), 0.0);
  ASSERT_EQ(Link("greet", "string", "string s", &Greet), kNone);
  EXPECT_EQ(ToText("greet \"you\" + \"!\""), "hi you!");
  ASSERT_EQ(Link("negated", "boolean", "boolean b", &Negate), kNone);
  EXPECT_FALSE(qmEvalExpStrToBool("negated(1 < 2)"));
  EXPECT_EQ(Link("none", "number", "", nullptr), 3400);
  EXPECT_EQ(qmDefineExpOpStr('G', "greet", "1"), 3390) << "a callback operator awaits no body";
}

/** Each access has two names. */
struct Accesses {
  decltype(&qmGetParmCount) count;
  decltype(&qmGetParmSig) signature;
  decltype(&qmGetParmType) type;
  decltype(&qmGetNumParm) number, real, imaginary;
  decltype(&qmGetBoolParm) boolean;
  decltype(&qmGetStrParm) text;
  decltype(&qmSetNumResult) setNumber, setReal, setImaginary;
  decltype(&qmSetBoolResult) setBoolean;
  decltype(&qmSetStrResult) setText;
};
constexpr Accesses kAccesses[] = {
    {&qmGetParmCount, &qmGetParmSig, &qmGetParmType, &qmGetNumParm, &qmGetRealParm, &qmGetImagParm,
     &qmGetBoolParm, &qmGetStrParm, &qmSetNumResult, &qmSetRealResult, &qmSetImagResult, &qmSetBoolResult,
     &qmSetStrResult},
    {&QMU_GetParameterCount, &QMU_GetParameterSignature, &QMU_GetParameterType, &QMU_GetNumericParameter,
     &QMU_GetRealParameter, &QMU_GetImaginaryParameter, &QMU_GetBooleanParameter, &QMU_GetStringParameter,
     &QMU_SetNumericResult, &QMU_SetRealResult, &QMU_SetImaginaryResult, &QMU_SetBooleanResult,
     &QMU_SetStringResult},
};
Accesses const* access = nullptr;

/** What access reads of the parameters, as a text. */
int Tell(Handle op) {
  std::string told = std::to_string(access->count(op)) + access->signature(op);
  for (long i = 0; i < access->count(op); ++i) {
    switch (char const letter = access->type(op, i)) {
      case 'N': told += " N" + std::to_string(access->number(op, i)); break;
      case 'C':
        told += " C" + std::to_string(access->real(op, i)) + "," + std::to_string(access->imaginary(op, i));
        break;
      case 'B': told += access->boolean(op, i) ? " true" : " false"; break;
      case 'S': told += std::string(" ") + access->text(op, i); break;
      default: told += letter;
    }
  }
  return static_cast<int>(access->setText(op, told.c_str()));
}
int SetTwice(Handle op) { return static_cast<int>(access->setNumber(op, 2 * access->number(op, 0))); }
int SetOpposite(Handle op) { return static_cast<int>(access->setBoolean(op, !access->boolean(op, 0))); }
int SetExchanged(Handle op) {
  long const code = access->setReal(op, access->imaginary(op, 0));
  return static_cast<int>(code != kNone ? code : access->setImaginary(op, access->real(op, 0)));
}

TEST_F(Callbacks, AccessesUnderBothNames) {
  qmSetAllowComplexResults(true);
  ASSERT_EQ(Link("tell", "string", "number a, complex b, boolean c, string d", &Tell), kNone);
  ASSERT_EQ(Link("twice", "number", "number x", &SetTwice), kNone);
  ASSERT_EQ(Link("opposite", "boolean", "boolean x", &SetOpposite), kNone);
  ASSERT_EQ(Link("exchanged", "complex", "complex z", &SetExchanged), kNone);
  for (Accesses const& accesses : kAccesses) {
    access = &accesses;
    EXPECT_EQ(ToText("tell(1.5, 2 |_ -3, 1 < 2, \"text\")"), "4NCBS N1.500000 C2.000000,-3.000000 true text");
    EXPECT_EQ(Number("twice 4"), 8.0);
    EXPECT_EQ(ToText("opposite(1 < 2)"), "false");
    EXPECT_EQ(ToText("exchanged(1 |_ 2)"), "( 2.000000000000 |_ 1.000000000000 )");
    for (Handle const stale : {Handle{0}, Handle{12345}}) {
      EXPECT_EQ(accesses.count(stale), 0);
      EXPECT_EQ(accesses.signature(stale), nullptr);
      EXPECT_EQ(accesses.number(stale, 0), 0.0);
      EXPECT_EQ(accesses.text(stale, 0), nullptr);
      EXPECT_EQ(accesses.setNumber(stale, 1.0), kNotFound);
      EXPECT_EQ(accesses.setText(stale, "text"), kNotFound);
    }
  }
}

TEST_F(Callbacks, ParametersAreOfTheDeclaredKinds) {
  struct Case {
    char const* parameter;
    char const *accepted[2], *refused[3];
  };
  constexpr Case kCases[] = {
      {"number x", {"1.5", "(1 |_ 2)"}, {"\"1\"", "(1 < 2)", "(\"a\" + \"b\")"}},
      {"complex x", {"1.5", "(1 |_ 2)"}, {"\"1\"", "(1 < 2)", "(\"a\" + \"b\")"}},
      {"string x", {"\"1\"", "(\"a\" + \"b\")"}, {"1.5", "(1 |_ 2)", "(1 < 2)"}},
      {"boolean x", {"(1 < 2)", "(2 < 1)"}, {"1.5", "(1 |_ 2)", "\"1\""}},
  };
  qmSetAllowComplexResults(true);
  for (Case const& c : kCases) {
    for (char const* const list : {"%", "number n, %", "%, string s"}) {
      std::string parameters(list), before, behind;
      parameters.replace(parameters.find('%'), 1, c.parameter);
      if (parameters.starts_with("number n, ")) before = "1, ";
      if (parameters.ends_with(", string s")) behind = ", \"s\"";
      SCOPED_TRACE(parameters);
      ASSERT_EQ(Link("taking", "number", parameters.c_str(), [](Handle) { return 0; }), kNone);
      auto const codeOf = [&](char const* argument) {
        qmEvalExpStr(("taking(" + before + argument + behind + ")").c_str());
        return qmGetLastErrorID();
      };
      for (char const* const argument : c.accepted) EXPECT_EQ(codeOf(argument), kNone) << argument;
      for (char const* const argument : c.refused) EXPECT_EQ(codeOf(argument), 3090) << argument;
      qmDeleteOp('G', "taking");
    }
  }
}

TEST_F(Callbacks, StatusesSteerTheEvaluationWithoutRepeatingTheCall) {
  ASSERT_EQ(Link("status", "number", "number x", &StatusOf), kNone);
  struct Case {
    char const* text;
    long code;
  };
  constexpr Case kCases[] = {
      {"status 0", kNone},    {"status 3110", kDivisionByZero}, {"status 10001", 10001},
      {"status 1000", kNone}, {"status 200", kResultIsComplex}, {"1 + status 3110", 3110}};
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.text);
    calls = 0;
    EXPECT_EQ(ErrorOf(c.text), c.code);
    EXPECT_EQ(calls, 1);
  }
  qmSetAllowComplexResults(true);
  calls = 0;
  EXPECT_EQ(ErrorOf("status 200"), kNone);
  EXPECT_EQ(calls, 1);
}

TEST_F(Callbacks, ComplexResultsNeedPermission) {
  ASSERT_EQ(Link("imagine", "number", "number x", &MakeImaginary), kNone);
  EXPECT_EQ(ErrorOf("imagine 2"), kResultIsComplex);
  ASSERT_NE(qmCreateNumVar('G', "part", 2.0), 0U);
  Handle const handle = qmParseExp("imagine part");
  qmEvalExpHndl(handle);
  EXPECT_EQ(qmGetLastErrorID(), kResultIsComplex);
  qmSetNumVar('G', "part", 0.0);
  EXPECT_EQ(qmEvalExpHndl(handle), 'N') << "nothing of the refused result is left";
  qmSetAllowComplexResults(true);
  EXPECT_EQ(ToText("imagine 2 + 1"), "( 2.000000000000 |_ 2.000000000000 )");
  EXPECT_EQ(ToText("imagine 0"), "1.000000000000");
}

TEST_F(Callbacks, NestingWithoutEndFailsOnStacksOfAnySize) {
  struct Case {
    char const* what;
    std::size_t stack;
    long longChain;  // what a chain of 900 bodies ends in
  };
  constexpr Case kCases[] = {
      {"small", 96UL << 10, kOutOfMemory},
      {"of a worker thread", 256UL << 10, kOutOfMemory},
      {"usual", 8UL << 20, kNone},
  };
  for (Case const& c : kCases) {
    SCOPED_TRACE(c.what);
    WithStackOf(c.stack, [&c] {
      qmClearContext();
      qmCreatePrivateContext("nested");
      qmSetContext("nested", false);
      Link("again", "number", "number x", &CallAgain);
      Define("through", "number n", "again n");
      Define("forever", "number n", nullptr);
      qmDefineExpOpStr('G', "forever", "if (n > 0) then return (1 + forever(n + 1)); end return 0");
      Define("c0", "number n", "n + 1");
      for (int i = 1; i <= 1100; ++i) {
        Define(("c" + std::to_string(i)).c_str(), "number n", ("c" + std::to_string(i - 1) + " n").c_str());
      }
      EXPECT_EQ(ErrorOf("again 1"), kOutOfMemory);
      EXPECT_EQ(ErrorOf("through 1"), kOutOfMemory);
      EXPECT_EQ(ErrorOf("forever 1"), kOutOfMemory);
      EXPECT_EQ(ErrorOf("c1100 1"), kOutOfMemory);
      EXPECT_EQ(ErrorOf("c900 1"), c.longChain);
      EXPECT_EQ(Number("c10 1"), 2.0) << "what failed left nothing behind";
    });
  }
}

TEST_F(Callbacks, MayEvaluateParseDefineAndDelete) {
  ASSERT_EQ(Link("reenter", "number", "number x", &Reenter), kNone);
  EXPECT_EQ(Number("reenter 1 + 1"), 18.0);
  EXPECT_EQ(Number("made"), 7.0);
  ASSERT_EQ(Link("vanish", "number", "number x", &DeleteItself), kNone);
  running = qmParseExp("vanish 1 + 1");
  ASSERT_NE(running, 0U);
  qmEvalExpHndlToNum(running);
  qmEvalExpHndlToNum(running);  // names nothing any more
  for (Handle const handle : {Handle{0}, Handle{77}, qmGetCurrentContextHandle()}) {
    EXPECT_EQ(qmSetNumResult(handle, 1.0), kNotFound);
    EXPECT_EQ(qmGetParmCount(handle), 0);
    EXPECT_EQ(qmGetNumParm(handle, 0), 0.0);
    EXPECT_EQ(qmGetStrParm(handle, 0), nullptr);
  }
}

}  // namespace

}  // namespace qumel::testing
