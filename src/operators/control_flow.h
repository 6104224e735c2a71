// The words of control flow at run time: they move the position along the links that linking has set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/conversions.h"
#include "engine/call.h"
#include "engine/expression.h"
#include "engine/numeric_steps.h"
#include "engine/program.h"
#include "operators/declarations.h"

namespace qumel {

/** A word with a number of operands that must be defined, whatever their types. */
template <long operands, EQMDataType returnType = EQMDataType::Untyped>
class CQMFlowOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return operands; }
  EQMDataType GetReturnType() override { return returnType; }
  long VerifyOperands() override { return CheckOperands(); }
};

/** A word whose operand is a condition. The byte of a boolean itself counts: in the memory of a host it may
 * be neither 0 nor 1, and then no word takes it. */
template <EQMDataType returnType = EQMDataType::Untyped>
class CQMConditionOperator : public CQMFlowOperator<1, returnType> {
 public:
  long VerifyOperands() override {
    if (long const code = CQMFlowOperator<1, returnType>::VerifyOperands(); code != Error::None) return code;
    return this->Operand(0).IsBoolean() ? Error::None : Error::NotABoolean;
  }
};

// ---- if, unless ----

/** Goes on where the step says for the condition that it finds. */
template <std::uint8_t wanted>
SQMStep const* RunBranch(SQMStep const* step, SQMFrame& frame, double) {
  return GoOn(BooleanAt(step->first) == wanted ? step->whenTrue : step->whenFalse, frame, 0.0);
}

inline SQMStep const* RunJump(SQMStep const* step, SQMFrame& frame, double) {
  return GoOn(step->whenTrue, frame, 0.0);
}
inline long Jump(CQMCall& call) { return call.GoOnAt(call.Step().whenTrue); }

template <std::uint8_t wanted>
class CQMBranchOperator final : public CQMConditionOperator<EQMDataType::Boolean> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.whenTrue = maker.StepAt(GetTrueLink());
    step.whenFalse = maker.StepAt(GetFalseLink() >= 1 ? GetFalseLink() : GetSkipLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!maker.FindBoolean(0, step.first)) return false;
    PrepareStep(maker, step);
    if (wanted == 1) maker.JoinWithComparison();
    return maker.Use({&RunBranch<wanted>});
  }

 private:
  static long Do(CQMCall& call) {
    bool const holds = call.Operand(0).BooleanByte() == wanted;
    return call.GoOnAt(holds ? call.Step().whenTrue : call.Step().whenFalse);
  }
};

// ---- jumps ----

class CQMSkipOperator : public CQMFlowOperator<0> {
 public:
  SQMWays GetWays() const override { return kWays<&Jump>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.whenTrue = maker.StepAt(GetSkipLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    PrepareStep(maker, step);
    return maker.Use({&RunJump});
  }
};
class CQMThenOperator final : public CQMSkipOperator {};
class CQMElseOperator final : public CQMSkipOperator {};
class CQMNextOperator final : public CQMSkipOperator {};
class CQMBreakOperator final : public CQMSkipOperator {};
class CQMContinueOperator final : public CQMSkipOperator {};

/** label and goto: a new name becomes a label of this expression. */
class CQMLabelWord : public CQMFlowOperator<1> {
 public:
  bool VerifiesImmediately() const override { return true; }
  long VerifyOperands() override {
    if (long const code = CheckOperandCounts(); code != Error::None) return code;
    if (!Operand(0).IsPending()) return Error::None;
    GetExpression()->SetNextSymbolScope(Scope::kLocal);
    return DeclareName(*this, Operand(0), EQMDataType::Label);
  }
};

class CQMLabelOperator final : public CQMLabelWord {
 public:
  SQMWays GetWays() const override { return kWays<&DoNothing>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep&) override { return maker.Use({&RunNothing}); }
};

class CQMGotoOperator final : public CQMLabelWord {
 public:
  long VerifyOperands() override {
    if (long const code = CQMLabelWord::VerifyOperands(); code != Error::None) return code;
    return Operand(0).GetType() == EQMDataType::Label ? Error::None : Error::NoGotoTarget;
  }
  SQMWays GetWays() const override { return kWays<&Jump>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.whenTrue = maker.StepAt(GetSkipLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    PrepareStep(maker, step);
    return maker.Use({&RunJump});
  }
};

// ---- loops: the block of the opener tells "do" to test its condition ----

/** while, until, always. */
template <bool testsAtOnce, EQMDataType returnType = EQMDataType::Untyped>
class CQMLoopOperator : public CQMFlowOperator<0, returnType> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override { step.block = maker.PlaceBlock(*this); }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (kGivesTrue && !maker.FindBooleanResult(step.result)) return false;
    step.block = maker.PlaceBlock(*this);
    return maker.Use({&Run});
  }

 private:
  static constexpr bool kGivesTrue = returnType == EQMDataType::Boolean;

  static long Do(CQMCall& call) {
    call.Step().block->isDecided = testsAtOnce;
    if (kGivesTrue) call.Result().SetBoolean(true);
    return Status::Done;
  }
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    step->block->isDecided = testsAtOnce;
    if constexpr (kGivesTrue) BooleanAt(step->result) = 1;
    return GoOn(step + 1, frame, 0.0);
  }
};
using CQMAlwaysOperator = CQMLoopOperator<true, EQMDataType::Boolean>;

class CQMDoOperator final : public CQMConditionOperator<> {
 public:
  SQMWays GetWays() const override { return LoopsWhile() ? kWays<&Do<1>> : kWays<&Do<0>>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.block = maker.PlaceBlock(*GetTopLinkOperator());
    step.whenTrue = maker.StepAt(maker.Position() + 1);
    step.whenFalse = maker.StepAt(GetSkipLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!maker.FindBoolean(0, step.first)) return false;
    PrepareStep(maker, step);
    if (!LoopsWhile()) return maker.Use({&RunDo<0>});
    // where no jump leads past the opener, the condition counts whenever control comes here
    if (GetExpression()->HasPassedByOpeners()) return maker.Use({&RunDo<1>});
    maker.JoinWithComparison();
    return maker.Use({&RunBranch<1>});
  }

 private:
  /** The condition counts from the second time on, unless the opener says at once. */
  static bool Enters(SQMBlock& block, std::uint8_t condition, std::uint8_t wanted) {
    bool const enters = !block.isDecided || condition == wanted;
    block.isDecided = true;
    return enters;
  }
  template <std::uint8_t wanted>
  static long Do(CQMCall& call) {
    bool const enters = Enters(*call.Step().block, call.Operand(0).BooleanByte(), wanted);
    return call.GoOnAt(enters ? call.Step().whenTrue : call.Step().whenFalse);
  }
  template <std::uint8_t wanted>
  static SQMStep const* RunDo(SQMStep const* step, SQMFrame& frame, double) {
    bool const enters = Enters(*step->block, BooleanAt(step->first), wanted);
    return GoOn(enters ? step->whenTrue : step->whenFalse, frame, 0.0);
  }
};

// ---- select: its block tells whether a case has matched, and how many are still to be tested ----

class CQMSelectOperator final : public CQMFlowOperator<1> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.block = maker.PlaceBlock(*this);
    step.caseCount = static_cast<std::int32_t>(GetCaseCount());
  }

 private:
  static long Do(CQMCall& call) {
    *call.Step().block = {call.Step().caseCount, false};
    return Status::Done;
  }
};

/** A word between a select and its end. */
template <long operands>
class CQMSelectPart : public CQMFlowOperator<operands> {
 public:
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    step.block = maker.PlaceBlock(*this->GetTopLinkOperator());
    step.whenFalse = maker.StepAt(this->GetSkipLink());
  }
};

class CQMCaseOperator final : public CQMSelectPart<1> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    CQMSelectPart::PrepareStep(maker, step);
    step.selected = GetTopLinkOperator()->GetOperandByIndex(0);
  }

 private:
  static long Do(CQMCall& call) {
    SQMBlock& block = *call.Step().block;
    if (!block.isDecided) {
      if (call.Operand(0).CompareValue(call.Step().selected) != 0) {
        --block.casesLeft;
        return call.GoOnAt(call.Step().whenFalse);
      }
      block.isDecided = true;
    }
    return Status::Done;
  }
};

class CQMDefaultOperator final : public CQMSelectPart<0> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    SQMBlock& block = *call.Step().block;
    if (!block.isDecided) {
      // below zero after a jump past the select into its cases
      if (block.casesLeft > 0) return call.GoOnAt(call.Step().whenFalse);
      block.isDecided = true;
    }
    return Status::Done;
  }
};

/** A default that stands before other cases has its turn when all of them failed; an otherwise has not. */
class CQMEndOperator final : public CQMFlowOperator<0> {
 public:
  SQMWays GetWays() const override {
    if (!MayReturnToDefault()) return kWays<&DoNothing>;
    return IsBehindDefault() ? kWays<&Return<true>> : kWays<&Return<false>>;
  }
  void PrepareStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!MayReturnToDefault()) return;
    step.block = maker.PlaceBlock(*GetTopLinkOperator());
    step.whenTrue = maker.StepAt(GetTopLinkOperator()->GetFalseLink());
    m_position = maker.Position();
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep&) override {
    return !MayReturnToDefault() && maker.Use({&RunNothing});
  }

 private:
  bool MayReturnToDefault() const {
    CQMOperator const& block = *GetTopLinkOperator();
    return block.GetId() == OpId::Select && block.GetFalseLink() != kNoLink;
  }
  /** Whether the default stands last: there are no cases to test behind it. */
  bool IsBehindDefault() const {
    long const byDefault = GetTopLinkOperator()->GetFalseLink();
    return GetExpression()->GetOperatorByIndex(byDefault)->GetSkipLink() == m_position;
  }
  /** Cases that a break or a jump passed by count as failed behind the last default, or control would go
   * round between the two for ever. */
  template <bool isBehindDefault>
  static long Return(CQMCall& call) {
    SQMBlock& block = *call.Step().block;
    if (block.isDecided) return Status::Done;
    if (isBehindDefault) block.casesLeft = 0;
    return call.GoOnAt(call.Step().whenTrue);
  }

  long m_position = kNoLink;
};

// ---- leaving ----

/** Where nothing stands behind it, a number or a boolean is handed on to the end. */
class CQMReturnOperator final : public CQMFlowOperator<1> {
 public:
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (maker.Position() + 1 != GetExpression()->GetOperatorCount()) return false;
    if (maker.FindNumberResult(step.result)) {
      struct SQMWork {
        static double Of(double value, std::byte*) { return value; }
      };
      return MakeUnaryStep<SQMWork>(maker, step, nullptr);
    }
    return maker.FindBooleanResult(step.result) && maker.FindBoolean(0, step.first) && maker.Use({&RunCopy});
  }
  EQMDataType GetReturnType() override {
    CQMDatum const* const value = GetOperandByIndex(0);
    return value != nullptr ? value->GetType() : EQMDataType::Untyped;
  }
  long VerifyOperands() override {
    long const code = CQMFlowOperator<1>::VerifyOperands();
    if (code == Error::None) TypeResult(GetReturnType());
    return code;
  }
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static SQMStep const* RunCopy(SQMStep const* step, SQMFrame& frame, double) {
    BooleanAt(step->result) = BooleanAt(step->first);
    return GoOn(step + 1, frame, 0.0);
  }
  static long Do(CQMCall& call) {
    CQMDatum const& value = call.Operand(0);
    call.TypeResult(value.GetType());  // it may have become complex since
    if (value.IsString()) {
      call.Result().SetWholeText(value.GetText());
    } else {
      std::memcpy(call.Result().Current(), value.Current(), static_cast<std::size_t>(value.GetElementSize()));
    }
    return Status::Stop;
  }
};

class CQMExitOperator final : public CQMFlowOperator<0> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall&) { return Status::Stop; }
};

class CQMSetErrorOperator final : public CQMFlowOperator<1> {
 public:
  long VerifyOperands() override {
    if (long const code = CQMFlowOperator<1>::VerifyOperands(); code != Error::None) return code;
    EQMDataType const type = VariableTypeFor(Operand(0).GetType());
    return type == EQMDataType::Number || type == EQMDataType::Complex ? Error::None : Error::NotANumber;
  }
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    long const code = TruncateToInt32(call.Real(0));
    call.Expression().SetErrorState(code);
    call.MoveOn();
    return code;
  }
};

class CQMClearErrorOperator final : public CQMFlowOperator<0> {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }

 private:
  static long Do(CQMCall& call) {
    call.Expression().SetErrorState(Error::None);
    return Status::Done;
  }
};

}  // namespace qumel
