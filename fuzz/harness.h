// What the fuzzers share: a fresh context for each input, under settings that the input chooses.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "qumel/qumel.h"

namespace qumel_fuzz {

/** A private context named "fuzz", current while it lives. */
class Context {
 public:
  explicit Context(std::uint8_t settings) {
    static bool const isUp = qmInitialize(nullptr);
    if (!isUp) std::abort();
    qmCreatePrivateContext("fuzz");
    qmSetContext("fuzz", false);
    qmSetAllowComplexResults((settings & 1) != 0);
    qmSetAllowImpliedMult((settings & 2) != 0);
    qmSetRadixMark((settings & 4) != 0 ? ',' : '.');
    qmSetInvertArrayIndices((settings & 8) != 0);
    qmSetQuoteMark((settings & 16) != 0 ? '\'' : '"');
    if ((settings & 32) != 0) qmSetForceComplexResults();
    qmSetAngleUnit((settings & 64) != 0 ? 'D' : 'R');
  }
  ~Context() {
    qmDestroyPrivateContext("fuzz");
    qmClearLastError();
  }
  Context(Context const&) = delete;
  Context& operator=(Context const&) = delete;
};

/** Whether a text may run for long by its own will: loops belong to whoever writes them. */
inline bool MayLoop(std::string_view text) {
  for (char const* word : {"do", "goto", "rand", "roll"})
    if (text.find(word) != std::string_view::npos) return true;
  return false;
}

/** Stops the fuzzer, as a sanitizer would. */
[[noreturn]] inline void Fail(char const* what, std::string const& first, std::string const& second) {
  std::fprintf(stderr, "%s\n  %s\n  %s\n", what, first.c_str(), second.c_str());
  std::abort();
}

}  // namespace qumel_fuzz
