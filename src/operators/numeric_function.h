// Operators that compute a number from one or two numbers: a rule says what, the template does the rest.
#pragma once

#include <utility>

#include "base/complex_arithmetic.h"
#include "engine/operator.h"
#include "engine/operator_context.h"

namespace qumel {

/** Why an operation has no value: an error code, or NeedsComplex. */
struct SQMFailure {
  long status;
};

/** A value, or a failure. Rules that never fail give plain values. */
template <class Value>
struct SQMOutcome {
  SQMOutcome(Value result) : value(result) {}
  SQMOutcome(SQMFailure failure) : status(failure.status) {}
  Value value{};
  long status = Error::None;
};
using RealOutcome = SQMOutcome<double>;
using ComplexOutcome = SQMOutcome<Complex>;

/** What the angle unit of the context applies to; to real and imaginary parts alike, on purpose. */
enum class EQMAngle { None, Operand, Result };

/** A Rule is a struct of static functions that take as many numbers as there are operands:
 *  - Real, of doubles, gives a double or a RealOutcome; NeedsComplex sends the operation to complex
 * evaluation.
 *  - OfComplex, of complex numbers, gives a Complex or a ComplexOutcome. Where it gives a double or a
 * RealOutcome, the result stays real.
 *  - WantsComplex, where a rule has it, says of real operands that complex evaluation takes them by OfComplex
 * although they have a real value. Operands that are all real are computed by Real in complex evaluation too,
 * and by OfComplex where that has no value.
 *  - kAngle, where a rule has it, says what is an angle. Rules compute in radians.
 * A failed operation leaves 0 in the result and the position on itself. */
template <class Rule, class Indices>
class CQMNumericFunction;

template <class Rule, long... index>
class CQMNumericFunction<Rule, std::integer_sequence<long, index...>> : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return sizeof...(index); }

  long DoOperation(long& position) override { return Finish(OfReals(), position); }

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

/** Complex operands are taken by their real parts, and the result is real. Base of such rules. */
template <class Rule>
struct SQMOnRealPart {
  static auto OfComplex(Complex z) { return Rule::Real(z.real()); }
};

}  // namespace qumel
