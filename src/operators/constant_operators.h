// Operators without operands that give a value: constants, folded constants, the last result.
#pragma once

#include "engine/expression.h"
#include "engine/operator_context.h"
#include "engine/program.h"
#include "operators/standalone_operator.h"

namespace qumel {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kPhi = 1.61803398874989484820;
inline constexpr double kEuler =
    0.57721566490153286061;  // Euler and Mascheroni's constant, not the base of logarithms

template <double const& value>
class CQMNumberConstant final : public CQMStandaloneOperator {
 public:
  long DoOperation(long& position) override {
    StoreReal(value);
    return Advance(position);
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!CQMStepMaker::HasNumberResult(*this)) return false;
    step.result = Result().Current();
    return maker.Use({&Run<true>, &Run<false>});
  }

 private:
  template <bool stores>
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    if constexpr (stores) NumberAt(step->result) = value;
    return GoOn(step + 1, frame, value);
  }
};

template <bool value>
class CQMBooleanConstant final : public CQMStandaloneOperator {
 public:
  EQMDataType GetReturnType() override { return EQMDataType::Boolean; }
  long DoOperation(long& position) override {
    Result().SetBoolean(value);
    return Advance(position);
  }
};

/** Stands where an operator was whose value is known before any run. It takes that operator's operands and
 * its result, value included, over. While the expression is optimised the result counts as a literal, so that
 * operators on it fold as well. In a run it is a result like others: a body may store in its parameter, and
 * the next run finds the value that was folded. */
class CQMNumericConstantOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 0; }
  long VerifyOperands() override { return Error::None; }
  CQMDatum* SetResultOperand(std::unique_ptr<CQMDatum> datum) override {
    CQMDatum* const result =
        KeepResultOperand(datum != nullptr ? std::move(datum) : std::make_unique<CQMDatum>());
    result->SetLiteral(true);
    m_value = result->Real();
    return result;
  }
  long Finalize() override {
    Result().SetLiteral(false);
    return CQMOperator::Finalize();
  }
  long DoOperation(long& position) override {
    StoreReal(m_value);
    return Advance(position);
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!CQMStepMaker::HasNumberResult(*this)) return false;
    step.first = reinterpret_cast<std::byte*>(&m_value);
    step.result = Result().Current();
    return maker.Use({&Run<true>, &Run<false>});
  }

 private:
  template <bool stores>
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    double const folded = NumberAt(step->first);
    if constexpr (stores) NumberAt(step->result) = folded;
    return GoOn(step + 1, frame, folded);
  }

  double m_value = 0.0;
};

/** Its type is that of the last result when it is compiled, and again whenever it runs. In a copy of an
 * expression it starts with the type that it has in the original. */
class CQMLastResultOperator final : public CQMStandaloneOperator {
 public:
  std::unique_ptr<CQMOperator> MakeTwin() override {
    auto twin = std::make_unique<CQMLastResultOperator>();
    twin->SetId(GetId());
    twin->m_originalType = Result().GetType();
    return twin;
  }

  EQMDataType GetReturnType() override {
    if (m_originalType != EQMDataType::Undefined) return m_originalType;
    return GetContext() != nullptr ? TypeOf(GetContext()->GetLastResult()) : kDefault;
  }

  long DoOperation(long& position) override {
    if (GetContext() == nullptr) return Advance(position);
    SQMLastResult const last = GetContext()->GetLastResult();
    if (long const code = TakeTypeOf(last, position); code != Error::None) return code;
    switch (last.type) {
      case TypeLetter::kNumber: StoreReal(last.real); break;
      case TypeLetter::kBoolean: Result().SetBoolean(last.boolean); break;
      case TypeLetter::kString: Result().SetWholeText(last.text); break;
      case TypeLetter::kComplex: StoreReal(0.0); return Status::NeedsComplex;
      default: Result().ClearValue(); break;
    }
    return Advance(position);
  }

  long DoComplexOperation(long& position) override {
    long const status = DoOperation(position);
    if (status != Status::NeedsComplex) return status;
    SQMLastResult const last = GetContext()->GetLastResult();
    StoreComplex(last.real, last.imaginary);
    return Advance(position);
  }

 private:
  static constexpr EQMDataType kDefault = EQMDataType::Number;

  /** A complex result counts as a number: whether it may be delivered is decided when it is asked for. */
  static EQMDataType TypeOf(SQMLastResult const& last) {
    switch (last.type) {
      case TypeLetter::kString: return EQMDataType::String;
      case TypeLetter::kBoolean: return EQMDataType::Boolean;
      default: return kDefault;
    }
  }

  /** An operator that was verified with one kind of operand must not meet another: then the kind may not
   * change. */
  long TakeTypeOf(SQMLastResult const& last, long position) {
    EQMDataType const type = TypeOf(last);
    if (last.type == TypeLetter::kNone || GetTypeClass(type) == GetTypeClass(Result().GetType()))
      return Error::None;
    bool const isLast = GetExpression() == nullptr || position + 1 == GetExpression()->GetOperatorCount();
    if (!isLast && !EndsStatement()) return Error::TypeMismatch;
    TypeResult(type);
    return Error::None;
  }

  EQMDataType m_originalType = EQMDataType::Undefined;
};

}  // namespace qumel
