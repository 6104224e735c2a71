// What it costs to read a text, per length: each of these must be linear.
#include <string>

#include "bench/frame.h"

namespace {

using qumel_bench::ExpectNoError;
using qumel_bench::Frame;

std::string Repeat(std::string const& piece, long count, std::string const& last) {
  std::string text;
  for (long i = 0; i < count; ++i) text += piece;
  return text + last;
}

void Parse(benchmark::State& state, std::string const& text) {
  Frame frame;
  qmCreateNumVar('L', "x", 1);
  for (auto _ : state) {
    auto const handle = qmParseExp(text.c_str());
    qmDeleteExp(handle);
  }
  ExpectNoError(state);
  state.SetComplexityN(state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}

void ParseSum(benchmark::State& state) { Parse(state, Repeat("1.5 + x*", state.range(0), "2")); }
void ParseStatements(benchmark::State& state) { Parse(state, Repeat("x = x + 1; ", state.range(0), "x")); }
void ParseNames(benchmark::State& state) {
  std::string text;
  for (long i = 0; i < state.range(0); ++i) text += "name" + std::to_string(i) + " = 1; ";
  Parse(state, text);
}
void ParseAssignments(benchmark::State& state) { Parse(state, Repeat("y = ", state.range(0), "1")); }
void ParseAndJoinTexts(benchmark::State& state) {
  Frame frame;
  std::string const text = Repeat("\"a\" + ", state.range(0), "\"a\"");
  for (auto _ : state) benchmark::DoNotOptimize(qmEvalExpStr(text.c_str()));
  ExpectNoError(state);
  state.SetComplexityN(state.range(0));
}
void ParseNested(benchmark::State& state) {
  Parse(state, Repeat("(", state.range(0), "x") + std::string(static_cast<std::size_t>(state.range(0)), ')'));
}

BENCHMARK(ParseSum)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(ParseStatements)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(ParseNames)->RangeMultiplier(10)->Range(10, 10000)->Complexity(benchmark::oN);
BENCHMARK(ParseAssignments)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(ParseAndJoinTexts)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
BENCHMARK(ParseNested)->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);

}  // namespace
