// Named contexts of threads: which one is current, who sees which, locks, and destruction under the eyes of
// others.
#include <atomic>
#include <barrier>
#include <chrono>
#include <map>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

class Contexts : public InterfaceTest {};

TEST_F(Contexts, NamesAndHandles) {
  Handle const primary = qmGetContextHandle("Qumel");
  EXPECT_NE(primary, 0U);
  EXPECT_EQ(qmCreatePublicContext("Qumel"), 0U);
  EXPECT_EQ(qmCreatePrivateContext("Qumel"), 0U);
  std::string const longName(500, 'n');
  for (char const* const name : {"one", "qumel", "Qumel2", "Qume", "", longName.c_str()}) {
    SCOPED_TRACE(name);
    Handle const handle = qmCreatePublicContext(name);
    ASSERT_NE(handle, 0U);
    EXPECT_EQ(qmCreatePublicContext(name), handle);
    EXPECT_EQ(qmGetContextHandle(name), handle);
    EXPECT_EQ(qmGetContextName(handle), std::string(name).substr(0, 127));
    EXPECT_NE(qmGetCurrentContextHandle(), handle);
    Handle const own = qmCreatePrivateContext(name);
    EXPECT_NE(own, handle);
    EXPECT_EQ(qmCreatePrivateContext(name), own);
    EXPECT_EQ(qmGetContextHandle(name), own);  // before the public one of that name
    EXPECT_EQ(qmSetContext(name, false), own);
    EXPECT_EQ(qmGetCurrentContextName(), std::string(name).substr(0, 127));
    EXPECT_TRUE(qmDestroyPrivateContext(name));
    EXPECT_FALSE(qmDestroyPrivateContext(name));
    EXPECT_EQ(qmSetContext(name, false), handle);
    EXPECT_TRUE(qmDestroyPublicContext(name));
    EXPECT_FALSE(qmDestroyPublicContext(name));
    EXPECT_EQ(qmSetContext(name, false), 0U);
    EXPECT_EQ(qmGetContextHandle(name), 0U);
    EXPECT_STREQ(qmGetContextName(handle), "");
    EXPECT_STREQ(qmGetContextName(own), "");
  }
  EXPECT_STREQ(qmGetContextName(primary), "Qumel");
  for (Handle const other : {Handle{0}, ~Handle{0}, qmParseExp("1")})
    EXPECT_STREQ(qmGetContextName(other), "");
  EXPECT_FALSE(qmDestroyPublicContext("Qumel"));
  EXPECT_FALSE(qmDestroyPrivateContext("Qumel"));
}

TEST_F(Contexts, NoNameIsNoContext) {
  EXPECT_EQ(qmCreatePublicContext(nullptr), 0U);
  EXPECT_EQ(qmCreatePrivateContext(nullptr), 0U);
  EXPECT_FALSE(qmDestroyPublicContext(nullptr));
  EXPECT_FALSE(qmDestroyPrivateContext(nullptr));
  EXPECT_EQ(qmSetContext(nullptr, true), 0U);
  EXPECT_FALSE(qmSetDefaultContext(nullptr));
  EXPECT_EQ(qmGetContextHandle(nullptr), 0U);
  EXPECT_STREQ(qmGetCurrentContextName(), "test");
}

TEST_F(Contexts, CallsAboutContextsChooseNone) {
  struct SQMCall {
    char const* name;
    bool (*succeeds)();
  };
  constexpr SQMCall kCalls[] = {
      {"set an unknown one", [] { return qmSetContext("nope", false) != 0; }},
      {"set an unknown one with its lock", [] { return qmSetContext("nope", true) != 0; }},
      {"set none", [] { return qmSetContext(nullptr, false) != 0; }},
      {"release", [] { return qmReleaseContext(); }},
      {"lock", [] { return qmLockContext(); }},
      {"make an unknown one the default", [] { return qmSetDefaultContext("nope"); }},
      {"destroy an unknown one", [] { return qmDestroyPrivateContext("nope"); }},
      {"destroy an unknown public one", [] { return qmDestroyPublicContext("nope"); }},
      {"find an unknown one", [] { return qmGetContextHandle("nope") != 0; }},
      {"ask for the current one", [] { return qmGetCurrentContextHandle() != 0; }},
      {"ask for its name", [] { return *qmGetCurrentContextName() != '\0'; }},
      {"ask for the name of none", [] { return *qmGetContextName(0) != '\0'; }},
  };
  for (auto const& [name, succeeds] : kCalls) {
    SCOPED_TRACE(name);
    qmClearContext();
    EXPECT_FALSE(succeeds());
    EXPECT_EQ(qmGetCurrentContextHandle(), 0U);
  }
}

TEST_F(Contexts, ClearedContextsAndTheDefault) {
  EXPECT_TRUE(qmClearContext());
  EXPECT_STREQ(qmGetCurrentContextName(), "");
  EXPECT_EQ(qmGetCurrentContextHandle(), 0U);
  EXPECT_EQ(qmEvalExpStr("1+1"), 'N');
  EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");

  ASSERT_NE(qmCreatePublicContext("standard"), 0U);
  qmCreatePrivateContext("hidden");
  EXPECT_FALSE(qmSetDefaultContext("hidden"));
  EXPECT_FALSE(qmSetDefaultContext("unknown"));
  EXPECT_TRUE(qmSetDefaultContext("standard"));
  EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
  OnAnotherThread([] {
    qmEvalExpStr("1");
    EXPECT_STREQ(qmGetCurrentContextName(), "standard");
  });
  EXPECT_TRUE(qmResetDefaultContext());
  qmClearContext();
  qmEvalExpStr("1");
  EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");

  EXPECT_TRUE(qmSetDefaultContext("standard"));
  EXPECT_TRUE(qmDestroyPublicContext("standard"));
  qmClearContext();
  qmEvalExpStr("1");
  EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
  EXPECT_TRUE(qmSetDefaultContext("Qumel"));
}

TEST_F(Contexts, PrivateContextsAreSeenByTheirThreadOnly) {
  Handle const shared = qmCreatePublicContext("name");
  Handle const own = qmCreatePrivateContext("name");
  EXPECT_EQ(qmSetContext("name", false), own);
  OnAnotherThread([=] {
    EXPECT_EQ(qmGetContextHandle("name"), shared);
    EXPECT_EQ(qmSetContext("name", false), shared);
    EXPECT_STREQ(qmGetContextName(own), "");
    EXPECT_STREQ(qmGetContextName(shared), "name");
    EXPECT_FALSE(qmDestroyPrivateContext("name"));
    EXPECT_EQ(qmSetContext("test", false), 0U);
    EXPECT_TRUE(qmDestroyPublicContext("name"));
    EXPECT_EQ(qmGetCurrentContextHandle(), 0U);
  });
  EXPECT_EQ(qmGetCurrentContextHandle(), own);
}

TEST_F(Contexts, ManyComeAndGoUnderTheirNames) {
  struct SQMKind {
    Handle (*create)(char const*);
    bool (*destroy)(char const*);
  };
  constexpr SQMKind kKinds[] = {{qmCreatePublicContext, qmDestroyPublicContext},
                                {qmCreatePrivateContext, qmDestroyPrivateContext}};
  for (SQMKind const& kind : kKinds) {
    std::map<std::string, Handle> model;
    unsigned random = 1;
    for (int turn = 0; turn < 600; ++turn) {
      random = random * 1664525U + 1013904223U;
      // names that differ in few characters, so that their places in a table meet
      std::string const name = std::string(1 + (random >> 28) % 3, 'n') + std::to_string((random >> 16) % 40);
      auto const known = model.find(name);
      EXPECT_EQ(qmGetContextHandle(name.c_str()), known != model.end() ? known->second : 0U) << name;
      if (known != model.end()) {
        EXPECT_STREQ(qmGetContextName(known->second), name.c_str());
        EXPECT_EQ(qmSetContext(name.c_str(), false), known->second);
        EXPECT_STREQ(qmGetCurrentContextName(), name.c_str());
        EXPECT_TRUE(kind.destroy(name.c_str()));
        model.erase(known);
      } else {
        EXPECT_FALSE(kind.destroy(name.c_str()));
        EXPECT_EQ(qmSetContext(name.c_str(), false), 0U);
        model[name] = kind.create(name.c_str());
        EXPECT_NE(model[name], 0U);
        EXPECT_EQ(kind.create(name.c_str()), model[name]);
      }
    }
    for (auto const& [name, handle] : model) EXPECT_EQ(qmGetContextHandle(name.c_str()), handle);
    for (auto const& [name, handle] : model) EXPECT_TRUE(kind.destroy(name.c_str()));
  }
}

TEST_F(Contexts, VariablesAndExpressionsGoWithTheirContext) {
  long const before = qmGetQumelObjectCount();
  qmCreatePublicContext("short");
  qmSetContext("short", false);
  qmCreateNumVar('G', "x", 3.0);
  Handle const parsed = qmParseExp("x*x");
  EXPECT_EQ(qmEvalExpHndlToNum(parsed), 9.0);
  EXPECT_TRUE(qmDestroyPublicContext("short"));
  EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
  EXPECT_EQ(qmGetQumelObjectCount(), before);
}

TEST_F(Contexts, SymbolQueries) {
  qmCreateNumVar('G', "mine", 1.0);
  qmCreateNumVar('C', "ours", 1.0);
  qmCreateNumArray('G', "list", 1, 5, 0, 0, 0, 0, 0);
  struct SQMCase {
    char const* name;
    char scope;
    bool isOperator, isVariable, isArray;
  };
  constexpr SQMCase kCases[] = {
      {"sin", 'C', true, false, false},   {"sin", 'G', false, false, false},
      {"sin", 'L', true, false, false},   {"pi", 'C', false, false, false},
      {"pi", 'G', true, false, false},    {"pi", 'L', true, false, false},
      {"mine", 'C', false, false, false}, {"mine", 'G', false, true, false},
      {"mine", 'L', false, true, false},  {"ours", 'C', false, true, false},
      {"ours", 'G', false, false, false}, {"ours", 'D', false, true, false},
      {"list", 'G', false, true, true},   {"list", 'C', false, false, false},
      {"none", 'L', false, false, false}, {nullptr, 'L', false, false, false},
      {"", 'L', false, false, false},
  };
  for (auto const& [name, scope, isOperator, isVariable, isArray] : kCases) {
    SCOPED_TRACE(::testing::Message() << (name != nullptr ? name : "(null)") << ' ' << scope);
    EXPECT_EQ(qmIsOp(scope, name), isOperator);
    EXPECT_EQ(qmIsVar(scope, name), isVariable);
    EXPECT_EQ(qmIsArray(scope, name), isArray);
    EXPECT_EQ(qmIsSymbol(scope, name), isOperator || isVariable);
  }
  qmEvalExpStr("1");
  EXPECT_EQ(qmDeleteVar('C', "ours"), 3440);  // its handle holds it
  Handle const ours = qmGetVarHandle('C', "ours");
  EXPECT_TRUE(qmReleaseVarHandle(ours));
  EXPECT_TRUE(qmReleaseVarHandle(ours));
  EXPECT_EQ(qmDeleteVar('C', "ours"), 0);
}

TEST_F(Contexts, TheListsOfContextsAndThreads) {
  qmCreatePublicContext("listed");
  SQMContext* const listed = uFindExecutor("listed");
  ASSERT_NE(listed, nullptr);
  EXPECT_TRUE(uIsExecutor(listed));
  EXPECT_EQ(uFindExecutor("test"), nullptr);  // a private one
  EXPECT_EQ(uFindExecutor(nullptr), nullptr);
  EXPECT_FALSE(uIsExecutor(nullptr));
  SQMThread* const own = uGetThreadInfo(false);
  EXPECT_NE(own, nullptr);
  EXPECT_EQ(uGetThreadInfo(true), own);
  uAcquireThreadList();
  uAcquireExecutorList();
  EXPECT_TRUE(uDropThreadInfo());  // the first record of all stays
  EXPECT_EQ(uGetThreadInfo(true), own);
  EXPECT_TRUE(uDropExecutor("listed"));  // by the thread that holds the lists
  EXPECT_FALSE(uIsExecutor(listed));
  uReleaseExecutorList();
  uReleaseThreadList();
  uReleaseThreadList();  // by a thread that holds nothing
  OnAnotherThread([own] {
    EXPECT_NE(uGetThreadInfo(false), own);
    EXPECT_FALSE(uDropExecutor("listed"));
  });
}

TEST_F(Contexts, TheHolderOfAListIsNotWaitedForByWhomItWaitsFor) {
  qmCreatePublicContext("standard");
  qmClearContext();
  uAcquireExecutorList();
  std::thread chooser([] { EXPECT_TRUE(qmSetDefaultContext("standard")); });  // waits for the list
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(qmEvalExpStr("1+1"), 'N');  // needs the other list to find a context
  uReleaseExecutorList();
  chooser.join();
  qmClearContext();
  EXPECT_EQ(qmEvalExpStr("1+1"), 'N');
  EXPECT_STREQ(qmGetCurrentContextName(), "standard");
}

// ---- locks ----

/** Whether another thread gets the lock of a public context at once. */
class LockProbe {
 public:
  explicit LockProbe(char const* name)
      : m_thread([this, name] {
          m_handle = qmSetContext(name, true);
          m_returned = true;
          qmReleaseContext();
        }) {}
  ~LockProbe() { m_thread.join(); }
  /** Waits long enough for a thread that is not blocked, and not at all for one that has returned. */
  bool HasReturned() {
    for (int i = 0; i < 50 && !m_returned; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return m_returned;
  }
  Handle GetHandle() {
    while (!m_returned) std::this_thread::yield();
    return m_handle;
  }

 private:
  std::atomic<Handle> m_handle{0};
  std::atomic<bool> m_returned{false};
  std::thread m_thread;
};

TEST_F(Contexts, LocksWhatCanBeLocked) {
  qmSetContext("Qumel", true);
  EXPECT_FALSE(qmLockContext());
  EXPECT_FALSE(qmReleaseContext());
  qmClearContext();
  EXPECT_FALSE(qmLockContext());
  EXPECT_FALSE(qmReleaseContext());
  EXPECT_EQ(qmSetContext("test", true), qmGetContextHandle("test"));
  EXPECT_TRUE(qmLockContext());
  EXPECT_TRUE(qmReleaseContext());
  EXPECT_TRUE(qmReleaseContext());
  EXPECT_TRUE(qmLockContext());
}

TEST_F(Contexts, ThreadsWaitForALock) {
  Handle const shared = qmCreatePublicContext("shared");
  struct SQMCase {
    char const* name;
    void (*release)();
  };
  constexpr SQMCase kCases[] = {
      {"released", [] { qmReleaseContext(); }},
      {"cleared", [] { qmClearContext(); }},
      {"taken again and released",
       [] {
         qmSetContext("shared", true);  // it has the lock: waiting for itself would never end
         qmReleaseContext();
       }},
      {"left, come back to, and released",
       [] {
         qmSetContext("test", false);
         qmSetContext("shared", false);
         qmLockContext();
         qmReleaseContext();
       }},
  };
  for (auto const& [name, release] : kCases) {
    SCOPED_TRACE(name);
    ASSERT_EQ(qmSetContext("shared", true), shared);
    LockProbe probe("shared");
    EXPECT_FALSE(probe.HasReturned());
    release();
    EXPECT_EQ(probe.GetHandle(), shared);
  }
}

TEST_F(Contexts, ThreadKeepsALockWhenItTurnsToAnotherContext) {
  Handle const shared = qmCreatePublicContext("shared");
  ASSERT_EQ(qmSetContext("shared", true), shared);
  qmSetContext("test", false);
  LockProbe probe("shared");
  EXPECT_FALSE(probe.HasReturned());
  EXPECT_TRUE(qmReleaseContext());  // of "test", which was not locked
  EXPECT_FALSE(probe.HasReturned());
  EXPECT_EQ(qmSetContext("shared", true), shared);
  EXPECT_TRUE(qmClearContext());
  EXPECT_EQ(probe.GetHandle(), shared);
}

TEST_F(Contexts, ThreadGivesBackALockThatItTookSinceTheContextBecameCurrent) {
  ASSERT_NE(qmCreatePublicContext("shared"), 0U);
  EXPECT_NE(qmSetContext("shared", false), 0U);
  EXPECT_TRUE(qmReleaseContext()) << "there is nothing to give back";
  EXPECT_TRUE(qmLockContext());
  qmSetContext("test", false);
  qmSetContext("shared", false);
  LockProbe probe("shared");
  EXPECT_TRUE(qmReleaseContext());
  EXPECT_FALSE(probe.HasReturned()) << "the lock is from before";
  EXPECT_TRUE(qmLockContext());
  EXPECT_TRUE(qmReleaseContext());
  EXPECT_NE(probe.GetHandle(), 0U);
}

TEST_F(Contexts, ThreadWaitingForALockIsSetFreeWhenTheContextGoes) {
  qmCreatePublicContext("shared");
  qmSetContext("shared", true);
  qmSetContext("test", false);
  LockProbe first("shared");
  LockProbe second("shared");
  EXPECT_FALSE(first.HasReturned());
  EXPECT_TRUE(qmDestroyPublicContext("shared"));
  EXPECT_EQ(first.GetHandle(), 0U);
  EXPECT_EQ(second.GetHandle(), 0U);
}

// ---- several threads ----

constexpr int kThreads = 4;

TEST_F(Contexts, ThreadsWithPrivateContexts) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      qmClearContext();
      ASSERT_NE(qmCreatePrivateContext("own"), 0U);
      ASSERT_NE(qmSetContext("own", true), 0U);
      ASSERT_NE(qmCreateNumVar('G', "x", i), 0U);
      Handle const parsed = qmParseExp("x*x+sqrt 4");
      for (int turn = 0; turn < 300; ++turn) {
        EXPECT_EQ(qmEvalExpHndlToNum(parsed), i * i + 2.0);
        EXPECT_EQ(qmEvalExpStrToNum("x+1"), i + 1.0);
        EXPECT_EQ(ToText("x"), std::to_string(i) + ".000000000000");
        qmEvalExpStr("1/0");
        EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
        EXPECT_STREQ(qmGetContextName(qmGetCurrentContextHandle()), "own");
        qmDeleteExp(qmParseExp("1+1"));
        EXPECT_TRUE(qmIsOp('L', "sin"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Contexts, ThreadsThatShareAContextUnderItsLock) {
  qmCreatePublicContext("shared");
  qmSetContext("shared", false);
  qmCreateNumVar('G', "total", 0.0);
  Handle const increment = qmParseExp("total = total + 1");
  ASSERT_NE(increment, 0U);
  qmClearContext();
  constexpr int kTurns = 500;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([increment] {
      for (int turn = 0; turn < kTurns; ++turn) {
        ASSERT_NE(qmSetContext("shared", true), 0U);
        qmEvalExpHndl(increment);
        qmEvalExpStr("total = total + 1");
        EXPECT_TRUE(turn % 2 == 0 ? qmReleaseContext() : qmClearContext());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  qmSetContext("shared", true);
  EXPECT_EQ(qmEvalExpStrToNum("total"), 2.0 * kThreads * kTurns);
}

TEST_F(Contexts, ThreadsWhoseCurrentContextIsDestroyedGetTheDefault) {
  qmCreatePublicContext("doomed");
  Handle const doomed = qmGetContextHandle("doomed");
  std::barrier<> barrier(kThreads + 1);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&barrier, doomed, i] {
      EXPECT_EQ(qmSetContext("doomed", i == 0), doomed);  // the first one with the lock
      barrier.arrive_and_wait();
      barrier.arrive_and_wait();  // it is gone
      EXPECT_STREQ(qmGetCurrentContextName(), "");
      EXPECT_FALSE(qmGetForceComplexResults());  // defaults are back
      EXPECT_FALSE(qmLockContext());
      EXPECT_EQ(qmGetLastErrorID(), kNone);
      EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
      EXPECT_EQ(qmSetContext("doomed", true), 0U);
      EXPECT_STREQ(qmGetContextName(doomed), "");
    });
  }
  barrier.arrive_and_wait();
  qmSetContext("Qumel", false);
  qmClearLastError();
  EXPECT_TRUE(qmDestroyPublicContext("doomed"));
  barrier.arrive_and_wait();
  for (std::thread& thread : threads) thread.join();
}

// Contexts come and go while calls run in them: every call ends in one context or another.
TEST_F(Contexts, ThreadsEvaluateWhileTheirContextIsDestroyedAndMadeAnew) {
  qmSetContext("Qumel", false);
  qmEvalExpStr("6*7");  // what the primary context makes at its first evaluation stays
  qmSetContext("test", false);
  long const before = qmGetQumelObjectCount();
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&stop, i] {
      std::string const name = "shared" + std::to_string(i % 2);
      while (!stop) {
        if (qmSetContext(name.c_str(), true) == 0) continue;
        qmSetAngleUnit('G');
        qmGetAngleUnit();
        EXPECT_EQ(qmEvalExpStrToNum("6*7"), 42.0);
        qmGetCurrentContextName();
        qmGetContextName(qmGetContextHandle(name.c_str()));
        qmReleaseContext();
      }
    });
  }
  for (int turn = 0; turn < 300; ++turn) {
    for (char const* const name : {"shared0", "shared1"}) {
      qmCreatePublicContext(name);
      if (turn % 3 == 0) std::this_thread::yield();
      EXPECT_TRUE(qmDestroyPublicContext(name));
    }
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  qmGetAngleUnit();                                       // a call that ends destroys what others left behind
  EXPECT_LE(qmGetQumelObjectCount(), before + kThreads);  // their records
}

TEST_F(Contexts, ThreadsLookUpHandlesOfEachOther) {
  Handle const parsed = qmParseExp("6*7");
  Handle const context = qmGetCurrentContextHandle();
  EXPECT_EQ(qmEvalExpHndlToNum(parsed), 42.0);
  OnAnotherThread([=] {
    EXPECT_EQ(qmEvalExpHndlToNum(parsed), 42.0);
    EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
    EXPECT_STREQ(qmGetContextName(context), "");
    qmDeleteExp(parsed);
  });
  EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
}

TEST_F(Contexts, ThreadsMakeTheSamePublicContextOnce) {
  std::barrier<> barrier(kThreads);
  std::vector<Handle> handles(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      barrier.arrive_and_wait();
      handles[static_cast<std::size_t>(i)] = qmCreatePublicContext("only");
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (Handle const handle : handles) EXPECT_EQ(handle, handles[0]);
  EXPECT_TRUE(qmDestroyPublicContext("only"));
  EXPECT_FALSE(qmDestroyPublicContext("only"));
}

}  // namespace
}  // namespace qumel::testing
