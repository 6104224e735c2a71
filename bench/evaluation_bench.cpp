// What a run costs: expressions evaluated as text and by handle, loops, arrays, strings, host operators.
#include <cstdint>
#include <string>
#include <thread>

#include "bench/frame.h"

namespace {

using qumel_bench::ExpectNoError;
using qumel_bench::Frame;

struct Row {
  char const* name;
  char const* text;
};

// x, y and z are linked numbers, s is a string, tally is an array of 1000 numbers.
Row const kRows[] = {
    {"sum", "x + y"},
    {"polynomial", "((2*x + 3)*x - 7)*x + 11"},
    {"trigonometry", "sin(x)*cos(y) + tan(z)"},
    {"mixed", "sqrt(x^2 + y^2) + abs(z)*euler^(-x) - ln(y + 10)"},
    {"logic", "x < y && !(z >= 3) || x != 0"},
    {"statistic", "amean(x, y, z, 4, 5, 6, 7, 8)"},
    {"choice", "if (x < y) then z = 1; else z = 2; end"},
    {"element", "tally[500] = tally[499] + 1"},
    {"text", "s = \"abc\" $+ \"def\""},
};

class Host : public Frame {
 public:
  Host() {
    qmLinkNumVar('L', "x", &m_x);
    qmLinkNumVar('L', "y", &m_y);
    qmLinkNumVar('L', "z", &m_z);
    qmCreateStrVar('L', "s", 64, "");
    qmCreateNumArray('L', "tally", 1, 1000, 0, 0, 0, 0, 0);
  }
  void Step() { m_x += 1e-9; }

 private:
  double m_x = 1.25, m_y = 2.5, m_z = 0.75;
};

void ByHandle(benchmark::State& state, char const* text) {
  Host host;
  auto const handle = qmParseExp(text);
  for (auto _ : state) {
    host.Step();
    benchmark::DoNotOptimize(qmEvalExpHndl(handle));
  }
  ExpectNoError(state);
}

void AsText(benchmark::State& state, char const* text) {
  Host host;
  for (auto _ : state) {
    host.Step();
    benchmark::DoNotOptimize(qmEvalExpStr(text));
  }
  ExpectNoError(state);
}

// Programs, timed per turn of their innermost loop.
Row const kPrograms[] = {
    {"count", "n = 0; while n < 100000 do n++; next return n"},
    {"sum", "n = 0; t = 0; while n < 100000 do t += n*2; n += 1; next return t"},
    {"elements", "n = 0; while n < 100000 do tally[n % 1000] = n; n++; next return n"},
};

void Program(benchmark::State& state, char const* text) {
  Host host;
  auto const handle = qmParseExp(text);
  for (auto _ : state) benchmark::DoNotOptimize(qmEvalExpHndl(handle));
  ExpectNoError(state);
  state.SetItemsProcessed(state.iterations() * 100000);
}

std::int32_t Twice(unsigned long long handle) {
  return static_cast<std::int32_t>(qmSetNumResult(handle, 2 * qmGetNumParm(handle, 0)));
}

void HostOperator(benchmark::State& state, bool isCallback) {
  Host host;
  long const code = isCallback ? qmLinkCallbackOp('L', "twice", "prefix", "number", "number a", "", Twice)
                               : qmDefineExpOp('L', "twice", "prefix", "number", "number a", "", "2*a");
  if (code != 0) state.SkipWithError(qmGetErrorText(code));
  auto const handle = qmParseExp("twice(x)");
  for (auto _ : state) benchmark::DoNotOptimize(qmEvalExpHndl(handle));
  ExpectNoError(state);
}

void InThreads(benchmark::State& state) {
  if (state.thread_index() == 0) qmInitialize(nullptr);
  std::string const name = "thread" + std::to_string(state.thread_index());
  qmCreatePrivateContext(name.c_str());
  qmSetContext(name.c_str(), false);
  qmCreateNumVar('L', "x", 1.25);
  auto const handle = qmParseExp("((2*x + 3)*x - 7)*x + 11");
  for (auto _ : state) benchmark::DoNotOptimize(qmEvalExpHndl(handle));
  ExpectNoError(state);
}
BENCHMARK(InThreads)->Threads(1)->Threads(2)->UseRealTime();

[[maybe_unused]] bool const registered = [] {
  for (Row const& row : kRows) {
    benchmark::RegisterBenchmark((std::string("ByHandle/") + row.name).c_str(), ByHandle, row.text);
    benchmark::RegisterBenchmark((std::string("AsText/") + row.name).c_str(), AsText, row.text);
  }
  for (Row const& row : kPrograms)
    benchmark::RegisterBenchmark((std::string("Program/") + row.name).c_str(), Program, row.text);
  benchmark::RegisterBenchmark("HostOperator/expression", HostOperator, false);
  benchmark::RegisterBenchmark("HostOperator/callback", HostOperator, true);
  return true;
}();

}  // namespace
