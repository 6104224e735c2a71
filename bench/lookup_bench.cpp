// What it costs to find things: variables by name and by handle among many, contexts, the thread's own
// record.
#include <string>
#include <vector>

#include "bench/frame.h"

namespace {

using qumel_bench::ExpectNoError;
using qumel_bench::Frame;

/** A context with as many variables as the benchmark's argument says. */
class Crowd : public Frame {
 public:
  explicit Crowd(long count) {
    for (long i = 0; i < count; ++i) {
      m_names.push_back("variable" + std::to_string(i));
      m_handles.push_back(qmCreateNumVar('L', m_names.back().c_str(), static_cast<double>(i)));
    }
  }
  std::string const& NextName() { return m_names[Next()]; }
  unsigned long long NextHandle() { return m_handles[Next()]; }

 private:
  std::size_t Next() {
    return m_next = (m_next + 7919) % m_names.size();
  }  // a stride that visits all of them
  std::vector<std::string> m_names;
  std::vector<unsigned long long> m_handles;
  std::size_t m_next = 0;
};

void GetByName(benchmark::State& state) {
  Crowd crowd(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(qmGetNumVarValue('L', crowd.NextName().c_str()));
  ExpectNoError(state);
}
BENCHMARK(GetByName)->Arg(10)->Arg(1000)->Arg(100000);

void GetByHandle(benchmark::State& state) {
  Crowd crowd(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(qmGetNumVarValueByHandle(crowd.NextHandle()));
  ExpectNoError(state);
}
BENCHMARK(GetByHandle)->Arg(10)->Arg(1000)->Arg(100000);

void CreateAndDelete(benchmark::State& state) {
  Crowd crowd(state.range(0));
  for (auto _ : state) {
    qmReleaseVarHandle(qmCreateNumVar('L', "fresh", 1));
    benchmark::DoNotOptimize(qmDeleteVar('L', "fresh"));
  }
  ExpectNoError(state);
}
BENCHMARK(CreateAndDelete)->Arg(10)->Arg(100000);

// Whole crowds, oldest first: what each one costs must not depend on how many there are.

void DeleteVariables(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Frame frame;
    auto const nameOf = [](long i) { return "variable" + std::to_string(i); };
    for (long i = 0; i < state.range(0); ++i) qmReleaseVarHandle(qmCreateNumVar('L', nameOf(i).c_str(), 1));
    state.ResumeTiming();
    for (long i = 0; i < state.range(0); ++i) qmDeleteVar('L', nameOf(i).c_str());
    ExpectNoError(state);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(DeleteVariables)->RangeMultiplier(10)->Range(100, 100000)->Complexity(benchmark::oN);

void DeleteOperators(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Frame frame;
    auto const nameOf = [](long i) { return "op" + std::to_string(i); };
    for (long i = 0; i < state.range(0); ++i)
      qmDefineExpOp('L', nameOf(i).c_str(), "prefix", "number", "number x", nullptr, "x");
    state.ResumeTiming();
    for (long i = 0; i < state.range(0); ++i) qmDeleteOp('L', nameOf(i).c_str());
    ExpectNoError(state);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(DeleteOperators)->RangeMultiplier(10)->Range(100, 10000)->Complexity(benchmark::oN);

void SetContextByName(benchmark::State& state) {
  Frame frame;
  std::vector<std::string> names;
  for (long i = 0; i < state.range(0); ++i) {
    names.push_back("context" + std::to_string(i));
    qmCreatePublicContext(names.back().c_str());
  }
  std::size_t next = 0;
  for (auto _ : state) {
    next = (next + 7919) % names.size();
    benchmark::DoNotOptimize(qmSetContext(names[next].c_str(), false));
  }
  ExpectNoError(state);
}
BENCHMARK(SetContextByName)->Arg(10)->Arg(10000);

void AskTheThreadsRecord(benchmark::State& state) {
  Frame frame;
  for (auto _ : state) benchmark::DoNotOptimize(qmGetLastErrorID());
}
BENCHMARK(AskTheThreadsRecord);

void MakeAndDestroyAContext(benchmark::State& state) {
  Frame frame;
  for (auto _ : state) {
    qmCreatePrivateContext("fresh");
    qmDestroyPrivateContext("fresh");
  }
  ExpectNoError(state);
}
BENCHMARK(MakeAndDestroyAContext);

}  // namespace
