// The checks that the operators which change variables share.
#include "operators/assignment.h"

#include "engine/expression.h"

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
  if (!Target().Name().empty()) return false;
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
  if (Result().ChangeDatumType(type) != type) TypeResult(type);
  return isComplex ? Error::ComplexOperandFound : Error::None;
}

long CQMTargetOperator::Optimize() { return Target().IsLiteral() ? Error::TargetIsConstant : Error::None; }

void CQMTargetOperator::StoreRealInBoth(CQMCall const& call, double value) {
  call.StoreReal(value);
  TargetOf(call).SetReal(value);
  TargetOf(call).ClearImaginary();
}

void CQMTargetOperator::StoreComplexInBoth(CQMCall const& call, double real, double imaginary) {
  call.StoreComplex(real, imaginary);
  // nobody else knows a variable of this expression but those it is lent to, who look at what they are lent
  CQMDatum& target = TargetOf(call);
  if (call.Expression().OwnsSymbol(target.FinalTarget())) target.PromoteUnannounced();
  target.SetComplex(real, imaginary);
}

}  // namespace qumel
