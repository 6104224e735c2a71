// Texts that were never seen before. Each formula is read many times, each time with another number in it;
// the parser objects of the other libraries are used again, as their hosts would.
#include <cstdio>

#include "bench/engine.h"
#include "bench/measure.h"
#include "bench/qumel_context.h"
#include "bench/report.h"
#include "bench/sections.h"

namespace bench {
namespace {

constexpr unsigned kTextsOfRun = 32;

struct Reader {
  char const* name;
  std::unique_ptr<Engine> engine;
  std::vector<double> nanoseconds;  // a text, by run
  std::vector<double> ratios;       // to the reference, by formula
  std::vector<double> medians;      // by formula
};

/** Reads as many texts of a formula as a run has, and returns the sum of their values. */
double ReadOnce(Reader& reader, NativeFormula const& native, Variables& variables, unsigned salt) {
  std::vector<std::string> texts;
  for (unsigned i = 0; i < kTextsOfRun; ++i)
    texts.push_back(Translate(Salt(native.text, salt + i), reader.engine->GetDialect()));
  double sum = 0;
  double const taken = TimeOnce([&] {
    for (std::string const& text : texts) {
      variables.Step();
      sum += reader.engine->EvaluateText(text);
    }
  });
  reader.nanoseconds.push_back(taken / kTextsOfRun);
  return sum;
}

/** One round of a formula over all readers. */
bool ReadWithAll(std::vector<Reader>& readers, NativeFormula const& native, Variables& variables,
                 unsigned salt) {
  double const expected = ReadOnce(readers.front(), native, variables, salt);
  ThrowLastError(native.text);
  for (std::size_t i = 1; i < readers.size(); ++i) {
    double const sum = ReadOnce(readers[i], native, variables, salt);
    if (Agree(sum / kTextsOfRun, expected / kTextsOfRun)) continue;
    std::fprintf(stderr, "left out as text: %s: %s differs\n", native.text, readers[i].name);
    return false;
  }
  return true;
}

}  // namespace

bool ReportTexts(Options const& options) {
  Variables variables;
  std::vector<Reader> readers;
  readers.push_back({"Qumel", MakeQumel(variables), {}, {}, {}});
  readers.push_back({"fparser", MakeFparser(variables), {}, {}, {}});
  readers.push_back({"muParser", MakeMuParser(variables), {}, {}, {}});
  readers.push_back({"Lua", LoadLua(variables), {}, {}, {}});
  readers.push_back({"LuaJIT", LoadLuaJit(variables), {}, {}, {}});
  bool allAgree = true;
  unsigned salt = 0;
  for (NativeFormula const& native : GetNativeFormulas()) {
    for (Reader& reader : readers) reader.nanoseconds.clear();
    bool agree = true;
    for (int round = 0; agree && round < options.rounds; ++round, salt += kTextsOfRun)
      agree = ReadWithAll(readers, native, variables, salt);
    allAgree = allAgree && agree;
    if (!agree) continue;
    for (Reader& reader : readers) {
      reader.medians.push_back(Median(reader.nanoseconds));
      reader.ratios.push_back(readers.front().medians.back() / reader.medians.back());
    }
  }
  PrintTitle("Text seen for the first time, value taken (geometric means)");
  Table table({"reader", "nanoseconds", "Qumel / it"});
  for (Reader const& reader : readers)
    table.Add({reader.name, Show(GeometricMean(reader.medians)), Show(GeometricMean(reader.ratios))});
  table.Print();
  return allAgree;
}

}  // namespace bench
