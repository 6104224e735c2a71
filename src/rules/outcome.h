// What rules give: values, or why there are none; and what a rule is.
#pragma once

#include "base/errors.h"
#include "rules/complex_arithmetic.h"

namespace qumel {

/** Why an operation has no value: an error code, or NeedsComplex. */
struct SQMFailure {
  long status;
};

/** A value, or a failure. What never fails gives plain values. */
template <class Value>
struct SQMOutcome {
  constexpr SQMOutcome(Value result) : value(result) {}
  constexpr SQMOutcome(SQMFailure failure) : status(failure.status) {}
  Value value{};
  long status = Error::None;
};
using RealOutcome = SQMOutcome<double>;
using ComplexOutcome = SQMOutcome<Complex>;

inline bool HasFailed(double) { return false; }
inline bool HasFailed(RealOutcome const& outcome) { return outcome.status != Error::None; }
inline long StatusOf(double) { return Error::None; }
inline long StatusOf(RealOutcome const& outcome) { return outcome.status; }
inline double ValueOf(double value) { return value; }
inline double ValueOf(RealOutcome const& outcome) { return outcome.value; }

/** What the angle unit of the context applies to; to real and imaginary parts alike, on purpose. */
enum class EQMAngle { None, Operand, Result };

/** A rule is a struct of static functions that take as many numbers as there are operands:
 *  - Real, of doubles, gives a double or a RealOutcome; NeedsComplex sends the operation to complex
 * evaluation.
 *  - OfComplex, of complex numbers, gives a Complex or a ComplexOutcome. Where it gives a double or a
 * RealOutcome, the result stays real.
 *  - InRealRun, where a rule has it, takes the place of Real in real evaluation.
 *  - WantsComplex, where a rule has it, says of real operands that complex evaluation takes them by OfComplex
 * although they have a real value.
 *  - kAngle, where a rule has it, says what is an angle. Rules compute in radians. kTakesFirstFactor says
 * that the angle unit counts as it was when the run began. Here is the base of rules that take complex
 * operands by their real parts and give real results. */
template <class Rule>
struct SQMOnRealPart {
  static auto OfComplex(Complex z) { return Rule::Real(z.real()); }
};

}  // namespace qumel
