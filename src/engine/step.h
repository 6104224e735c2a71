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
class CQMExpression;
class CQMOperator;
class CQMProgram;
struct SQMStep;

/** One run of a program. */
struct SQMFrame {
  explicit SQMFrame(SQMStep const* first) : begin(first) {}

  SQMStep const* begin;       // of the steps; a step's distance from it is the position of its operator
  long status = Error::None;  // why the run ended
  long position = 0;          // of the operator that ended it, or to go on with
  // of runs that may work on datums
  CQMProgram* program = nullptr;
  CQMExpression* expression = nullptr;
#if QUMEL_STEPS_RETURN
  double carried = 0.0;  // from the step that has returned to the next
#endif
};

/** What a select, or a loop that a jump may enter past its opener, remembers during a run. */
struct SQMBlock {
  std::int32_t casesLeft = 0;  // of a select: not yet tested
  bool isDecided = false;      // a case has matched; the loop tests its condition
};

/** Does the work of step. carried is the value of the step before, for those that take it from there. */
using StepFunction = SQMStep const* (*)(SQMStep const* step, SQMFrame& frame, double carried);

/** Steps on numbers and booleans hold the addresses of values; the others hold operands and results as
 * datums, which CQMCall (engine/call.h) reads. */
struct SQMStep {
  StepFunction function;
  union {
    std::byte* first;  // address of operand 0, or of the address of it
    CQMDatum* const* operands;
  };
  union {
    std::byte* second;  // address of operand 1, or of the factor of an angle
    long operandCount;
    SQMBlock* block;  // of loops and selects
  };
  union {
    std::byte* result;
    CQMDatum* resultDatum;
  };
  union {
    std::byte* third;         // addresses of more operands
    CQMOperator* object;      // of the operators of hosts
    CQMDatum* element;        // of an index
    SQMStep const* whenTrue;  // of jumps and branches
    CQMDatum* selected;       // of a case
    std::uint32_t readAlone;  // a bit for each operand that is a result which nobody else reads
    std::int32_t caseCount;   // of a select
    bool isLastOfStatement;   // of what may change its type there
    double constant;          // of a folded operator
  };
  union {
    SQMStep const* whenFalse;  // of branches
    std::byte* fourth;
  };
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
/** The step behind the last one; the other is for runs whose end has no position. */
SQMStep const* RunEnd(SQMStep const* step, SQMFrame& frame, double carried);
SQMStep const* RunDetachedEnd(SQMStep const* step, SQMFrame& frame, double carried);

template <bool isCarried>
SQMStep const* RefuseStep(SQMStep const* step, SQMFrame& frame, double carried, long status) {
  if constexpr (isCarried) {
    return RefuseCarried(step, frame, carried, status);
  } else {
    return Refuse(step, frame, status);
  }
}

}  // namespace qumel
