// What every benchmark needs: a library that is up, with a fresh private context, and results that are
// checked, so that a wrong answer is never a fast one.
#pragma once

#include <benchmark/benchmark.h>

#include "qumel/qumel.h"

namespace qumel_bench {

class Frame {
 public:
  Frame() {
    qmInitialize(nullptr);
    qmCreatePrivateContext("bench");
    qmSetContext("bench", false);
  }
  ~Frame() {
    qmDestroyPrivateContext("bench");
    qmRelease();
  }
  Frame(Frame const&) = delete;
  Frame& operator=(Frame const&) = delete;
};

/** Ends a benchmark whose calls fail. */
inline void ExpectNoError(benchmark::State& state) {
  if (qmGetLastErrorID() != 0) state.SkipWithError(qmGetLastErrorText());
}

}  // namespace qumel_bench
