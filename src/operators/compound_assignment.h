// The operators that compute with a variable and store in it: += -= *= /= %=. One template, on the rules of
// the operators that only compute.
#pragma once

#include <type_traits>

#include "engine/numeric_steps.h"
#include "operators/assignment.h"
#include "rules/arithmetic.h"

namespace qumel {

template <class Rule>
class CQMCompoundAssignment final : public CQMTargetOperator {
 public:
  long VerifyOperands() override {
    if (long const code = CheckTarget(); code != Error::None) return code;
    if (long const code = CheckOperands(); code != Error::None) return code;
    if (Value().GetType() == EQMDataType::Undefined) return Error::VerifyAgain;
    if (!IsNumeric(Value())) {
      return kJoinsTexts && IsText(Value().GetType()) ? SubstituteBy(OpId::Append) : Error::NotANumber;
    }
    if (!IsNumeric(Target())) return Error::NotANumber;
    if (long const code = CheckTargetType(); code != Error::None) return code;
    return GiveResultType();
  }

  long DoOperation(long& position) override {
    RealOutcome const outcome = Rule::Real(Target().Real(), Value().Real());
    if (HasFailed(outcome)) return Refuse(outcome.status);
    StoreRealInBoth(outcome.value);
    return Advance(position);
  }

  long DoComplexOperation(long& position) override {
    if (!IsComplexOperation()) return DoOperation(position);
    SQMOutcome const outcome(Rule::OfComplex(Parts(Target()), Parts(Value())));
    if (outcome.status != Error::None) return Refuse(outcome.status);
    Complex const value = outcome.value;
    StoreComplexInBoth(value.real(), value.imag());
    return Advance(position);
  }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static auto Of(double target, double value) { return Rule::Real(target, value); }
    };
    return MakeAssignmentStep<SQMWork>(maker, *this, step);
  }

 private:
  static constexpr bool kJoinsTexts = std::is_same_v<Rule, SQMSumRule>;

  static bool IsNumeric(CQMDatum const& datum) {
    EQMDataType const type = VariableTypeFor(datum.GetType());
    return type == EQMDataType::Number || type == EQMDataType::Complex;
  }
  static Complex Parts(CQMDatum const& datum) { return {datum.Real(), datum.Imaginary()}; }
  long Refuse(long code) {
    StoreReal(0.0);
    return code;
  }
};

}  // namespace qumel
