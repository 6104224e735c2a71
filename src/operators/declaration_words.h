// The words that declare: scopes, complexity and types. They act when they are verified; at run time they
// only pass control on.
#pragma once

#include "engine/call.h"
#include "engine/expression.h"
#include "engine/program.h"
#include "operators/declarations.h"

namespace qumel {

template <long operands>
class CQMDeclarationWord : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return operands; }
  bool VerifiesImmediately() const override { return true; }
  long VerifyOperands() override {
    long const code = CheckOperandCounts();
    return code != Error::None ? code : Declare();
  }
  SQMWays GetWays() const override { return kWays<&DoNothing>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep&) override { return maker.Use({&RunNothing}); }

 private:
  virtual long Declare() = 0;
};

/** cosmic, global, local: where the next new name goes. */
template <char scope>
class CQMScopeOperator final : public CQMDeclarationWord<0> {
  long Declare() override {
    GetExpression()->SetNextSymbolScope(scope);
    return Error::None;
  }
};

/** The next name that is declared a number becomes complex. */
class CQMComplexOperator final : public CQMDeclarationWord<0> {
  long Declare() override {
    GetExpression()->SetNextSymbolComplexity(Complexity::kComplex);
    return Error::None;
  }
};

/** number, string, boolean: declares a new name. A name that has a type keeps it. */
template <EQMDataType type>
class CQMTypeOperator final : public CQMDeclarationWord<1> {
  long Declare() override {
    CQMDatum& operand = Operand(0);
    if (operand.IsPending()) return DeclareName(*this, operand, NameType());
    bool const isTyped =
        operand.GetType() != EQMDataType::Untyped && operand.GetType() != EQMDataType::Undefined;
    return isTyped ? Error::None : Error::NotDefined;
  }
  EQMDataType NameType() const {
    if (type != EQMDataType::Number) return type;
    return GetExpression()->GetNextNumericSymbolDataType();
  }
};

}  // namespace qumel
