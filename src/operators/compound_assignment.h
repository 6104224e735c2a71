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

  SQMWays GetWays() const override { return kWays<&Do, &DoInComplex>; }

  static long Do(CQMCall& call) {
    RealOutcome const outcome = Rule::Real(TargetOf(call).Real(), ValueOf(call).Real());
    if (HasFailed(outcome)) return Refuse(call, outcome.status);
    StoreRealInBoth(call, outcome.value);
    return Status::Done;
  }

  static long DoInComplex(CQMCall& call) {
    if (!IsComplexOperation(call)) return Do(call);
    SQMOutcome const outcome(Rule::OfComplex(Parts(TargetOf(call)), Parts(ValueOf(call))));
    if (outcome.status != Error::None) return Refuse(call, outcome.status);
    Complex const value = outcome.value;
    StoreComplexInBoth(call, value.real(), value.imag());
    return Status::Done;
  }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static auto Of(double target, double value) { return Rule::Real(target, value); }
    };
    return MakeAssignmentStep<SQMWork>(maker, step);
  }

 private:
  static constexpr bool kJoinsTexts = std::is_same_v<Rule, SQMSumRule>;

  static bool IsNumeric(CQMDatum const& datum) {
    EQMDataType const type = VariableTypeFor(datum.GetType());
    return type == EQMDataType::Number || type == EQMDataType::Complex;
  }
  static Complex Parts(CQMDatum const& datum) { return {datum.Real(), datum.Imaginary()}; }
  static long Refuse(CQMCall const& call, long code) {
    call.StoreReal(0.0);
    return code;
  }
};

}  // namespace qumel
