// Runs what the interface does most under callgrind, which counts machine instructions: figures that no other
// work of the machine disturbs. instructions.py starts it and prints the table. Each count gets a dump of its
// own.
#include <valgrind/callgrind.h>

#include <string>
#include <vector>

#include "bench/measure.h"
#include "bench/qumel_context.h"

namespace {

constexpr long kTurns = 1000;
constexpr long kContexts = 100;

double variables['z' - 'a' + 1];

/** Counts a body that gets the number of its turn, after a first run that leaves everything warm. */
template <typename Body>
void Count(std::string const& name, long turns, Body body) {
  constexpr long kWarmTurns = 10;
  for (long turn = 0; turn < kWarmTurns; ++turn) body(turn);
  CALLGRIND_TOGGLE_COLLECT;
  for (long turn = kWarmTurns; turn < kWarmTurns + turns; ++turn) body(turn);
  CALLGRIND_TOGGLE_COLLECT;
  bench::ThrowLastError(name);
  std::string const label = std::to_string(turns) + " " + name;
  CALLGRIND_DUMP_STATS_AT(label.c_str());
}

void CountByHandle(char const* text) {
  auto const handle = qmParseExp(text);
  Count(std::string("`") + text + "` by handle", kTurns,
        [=](long) { bench::Keep(qmEvalExpHndlToNum(handle)); });
}

/** A text of three characters that no other turn has: a sum of two of the variables a to z. */
void CountTexts() {
  constexpr long kNames = std::size(variables);
  constexpr long kTexts = 600;
  Count("`x+y` as text, seen for the first time", kTexts, [](long turn) {
    char const text[] = {static_cast<char>('a' + turn / kNames), '+', static_cast<char>('a' + turn % kNames),
                         '\0'};
    bench::Keep(qmEvalExpStrToNum(text));
  });
}

void CountNumbers() {
  auto const handle = qmCreateNumVar('L', "number1", 1);
  Count("setting a number by name", kTurns, [](long) { qmSetNumVar('L', "number1", 2); });
  Count("getting a number by name", kTurns, [](long) { bench::Keep(qmGetNumVarValue('L', "number1")); });
  Count("setting a number by handle", kTurns, [=](long) { qmSetNumVarByHandle(handle, 2); });
  Count("getting a number by handle", kTurns, [=](long) { bench::Keep(qmGetNumVarValueByHandle(handle)); });
}

void CountContexts() {
  std::vector<std::string> names;
  for (long i = 0; i < 2 * kContexts; ++i) names.push_back("context" + std::to_string(i));
  auto const name = [&](long turn) { return names[static_cast<std::size_t>(turn)].c_str(); };
  Count("making a context", kContexts, [&](long turn) { qmCreatePrivateContext(name(turn)); });
  Count("choosing a context by name", kContexts, [&](long turn) { qmSetContext(name(turn), false); });
}

void CountAll() {
  bench::QumelContext const context;
  for (char letter = 'a'; letter <= 'z'; ++letter)
    qmLinkNumVar('L', std::string(1, letter).c_str(), &variables[letter - 'a']);
  Count("loop", kTurns, [](long) { bench::Keep(0.0); });
  for (char const* text : {"x", "x + y", "((2*x + 3)*x - 7)*x + 11", "sin(x)*cos(y) + sqrt(z)"})
    CountByHandle(text);
  CountTexts();
  CountNumbers();
  CountContexts();
}

}  // namespace

int main() {
  qmInitialize("");
  CountAll();
  return 0;
}
