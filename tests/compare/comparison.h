// Compares what two libraries do with the same programs, finds the first difference of each, makes the
// program smaller as long as the difference stays, and reports.
#pragma once

#include <cstdint>
#include <string>

namespace qumel::compare {

struct ComparisonOrder {
  std::string libraries[2];
  std::uint64_t count = 100000, seed = 1;
  bool showsCoverage = false;
  bool takesAnyNan =
      false;  // as equal to any other: which of two operands gives its sign is up to the compiler
};

/** Returns whether the libraries agree. */
bool Compare(ComparisonOrder const& order);

}  // namespace qumel::compare
