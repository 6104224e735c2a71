// Sums, products, powers, remainders, factorials and signs.
#pragma once

#include "operators/numeric_function.h"
#include "rules/arithmetic.h"

namespace qumel {

/** Whether the value of operand is known before any run. */
inline bool IsKnownNumber(CQMDatum const& operand) {
  return operand.IsLiteral() && operand.GetType() == EQMDataType::Number;
}

class CQMAdditionOperator final : public CQMBinaryFunction<SQMSumRule> {
 public:
  /** Texts are joined. */
  long VerifyOperands() override {
    if (long const code = CheckOperands(); code != Error::None) return code;
    for (long i = 0; i < GetOperandCount(); ++i) {
      EQMTypeClass const given = GetTypeClass(Operand(i).GetType());
      if (given == EQMTypeClass::String) return SubstituteBy(OpId::Concatenation);
      if (given != EQMTypeClass::Numeric) return Error::NotANumber;
    }
    return ComplexStatus();
  }

  long Optimize() override {
    if (!IsKnownNumber(Operand(0)) || !IsKnownNumber(Operand(1))) return Error::None;
    StoreReal(SQMSumRule::Real(Real(0), Real(1)));
    return SubstituteBy(OpId::NumericConstant);
  }
};

class CQMExponentOperator final : public CQMBinaryFunction<SQMPowerRule> {
 public:
  long Optimize() override {
    if (!IsKnownNumber(Operand(1))) return Error::None;
    constexpr double kSquared = 2.0;
    constexpr double kCubed = 3.0;
    double const exponent = Real(1);
    if (exponent == 0.0) {
      StoreReal(1.0);
      return SubstituteBy(OpId::NumericConstant);
    }
    if (exponent == kSquared) return SubstituteBy(OpId::Square);
    return exponent == kCubed ? SubstituteBy(OpId::Cube) : static_cast<long>(Error::None);
  }
};

enum class EQMGives { NewValue, OldValue };

/** Changes the real part of a variable by step; an imaginary part stays as it is, and out of the result. */
template <int step, EQMGives gives>
class CQMStepOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 1; }

  long VerifyOperands() override {
    if (long const code = CheckOperands(); code != Error::None) return code;
    CQMDatum const& variable = Operand(0);
    if (!HoldsDouble(variable.GetType())) return Error::NotANumber;
    // variables and their elements have names, the results of operators have none
    if (variable.IsLiteral() || variable.Name().empty()) return Error::TargetIsConstant;
    return ComplexStatus();
  }

  SQMWays GetWays() const override { return kWays<&Do>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep& made) override;

 private:
  static long Do(CQMCall& call) {
    double const old = call.Real(0);
    call.Operand(0).SetReal(old + step);
    call.StoreReal(gives == EQMGives::OldValue ? old : call.Real(0));
    return Status::Done;
  }
  static bool HoldsDouble(EQMDataType type) {
    return IsBetween(type, EQMDataType::Number, EQMDataType::Real);
  }
};

template <int step, EQMGives gives, bool stores, EQMSource target>
SQMStep const* StepStep(SQMStep const* at, SQMFrame& frame, double) {
  double& place = Target<target>(at->first);
  double const old = place;
  place = old + step;
  double const result = gives == EQMGives::OldValue ? old : place;
  if constexpr (stores) NumberAt(at->result) = result;
  return GoOn(at + 1, frame, result);
}

template <int step, EQMGives gives>
bool CQMStepOperator<step, gives>::MakeStep(CQMStepMaker& maker, SQMStep& made) {
  SQMStepOperand target;
  if (!maker.FindNumberResult(made.result) || !maker.FindNumber(0, false, target)) return false;
  made.first = target.address;
  if (target.source == EQMSource::Indirect) {
    return maker.Use({&StepStep<step, gives, true, EQMSource::Indirect>,
                      &StepStep<step, gives, false, EQMSource::Indirect>});
  }
  return maker.Use(
      {&StepStep<step, gives, true, EQMSource::Direct>, &StepStep<step, gives, false, EQMSource::Direct>});
}

}  // namespace qumel
