// What all operators that change variables share: operand 0 is the target, operand 1 the value.
#pragma once

#include "engine/declarations.h"
#include "engine/operator.h"

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

}  // namespace qumel
