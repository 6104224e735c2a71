// Operators without operands that give a value: constants, folded constants, the last result.
#include "engine/expression.h"
#include "engine/operator_context.h"
#include "operators/operator_tables.h"
#include "operators/standalone_operator.h"

namespace qumel {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kPhi = 1.61803398874989484820;
constexpr double kEuler =
    0.57721566490153286061;  // Euler and Mascheroni's constant, not the base of logarithms

template <double const& value>
class CQMNumberConstant final : public CQMStandaloneOperator {
 public:
  long DoOperation(long& position) override {
    StoreReal(value);
    return Advance(position);
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

using CQMPiOperator = CQMNumberConstant<kPi>;
using CQMPhiOperator = CQMNumberConstant<kPhi>;
using CQMEulerOperator = CQMNumberConstant<kEuler>;
using CQMTrueOperator = CQMBooleanConstant<true>;
using CQMFalseOperator = CQMBooleanConstant<false>;

/** Stands where an operator was whose value is known before any run. It takes that operator's operands and
 * its result, value included, over and marks the result as a literal, so that operators on it fold as well.
 */
class CQMNumericConstantOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 0; }
  long VerifyOperands() override { return Error::None; }
  CQMDatum* SetResultOperand(std::unique_ptr<CQMDatum> datum) override {
    CQMDatum* const result =
        KeepResultOperand(datum != nullptr ? std::move(datum) : std::make_unique<CQMDatum>());
    result->SetLiteral(true);
    return result;
  }
  long DoOperation(long& position) override { return Advance(position); }
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
    Result().SetDatumType(type);
    return Error::None;
  }

  EQMDataType m_originalType = EQMDataType::Undefined;
};

constexpr SQMMakerRow kConstantOperators[] = {
    {OpId::True, &MakeOperator<CQMTrueOperator>},
    {OpId::False, &MakeOperator<CQMFalseOperator>},
    {OpId::Pi, &MakeOperator<CQMPiOperator>},
    {OpId::Phi, &MakeOperator<CQMPhiOperator>},
    {OpId::Euler, &MakeOperator<CQMEulerOperator>},
    {OpId::LastResult, &MakeOperator<CQMLastResultOperator>},
    {OpId::NumericConstant, &MakeOperator<CQMNumericConstantOperator>},
};

}  // namespace

MakerTable ConstantOperators() { return kConstantOperators; }

}  // namespace qumel
