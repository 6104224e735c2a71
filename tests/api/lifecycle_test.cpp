// Start, reset and unloading of the library, also from callbacks in the middle of an evaluation.
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class Lifecycle : public InterfaceTest {};

/** Unloading cannot be undone: what does it runs in a process of its own. */
#define EXPECT_IN_OWN_PROCESS(call)                       \
  EXPECT_EXIT(                                            \
      {                                                   \
        call;                                             \
        std::exit(::testing::Test::HasFailure() ? 1 : 0); \
      },                                                  \
      ::testing::ExitedWithCode(0), "")

TEST_F(Lifecycle, StartsOnce) {
  EXPECT_FALSE(qmInitialize(""));
  EXPECT_FALSE(qmInitialize(nullptr));
  EXPECT_TRUE(qmLoadQumel());
  EXPECT_EQ(qmVersion(), 2.5F);
}

TEST_F(Lifecycle, CountsObjects) {
  long const objects = qmGetQumelObjectCount();
  long const serial = qmGetNextQumelObjectSerialNumber();
  qmCreatePrivateContext("counted");
  EXPECT_GT(qmGetQumelObjectCount(), objects);
  EXPECT_GT(qmGetNextQumelObjectSerialNumber(), serial);
  qmDestroyPrivateContext("counted");
  EXPECT_EQ(qmGetQumelObjectCount(), objects);
  qmEvalExpStr("1+2");
  qmEvalExpStr("1+(");
  long const settled = qmGetQumelObjectCount();
  qmEvalExpStr("sin(30)*2 + 7");
  qmEvalExpStr("1/0");
  EXPECT_EQ(qmGetQumelObjectCount(), settled);
}

TEST_F(Lifecycle, AResetTakesEverythingButThePrimaryContext) {
  Handle const primary = qmGetContextHandle("Qumel");
  qmSetContext("Qumel", false);
  qmCreateNumVar('G', "kept", 8.0);
  qmClearLastError();
  Handle const shared = qmCreatePublicContext("shared");
  qmSetDefaultContext("shared");
  qmSetContext("shared", true);
  Handle const parsed = qmParseExp("1+1");
  EXPECT_TRUE(qmReset());
  long const objects = qmGetQumelObjectCount();
  EXPECT_TRUE(qmRelease());
  qmVersion();
  qmGetNextQumelObjectSerialNumber();
  EXPECT_EQ(qmGetQumelObjectCount(), objects);  // none of these made a record
  EXPECT_EQ(qmGetAngleUnit(), 'D');
  EXPECT_GT(qmGetQumelObjectCount(), objects);
  EXPECT_TRUE(qmGetForceComplexResults());  // a new record
  EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
  EXPECT_STREQ(qmGetContextName(shared), "");
  EXPECT_EQ(qmGetContextHandle("shared"), 0U);
  EXPECT_EQ(qmGetContextHandle("test"), 0U);
  EXPECT_EQ(qmGetContextHandle("Qumel"), primary);
  EXPECT_EQ(qmEvalExpStrToNum("kept"), 8.0);
  EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
}

TEST_F(Lifecycle, ThreadRecordsOutliveTheirThreads) {
  long const before = qmGetQumelObjectCount();
  for (int i = 0; i < 5; ++i) OnAnotherThread([] { qmCreatePrivateContext("left behind"); });
  EXPECT_GT(qmGetQumelObjectCount(), before);
  qmReset();
  EXPECT_LT(qmGetQumelObjectCount(), before);
}

void ExpectNothingWorks() {
  double imaginary = -1.0;
  EXPECT_FALSE(qmInitialize(""));
  EXPECT_FALSE(qmReset());
  EXPECT_FALSE(qmRelease());
  EXPECT_EQ(qmVersion(), 2.5F);
  EXPECT_EQ(qmCreatePublicContext("a"), 0U);
  EXPECT_EQ(qmCreatePrivateContext("a"), 0U);
  EXPECT_EQ(qmSetContext("Qumel", true), 0U);
  EXPECT_FALSE(qmSetDefaultContext("Qumel"));
  EXPECT_FALSE(qmResetDefaultContext());
  EXPECT_FALSE(qmDestroyPublicContext("a"));
  EXPECT_FALSE(qmDestroyPrivateContext("a"));
  EXPECT_EQ(qmGetContextHandle("Qumel"), 0U);
  EXPECT_EQ(qmGetCurrentContextHandle(), 0U);
  EXPECT_STREQ(qmGetContextName(1), "");
  EXPECT_STREQ(qmGetCurrentContextName(), "");
  EXPECT_FALSE(qmLockContext());
  EXPECT_FALSE(qmReleaseContext());
  EXPECT_FALSE(qmClearContext());
  EXPECT_EQ(qmEvalExpStr("1+1"), 'X');
  EXPECT_EQ(qmEvalExpStrToNum("1+1"), 0.0);
  EXPECT_EQ(qmEvalExpStrToComp("1+1", &imaginary), 0.0);
  EXPECT_EQ(imaginary, -1.0);
  EXPECT_FALSE(qmEvalExpStrToBool("1+1"));
  EXPECT_EQ(qmEvalExpStrToStr("1+1"), nullptr);
  EXPECT_EQ(qmParseExp("1+1"), 0U);
  EXPECT_EQ(qmEvalExpHndl(1), 'X');
  EXPECT_EQ(qmEvalExpHndlToStr(1), nullptr);
  qmDeleteExp(1);
  EXPECT_EQ(qmAnnotateExp("1+1"), nullptr);
  EXPECT_EQ(qmCheckExp("1+1"), nullptr);
  EXPECT_EQ(qmGetLastResultType(), 0);
  EXPECT_EQ(qmGetLastNumResult(), 0.0);
  EXPECT_EQ(qmGetLastImagResult(), 0.0);
  EXPECT_FALSE(qmGetLastBoolResult());
  EXPECT_EQ(qmGetLastStrResult(), nullptr);
  EXPECT_EQ(qmGetLastParseIndex(), 0);
  EXPECT_EQ(qmGetAngleUnit(), ' ');
  EXPECT_EQ(qmGetFormattedResultPrecisionLimit(), 0);
  EXPECT_FALSE(qmGetAllowImpliedMult());
  qmSetAngleUnit('G');
  EXPECT_EQ(qmGetLastErrorID(), kNotInitialized);
  EXPECT_EQ(qmGetLastErrorText(), nullptr);
  EXPECT_EQ(qmGetErrorText(0), nullptr);
  EXPECT_EQ(qmSetLastError(5), 0);
  EXPECT_FALSE(qmDefineError('C', 10001, const_cast<char*>("text")));
  EXPECT_FALSE(qmSetErrorCallback(nullptr));
  EXPECT_FALSE(qmIsOp('C', "sin"));
  double parts[] = {5.0, 6.0};
  qmGetComplexVarValue('C', "x", &parts[0], &parts[1]);
  EXPECT_EQ(parts[0], 5.0) << "nothing is written";
  EXPECT_EQ(parts[1], 6.0);
  EXPECT_EQ(qmGetQumelObjectCount(), 0);
}

void UnloadAndCall() {
  qmCreatePublicContext("shared");
  qmSetContext("shared", true);
  qmCreateNumVar('C', "x", 1.0);
  qmParseExp("x+1");
  EXPECT_TRUE(qmUnloadQumel());
  ExpectNothingWorks();
  EXPECT_TRUE(qmUnloadQumel());
  EXPECT_TRUE(uCleanUp());
  ExpectNothingWorks();
  OnAnotherThread([] { ExpectNothingWorks(); });
}

TEST_F(Lifecycle, AfterUnloadingEveryCallFails) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_IN_OWN_PROCESS(UnloadAndCall());
}

// ---- from the middle of an evaluation ----

struct SQMUpheaval {
  char const* name;
  void (*call)();
};
constexpr SQMUpheaval kUpheavals[] = {
    {"reset", [] { qmReset(); }},
    {"reset and evaluate",
     [] {
       qmReset();
       qmEvalExpStr("1+1");
       EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
     }},
    {"destroy the private context", [] { qmDestroyPrivateContext("test"); }},
    {"destroy the public context", [] { qmDestroyPublicContext("shared"); }},
    {"destroy and make anew",
     [] {
       qmDestroyPrivateContext("test");
       qmCreatePrivateContext("test");
       qmSetContext("test", false);
     }},
    {"clear", [] { qmClearContext(); }},
};
void (*g_upheaval)() = nullptr;

int Upheave(Handle) {
  g_upheaval();
  return 0;
}

TEST_F(Lifecycle, CallbacksMayDestroyWhatTheyRunIn) {
  for (SQMUpheaval const& upheaval : kUpheavals) {
    for (char const* const name : {"test", "shared"}) {
      SCOPED_TRACE(::testing::Message() << upheaval.name << " in " << name);
      SetUp();
      qmCreatePublicContext("shared");
      ASSERT_NE(qmSetContext(name, false), 0U);
      g_upheaval = upheaval.call;
      ASSERT_EQ(qmLinkCallbackOp('G', "upheave", "nofix", "number", "", nullptr, Upheave), 0);
      Handle const parsed = qmParseExp("1+1; upheave; 6*7");
      ASSERT_NE(parsed, 0U) << qmGetLastErrorID();
      EXPECT_EQ(qmEvalExpHndlToNum(parsed), 42.0);

      SetUp();
      qmCreatePublicContext("shared");
      ASSERT_NE(qmSetContext(name, false), 0U);
      ASSERT_EQ(qmLinkCallbackOp('G', "upheave", "nofix", "number", "", nullptr, Upheave), 0);
      EXPECT_EQ(qmEvalExpStrToNum("1+1; upheave; 6*7"), 42.0);

      SetUp();
      qmCreatePublicContext("shared");
      ASSERT_NE(qmSetContext(name, false), 0U);
      qmSetErrorCallback([](long) { g_upheaval(); });
      char const* const text = qmEvalExpStrToStr("1/0");
      EXPECT_TRUE(text == nullptr || *text == '\0');  // null when its context is gone
      EXPECT_NE(qmEvalExpStr("1"), 'X');
    }
  }
}

TEST_F(Lifecycle, WhatACallbackDestroysHasNoHandleAnyMore) {
  static Handle parsed = 0;
  constexpr SQMUpheaval kDestructions[] = {
      {"the expression", [] { qmDeleteExp(parsed); }},
      {"its context", [] { qmDestroyPrivateContext("test"); }},
      {"the records", [] { qmReset(); }},
  };
  for (SQMUpheaval const& destruction : kDestructions) {
    SCOPED_TRACE(destruction.name);
    SetUp();
    g_upheaval = destruction.call;
    ASSERT_EQ(qmLinkCallbackOp('G', "destroy", "nofix", "number", "", nullptr,
                               [](Handle) {
                                 g_upheaval();
                                 EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
                                 EXPECT_EQ(qmRevertParsedExp(parsed), nullptr);
                                 qmDeleteExp(parsed);
                                 return 0;
                               }),
              0);
    parsed = qmParseExp("1+1; destroy; 6*7");
    ASSERT_NE(parsed, 0U) << qmGetLastErrorID();
    EXPECT_EQ(qmEvalExpHndlToNum(parsed), 42.0);
    EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
  }
}

TEST_F(Lifecycle, NestedCallsInSeveralContexts) {
  // the outermost call runs in "test", the one within in "shared", which the innermost destroys
  qmCreatePublicContext("shared");
  qmSetContext("shared", false);
  static Handle inner = 0;
  qmLinkCallbackOp('G', "ruin", "nofix", "number", "", nullptr, [](Handle) {
    qmDestroyPublicContext("shared");
    qmDestroyPrivateContext("test");
    qmReset();
    return 0;
  });
  inner = qmParseExp("ruin; 1+2");
  ASSERT_NE(inner, 0U);
  qmSetContext("test", false);
  qmLinkCallbackOp('G', "descend", "nofix", "number", "", nullptr, [](Handle) {
    EXPECT_EQ(qmEvalExpHndlToNum(inner), 3.0);
    EXPECT_EQ(qmEvalExpHndl(inner), 'X');  // its context went with the end of that call
    return 0;
  });
  EXPECT_EQ(qmEvalExpStrToNum("descend; 2+2"), 4.0);
  EXPECT_EQ(qmGetContextHandle("test"), 0U);
}

void UnloadFromACallback() {
  qmSetErrorCallback([](long) {
    EXPECT_TRUE(qmUnloadQumel());
    EXPECT_EQ(qmEvalExpStr("1"), 'X');
  });
  qmEvalExpStr("1/0");
  ExpectNothingWorks();
}

TEST_F(Lifecycle, UnloadingFromACallback) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_IN_OWN_PROCESS(UnloadFromACallback());
}

}  // namespace
}  // namespace qumel::testing
