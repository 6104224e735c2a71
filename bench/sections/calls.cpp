// What the interface costs around the mathematics: the plainest evaluation there is, numbers set and got,
// operators of hosts, texts and arrays, and two threads that work side by side.
#include <algorithm>
#include <cstdio>
#include <latch>
#include <thread>

#include "bench/engine.h"
#include "bench/measure.h"
#include "bench/qumel_context.h"
#include "bench/report.h"
#include "bench/sections.h"

namespace bench {
namespace {

void ReportPlainestCall(int rounds) {
  Variables variables;
  auto const qumel = MakeQumel(variables);
  NativeFormula const identity = {"", "x", [](Variables const& now) { return now.now[0]; }};
  auto const byHandle = qumel->Compile("x"), native = MakeNativeFormula(variables, identity);
  auto const timings = Measure(
      {[&](long turns) { Keep(byHandle->Run(turns)); }, [&](long turns) { Keep(native->Run(turns)); }},
      rounds);
  PrintTitle("The call itself: `x`, the loop included, in nanoseconds");
  Table table({"call", "nanoseconds", "ratio"});
  table.Add({"C++ function through a pointer", Show(timings[1].nanoseconds), ""});
  table.Add(
      {"`x` by handle", Show(timings[0].nanoseconds), Show(timings[0].nanoseconds / timings[1].nanoseconds)});
  table.Print();
}

/** Numbers by name and by handle, one after the other. */
class Numbers {
 public:
  explicit Numbers(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      m_names.push_back("variable" + std::to_string(i));
      m_handles.push_back(qmCreateNumVar('L', m_names.back().c_str(), 1));
    }
    ThrowLastError("variables");
  }

  std::vector<Subject> Subjects() const {
    return {
        [this](long turns) {
          ForEach(turns, [&](std::size_t i) { qmSetNumVar('L', m_names[i].c_str(), 2); });
        },
        [this](long turns) {
          ForEach(turns, [&](std::size_t i) { Keep(qmGetNumVarValue('L', m_names[i].c_str())); });
        },
        [this](long turns) { ForEach(turns, [&](std::size_t i) { qmSetNumVarByHandle(m_handles[i], 2); }); },
        [this](long turns) {
          ForEach(turns, [&](std::size_t i) { Keep(qmGetNumVarValueByHandle(m_handles[i])); });
        }};
  }

 private:
  template <typename Use>
  void ForEach(long turns, Use use) const {
    constexpr std::size_t kStride = 7919;  // a prime, so that all are visited, far from each other
    std::size_t next = 0;
    for (long turn = 0; turn < turns; ++turn) {
      use(next);
      next = (next + kStride) % m_names.size();
    }
  }
  std::vector<std::string> m_names;
  std::vector<unsigned long long> m_handles;
};

void ReportNumbers(int rounds) {
  PrintTitle("Numbers of the host, in nanoseconds");
  Table table({"variables", "set by name", "get by name", "set by handle", "get by handle"});
  for (std::size_t const count : {10U, 1000U, 100000U}) {
    QumelContext const context;
    Numbers const numbers(count);
    std::vector<std::string> cells{std::to_string(count)};
    for (Timing const& timing : Measure(numbers.Subjects(), rounds))
      cells.push_back(Show(timing.nanoseconds));
    ThrowLastError("numbers");
    table.Add(cells);
  }
  table.Print();
}

std::int32_t Twice(unsigned long long handle) {
  return static_cast<std::int32_t>(qmSetNumResult(handle, 2 * qmGetNumParm(handle, 0)));
}

void ReportOtherExpressions(int rounds) {
  Variables variables;
  auto const qumel = MakeQumel(variables);
  qmDefineExpOp('L', "doubled", "prefix", "number", "number n", "", "2*n");
  qmLinkCallbackOp('L', "twice", "prefix", "number", "number n", "", Twice);
  qmCreateStrVar('L', "s", 64, "");
  qmCreateNumArray('L', "tally", 1, 1000, 0, 0, 0, 0, 0);
  ThrowLastError("operators");
  PrintTitle("Other expressions by handle, in nanoseconds");
  Table table({"expression", "nanoseconds"});
  for (char const* text :
       {"doubled(x)", "twice(x)", "tally[500] = tally[499] + 1", "amean(x, y, z, w, a, b, c, d)",
        "s = \"abc\" $+ \"def\"", "allowcomplex; sqrt(x - 10)"}) {
    auto const formula = qumel->Compile(text);
    auto const timings = Measure({[&](long turns) { Keep(formula->Run(turns)); }}, rounds);
    ThrowLastError(text);
    table.Add({std::string("`") + text + "`", Show(timings[0].nanoseconds)});
  }
  table.Print();
}

/** Nanoseconds of an evaluation in each of so many threads at once, every one with a context of its own. */
double TimeInThreads(unsigned count) {
  constexpr long kTurns = 200000;
  std::vector<double> taken(count);
  std::vector<std::thread> threads;
  std::latch start(count);
  for (double& nanoseconds : taken) {
    threads.emplace_back([&nanoseconds, &start] {
      Variables variables;
      auto const qumel = MakeQumel(variables);
      auto const formula = qumel->Compile("((2*x + 3)*x - 7)*x + 11");
      start.arrive_and_wait();
      nanoseconds = TimeOnce([&] { Keep(formula->Run(kTurns)); }) / static_cast<double>(kTurns);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return *std::max_element(taken.begin(), taken.end());
}

void ReportThreads(int rounds) {
  std::vector<double> alone, both;
  for (int round = 0; round < rounds; ++round) {
    alone.push_back(TimeInThreads(1));
    both.push_back(TimeInThreads(2));
  }
  PrintTitle("Threads with contexts of their own: a cubic by handle, nanoseconds of each thread's work");
  Table table({"threads", "nanoseconds"});
  table.Add({"1", Show(Median(alone))});
  table.Add({"2", Show(Median(both))});
  table.Print();
}

}  // namespace

bool ReportCalls(Options const& options) {
  ReportPlainestCall(options.rounds);
  ReportNumbers(options.rounds);
  ReportOtherExpressions(options.rounds);
  ReportThreads(options.rounds);
  return true;
}

}  // namespace bench
