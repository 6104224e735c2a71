// What the fuzzers share: a fresh context for each input, in the dialect that the input chooses.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "qumel/qumel.h"

namespace qumel_fuzz {

/** A byte that chooses the usual settings: text files end with it. */
constexpr std::uint8_t kUsualDialect = '\n';

/** A private context named "fuzz", current while it lives. Each bit of dialect that differs from the usual
 * one changes a setting; most of them must stand before a context is created. */
class Context {
 public:
  explicit Context(std::uint8_t dialect) : m_changes(dialect ^ kUsualDialect) {
    static bool const isUp = qmInitialize(nullptr);
    if (!isUp) std::abort();
    qmClearContext();
    qmSetAllowImpliedMult(!Changes(1));
    qmSetRadixMark(HasDecimalComma() ? 'C' : 'P');
    qmSetQuoteMark(Changes(4) ? '1' : '2');
    qmSetInvertArrayIndices(Changes(8));
    qmSetBooleanTrue(Changes(16) ? 'N' : 'C');
    if (Changes(32)) qmSetForceComplexResults();
    qmCreatePrivateContext("fuzz");
    qmSetContext("fuzz", false);
    if (!Changes(32)) qmSetAllowComplexResults(Changes(64));
    qmSetAngleUnit(Changes(128) ? 'R' : 'D');
  }
  ~Context() {
    qmDestroyPrivateContext("fuzz");
    qmClearLastError();
  }
  Context(Context const&) = delete;
  Context& operator=(Context const&) = delete;

  bool HasDecimalComma() const { return Changes(2); }

 private:
  bool Changes(unsigned setting) const { return (m_changes & setting) != 0; }

  unsigned m_changes;
};

/** An input: a text, and behind it the byte that chooses the dialect. */
struct Input {
  Input(std::uint8_t const* data, std::size_t size)
      : text(reinterpret_cast<char const*>(data), size > 0 ? size - 1 : 0),
        dialect(size > 0 ? data[size - 1] : kUsualDialect) {}

  std::string text;
  std::uint8_t dialect;
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
