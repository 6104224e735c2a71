// The operator <=>: two variables of one type exchange their values.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "operators/assignment.h"

namespace qumel {

class CQMExchangeAssignOperator final : public CQMTargetOperator {
 public:
  long VerifyOperands() override {
    if (long const code = CheckTarget(); code != Error::None) return code;
    if (Value().IsLiteral()) return Error::NotAnLValue;
    if (long const code = CheckDefined(&Value()); code != Error::None) return code;
    EQMDataType const type = VariableTypeFor(Value().GetType());
    if (type == EQMDataType::Undefined) return Error::TypeMismatch;
    if (long const code = TypeTarget(type); code != Error::None) return code;
    if (long const code = CheckTargetType(); code != Error::None) return code;
    if (Target().GetType() != Value().GetType()) return Error::TypeMismatch;
    return GiveResultType();
  }

  long Optimize() override {
    return Value().IsLiteral() ? static_cast<long>(Error::TargetIsConstant) : CQMTargetOperator::Optimize();
  }

  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    CQMDatum& target = TargetOf(call);
    CQMDatum& value = ValueOf(call);
    switch (GetTypeClass(target.GetType())) {
      case EQMTypeClass::String: {
        std::string const kept(target.GetText());
        target.SetText(value.GetText());
        value.SetText(kept);
        call.Result().SetWholeText(target.GetText());
        break;
      }
      case EQMTypeClass::Boolean:
        std::swap(*target.Current(), *value.Current());
        *call.Result().Current() = *target.Current();
        break;
      default: ExchangeNumbers(call); break;
    }
    return Status::Done;
  }

  // Also where one of the two became complex since it was verified, which makes the other one complex too.
  static void ExchangeNumbers(CQMCall const& call) {
    CQMDatum& target = TargetOf(call);
    CQMDatum& value = ValueOf(call);
    double const real = target.Real();
    double const imaginary = target.Imaginary();
    if (!IsComplexOperation(call)) {
      StoreRealInBoth(call, value.Real());
      value.SetReal(real);
      return;
    }
    StoreComplexInBoth(call, value.Real(), value.Imaginary());
    value.SetComplex(real, imaginary);
  }
};

}  // namespace qumel
