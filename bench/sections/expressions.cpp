// Formulas that run often. All engines are made anew for each formula, so that none profits or suffers from
// what another formula left behind.
#include <cstdio>
#include <string_view>
#include <utility>

#include "bench/engine.h"
#include "bench/measure.h"
#include "bench/report.h"
#include "bench/sections.h"

namespace bench {
namespace {

enum Column : std::size_t {
  kHandle,
  kText,
  kMuParser,
  kFparser,
  kLua,
  kLuaJit,
  kLuaJitLoop,
  kNative,
  kColumns
};
constexpr char const* kHeads[kColumns] = {"by handle", "same text", "muParser",    "fparser",
                                          "Lua",       "LuaJIT",    "LuaJIT loop", "C++"};

using Formulas = std::vector<std::unique_ptr<Formula>>;

/** Whether all formulas give the value of the last one, for each value that the variables ever have. */
bool AllAgree(Formulas const& formulas, Variables& variables, char const* text) {
  for (int state = 0; state < 2; ++state) {
    variables.Step();
    double const expected = formulas.back()->Evaluate();
    for (std::size_t i = 0; i < formulas.size(); ++i) {
      double const value = formulas[i]->Evaluate();
      if (Agree(value, expected)) continue;
      std::fprintf(stderr, "left out: %s: %s gives %.17g, not %.17g\n", text, kHeads[i], value, expected);
      return false;
    }
  }
  return true;
}

std::vector<Timing> MeasureFormula(NativeFormula const& native, int rounds) {
  Variables variables;
  std::vector<std::unique_ptr<Engine>> engines;
  for (auto* make : {MakeQumel, MakeMuParser, MakeFparser, LoadLua, LoadLuaJit, LoadLuaJitLoop})
    engines.push_back(make(variables));
  Formulas formulas;
  for (auto const& engine : engines) {
    std::string const text = Translate(native.text, engine->GetDialect());
    formulas.push_back(engine->Compile(text));
    if (formulas.size() == kText) formulas.push_back(MakeQumelText(variables, text));
  }
  formulas.push_back(MakeNativeFormula(variables, native));
  if (!AllAgree(formulas, variables, native.text)) return {};
  std::vector<Subject> subjects;
  for (auto const& formula : formulas)
    subjects.emplace_back([&formula](long turns) { Keep(formula->Run(turns)); });
  return Measure(subjects, rounds);
}

/** The timings of formulas, with the means that are reported. */
class Family {
 public:
  void Add(std::vector<Timing> const& timings) { m_rows.push_back(timings); }
  double Nanoseconds(std::size_t column) const {
    return Mean([=](auto const& row) { return row[column].nanoseconds; });
  }
  double Ratio(std::size_t column, std::size_t reference) const {
    return Mean([=](auto const& row) { return row[column].nanoseconds / row[reference].nanoseconds; });
  }
  double Spread(std::size_t column) const {
    std::vector<double> spreads;
    for (auto const& row : m_rows) spreads.push_back(row[column].spread);
    return Median(spreads);
  }
  std::size_t Size() const { return m_rows.size(); }

 private:
  template <typename Value>
  double Mean(Value value) const {
    std::vector<double> values;
    for (auto const& row : m_rows) values.push_back(value(row));
    return GeometricMean(values);
  }
  std::vector<std::vector<Timing>> m_rows;
};

/** As code in a table, where a bar would end the cell. */
std::string AsCode(std::string_view text) {
  std::string code = "`";
  for (char const letter : text) code += letter == '|' ? "\\|" : std::string(1, letter);
  return code + "`";
}

/** Families by kind, in the order of the list. */
using Kinds = std::vector<std::pair<std::string_view, Family>>;

Family& OfKind(Kinds& kinds, std::string_view kind) {
  if (kinds.empty() || kinds.back().first != kind) kinds.emplace_back(kind, Family());
  return kinds.back().second;
}

std::vector<std::string> Heads(std::string const& first) {
  std::vector<std::string> heads{first};
  heads.insert(heads.end(), std::begin(kHeads), std::end(kHeads));
  return heads;
}

void PrintNanoseconds(Kinds const& kinds, Family const& all) {
  PrintTitle("Evaluation, in nanoseconds (geometric means)");
  Table table(Heads("kind (formulas)"));
  auto const add = [&](std::string_view name, Family const& family) {
    std::vector<std::string> cells{std::string(name) + " (" + std::to_string(family.Size()) + ")"};
    for (std::size_t i = 0; i < kColumns; ++i) cells.push_back(Show(family.Nanoseconds(i)));
    table.Add(cells);
  };
  for (auto const& [name, family] : kinds) add(name, family);
  add("all", all);
  std::vector<std::string> cells{"noise"};
  for (std::size_t i = 0; i < kColumns; ++i) cells.push_back(ShowPercent(all.Spread(i)));
  table.Add(cells);
  table.Print();
}

void PrintRatios(Kinds const& kinds, Family const& all) {
  PrintTitle("Evaluation, as ratios (geometric means)");
  Table table({"kind", "by handle / muParser", "/ fparser", "/ Lua", "/ LuaJIT", "/ LuaJIT loop", "/ C++",
               "same text / by handle"});
  auto const add = [&](std::string_view name, Family const& family) {
    std::vector<std::string> cells{std::string(name)};
    for (std::size_t i = kMuParser; i < kColumns; ++i) cells.push_back(Show(family.Ratio(kHandle, i)));
    cells.push_back(Show(family.Ratio(kText, kHandle)));
    table.Add(cells);
  };
  for (auto const& [name, family] : kinds) add(name, family);
  add("all", all);
  table.Print();
}

}  // namespace

bool ReportExpressions(Options const& options) {
  Kinds kinds;
  Family all;
  Table each(Heads("formula"));
  for (NativeFormula const& native : GetNativeFormulas()) {
    auto const timings = MeasureFormula(native, options.rounds);
    if (timings.empty()) continue;
    OfKind(kinds, native.kind).Add(timings);
    all.Add(timings);
    std::vector<std::string> cells{AsCode(native.text)};
    for (Timing const& timing : timings) cells.push_back(Show(timing.nanoseconds));
    each.Add(cells);
  }
  if (options.showEach) {
    PrintTitle("Evaluation of each formula, in nanoseconds");
    each.Print();
  }
  PrintNanoseconds(kinds, all);
  PrintRatios(kinds, all);
  return all.Size() == GetNativeFormulas().count;
}

}  // namespace bench
