// Heap that objects take, as the allocator counts it: what is in use afterwards less what was before.
#include <malloc.h>

#include "bench/engine.h"
#include "bench/measure.h"
#include "bench/qumel_context.h"
#include "bench/report.h"
#include "bench/sections.h"

namespace bench {
namespace {

double HeapInUse() {
  struct mallinfo2 const info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

/** A set of texts, with their mean length and the mean number of their operators. */
struct Texts {
  std::vector<std::string> texts;
  double length = 0, operators = 0;
};

/** Formulas of the size that people write: about five operators, on variables with names of two letters. */
Texts FormulasOfUsualSize(Dialect dialect) {
  constexpr int kFewest = 4, kMost = 6;
  Texts set;
  for (char const* name : Variables::kNames) dialect.words[name] = name + std::string("1");
  for (NativeFormula const& native : GetNativeFormulas()) {
    int const operators = CountOperators(native.text);
    if (operators < kFewest || operators > kMost) continue;
    set.texts.push_back(Translate(native.text, dialect));
    set.length += static_cast<double>(set.texts.back().size());
    set.operators += operators;
  }
  set.length /= static_cast<double>(set.texts.size());
  set.operators /= static_cast<double>(set.texts.size());
  return set;
}

double BytesOfExpression(Texts const& set) {
  constexpr int kCopies = 20;  // so that what grows by the chunk counts by its part
  auto const parseAll = [&] {
    for (std::string const& text : set.texts) {
      Keep(qmParseExp(text.c_str()));
      ThrowLastError(text);
    }
  };
  for (char const* name : Variables::kNames) qmCreateNumVar('L', (name + std::string("1")).c_str(), 1);
  parseAll();
  double const before = HeapInUse();
  for (int copy = 0; copy < kCopies; ++copy) parseAll();
  return (HeapInUse() - before) / kCopies / static_cast<double>(set.texts.size());
}

/** Bytes of a context before anything is done with it, and of the first variable in it. */
void WeighContexts(double& bytesOfContext, double& bytesOfVariable) {
  constexpr int kContexts = 100;
  QumelContext const warm;
  for (int i = 0; i < kContexts; ++i) {
    std::string const name = "weighed" + std::to_string(i);
    double const before = HeapInUse();
    qmCreatePrivateContext(name.c_str());
    double const made = HeapInUse();
    qmSetContext(name.c_str(), false);
    double const current = HeapInUse();
    qmCreateNumVar('L', "x", 1);
    bytesOfContext += made - before;
    bytesOfVariable += HeapInUse() - current;
  }
  for (int i = 0; i < kContexts; ++i) qmDestroyPrivateContext(("weighed" + std::to_string(i)).c_str());
  bytesOfContext /= kContexts;
  bytesOfVariable /= kContexts;
}

}  // namespace

bool ReportMemory(Options const&) {
  Variables variables;
  auto const qumel = MakeQumel(variables);
  Texts const set = FormulasOfUsualSize(qumel->GetDialect());
  double const bytesOfExpression = BytesOfExpression(set);
  double bytesOfContext = 0, bytesOfVariable = 0;
  WeighContexts(bytesOfContext, bytesOfVariable);
  PrintTitle("Heap, in bytes");
  Table table({"object", "bytes"});
  table.Add({"parsed expression (mean of " + std::to_string(set.texts.size()) + ": " + Show(set.length) +
                 " characters, " + Show(set.operators) + " operators)",
             Show(bytesOfExpression)});
  table.Add({"context, fresh", Show(bytesOfContext)});
  table.Add({"first variable of a context", Show(bytesOfVariable)});
  table.Print();
  return true;
}

}  // namespace bench
