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

  long DoOperation(long& position) override {
    switch (GetTypeClass(Target().GetType())) {
      case EQMTypeClass::String: ExchangeTexts(); break;
      case EQMTypeClass::Boolean:
        std::swap(*Target().Current(), *Value().Current());
        *Result().Current() = *Target().Current();
        break;
      default: ExchangeNumbers(); break;
    }
    return Advance(position);
  }

 private:
  void ExchangeTexts() {
    std::string const kept(Target().GetText());
    Target().SetText(Value().GetText());
    Value().SetText(kept);
    Result().SetWholeText(Target().GetText());
  }

  // Also where one of the two became complex since it was verified, which makes the other one complex too.
  void ExchangeNumbers() {
    if (!IsComplexOperation()) {
      double const kept = Target().Real();
      StoreRealInBoth(Value().Real());
      Value().SetReal(kept);
      return;
    }
    double const real = Target().Real();
    double const imaginary = Target().Imaginary();
    StoreComplexInBoth(Value().Real(), Value().Imaginary());
    Value().SetComplex(real, imaginary);
  }
};

}  // namespace qumel
