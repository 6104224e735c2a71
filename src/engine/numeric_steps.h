// The steps of numbers, made from what computes them: one instance for each place that an operand may come
// from.
#pragma once

#include "engine/call.h"
#include "engine/operator.h"
#include "engine/program.h"
#include "rules/outcome.h"

namespace qumel {

// What these templates call Work is a struct with a static function Of that takes the values of the operands
// and gives a double or a RealOutcome (a bool, of comparisons). Work on one operand takes the step's second
// address as well, where the factor of an angle stands.

/** Ends a step: with the outcome's value, or its failure. */
template <bool stores, bool isCarried, class Outcome>
SQMStep const* Finish(SQMStep const* step, SQMFrame& frame, double carried, Outcome const& outcome) {
  if (HasFailed(outcome)) return RefuseStep<isCarried>(step, frame, carried, StatusOf(outcome));
  if constexpr (stores) NumberAt(step->result) = ValueOf(outcome);
  return GoOn(step + 1, frame, ValueOf(outcome));
}

// ---- one operand ----

template <class Work, bool stores, EQMSource source>
SQMStep const* UnaryStep(SQMStep const* step, SQMFrame& frame, double carried) {
  return Finish<stores, source == EQMSource::Carried>(
      step, frame, carried, Work::Of(Operand<source>(step->first, carried), step->second));
}

template <class Work, EQMSource source>
constexpr SQMStepFunctions kUnaryFunctions{&UnaryStep<Work, true, source>, &UnaryStep<Work, false, source>};

/** Makes the step of an operator on one number. factor is what Work takes besides it. */
template <class Work>
bool MakeUnaryStep(CQMStepMaker& maker, SQMStep& step, std::byte* factor) {
  SQMStepOperand operand;
  if (!maker.FindNumberResult(step.result) || !maker.FindNumber(0, true, operand)) return false;
  step.first = operand.address;
  step.second = factor;
  switch (operand.source) {
    case EQMSource::Direct: return maker.Use(kUnaryFunctions<Work, EQMSource::Direct>);
    case EQMSource::Indirect: return maker.Use(kUnaryFunctions<Work, EQMSource::Indirect>);
    case EQMSource::Carried: return maker.Use(kUnaryFunctions<Work, EQMSource::Carried>);
  }
  return false;
}

// ---- two operands ----

template <class Work, bool stores, EQMSource first, EQMSource second>
SQMStep const* BinaryStep(SQMStep const* step, SQMFrame& frame, double carried) {
  constexpr bool kIsCarried = first == EQMSource::Carried || second == EQMSource::Carried;
  return Finish<stores, kIsCarried>(
      step, frame, carried,
      Work::Of(Operand<first>(step->first, carried), Operand<second>(step->second, carried)));
}

/** Calls use with the two sources as template arguments. At most one operand is carried. */
template <class Use>
bool WithSources(EQMSource first, EQMSource second, Use use) {
  using enum EQMSource;
  switch (first) {
    case Direct:
      switch (second) {
        case Direct: return use.template operator()<Direct, Direct>();
        case Indirect: return use.template operator()<Direct, Indirect>();
        case Carried: return use.template operator()<Direct, Carried>();
      }
      break;
    case Indirect:
      switch (second) {
        case Direct: return use.template operator()<Indirect, Direct>();
        case Indirect: return use.template operator()<Indirect, Indirect>();
        case Carried: return use.template operator()<Indirect, Carried>();
      }
      break;
    case Carried:
      switch (second) {
        case Direct: return use.template operator()<Carried, Direct>();
        case Indirect: return use.template operator()<Carried, Indirect>();
        case Carried: break;
      }
      break;
  }
  return false;
}

/** Finds two numbers for step; the first may be carried over only where mayCarryFirst. */
inline bool FindTwoNumbers(CQMStepMaker& maker, SQMStep& step, bool mayCarryFirst, EQMSource& first,
                           EQMSource& second) {
  SQMStepOperand one;
  SQMStepOperand two;
  if (!maker.FindNumber(0, mayCarryFirst, one) || !maker.FindNumber(1, true, two)) return false;
  step.first = one.address;
  step.second = two.address;
  first = one.source;
  second = two.source;
  return true;
}

template <class Work>
bool MakeBinaryStep(CQMStepMaker& maker, SQMStep& step) {
  EQMSource first;
  EQMSource second;
  if (!maker.FindNumberResult(step.result) || !FindTwoNumbers(maker, step, true, first, second)) return false;
  return WithSources(first, second, [&]<EQMSource one, EQMSource two>() {
    return maker.Use({&BinaryStep<Work, true, one, two>, &BinaryStep<Work, false, one, two>});
  });
}

// ---- comparisons ----

template <class Work, bool branches, EQMSource first, EQMSource second>
SQMStep const* ComparisonStep(SQMStep const* step, SQMFrame& frame, double carried) {
  bool const holds = Work::Of(Operand<first>(step->first, carried), Operand<second>(step->second, carried));
  if constexpr (branches) {
    return GoOn(holds ? step->whenTrue : step->whenFalse, frame, 0.0);
  } else {
    BooleanAt(step->result) = holds ? 1 : 0;
    return GoOn(step + 1, frame, 0.0);
  }
}

template <class Work>
bool MakeComparisonStep(CQMStepMaker& maker, SQMStep& step) {
  EQMSource first;
  EQMSource second;
  if (!maker.FindBooleanResult(step.result) || !FindTwoNumbers(maker, step, true, first, second))
    return false;
  return WithSources(first, second, [&]<EQMSource one, EQMSource two>() {
    return maker.Use(
        {&ComparisonStep<Work, false, one, two>, nullptr, &ComparisonStep<Work, true, one, two>});
  });
}

// ---- changes of a variable ----

/** Work gives the new value of the target, of its old value and of the operand. */
template <class Work, bool stores, EQMSource target, EQMSource value>
SQMStep const* AssignmentStep(SQMStep const* step, SQMFrame& frame, double carried) {
  double& place = Target<target>(step->first);
  auto const outcome = Work::Of(place, Operand<value>(step->second, carried));
  if (!HasFailed(outcome)) place = ValueOf(outcome);
  return Finish<stores, value == EQMSource::Carried>(step, frame, carried, outcome);
}

template <class Work>
bool MakeAssignmentStep(CQMStepMaker& maker, SQMStep& step) {
  EQMSource target;
  EQMSource value;
  if (!maker.FindNumberResult(step.result) || !FindTwoNumbers(maker, step, false, target, value))
    return false;
  return WithSources(target, value, [&]<EQMSource one, EQMSource two>() {
    if constexpr (one == EQMSource::Carried) {
      return false;
    } else {
      return maker.Use({&AssignmentStep<Work, true, one, two>, &AssignmentStep<Work, false, one, two>});
    }
  });
}

}  // namespace qumel
