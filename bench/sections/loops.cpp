// Programs with loops: Qumel's own against Lua's `while` on local integers and a table. A figure is a turn of
// the loop.
#include <cstdio>

#include "bench/engine.h"
#include "bench/measure.h"
#include "bench/report.h"
#include "bench/sections.h"
#include "qumel/qumel.h"

namespace bench {
namespace {

constexpr long kTurnsOfProgram = 100000;

struct Program {
  char const* name;
  char const* qumel;
  char const* lua;
};

Program const kPrograms[] = {
    {"counting", "n = 0; while n < 100000 do n += 1; next return n",
     "local n = 0; while n < 100000 do n = n + 1 end return n"},
    {"if/else and %",
     "n = 0; t = 0; while n < 100000 do if (n % 3 == 0) then t += n; else t -= 1; end n += 1; next return t",
     "local n, t = 0, 0; while n < 100000 do if n % 3 == 0 then t = t + n else t = t - 1 end n = n + 1 end "
     "return t"},
    {"over an array",
     "n = 1; t = 0; while n <= 100000 do tally[n] = n * 2; t += tally[n]; n += 1; next return t",
     "local n, t = 1, 0; while n <= 100000 do tally[n] = n * 2; t = t + tally[n]; n = n + 1 end return t"},
};

}  // namespace

bool ReportLoops(Options const& options) {
  Variables variables;
  auto const qumel = MakeQumel(variables), lua = LoadLua(variables), luaJit = LoadLuaJit(variables);
  qmCreateNumArray('L', "tally", 1, kTurnsOfProgram + 1, 0, 0, 0, 0, 0);
  bool allAgree = true;
  PrintTitle("Loops, in nanoseconds a turn");
  Table table({"loop", "by handle", "Lua", "LuaJIT", "by handle / Lua", "/ LuaJIT"});
  for (Program const& program : kPrograms) {
    std::unique_ptr<Formula> const runs[] = {qumel->Compile(program.qumel), lua->Compile(program.lua),
                                             luaJit->Compile(program.lua)};
    if (runs[0]->Evaluate() != runs[1]->Evaluate() || runs[0]->Evaluate() != runs[2]->Evaluate()) {
      std::fprintf(stderr, "left out: loop %s: results differ\n", program.name);
      allAgree = false;
      continue;
    }
    std::vector<Subject> subjects;
    for (auto const& run : runs) subjects.emplace_back([&run](long turns) { Keep(run->Run(turns)); });
    auto const timings = Measure(subjects, options.rounds);
    double const own = timings[0].nanoseconds;
    std::vector<std::string> cells{program.name};
    for (Timing const& timing : timings)
      cells.push_back(Show(timing.nanoseconds / static_cast<double>(kTurnsOfProgram)));
    for (std::size_t i = 1; i < timings.size(); ++i) cells.push_back(Show(own / timings[i].nanoseconds));
    table.Add(cells);
  }
  table.Print();
  return allAgree;
}

}  // namespace bench
