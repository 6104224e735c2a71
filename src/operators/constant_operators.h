// Operators without operands that give a value: constants, folded constants, the last result.
#pragma once

#include "engine/call.h"
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
  SQMWays GetWays() const override { return kWays<&Do>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    return maker.FindNumberResult(step.result) && maker.Use({&Run<true>, &Run<false>});
  }

 private:
  static long Do(CQMCall& call) {
    call.StoreReal(value);
    return Status::Done;
  }
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
  SQMWays GetWays() const override { return kWays<&Do>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    return maker.FindBooleanResult(step.result) && maker.Use({&Run});
  }

 private:
  static long Do(CQMCall& call) {
    call.Result().SetBoolean(value);
    return Status::Done;
  }
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    BooleanAt(step->result) = value ? 1 : 0;
    return GoOn(step + 1, frame, 0.0);
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
  CQMDatum* SetResultOperand(CQMArena& arena, CQMDatum* datum) override {
    CQMDatum* const result = KeepResultOperand(datum != nullptr ? datum : arena.Make<CQMDatum>());
    result->SetLiteral(true);
    m_value = result->Real();
    return result;
  }
  long Finalize() override {
    Result().SetLiteral(false);
    return CQMOperator::Finalize();
  }
  SQMWays GetWays() const override { return kWays<&Do>; }
  void PrepareStep(CQMStepMaker&, SQMStep& step) override { step.constant = m_value; }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    step.constant = m_value;
    return maker.FindNumberResult(step.result) && maker.Use({&Run<true>, &Run<false>});
  }

 private:
  static long Do(CQMCall& call) {
    call.StoreReal(call.Step().constant);
    return Status::Done;
  }
  template <bool stores>
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    double const folded = step->constant;
    if constexpr (stores) NumberAt(step->result) = folded;
    return GoOn(step + 1, frame, folded);
  }

  double m_value = 0.0;
};

/** Its type is that of the last result when it is compiled, and again whenever it runs. In a copy of an
 * expression it starts with the type that it has in the original. */
class CQMLastResultOperator final : public CQMStandaloneOperator {
 public:
  CQMOperator* MakeTwin(CQMArena& arena) override {
    auto* const twin = arena.Make<CQMLastResultOperator>();
    twin->SetId(GetId());
    twin->m_originalType = Result().GetType();
    return twin;
  }

  EQMDataType GetReturnType() override {
    return m_originalType != EQMDataType::Undefined ? m_originalType : TypeOf(GetContext().GetLastResult());
  }

  SQMWays GetWays() const override { return kWays<&Do, &DoInComplex>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.isLastOfStatement = EndsStatement() || maker.Position() + 1 == GetExpression()->GetOperatorCount();
  }

 private:
  static constexpr EQMDataType kDefault = EQMDataType::Number;

  static long Do(CQMCall& call) {
    SQMLastResult const last = call.Context().GetLastResult();
    if (long const code = TakeTypeOf(last, call); code != Error::None) return code;
    switch (last.type) {
      case TypeLetter::kNumber: call.StoreReal(last.real); break;
      case TypeLetter::kBoolean: call.Result().SetBoolean(last.boolean); break;
      case TypeLetter::kString: call.Result().SetWholeText(last.text); break;
      case TypeLetter::kComplex: call.StoreReal(0.0); return Status::NeedsComplex;
      default: call.Result().ClearValue(); break;
    }
    return Status::Done;
  }
  static long DoInComplex(CQMCall& call) {
    long const status = Do(call);
    if (status != Status::NeedsComplex) return status;
    SQMLastResult const last = call.Context().GetLastResult();
    call.StoreComplex(last.real, last.imaginary);
    return Status::Done;
  }

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
  static long TakeTypeOf(SQMLastResult const& last, CQMCall const& call) {
    EQMDataType const type = TypeOf(last);
    if (last.type == TypeLetter::kNone || GetTypeClass(type) == GetTypeClass(call.Result().GetType()))
      return Error::None;
    if (!call.Step().isLastOfStatement) return Error::TypeMismatch;
    call.TypeResult(type);
    return Error::None;
  }

  EQMDataType m_originalType = EQMDataType::Undefined;
};

}  // namespace qumel
