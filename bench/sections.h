// The sections of the report. Each measures, prints its tables as Markdown and tells whether all results
// agreed.
#pragma once

namespace bench {

struct Options {
  int rounds = 31;
  bool showEach = false;  // every formula besides the means
};

/** Formulas by handle and as the same text again, against the other libraries and C++. */
bool ReportExpressions(Options const& options);
/** Texts that were never seen before: read, evaluated, value taken. */
bool ReportTexts(Options const& options);
/** Programs with loops, against Lua and LuaJIT. */
bool ReportLoops(Options const& options);
/** What a call of the interface costs: the plainest evaluation, numbers by name and by handle, host
 * operators. */
bool ReportCalls(Options const& options);
/** Time an item at three sizes. */
bool ReportGrowth(Options const& options);
/** Heap bytes of expressions, contexts and variables. */
bool ReportMemory(Options const& options);

}  // namespace bench
