// The words that declare: scopes, complexity and types. They act when they are verified; at run time they
// only pass control on.
#include "engine/declarations.h"

#include "engine/expression.h"
#include "engine/program.h"
#include "engine/structural_tables.h"

namespace qumel {

long DeclareName(CQMOperator const& op, CQMDatum& operand, EQMDataType type) {
  CQMExpression* const expression = op.GetExpression();
  if (expression == nullptr) return Error::NotDefined;
  CQMDatum& name = operand.FinalTarget();
  name.SetDatumType(type);
  return expression->ConfirmSymbol(&name);
}

namespace {

template <long operands>
class CQMDeclarationWord : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return operands; }
  bool VerifiesImmediately() const override { return true; }
  long VerifyOperands() override {
    long const code = CheckOperandCounts();
    return code != Error::None ? code : Declare();
  }
  long DoOperation(long& position) override { return Advance(position); }
  bool MakeStep(CQMStepMaker& maker, SQMStep&) override { return maker.Use({&RunNothing}); }

 private:
  virtual long Declare() = 0;
};

/** cosmic, global, local: where the next new name goes. */
template <char scope>
class CQMScopeOperator final : public CQMDeclarationWord<0> {
  long Declare() override {
    if (GetExpression() != nullptr) GetExpression()->SetNextSymbolScope(scope);
    return Error::None;
  }
};
using CQMCosmicOperator = CQMScopeOperator<Scope::kCosmic>;
using CQMGlobalOperator = CQMScopeOperator<Scope::kGlobal>;
using CQMLocalOperator = CQMScopeOperator<Scope::kLocal>;

/** The next name that is declared a number becomes complex. */
class CQMComplexOperator final : public CQMDeclarationWord<0> {
  long Declare() override {
    if (GetExpression() != nullptr) GetExpression()->SetNextSymbolComplexity(Complexity::kComplex);
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
    if (type != EQMDataType::Number || GetExpression() == nullptr) return type;
    return GetExpression()->GetNextNumericSymbolDataType();
  }
};
using CQMNumberOperator = CQMTypeOperator<EQMDataType::Number>;
using CQMStringOperator = CQMTypeOperator<EQMDataType::String>;
using CQMBooleanOperator = CQMTypeOperator<EQMDataType::Boolean>;

constexpr SQMMakerRow kDeclarationOperators[] = {
    {OpId::CosmicScope, &MakeOperator<CQMCosmicOperator>},
    {OpId::GlobalScope, &MakeOperator<CQMGlobalOperator>},
    {OpId::LocalScope, &MakeOperator<CQMLocalOperator>},
    {OpId::ComplexWord, &MakeOperator<CQMComplexOperator>},
    {OpId::NumberWord, &MakeOperator<CQMNumberOperator>},
    {OpId::StringWord, &MakeOperator<CQMStringOperator>},
    {OpId::BooleanWord, &MakeOperator<CQMBooleanOperator>},
};

}  // namespace

MakerTable DeclarationOperators() { return kDeclarationOperators; }

}  // namespace qumel
