// What the benchmark asks of a library that it measures: compile a formula, evaluate it while its variables
// change, and evaluate a text that it has never seen. Each library has a file in engines/.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "bench/translation.h"

namespace bench {

/** The doubles that formulas read. Each goes to and fro between two values, so that no evaluation is like the
 * one before, both branches of most conditions run, and results can be compared beforehand for all values
 * there are. */
struct alignas(64) Variables {  // in cache lines of their own
  static constexpr std::size_t kCount = 8;
  static constexpr char const* kNames[kCount] = {"x", "y", "z", "w", "a", "b", "c", "d"};

  void Step() {
#pragma GCC unroll 8
    for (std::size_t i = 0; i < kCount; ++i) now[i] = sums[i] - now[i];
  }

  double now[kCount] = {0.375, 1.25, 0.90625, 3.5, 1.125, 2.1875, 0.5, 4.5};
  double sums[kCount] = {1.125, 4, 1.0625, 5.75, 3, 3, 2.125, 7.75};
};

class Formula {
 public:
  virtual ~Formula() = default;
  virtual double Evaluate() = 0;
  /** Evaluates so many times, with a step of the variables before each, and returns the sum of the values. */
  virtual double Run(long turns) = 0;
};

/** A formula of anything that can be called. The loop is compiled with the call, so that nothing comes
 * between. */
template <typename Call>
class CallFormula final : public Formula {
 public:
  CallFormula(Variables& variables, Call call) : m_variables(variables), m_call(std::move(call)) {}
  double Evaluate() override { return m_call(); }
  double Run(long turns) override {
    Variables& variables = m_variables;
    double sum = 0;
    for (long turn = 0; turn < turns; ++turn) {
      variables.Step();
      sum += m_call();
    }
    return sum;
  }

 private:
  Variables& m_variables;
  Call m_call;
};

template <typename Call>
std::unique_ptr<Formula> MakeFormula(Variables& variables, Call call) {
  return std::make_unique<CallFormula<Call>>(variables, std::move(call));
}

/** A library under measurement. Texts are in its own dialect; what it refuses is thrown as
 * std::runtime_error. */
class Engine {
 public:
  virtual ~Engine() = default;
  virtual Dialect const& GetDialect() const = 0;
  virtual std::unique_ptr<Formula> Compile(std::string const& text) = 0;
  /** Reads and evaluates a text, and keeps nothing. */
  virtual double EvaluateText(std::string const& text) = 0;
};

/** A formula as C++: its kind and text, and the function that the compiler made of it. */
struct NativeFormula {
  char const* kind;
  char const* text;
  double (*function)(Variables const&);
};

struct NativeFormulas {
  NativeFormula const* begin() const { return first; }
  NativeFormula const* end() const { return first + count; }
  NativeFormula const* first;
  std::size_t count;
};

NativeFormulas GetNativeFormulas();
std::unique_ptr<Formula> MakeNativeFormula(Variables& variables, NativeFormula const& formula);

std::unique_ptr<Engine> MakeQumel(Variables& variables);
/** A formula that hands the same text over at each evaluation, in the context of the engine made last. */
std::unique_ptr<Formula> MakeQumelText(Variables& variables, std::string const& text);
std::unique_ptr<Engine> MakeMuParser(Variables& variables);
std::unique_ptr<Engine> MakeFparser(Variables& variables);
/** Lua and LuaJIT share all their names, so that each comes in a module of its own. */
std::unique_ptr<Engine> LoadLua(Variables& variables);
std::unique_ptr<Engine> LoadLuaJit(Variables& variables);
/** Runs formulas in a loop of LuaJIT's own instead of calling each evaluation. */
std::unique_ptr<Engine> LoadLuaJitLoop(Variables& variables);

}  // namespace bench
