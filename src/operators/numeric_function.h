// Operators that compute a number from one or two numbers: a rule says what, the template does the rest.
#pragma once

#include <utility>

#include "engine/numeric_steps.h"
#include "engine/operator_context.h"
#include "rules/outcome.h"

namespace qumel {

/** The operator of a rule (rules/outcome.h tells what a rule is). Operands that are all real are computed by
 * Real in complex evaluation too, and by OfComplex where that has no value. A failed operation leaves 0 in
 * the result and the position on itself. */
template <class Rule, class Indices>
class CQMNumericFunction;

template <class Rule, long... index>
class CQMNumericFunction<Rule, std::integer_sequence<long, index...>> : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return sizeof...(index); }

  long DoOperation(long& position) override { return Finish(InRealRun(), position); }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if constexpr (sizeof...(index) == 1) {
      return MakeUnaryStep<SQMStepWork>(maker, *this, step, AngleFactor(maker));
    } else {
      static_assert(AngleOfRule() == EQMAngle::None);
      return MakeBinaryStep<SQMStepWork>(maker, *this, step);
    }
  }

  long DoComplexOperation(long& position) override {
    if (!(Operand(index).IsComplex() || ...) && !RealsWantComplex()) {
      RealOutcome const outcome = OfReals();
      if (outcome.status != Status::NeedsComplex) return Finish(outcome, position);
    }
    double const in = OperandFactor();
    auto outcome = OutcomeOf(Rule::OfComplex(Complex(Real(index) * in, Imaginary(index) * in)...));
    outcome.value *= ResultFactor();
    return Finish(outcome, position);
  }

 private:
  /** What a step computes: the rule, on angles in the unit whose factor stands at the address. */
  struct SQMStepWork {
    static auto Of(double x, std::byte* factor) {
      if constexpr (AngleOfRule() == EQMAngle::Operand) x *= NumberAt(factor);
      auto outcome = RuleInRealRun(x);
      if constexpr (AngleOfRule() == EQMAngle::Result) {
        RealOutcome result(outcome);
        result.value *= NumberAt(factor);
        return result;
      } else {
        return outcome;
      }
    }
    static auto Of(double x, double y) { return RuleInRealRun(x, y); }
  };

  template <class... Number>
  static auto RuleInRealRun(Number... operands) {
    if constexpr (requires { Rule::InRealRun(operands...); }) {
      return Rule::InRealRun(operands...);
    } else {
      return Rule::Real(operands...);
    }
  }
  RealOutcome InRealRun() const {
    RealOutcome outcome(RuleInRealRun(Real(index) * OperandFactor()...));
    outcome.value *= ResultFactor();
    return outcome;
  }
  static std::byte* AngleFactor(CQMStepMaker const& maker) {
    if constexpr (AngleOfRule() == EQMAngle::None) return nullptr;
    if constexpr (requires { Rule::kTakesFirstFactor; }) {
      if (Rule::kTakesFirstFactor) return maker.FirstAngleFactor();
    }
    double const& factor = AngleOfRule() == EQMAngle::Operand
                               ? maker.GetContext().GetAngleFactorToRadians()
                               : maker.GetContext().GetAngleFactorFromRadians();
    return reinterpret_cast<std::byte*>(const_cast<double*>(&factor));
  }

  RealOutcome OfReals() const {
    RealOutcome outcome(Rule::Real(Real(index) * OperandFactor()...));
    outcome.value *= ResultFactor();
    return outcome;
  }
  static constexpr EQMAngle AngleOfRule() {
    if constexpr (requires { Rule::kAngle; }) {
      return Rule::kAngle;
    } else {
      return EQMAngle::None;
    }
  }
  double OperandFactor() const {
    bool const applies = AngleOfRule() == EQMAngle::Operand && GetContext() != nullptr;
    return applies ? GetContext()->GetAngleFactorToRadians() : 1.0;
  }
  double ResultFactor() const {
    bool const applies = AngleOfRule() == EQMAngle::Result && GetContext() != nullptr;
    return applies ? GetContext()->GetAngleFactorFromRadians() : 1.0;
  }

  bool RealsWantComplex() const {
    if constexpr (requires { Rule::WantsComplex(Real(index)...); }) {
      return Rule::WantsComplex(Real(index)...);
    } else {
      return false;
    }
  }

  static RealOutcome OutcomeOf(double value) { return value; }
  static RealOutcome OutcomeOf(RealOutcome outcome) { return outcome; }
  static ComplexOutcome OutcomeOf(Complex value) { return value; }
  static ComplexOutcome OutcomeOf(ComplexOutcome outcome) { return outcome; }

  long Finish(RealOutcome const& outcome, long& position) {
    StoreReal(outcome.value);
    return outcome.status == Error::None ? Advance(position) : outcome.status;
  }
  long Finish(ComplexOutcome const& outcome, long& position) {
    if (outcome.status != Error::None) return Finish(RealOutcome(SQMFailure{outcome.status}), position);
    StoreComplex(outcome.value.real(), outcome.value.imag());
    return Advance(position);
  }
};

template <class Rule>
using CQMUnaryFunction = CQMNumericFunction<Rule, std::make_integer_sequence<long, 1>>;
template <class Rule>
using CQMBinaryFunction = CQMNumericFunction<Rule, std::make_integer_sequence<long, 2>>;

}  // namespace qumel
