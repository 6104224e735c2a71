// Contexts, expressions and variables that several threads use at once, without a lock of their own: calls
// take turns, what is destroyed meanwhile goes when nobody uses it, and waits that would never end are
// refused.
#include <atomic>
#include <barrier>
#include <functional>
#include <vector>

#include "api/interface_test.h"

namespace qumel::testing {
namespace {

constexpr int kThreads = 4;

/** Runs work(0), work(1) and so on at once, each on a thread of its own, beside what the caller does. */
class Crew {
 public:
  Crew(int count, std::function<void(int)> const& work) : m_start(count + 1) {
    for (int i = 0; i < count; ++i) {
      m_threads.emplace_back([this, work, i] {
        m_start.arrive_and_wait();
        work(i);
      });
    }
    m_start.arrive_and_wait();
  }
  ~Crew() {
    for (std::thread& thread : m_threads) thread.join();
  }

 private:
  std::barrier<> m_start;
  std::vector<std::thread> m_threads;
};

class SharedContexts : public InterfaceTest {};

TEST_F(SharedContexts, ThreadsThatKnowNothingOfContextsGetRightValues) {
  Crew(2 * kThreads, [](int i) {
    std::string const own = std::to_string(i);
    Handle const parsed = qmParseExp((own + " * 1000 + 1").c_str());
    for (int turn = 0; turn < 300; ++turn) {
      std::string const text = "n = " + own + "; n * 1000 + " + std::to_string(turn);
      EXPECT_EQ(qmEvalExpStrToNum(text.c_str()), i * 1000 + turn);
      EXPECT_EQ(qmEvalExpHndlToNum(parsed), i * 1000 + 1);
      EXPECT_EQ(qmEvalExpStrToBool((own + " > 3").c_str()), i > 3);
      EXPECT_EQ(qmEvalExpStr("\"a\" + \"b\""), 'S');
    }
    qmDeleteExp(parsed);
  });
}

TEST_F(SharedContexts, ThreadsTakeTurnsCallByCall) {
  qmSetContext("Qumel", false);
  ASSERT_NE(qmCreateNumVar('C', "turns", 0.0), 0U);
  Handle const increment = qmParseExp("turns = turns + 1");
  ASSERT_NE(increment, 0U);
  constexpr int kTurns = 1000;
  Crew(kThreads, [increment](int) {
    for (int turn = 0; turn < kTurns; ++turn) {
      qmEvalExpHndl(increment);
      qmEvalExpStr("turns = turns + 1");
      if (turn % 8 == 0) {
        qmSetAngleUnit(turn % 16 == 0 ? 'D' : 'R');
        qmDefineError('G', 10000 + turn, "some text");
        qmGetLastErrorText();
      }
    }
  });
  EXPECT_EQ(qmEvalExpStrToNum("turns"), 2.0 * kThreads * kTurns);
  qmDeleteExp(increment);
  Handle const variable = qmGetVarHandle('C', "turns");
  while (qmDeleteVar('C', "turns") != kNone && qmReleaseVarHandle(variable)) {
  }
}

TEST_F(SharedContexts, NoThreadIsKeptOutByOneThatCallsAllTheTime) {
  std::atomic<bool> isDone{false};
  std::atomic<bool> isKeptOut{false};
  Crew(2, [&](int i) {
    constexpr int kWanted = 500, kMost = 5'000'000;
    if (i == 0) {
      for (int turn = 0; turn < kWanted; ++turn) EXPECT_EQ(qmEvalExpStrToNum("6*7"), 42.0);
      isDone = true;
    } else {
      int turn = 0;
      while (!isDone && turn < kMost) {
        qmGetLastErrorID();
        ++turn;
      }
      isKeptOut = !isDone;
    }
  });
  EXPECT_FALSE(isKeptOut);
}

// A thread that makes a context current does not wait for the one that is in it.
TEST_F(SharedContexts, ThreadsCopySettingsThatModeWordsChange) {
  qmCreatePublicContext("shared");
  Crew(kThreads, [](int i) {
    for (int turn = 0; turn < 300; ++turn) {
      ASSERT_NE(qmSetContext("shared", false), 0U);
      if (i % 2 == 0) {
        EXPECT_EQ(qmEvalExpStrToNum("rad; hex; deg; dec; 6*7"), 42.0);
      } else {
        char const unit = qmGetAngleUnit();
        EXPECT_TRUE(unit == 'D' || unit == 'R') << unit;
        qmClearContext();
      }
    }
  });
}

// ---- nested calls ----

Handle g_inner = 0;

int CallIn(Handle handle) {
  EXPECT_EQ(qmGetParmCount(handle), 1);
  EXPECT_EQ(qmEvalExpStrToNum("6*7"), 42.0);
  EXPECT_EQ(qmEvalExpHndlToNum(g_inner), 12.0);  // of another context
  EXPECT_EQ(qmEvalExpStrToNum("7*8"), 56.0);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  return static_cast<int>(qmSetNumResult(handle, 2.0 * qmGetNumParm(handle, 0)));
}

TEST_F(SharedContexts, NestedCallsOfOneThreadDoNotWaitForThreadsThatWaitForIt) {
  qmCreatePublicContext("inner");
  qmSetContext("inner", false);
  g_inner = qmParseExp("3*4");
  qmCreatePublicContext("outer");
  qmSetContext("outer", false);
  ASSERT_EQ(qmLinkCallbackOp('G', "callin", "prefix", "number", "number n", nullptr, CallIn), 0);
  Handle const parsed = qmParseExp("callin(5) + callin(callin 1)");
  ASSERT_NE(parsed, 0U);
  Crew(kThreads, [parsed](int i) {
    qmSetContext(i % 2 == 0 ? "outer" : "inner", false);
    for (int turn = 0; turn < 200; ++turn) {
      if (i == 0) {
        EXPECT_EQ(qmEvalExpHndlToNum(parsed), 14.0);
      } else {
        EXPECT_EQ(qmEvalExpStrToNum("1+1"), 2.0);
      }
    }
  });
}

// ---- circles ----

/** What a thread does from a callback in its own context to one that another thread is in. */
struct SQMWay {
  char const* name;
  double (*call)(char const* context, Handle expression, Handle variable);  // 5, or 0 when it is refused
};

double Checked(double value) {
  // of the context that the thread is in; and one that refuses refuses that question, too
  EXPECT_EQ(qmGetLastErrorID(), value == 0.0 ? kNotInitialized : kNone);
  return value;
}

double InContext(char const* name, double (*call)()) {
  std::string const before = qmGetCurrentContextName();
  EXPECT_NE(qmSetContext(name, false), 0U);
  double const value = Checked(call());
  EXPECT_NE(qmSetContext(before.c_str(), false), 0U);
  return value;
}

constexpr SQMWay kWays[] = {
    {"expression by handle",
     [](char const*, Handle expression, Handle) { return Checked(qmEvalExpHndlToNum(expression)); }},
    {"variable by handle",
     [](char const*, Handle, Handle variable) { return Checked(qmGetNumVarValueByHandle(variable)); }},
    {"setting a variable by handle",
     [](char const*, Handle, Handle variable) {
       return Checked(qmSetNumVarByHandle(variable, 5.0) ? 5.0 : 0.0);
     }},
    {"showing an expression",
     [](char const*, Handle expression, Handle) {
       return Checked(qmRevertParsedExp(expression) != nullptr ? 5.0 : 0.0);
     }},
    {"text", [](char const* context, Handle,
                Handle) { return InContext(context, [] { return qmEvalExpStrToNum("2+3"); }); }},
    {"setting",
     [](char const* context, Handle, Handle) {
       return InContext(context, [] { return qmGetAngleUnit() == 'D' ? 5.0 : 0.0; });
     }},
};

/** What the callback of a thread does. */
thread_local std::function<void()> t_visit;

int Visit(Handle) {
  t_visit();
  return 0;
}

TEST_F(SharedContexts, OfThreadsThatWaitInACircleOneIsRefused) {
  for (int const count : {2, 3}) {
    std::vector<Handle> expressions, variables;
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
      names.push_back("circle" + std::to_string(count) + std::to_string(i));
      qmCreatePublicContext(names.back().c_str());
      qmSetContext(names.back().c_str(), false);
      expressions.push_back(qmParseExp("2+3"));
      variables.push_back(qmCreateNumVar('G', "v", 5.0));
      ASSERT_EQ(qmLinkCallbackOp('G', "visit", "nofix", "number", "", nullptr, Visit), 0);
    }
    for (SQMWay const& way : kWays) {
      SCOPED_TRACE(::testing::Message() << way.name << " among " << count);
      std::barrier<> allAreIn(count);
      std::atomic<int> refused{0};
      Crew(count, [&](int i) {
        auto const next = static_cast<std::size_t>((i + 1) % count);
        t_visit = [&] {
          allAreIn.arrive_and_wait();
          double const value = way.call(names[next].c_str(), expressions[next], variables[next]);
          if (value == 0.0) ++refused;
          else EXPECT_EQ(value, 5.0);
        };
        ASSERT_NE(qmSetContext(names[static_cast<std::size_t>(i)].c_str(), false), 0U);
        EXPECT_EQ(qmEvalExpStrToNum("visit; 6*7"), 42.0);
        EXPECT_EQ(qmGetLastErrorID(), kNone);
      });
      EXPECT_EQ(refused, 1);
    }
  }
}

TEST_F(SharedContexts, ThreadsThatWaitForALockStandInCirclesToo) {
  qmCreatePublicContext("locked");
  qmCreatePublicContext("busy");
  qmSetContext("busy", false);
  ASSERT_EQ(qmLinkCallbackOp('G', "visit", "nofix", "number", "", nullptr, Visit), 0);
  std::barrier<> bothAreIn(2);
  std::atomic<int> refused{0};
  Crew(2, [&](int i) {
    if (i == 0) {  // has the lock, and wants into the context
      ASSERT_NE(qmSetContext("locked", true), 0U);
      ASSERT_NE(qmSetContext("busy", false), 0U);
      bothAreIn.arrive_and_wait();
      double const value = qmEvalExpStrToNum("6*7");
      if (value != 42.0) {
        ++refused;
        EXPECT_EQ(value, 0.0);
        EXPECT_EQ(qmGetLastErrorID(), kNotInitialized);
      }
      ASSERT_NE(qmSetContext("locked", true), 0U);
      EXPECT_TRUE(qmReleaseContext());
    } else {  // is in the context, and wants the lock
      t_visit = [&] {
        bothAreIn.arrive_and_wait();
        if (qmSetContext("locked", true) == 0) {
          ++refused;
          EXPECT_EQ(qmGetLastErrorID(), kNotInitialized);
        } else {
          EXPECT_TRUE(qmReleaseContext());
        }
      };
      ASSERT_NE(qmSetContext("busy", false), 0U);
      EXPECT_EQ(qmEvalExpStrToNum("visit; 6*7"), 42.0);
    }
  });
  EXPECT_EQ(refused, 1);
}

// ---- destruction ----

/** Every function that takes handles, on handles whose context another thread destroys. */
void UseByHandle(Handle context, Handle expression, Handle number, Handle array,
                 std::atomic<bool> const& isDoomed) {
  char const type = qmEvalExpHndl(expression);
  EXPECT_TRUE(type == 'N' || (type == 'X' && isDoomed)) << type;
  double const value = qmEvalExpHndlToNum(expression);
  EXPECT_TRUE(value == 42.0 || (value == 0.0 && isDoomed)) << value;
  double imaginary = 0.0;
  qmEvalExpHndlToComp(expression, &imaginary);
  qmEvalExpHndlToBool(expression);
  qmEvalExpHndlToStr(expression);
  qmAnnotateParsedExp(expression);
  qmRevertParsedExp(expression);
  double const read = qmGetNumVarValueByHandle(number);
  EXPECT_TRUE(read == 7.0 || (read == 0.0 && isDoomed)) << read;
  qmSetNumVarByHandle(number, 7.0);
  double const element = qmGetNumArrayElementByHandle(array, 1, 3, 0, 0, 0, 0, 0);
  EXPECT_TRUE(element == 3.0 || (element == 0.0 && isDoomed)) << element;
  qmSetNumArrayElementByHandle(array, 3.0, 1, 3, 0, 0, 0, 0, 0);
  EXPECT_TRUE(qmGetVarTypeByHandle(number) == 'N' || isDoomed);
  EXPECT_TRUE(qmIsArrayHandle(array) || isDoomed);
  EXPECT_TRUE(qmIsVarHandle(number) || isDoomed);
  // another kind of object, that goes, too
  EXPECT_EQ(qmEvalExpHndl(context), 'X');
  EXPECT_FALSE(qmIsVarHandle(context));
  qmGetContextName(context);
}

TEST_F(SharedContexts, ThreadsUseHandlesWhileTheirContextIsDestroyed) {
  for (int round = 0; round < 60; ++round) {
    Handle const context = qmCreatePublicContext("doomed");
    qmSetContext("doomed", false);
    Handle const number = qmCreateNumVar('G', "x", 7.0);
    Handle const array = qmCreateNumArray('G', "list", 1, 5, 0, 0, 0, 0, 0);
    qmSetNumArrayElement('G', "list", 3.0, 1, 3, 0, 0, 0, 0, 0);
    Handle const expression = qmParseExp("x*6");
    ASSERT_NE(expression, 0U);
    std::atomic<bool> isDoomed{false};
    std::atomic<int> turns{0};
    Crew crew(3, [&](int i) {
      if (i == 0) qmSetContext("doomed", false);
      for (int turn = 0; turn < 400 && qmIsVarHandle(number); ++turn, ++turns)
        UseByHandle(context, expression, number, array, isDoomed);
    });
    while (turns < round % 6) std::this_thread::yield();
    isDoomed = true;
    EXPECT_TRUE(qmDestroyPublicContext("doomed"));
    EXPECT_EQ(qmEvalExpHndl(expression), 'X');
    EXPECT_FALSE(qmIsVarHandle(number));
  }
}

TEST_F(SharedContexts, ThreadsUseHandlesOfExpressionsAndVariablesThatAnotherDeletes) {
  qmCreatePublicContext("shared");
  qmSetContext("shared", false);
  std::atomic<Handle> expression{qmParseExp("6*7")};
  std::atomic<Handle> number{qmCreateNumVar('G', "x", 7.0)};
  std::atomic<bool> stop{false};
  Crew crew(3, [&](int i) {
    if (i == 0) qmSetContext("shared", false);
    while (!stop) {
      double const value = qmEvalExpHndlToNum(expression);
      EXPECT_TRUE(value == 42.0 || value == 0.0) << value;
      qmRevertParsedExp(expression);
      double const read = qmGetNumVarValueByHandle(number);
      EXPECT_TRUE(read == 7.0 || read == 0.0) << read;
    }
  });
  for (int turn = 0; turn < 500; ++turn) {
    Handle const next = qmParseExp("40+2");
    qmDeleteExp(expression.exchange(next));
    qmReleaseVarHandle(number);
    EXPECT_EQ(qmDeleteVar('G', "x"), kNone);
    number = qmCreateNumVar('G', "x", 7.0);
  }
  stop = true;
}

TEST_F(SharedContexts, ThreadsUseHandlesOfProcessWideVariablesThatAnotherDeletes) {
  std::atomic<Handle> fleeting{0};
  std::atomic<bool> stop{false};
  Crew crew(3, [&](int i) {
    std::string const own = "own" + std::to_string(i);
    qmCreatePrivateContext(own.c_str());
    qmSetContext(own.c_str(), false);
    while (!stop) {
      double const value = qmGetNumVarValueByHandle(fleeting);
      EXPECT_TRUE(value == 7.0 || value == 0.0) << value;
      char const type = qmGetVarTypeByHandle(fleeting);
      EXPECT_TRUE(type == 'N' || type == 'X') << type;
      qmIsArrayHandle(fleeting);
    }
  });
  for (int turn = 0; turn < 2000; ++turn) {
    fleeting = qmCreateNumVar('C', "fleeting", 7.0);
    EXPECT_TRUE(qmReleaseVarHandle(fleeting));
    EXPECT_EQ(qmDeleteVar('C', "fleeting"), kNone);
    EXPECT_FALSE(qmIsVarHandle(fleeting));
  }
  stop = true;
}

TEST_F(SharedContexts, ThreadsThatWaitForAContextThatGoesAreSetFree) {
  for (int round = 0; round < 20; ++round) {
    qmCreatePublicContext("doomed");
    qmSetContext("doomed", false);
    ASSERT_EQ(qmLinkCallbackOp('G', "visit", "nofix", "number", "", nullptr, Visit), 0);
    Handle const parsed = qmParseExp("6*7");
    std::barrier<> oneIsIn(4);
    std::atomic<bool> isGone{false};
    Crew crew(3, [&](int i) {
      ASSERT_NE(qmSetContext("doomed", false), 0U);
      if (i == 0) {
        t_visit = [&] {
          oneIsIn.arrive_and_wait();
          while (!isGone) std::this_thread::yield();
          EXPECT_EQ(qmEvalExpHndl(parsed), 'X') << "though the call in the context goes on";
        };
        EXPECT_EQ(qmEvalExpStrToNum("visit; 6*7"), 42.0);
      } else {
        oneIsIn.arrive_and_wait();
        if (i == 1) {
          EXPECT_EQ(qmEvalExpStrToNum("1+1"), 2.0);
          EXPECT_STREQ(qmGetCurrentContextName(), "Qumel");
        } else {
          EXPECT_EQ(qmEvalExpHndl(parsed), 'X');
        }
      }
    });
    oneIsIn.arrive_and_wait();
    for (int pause = 0; pause < round; ++pause) std::this_thread::yield();
    EXPECT_TRUE(qmDestroyPublicContext("doomed"));
    isGone = true;
  }
}

TEST_F(SharedContexts, ThreadsCallWhileOthersDropTheirRecords) {
  Crew(kThreads, [](int i) {
    for (int turn = 0; turn < 200; ++turn) {
      qmCreatePrivateContext("own");
      qmSetContext("own", turn % 2 == 0);
      EXPECT_EQ(qmEvalExpStrToNum("6*7"), 42.0);
      qmSetAngleUnit('R');
      EXPECT_NE(qmGetAngleUnit(), ' ');
      qmGetCurrentContextName();
      if (turn % 4 == i) uDropThreadInfo();  // the record that stands before this thread's
      qmDestroyPrivateContext("own");
    }
  });
}

// ---- reading at once ----

TEST_F(SharedContexts, ThreadsReadTheElementsOfOneProcessWideArray) {
  constexpr long kSize = 50;
  Handle const numbers = qmCreateNumArray('C', "pw_numbers", 1, kSize, 0, 0, 0, 0, 0);
  Handle const pairs = qmCreateComplexArray('C', "pw_pairs", 2, 5, 10, 0, 0, 0, 0);
  Handle const truths = qmCreateBoolArray('C', "pw_truths", 1, kSize, 0, 0, 0, 0, 0);
  Handle const texts = qmCreateStrArray('C', "pw_texts", 16, 1, kSize, 0, 0, 0, 0, 0);
  for (long n = 0; n < kSize; ++n) {
    auto const value = static_cast<double>(n);
    qmSetNumArrayElementByHandle(numbers, value, 1, n, 0, 0, 0, 0, 0);
    qmSetComplexArrayElement('C', "pw_pairs", value, -value, 2, n / 10, n % 10, 0, 0, 0, 0);
    qmSetBoolArrayElementByHandle(truths, n % 3 == 0, 1, n, 0, 0, 0, 0, 0);
    qmSetStrArrayElement('C', "pw_texts", std::to_string(n).c_str(), 1, n, 0, 0, 0, 0, 0);
  }
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  Crew(kThreads, [=](int i) {
    std::string const own = "own" + std::to_string(i);
    qmClearContext();
    qmCreatePrivateContext(own.c_str());
    qmSetContext(own.c_str(), false);
    for (long turn = 0; turn < 2000; ++turn) {
      long const n = (turn * (2 * i + 1)) % kSize;
      auto const value = static_cast<double>(n);
      EXPECT_EQ(qmGetNumArrayElement('C', "pw_numbers", 1, n, 0, 0, 0, 0, 0), value);
      EXPECT_EQ(qmGetNumArrayElementByHandle(numbers, 1, n, 0, 0, 0, 0, 0), value);
      double real = -1.0, imaginary = -1.0;
      qmGetComplexArrayElementByHandle(pairs, &real, &imaginary, 2, n / 10, n % 10, 0, 0, 0, 0);
      EXPECT_EQ(real, value);
      EXPECT_EQ(imaginary, -value);
      EXPECT_EQ(qmGetBoolArrayElementByHandle(truths, 1, n, 0, 0, 0, 0, 0), n % 3 == 0);
      EXPECT_STREQ(qmGetStrArrayElementByHandle(texts, 1, n, 0, 0, 0, 0, 0), std::to_string(n).c_str());
      if (turn % 20 == 0) {
        EXPECT_EQ(qmEvalExpStrToNum(("pw_numbers[" + std::to_string(n) + "]").c_str()), value);
      }
    }
    EXPECT_EQ(qmGetLastErrorID(), kNone);
  });
  for (auto const& [name, handle] : {std::pair{"pw_numbers", numbers}, std::pair{"pw_pairs", pairs},
                                     std::pair{"pw_truths", truths}, std::pair{"pw_texts", texts}}) {
    EXPECT_TRUE(qmReleaseVarHandle(handle));
    EXPECT_EQ(qmDeleteVar('C', name), kNone);
  }
}

// ---- errors and handles ----

TEST_F(SharedContexts, TheErrorOfACallByHandleGoesToTheContextThatGuardsIt) {
  qmCreatePublicContext("other");
  qmSetContext("other", false);
  Handle const failing = qmParseExp("1/0");
  Handle const text = qmCreateStrVar('G', "s", 8, "text");
  qmClearLastError();
  qmSetContext("test", false);
  qmEvalExpHndl(failing);
  EXPECT_EQ(qmGetLastErrorID(), kNone);
  EXPECT_EQ(qmGetNumVarValueByHandle(text), 0.0);
  EXPECT_EQ(qmGetLastErrorID(), 3090) << "errors of variables go to the current context";
  qmSetContext("other", false);
  EXPECT_EQ(qmGetLastErrorID(), kDivisionByZero);
}

Handle g_kept = 0;

TEST_F(SharedContexts, ThreadsMayHoldHandlesOfCallbacksThatHaveReturned) {
  ASSERT_EQ(qmLinkCallbackOp('G', "keep", "prefix", "number", "number n", nullptr,
                             [](Handle handle) {
                               g_kept = handle;
                               return 0;
                             }),
            0);
  Handle const parsed = qmParseExp("keep 1");
  qmEvalExpHndl(parsed);
  OnAnotherThread([] { EXPECT_EQ(qmGetParmCount(g_kept), 1); });
  qmDeleteExp(parsed);
  OnAnotherThread([] {
    EXPECT_EQ(qmGetParmCount(g_kept), 0);
    EXPECT_EQ(qmSetNumResult(g_kept, 1.0), kNotFound);
  });
  qmEvalExpStr("keep 2");
  EXPECT_EQ(qmGetParmCount(g_kept), 0);
}

}  // namespace
}  // namespace qumel::testing
