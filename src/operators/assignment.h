// The operator =, and what it shares with the other operators that change variables: operand 0 is the target,
// operand 1 the value.
#pragma once

#include <cstddef>

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

  // Stores in the target and in the result, in the way that the target's type asks for.
  void StoreRealInBoth(double value);
  void StoreComplexInBoth(double real, double imaginary);

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

  long DoOperation(long& position) override {
    switch (GetTypeClass(Target().GetType())) {
      case EQMTypeClass::String:
        // by way of the result: the value may lie inside the target
        Result().SetWholeText(Value().GetText());
        Target().SetText(Result().GetText());
        break;
      case EQMTypeClass::Boolean: {
        std::byte const value = *Value().Current();
        *Result().Current() = value;
        *Target().Current() = value;
        break;
      }
      default: StoreRealInBoth(Value().Real()); break;
    }
    return Advance(position);
  }

  long DoComplexOperation(long& position) override {
    if (!IsComplexOperation()) return DoOperation(position);
    StoreComplexInBoth(Value().Real(), Value().Imaginary());
    return Advance(position);
  }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static double Of(double, double value) { return value; }
    };
    return MakeAssignmentStep<SQMWork>(maker, *this, step);
  }
};

}  // namespace qumel
