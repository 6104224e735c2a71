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

  SQMWays GetWays() const override { return kWays<&InReal, &InComplex>; }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if constexpr (sizeof...(index) == 1) {
      return MakeUnaryStep<SQMStepWork>(maker, step, AngleFactor(maker));
    } else {
      static_assert(AngleOfRule() == EQMAngle::None);
      return MakeBinaryStep<SQMStepWork>(maker, step);
    }
  }

 protected:
  static long InReal(CQMCall& call) { return Finish(Compute<true>(call), call); }

 private:
  static long InComplex(CQMCall& call) {
    if (!(call.Operand(index).IsComplex() || ...) && !RealsWantComplex(call)) {
      RealOutcome const outcome = Compute<false>(call);
      if (outcome.status != Status::NeedsComplex) return Finish(outcome, call);
    }
    double const in = OperandFactor(call);
    auto outcome = OutcomeOf(Rule::OfComplex(Complex(call.Real(index) * in, call.Imaginary(index) * in)...));
    outcome.value *= ResultFactor(call);
    return Finish(outcome, call);
  }

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
  template <bool inRealRun>
  static RealOutcome Compute(CQMCall const& call) {
    double const in = OperandFactor(call);
    RealOutcome outcome = 0.0;
    if constexpr (inRealRun) outcome = RuleInRealRun(call.Real(index) * in...);
    else outcome = Rule::Real(call.Real(index) * in...);
    outcome.value *= ResultFactor(call);
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

  static constexpr EQMAngle AngleOfRule() {
    if constexpr (requires { Rule::kAngle; }) {
      return Rule::kAngle;
    } else {
      return EQMAngle::None;
    }
  }
  static double OperandFactor(CQMCall const& call) {
    return AngleOfRule() == EQMAngle::Operand ? call.Context().GetAngleFactorToRadians() : 1.0;
  }
  static double ResultFactor(CQMCall const& call) {
    return AngleOfRule() == EQMAngle::Result ? call.Context().GetAngleFactorFromRadians() : 1.0;
  }

  static bool RealsWantComplex(CQMCall const& call) {
    if constexpr (requires { Rule::WantsComplex(call.Real(index)...); }) {
      return Rule::WantsComplex(call.Real(index)...);
    } else {
      return false;
    }
  }

  static RealOutcome OutcomeOf(double value) { return value; }
  static RealOutcome OutcomeOf(RealOutcome outcome) { return outcome; }
  static ComplexOutcome OutcomeOf(Complex value) { return value; }
  static ComplexOutcome OutcomeOf(ComplexOutcome outcome) { return outcome; }

  static long Finish(RealOutcome const& outcome, CQMCall const& call) {
    call.StoreReal(outcome.value);
    return outcome.status;
  }
  static long Finish(ComplexOutcome const& outcome, CQMCall const& call) {
    if (outcome.status != Error::None) return Finish(RealOutcome(SQMFailure{outcome.status}), call);
    call.StoreComplex(outcome.value.real(), outcome.value.imag());
    return Status::Done;
  }
};

template <class Rule>
using CQMUnaryFunction = CQMNumericFunction<Rule, std::make_integer_sequence<long, 1>>;
template <class Rule>
using CQMBinaryFunction = CQMNumericFunction<Rule, std::make_integer_sequence<long, 2>>;

}  // namespace qumel
