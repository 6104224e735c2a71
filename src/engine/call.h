// What an operator sees of a run when it works on datums: its operands, its result, and where control goes
// next.
#pragma once

#include "engine/expression.h"
#include "engine/step.h"
#include "values/datum.h"

namespace qumel {

/** One step that is being done. */
class CQMCall {
 public:
  CQMCall(SQMStep const& step, SQMFrame& frame) : m_step(step), m_frame(frame) {}

  long OperandCount() const { return m_step.operandCount; }
  CQMDatum& Operand(long index) const { return *m_step.operands[index]; }
  double Real(long index) const { return Operand(index).Real(); }
  double Imaginary(long index) const { return Operand(index).Imaginary(); }
  bool HasComplexOperand() const {
    for (long i = 0; i < OperandCount(); ++i) {
      if (Operand(i).IsComplex()) return true;
    }
    return false;
  }
  CQMDatum& Result() const { return *m_step.resultDatum; }
  /** Stores a real result; an imaginary part left from an earlier run becomes 0. */
  void StoreReal(double value) const {
    Result().SetReal(value);
    Result().ClearImaginary();
  }
  void StoreComplex(double real, double imaginary) const { Result().SetComplex(real, imaginary); }
  /** Gives the result type, with storage as a fresh datum of that type has it. */
  void TypeResult(EQMDataType type) const {
    if (Result().GetType() != type) Result().BecomeScalar(type);
  }

  SQMStep const& Step() const { return m_step; }
  CQMExpression& Expression() const { return *m_frame.expression; }
  CQMOperatorContext& Context() const { return m_frame.expression->GetContext(); }

  /** Lets control go on at next. Without this it goes on behind the step, and a status that ends the run
   * leaves the position at the step. */
  long GoOnAt(SQMStep const* next) {
    m_next = next;
    return Status::Done;
  }
  /** Whatever the status is, the run does not come back to this step to finish it. */
  void MoveOn() { m_next = &m_step + 1; }
  /** The position that control goes on at, as far as it is settled. */
  long NextPosition() const { return (m_next != nullptr ? m_next : &m_step) - m_frame.begin; }
  SQMStep const* NextAfter(long status) const {
    if (m_next != nullptr) return m_next;
    return status == Status::Done ? &m_step + 1 : &m_step;
  }

 private:
  SQMStep const& m_step;
  SQMFrame& m_frame;
  SQMStep const* m_next = nullptr;
};

/** Does the work of an operator. Gives 0, an error code, or a Status. */
using WorkFunction = long (*)(CQMCall& call);

/** Ends the run unless status lets it go on. */
SQMStep const* EndCall(CQMCall const& call, SQMFrame& frame, long status);
SQMStep const* EndComplexCall(CQMCall const& call, SQMFrame& frame, long status);

using EndFunction = SQMStep const* (*)(CQMCall const& call, SQMFrame& frame, long status);

// Steps go on by calls that take no stack, which the compiler makes only where no local object lives any
// more: so the call has a function of its own.
template <WorkFunction work, EndFunction end>
[[gnu::noinline]] SQMStep const* DoWork(SQMStep const* step, SQMFrame& frame) {
  CQMCall call(*step, frame);
  return end(call, frame, work(call));
}
template <WorkFunction work, EndFunction end>
SQMStep const* RunWork(SQMStep const* step, SQMFrame& frame, double) {
  SQMStep const* const next = DoWork<work, end>(step, frame);
  return next != nullptr ? GoOn(next, frame, 0.0) : nullptr;
}

/** The steps of an operator on operands of any kind, in the two ways of evaluation. */
struct SQMWays {
  StepFunction inReal;
  StepFunction inComplex;
};
/** The work of words that have done theirs when they were verified. */
inline long DoNothing(CQMCall&) { return Status::Done; }

template <WorkFunction real, WorkFunction complex = real>
constexpr SQMWays kWays{&RunWork<real, &EndCall>, &RunWork<complex, &EndComplexCall>};

}  // namespace qumel
