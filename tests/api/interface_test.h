// What the tests of the exported interface share. They include the public header and nothing else of the
// library.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "qumel/qumel.h"

namespace qumel::testing {

using Handle = unsigned long long;

/** Error codes by name, as far as these tests need them. */
enum : long {
  kNone = 0,
  kMissingRightParen = 2050,
  kNotInitialized = 3010,
  kMessageNotLoaded = 3020,
  kBadExpression = 3030,
  kNotDefined = 3060,
  kDivisionByZero = 3110,
  kResultIsComplex = 3140,
  kNotFound = 3220,
  kOutOfMemory = 3230,
};

/** Runs call on a thread of its own and waits for it. */
template <class Call>
void OnAnotherThread(Call call) {
  std::thread(call).join();
}

/** Every test starts with a fresh private context, "test", with all settings at their defaults. */
class InterfaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    qmInitialize("");
    qmReset();
    qmClearContext();  // a fresh record forces complex results; a cleared one does not
    ASSERT_NE(qmCreatePrivateContext("test"), 0U);
    ASSERT_NE(qmSetContext("test", false), 0U);
  }
  void TearDown() override { qmReset(); }

  /** Makes another private context current, made with the settings that choose makes. */
  template <class Choose>
  static void UseContextWith(char const* name, Choose choose) {
    qmClearContext();
    choose();
    ASSERT_NE(qmCreatePrivateContext(name), 0U);
    ASSERT_NE(qmSetContext(name, false), 0U);
  }

  static std::string ToText(char const* expression) {
    char const* const text = qmEvalExpStrToStr(expression);
    return text != nullptr ? text : "(null)";
  }
};

}  // namespace qumel::testing
