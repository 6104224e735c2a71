// Steps: what a program consists of. A step is a function with the addresses of its operands and of its
// result; it ends by running the step that follows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/errors.h"

// Steps call one another in the place of returning, so that a run needs neither a loop nor a growing stack.
// Where the compiler does not promise that such calls take no stack, each step returns the one that follows
// it instead.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__) || \
    defined(__clang__) || !defined(QUMEL_SIBLING_CALLS)
#define QUMEL_STEPS_RETURN 1
#else
#define QUMEL_STEPS_RETURN 0
#endif

namespace qumel {

class CQMDatum;
class CQMOperator;
class CQMProgram;
struct SQMStep;

/** One run of a program. */
struct SQMFrame {
  SQMStep const* begin;  // of the steps; a step's distance from it is the position of its operator
  CQMProgram* program;
  long status = Error::None;  // why the run ended
  long position = 0;          // of the operator that ended it, or to go on with
#if QUMEL_STEPS_RETURN
  double carried = 0.0;  // from the step that has returned to the next
#endif
};

/** Does the work of step. carried is the value of the step before, for those that take it from there. */
using StepFunction = SQMStep const* (*)(SQMStep const* step, SQMFrame& frame, double carried);

struct SQMStep {
  StepFunction function;
  std::byte* first;   // address of operand 0, or of the address of it
  std::byte* second;  // of operand 1, or of the factor of an angle
  std::byte* result;
  union {
    CQMOperator* object;      // of a step that leaves its work to its operator
    CQMDatum* element;        // of an index
    SQMStep const* whenTrue;  // of jumps and branches
  };
  SQMStep const* whenFalse;  // of branches
};

/** Where a step finds an operand. */
enum class EQMSource : std::uint8_t {
  Direct,    // at the address that the step holds
  Indirect,  // at the address that stands there: the current element of an array
  Carried,   // in the value carried over from the step before, which need not store it
};

inline double& NumberAt(std::byte* address) { return *reinterpret_cast<double*>(address); }
inline std::uint8_t& BooleanAt(std::byte* address) { return *reinterpret_cast<std::uint8_t*>(address); }

template <EQMSource source>
double& Target(std::byte* address) {
  static_assert(source != EQMSource::Carried);
  if constexpr (source == EQMSource::Indirect) {
    return NumberAt(*reinterpret_cast<std::byte**>(address));
  } else {
    return NumberAt(address);
  }
}

template <EQMSource source>
double Operand(std::byte* address, double carried) {
  if constexpr (source == EQMSource::Carried) {
    return carried;
  } else {
    return Target<source>(address);
  }
}

/** The end of every step: goes on with next. */
inline SQMStep const* GoOn(SQMStep const* next, SQMFrame& frame, double carried) {
#if QUMEL_STEPS_RETURN
  frame.carried = carried;
  return next;
#else
  return next->function(next, frame, carried);
#endif
}

/** Ends the run at step with status, its result 0. What the step before carried over is stored where it would
 * have stored it, for whoever goes on from here. */
SQMStep const* Refuse(SQMStep const* step, SQMFrame& frame, long status);
SQMStep const* RefuseCarried(SQMStep const* step, SQMFrame& frame, double carried, long status);

/** The step of words that have done their work when they were verified. */
SQMStep const* RunNothing(SQMStep const* step, SQMFrame& frame, double carried);

template <bool isCarried>
SQMStep const* RefuseStep(SQMStep const* step, SQMFrame& frame, double carried, long status) {
  if constexpr (isCarried) {
    return RefuseCarried(step, frame, carried, status);
  } else {
    return Refuse(step, frame, status);
  }
}

}  // namespace qumel
