// What tests of host operators share.
#pragma once

#include "api/interface_test.h"

namespace qumel::testing {

class Operators : public InterfaceTest {
 protected:
  static double Number(char const* text) {
    double const value = qmEvalExpStrToNum(text);
    EXPECT_EQ(qmGetLastErrorID(), kNone) << text;
    return value;
  }
  static long ErrorOf(char const* text) {
    qmEvalExpStr(text);
    return qmGetLastErrorID();
  }
  /** Defines a prefix operator of this context. */
  static long Define(char const* name, char const* parameters, char const* text) {
    return qmDefineExpOp('G', name, "prefix", "number", parameters, nullptr, text);
  }
};

}  // namespace qumel::testing
