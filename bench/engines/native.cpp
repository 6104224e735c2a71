// The formulas as the compiler makes them, with -O2, behind a function pointer.
#include <cmath>
#include <iterator>
#include <numbers>

#include "bench/engine.h"

namespace bench {
namespace {

using std::abs, std::acos, std::acosh, std::asin, std::asinh, std::atan, std::atanh, std::cbrt, std::ceil,
    std::cos, std::cosh, std::exp, std::floor, std::log, std::log10, std::max, std::min, std::numbers::pi,
    std::pow, std::sin, std::sinh, std::sqrt, std::tan, std::tanh;

#define FORMULA(kind, ...)                                                  \
  {#kind, #__VA_ARGS__, [](Variables const& variables) -> double {          \
     [[maybe_unused]] auto const& [x, y, z, w, a, b, c, d] = variables.now; \
     return __VA_ARGS__;                                                    \
   }},
NativeFormula const kFormulas[] = {
#include "bench/expressions.inc"
};
#undef FORMULA

}  // namespace

NativeFormulas GetNativeFormulas() { return {kFormulas, std::size(kFormulas)}; }

std::unique_ptr<Formula> MakeNativeFormula(Variables& variables, NativeFormula const& formula) {
  return MakeFormula(variables, [&variables, function = formula.function] { return function(variables); });
}

}  // namespace bench
