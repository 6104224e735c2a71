// qumel_compare: runs generated programs through two builds of the library and compares all that can be
// observed of them: values to the last bit, codes, texts, and what is left behind. Two versions that should
// behave alike are held to it by this.
//
//   ./dev compare OTHER_LIBRARY [COUNT [SEED]]
//       builds this checkout and compares it with another build of libqumel_shared.so
//   qumel_compare FIRST_LIBRARY SECOND_LIBRARY [COUNT [SEED]] [--coverage] [--any-nan]
//       the same with two builds; --coverage also prints what the programs reached in the first one,
//       --any-nan takes all not-a-numbers for equal: when both operands are one, the compiler chooses whose
//       sign the result has
//   qumel_compare --show LIBRARY SEED NUMBER
//       prints one program and its record
//
// Each library runs in a process of its own, so that crashes and endless runs are differences like others.
// The exit status is 0 when there is none, 1 when there are some, 2 when the comparison could not be made.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "compare/comparison.h"
#include "compare/generator.h"
#include "compare/worker.h"

namespace {

using namespace qumel::compare;

/** The programs that share a context with the wanted one come before it. */
void Show(std::string const& library, std::uint64_t seed, std::uint64_t number) {
  std::uint64_t const first = SharesContext(seed, number) ? BlockStart(number) : number;
  Worker worker({library, seed, first, number + 1});
  std::string record;
  for (std::uint64_t i = first; i <= number && !worker.HasEnded(); ++i) record = worker.Next();
  std::string const shown =
      GenerateProgram(ReadOperatorForms(QUMEL_OPERATORS_DOCUMENT), seed, number).Shown();
  std::printf("%s%s", shown.c_str(), record.c_str());
}

int Run(std::vector<std::string> arguments) {
  ComparisonOrder order;
  order.showsCoverage = std::erase(arguments, "--coverage") > 0;
  order.takesAnyNan = std::erase(arguments, "--any-nan") > 0;
  if (arguments.size() < 2) throw std::runtime_error("two libraries are wanted; see tests/compare/main.cpp");
  std::string const mode = arguments[0];
  if (mode == "--worker") {
    Work(WorkerOrder::FromArguments({arguments.begin() + 1, arguments.end()}));
    return 0;
  }
  if (mode == "--show") {
    if (arguments.size() < 4) throw std::runtime_error("a library, a seed and a number are wanted");
    Show(arguments[1], std::stoull(arguments[2]), std::stoull(arguments[3]));
    return 0;
  }
  order.libraries[0] = arguments[0];
  order.libraries[1] = arguments[1];
  if (arguments.size() > 2) order.count = std::stoull(arguments[2]);
  if (arguments.size() > 3) order.seed = std::stoull(arguments[3]);
  return Compare(order) ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  constexpr int kFailed = 2;
  try {
    return Run({arguments + 1, arguments + count});
  } catch (std::exception const& failure) {
    std::fprintf(stderr, "qumel_compare: %s\n", failure.what());
    return kFailed;
  }
}
