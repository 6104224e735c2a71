// The three ways to run a program.
#include "engine/resolver.h"

namespace qumel {

namespace {

/** Statuses up to this one, NeedsComplex aside, do not end a complex run. */
constexpr long kLastIgnoredStatus = 999;

}  // namespace

long CQMRealBaselineResolver::Resolve(CQMProgram& program, long& position) { return program.Run(position); }

long CQMRealOptimizedResolver::Resolve(CQMProgram& program, long& position) { return program.Run(position); }

long CQMComplexBaselineResolver::Resolve(CQMProgram& program, long& position) {
  auto const operators = program.GetOperators();
  auto const count = static_cast<long>(operators.size());
  long status = Status::Done;
  while (position < count) {
    status = operators[static_cast<std::size_t>(position)]->DoComplexOperation(position);
    if (status == Status::NeedsComplex) status = Status::Done;
    if (status > kLastIgnoredStatus) return status;
  }
  return status;
}

}  // namespace qumel
