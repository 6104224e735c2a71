// The words of control flow at run time: they move the position along the links that linking has set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/conversions.h"
#include "engine/expression.h"
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

 protected:
  static long Jump(long& position, long target) {
    position = target;
    return Error::None;
  }
};

/** A word whose operand is a condition. */
template <EQMDataType returnType = EQMDataType::Untyped>
class CQMConditionOperator : public CQMFlowOperator<1, returnType> {
 public:
  long VerifyOperands() override {
    if (long const code = CQMFlowOperator<1, returnType>::VerifyOperands(); code != Error::None) return code;
    return this->Operand(0).IsBoolean() ? Error::None : Error::NotABoolean;
  }

 protected:
  /** The byte itself: in the memory of a host it may be neither 0 nor 1, and then no word takes it. */
  std::uint8_t Condition() const { return this->Operand(0).BooleanByte(); }
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

template <std::uint8_t wanted>
class CQMBranchOperator final : public CQMConditionOperator<EQMDataType::Boolean> {
 public:
  long DoOperation(long& position) override {
    return Jump(position, Condition() == wanted ? GetTrueLink() : OtherLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!CQMStepMaker::FindBoolean(*this, 0, step.first)) return false;
    step.whenTrue = maker.StepAt(GetTrueLink());
    step.whenFalse = maker.StepAt(OtherLink());
    if (wanted == 1) maker.JoinWithComparison(*this);
    return maker.Use({&RunBranch<wanted>});
  }

 private:
  long OtherLink() const { return GetFalseLink() >= 1 ? GetFalseLink() : GetSkipLink(); }
};

// ---- jumps ----

class CQMSkipOperator : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override { return Jump(position, GetSkipLink()); }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    step.whenTrue = maker.StepAt(GetSkipLink());
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
    if (GetExpression() != nullptr) GetExpression()->SetNextSymbolScope(Scope::kLocal);
    return DeclareName(*this, Operand(0), EQMDataType::Label);
  }
};

class CQMLabelOperator final : public CQMLabelWord {
 public:
  long DoOperation(long& position) override { return Advance(position); }
  bool MakeStep(CQMStepMaker& maker, SQMStep&) override { return maker.Use({&RunNothing}); }
};

class CQMGotoOperator final : public CQMLabelWord {
 public:
  long VerifyOperands() override {
    if (long const code = CQMLabelWord::VerifyOperands(); code != Error::None) return code;
    return Operand(0).GetType() == EQMDataType::Label ? Error::None : Error::NoGotoTarget;
  }
  long DoOperation(long& position) override { return Jump(position, GetSkipLink()); }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    step.whenTrue = maker.StepAt(GetSkipLink());
    return maker.Use({&RunJump});
  }
};

// ---- loops: the first flag of the opener tells "do" to test its condition ----

template <bool testsAtOnce>
class CQMLoopOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override {
    SetFirstFlag(testsAtOnce);
    return Advance(position);
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    step.first = reinterpret_cast<std::byte*>(&FirstFlag());
    return maker.Use({&Run});
  }

 private:
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    *reinterpret_cast<bool*>(step->first) = testsAtOnce;
    return GoOn(step + 1, frame, 0.0);
  }
};

class CQMAlwaysOperator final : public CQMFlowOperator<0, EQMDataType::Boolean> {
 public:
  long DoOperation(long& position) override {
    SetFirstFlag(true);
    Result().SetBoolean(true);
    return Advance(position);
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    step.first = reinterpret_cast<std::byte*>(&FirstFlag());
    step.result = Result().Current();
    return maker.Use({&Run});
  }

 private:
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    *reinterpret_cast<bool*>(step->first) = true;
    BooleanAt(step->result) = 1;
    return GoOn(step + 1, frame, 0.0);
  }
};

class CQMDoOperator final : public CQMConditionOperator<> {
 public:
  long DoOperation(long& position) override {
    CQMOperator& opener = *GetTopLinkOperator();
    if (!opener.GetFirstFlag()) {
      opener.SetFirstFlag(true);
      return Advance(position);
    }
    bool const enters = Condition() == (GetSecondFlag() ? 1 : 0);
    return enters ? Advance(position) : Jump(position, GetSkipLink());
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!CQMStepMaker::FindBoolean(*this, 0, step.first)) return false;
    step.second = reinterpret_cast<std::byte*>(&GetTopLinkOperator()->FirstFlag());
    step.whenTrue = maker.StepAt(maker.Position() + 1);
    step.whenFalse = maker.StepAt(GetSkipLink());
    if (!GetSecondFlag()) return maker.Use({&RunDo<0>});
    // where no jump leads past the opener, the condition counts whenever control comes here
    if (GetExpression()->HasPassedByOpeners()) return maker.Use({&RunDo<1>});
    maker.JoinWithComparison(*this);
    return maker.Use({&RunBranch<1>});
  }

 private:
  template <std::uint8_t wanted>
  static SQMStep const* RunDo(SQMStep const* step, SQMFrame& frame, double) {
    bool& tests = *reinterpret_cast<bool*>(step->second);
    bool const enters = !tests || BooleanAt(step->first) == wanted;
    tests = true;
    return GoOn(enters ? step->whenTrue : step->whenFalse, frame, 0.0);
  }
};

// ---- select: its first flag tells that a case has matched, its countdown how many are still to be tested
// ----

class CQMSelectOperator final : public CQMFlowOperator<1> {
 public:
  long DoOperation(long& position) override {
    SetFirstFlag(false);
    SetCountdown(GetCaseCount());
    return Advance(position);
  }
};

class CQMCaseOperator final : public CQMFlowOperator<1> {
 public:
  long DoOperation(long& position) override {
    CQMOperator& select = *GetTopLinkOperator();
    if (!select.GetFirstFlag()) {
      if (Operand(0).CompareValue(select.GetOperandByIndex(0)) != 0) {
        select.SetCountdown(select.GetCountdown() - 1);
        return Jump(position, GetSkipLink());
      }
      select.SetFirstFlag(true);
    }
    return Advance(position);
  }
};

class CQMDefaultOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override {
    CQMOperator& select = *GetTopLinkOperator();
    if (!select.GetFirstFlag()) {
      // below zero after a jump past the select into its cases
      if (select.GetCountdown() > 0) return Jump(position, GetSkipLink());
      select.SetFirstFlag(true);
    }
    return Advance(position);
  }
};

class CQMEndOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override {
    CQMOperator& block = *GetTopLinkOperator();
    // a default that stands before other cases has its turn when all of them failed; an otherwise has not
    bool const returnsToDefault = block.GetId() == OpId::Select && !block.GetFirstFlag() &&
                                  block.GetFalseLink() != CQMOperator::kNoLink;
    if (!returnsToDefault) return Advance(position);
    // behind a default that stands last there are no cases to test: those that a break or a jump passed by
    // count as failed, or control would go round between the two for ever
    CQMOperator const& byDefault = *GetExpression()->GetOperatorByIndex(block.GetFalseLink());
    if (byDefault.GetSkipLink() == position) block.SetCountdown(0);
    return Jump(position, block.GetFalseLink());
  }
};

// ---- leaving ----

class CQMReturnOperator final : public CQMFlowOperator<1> {
 public:
  EQMDataType GetReturnType() override {
    CQMDatum const* const value = GetOperandByIndex(0);
    return value != nullptr ? value->GetType() : EQMDataType::Untyped;
  }
  long VerifyOperands() override {
    long const code = CQMFlowOperator<1>::VerifyOperands();
    if (code == Error::None) TakeType();
    return code;
  }
  long DoOperation(long&) override {
    TakeType();  // it may have become complex since
    if (Operand(0).IsString()) {
      Result().SetWholeText(Operand(0).GetText());
    } else {
      std::memcpy(Result().Current(), Operand(0).Current(),
                  static_cast<std::size_t>(Operand(0).GetElementSize()));
    }
    return Status::Stop;
  }

 private:
  void TakeType() { TypeResult(GetReturnType()); }
};

class CQMExitOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long&) override { return Status::Stop; }
};

class CQMSetErrorOperator final : public CQMFlowOperator<1> {
 public:
  long VerifyOperands() override {
    if (long const code = CQMFlowOperator<1>::VerifyOperands(); code != Error::None) return code;
    EQMDataType const type = VariableTypeFor(Operand(0).GetType());
    return type == EQMDataType::Number || type == EQMDataType::Complex ? Error::None : Error::NotANumber;
  }
  long DoOperation(long& position) override {
    long const code = TruncateToInt32(Real(0));
    GetExpression()->SetErrorState(code);
    ++position;
    return code;
  }
};

class CQMClearErrorOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override {
    GetExpression()->SetErrorState(Error::None);
    return Advance(position);
  }
};

}  // namespace qumel
