// The operator = and the checks that it shares with the other operators that change variables.
#include "engine/assignment.h"

#include <cstddef>

#include "engine/expression.h"
#include "engine/structural_tables.h"

namespace qumel {

namespace {

constexpr bool IsConstantOperator(long id) {
  return (id >= OpId::True && id <= OpId::Euler) || id == OpId::NumericConstant;
}

}  // namespace

long CQMTargetOperator::CheckTarget() {
  CQMDatum const* const target = GetOperandCount() > 0 ? GetOperandList()[0] : nullptr;
  if (target == nullptr) return Error::NotDefined;
  if (long const code = CheckOperandCounts(); code != Error::None) return code;
  return target->IsLiteral() ? Error::NotAnLValue : Error::None;
}

long CQMTargetOperator::TypeTarget(EQMDataType type) {
  CQMDatum& target = Target();
  if (target.IsPending()) return DeclareName(*this, target, type);
  if (target.GetType() != EQMDataType::Untyped) return Error::None;
  return target.IsProxy() ? DeclareName(*this, target, type) : Error::NotDefined;
}

long CQMTargetOperator::CheckTargetType() {
  if (Target().GetType() == EQMDataType::Untyped) return Error::NotDefined;
  if (VariableTypeFor(Target().GetType()) == EQMDataType::Undefined) return Error::NotAnLValue;
  return TargetIsConstant() ? Error::TargetIsConstant : Error::None;
}

// Constants have no mark of their own: they are the results of operators without operands.
bool CQMTargetOperator::TargetIsConstant() const {
  if (!Target().Name().empty() || GetExpression() == nullptr) return false;
  for (long i = GetExpression()->GetOperatorCount() - 1; i >= 0; --i) {
    CQMOperator const& op = *GetExpression()->GetOperatorByIndex(i);
    if (op.GetResultOperand() == &Target()) return IsConstantOperator(op.GetId());
  }
  return false;
}

long CQMTargetOperator::GiveResultType() {
  bool const isComplex = IsComplexOperation();
  EQMDataType const type = isComplex ? EQMDataType::Complex : VariableTypeFor(Target().GetType());
  // a result that is a number already keeps its value: somebody may still read it
  if (Result().ChangeDatumType(type) != type) Result().SetDatumType(type);
  return isComplex ? Error::ComplexOperandFound : Error::None;
}

long CQMTargetOperator::Optimize() { return Target().IsLiteral() ? Error::TargetIsConstant : Error::None; }

void CQMTargetOperator::StoreRealInBoth(double value) {
  StoreReal(value);
  Target().SetReal(value);
  Target().ClearImaginary();
}

void CQMTargetOperator::StoreComplexInBoth(double real, double imaginary) {
  StoreComplex(real, imaginary);
  // nobody else knows a variable of this expression but those it is lent to, who look at what they are lent
  CQMExpression const* const expression = GetExpression();
  if (expression != nullptr && expression->OwnsSymbol(Target().FinalTarget())) Target().PromoteUnannounced();
  Target().SetComplex(real, imaginary);
}

namespace {

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
};

constexpr SQMMakerRow kAssignmentOperators[] = {{OpId::Assign, &MakeOperator<CQMAssignOperator>}};

}  // namespace

MakerTable AssignmentOperators() { return kAssignmentOperators; }

}  // namespace qumel
