// The operator =, and what it shares with the other operators that change variables: operand 0 is the target,
// operand 1 the value.
#pragma once

#include <cstddef>

#include "engine/call.h"
#include "engine/numeric_steps.h"
#include "operators/declarations.h"

namespace qumel {

class CQMTargetOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 2; }
  bool VerifiesImmediately() const override { return true; }
  /** A target that was folded since it was verified is a constant: what is stored in it would stay. */
  long Optimize() override;

 protected:
  CQMDatum& Target() const { return Operand(0); }
  CQMDatum& Value() const { return Operand(1); }
  bool IsComplexOperation() const { return Target().IsComplex() || Value().IsComplex(); }

  /** A target and a value, both there, and the target no literal. */
  long CheckTarget();
  /** A new name takes type and is placed; a name without a type is refused. */
  long TypeTarget(EQMDataType type);
  /** Whether the target, typed by now, can hold values. */
  long CheckTargetType();
  /** The last step of verification: the result takes the target's kind, or becomes complex with either
   * operand; a complex result asks for complex evaluation. */
  long GiveResultType();

  // ---- at run time ----
  static CQMDatum& TargetOf(CQMCall const& call) { return call.Operand(0); }
  static CQMDatum& ValueOf(CQMCall const& call) { return call.Operand(1); }
  static bool IsComplexOperation(CQMCall const& call) {
    return TargetOf(call).IsComplex() || ValueOf(call).IsComplex();
  }
  // Both store in the target and in the result, in the way that the target's type asks for.
  static void StoreRealInBoth(CQMCall const& call, double value);
  static void StoreComplexInBoth(CQMCall const& call, double real, double imaginary);

 private:
  bool TargetIsConstant() const;
};

/** The operator =. */
class CQMAssignOperator final : public CQMTargetOperator {
 public:
  long VerifyOperands() override {
    if (long const code = CheckTarget(); code != Error::None) return code;
    if (Value().IsPending() || Value().GetType() == EQMDataType::Undefined) return Error::VerifyAgain;
    if (Value().GetType() == EQMDataType::Untyped) return Error::NotDefined;
    EQMDataType const type = VariableTypeFor(Value().GetType());
    if (type == EQMDataType::Undefined) return Error::TypeMismatch;
    if (long const code = TypeTarget(type); code != Error::None) return code;
    if (long const code = CheckTargetType(); code != Error::None) return code;
    if (GetTypeClass(Target().GetType()) != GetTypeClass(type)) return Error::TypeMismatch;
    return GiveResultType();
  }

  SQMWays GetWays() const override { return kWays<&Do, &DoInComplex>; }

  static long Do(CQMCall& call) {
    CQMDatum& target = TargetOf(call);
    CQMDatum& value = ValueOf(call);
    switch (GetTypeClass(target.GetType())) {
      case EQMTypeClass::String:
        // by way of the result: the value may lie inside the target
        call.Result().SetWholeText(value.GetText());
        target.SetText(call.Result().GetText());
        break;
      case EQMTypeClass::Boolean: {
        std::byte const byte = *value.Current();
        *call.Result().Current() = byte;
        *target.Current() = byte;
        break;
      }
      default: StoreRealInBoth(call, value.Real()); break;
    }
    return Status::Done;
  }

  static long DoInComplex(CQMCall& call) {
    if (!IsComplexOperation(call)) return Do(call);
    StoreComplexInBoth(call, ValueOf(call).Real(), ValueOf(call).Imaginary());
    return Status::Done;
  }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static double Of(double, double value) { return value; }
    };
    return MakeAssignmentStep<SQMWork>(maker, step);
  }
};

}  // namespace qumel
