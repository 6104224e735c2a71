// Makes the program that belongs to a number.
#pragma once

#include <cstdint>

#include "compare/operator_forms.h"
#include "compare/program.h"

namespace qumel::compare {

/** Numbers of programs that come one after the other form blocks. Those of some blocks share one context,
 * with what the ones before left in it; all other programs have a context of their own. */
constexpr std::uint64_t kBlock = 32;
inline std::uint64_t BlockStart(std::uint64_t number) { return number - number % kBlock; }
bool SharesContext(std::uint64_t seed, std::uint64_t number);

Program GenerateProgram(OperatorForms const& forms, std::uint64_t seed, std::uint64_t number);

}  // namespace qumel::compare
