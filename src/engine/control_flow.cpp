// The words of control flow at run time: they move the position along the links that linking has set.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/conversions.h"
#include "engine/declarations.h"
#include "engine/expression.h"
#include "engine/structural_tables.h"

namespace qumel {

namespace {

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

template <std::uint8_t wanted>
class CQMBranchOperator final : public CQMConditionOperator<EQMDataType::Boolean> {
 public:
  long DoOperation(long& position) override {
    if (Condition() == wanted) return Jump(position, GetTrueLink());
    return Jump(position, GetFalseLink() >= 1 ? GetFalseLink() : GetSkipLink());
  }
};
using CQMIfOperator = CQMBranchOperator<1>;
using CQMUnlessOperator = CQMBranchOperator<0>;

// ---- jumps ----

class CQMSkipOperator : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override { return Jump(position, GetSkipLink()); }
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
};

class CQMGotoOperator final : public CQMLabelWord {
 public:
  long VerifyOperands() override {
    if (long const code = CQMLabelWord::VerifyOperands(); code != Error::None) return code;
    return Operand(0).GetType() == EQMDataType::Label ? Error::None : Error::NoGotoTarget;
  }
  long DoOperation(long& position) override { return Jump(position, GetSkipLink()); }
};

// ---- loops: the first flag of the opener tells "do" to test its condition ----

template <bool testsAtOnce>
class CQMLoopOperator final : public CQMFlowOperator<0> {
 public:
  long DoOperation(long& position) override {
    SetFirstFlag(testsAtOnce);
    return Advance(position);
  }
};
using CQMWhileOperator = CQMLoopOperator<true>;
using CQMUntilOperator = CQMLoopOperator<false>;

class CQMAlwaysOperator final : public CQMFlowOperator<0, EQMDataType::Boolean> {
 public:
  long DoOperation(long& position) override {
    SetFirstFlag(true);
    Result().SetBoolean(true);
    return Advance(position);
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

constexpr SQMMakerRow kControlFlowOperators[] = {
    {OpId::If, &MakeOperator<CQMIfOperator>},
    {OpId::Unless, &MakeOperator<CQMUnlessOperator>},
    {OpId::Then, &MakeOperator<CQMThenOperator>},
    {OpId::Else, &MakeOperator<CQMElseOperator>},
    {OpId::While, &MakeOperator<CQMWhileOperator>},
    {OpId::Until, &MakeOperator<CQMUntilOperator>},
    {OpId::Always, &MakeOperator<CQMAlwaysOperator>},
    {OpId::Do, &MakeOperator<CQMDoOperator>},
    {OpId::End, &MakeOperator<CQMEndOperator>},
    {OpId::Next, &MakeOperator<CQMNextOperator>},
    {OpId::Goto, &MakeOperator<CQMGotoOperator>},
    {OpId::LabelMark, &MakeOperator<CQMLabelOperator>},
    {OpId::Select, &MakeOperator<CQMSelectOperator>},
    {OpId::Case, &MakeOperator<CQMCaseOperator>},
    {OpId::Default, &MakeOperator<CQMDefaultOperator>},
    {OpId::When, &MakeOperator<CQMSelectOperator>},
    {OpId::Is, &MakeOperator<CQMCaseOperator>},
    {OpId::Otherwise, &MakeOperator<CQMDefaultOperator>},
    {OpId::Break, &MakeOperator<CQMBreakOperator>},
    {OpId::Continue, &MakeOperator<CQMContinueOperator>},
    {OpId::Return, &MakeOperator<CQMReturnOperator>},
    {OpId::Exit, &MakeOperator<CQMExitOperator>},
    {OpId::SetError, &MakeOperator<CQMSetErrorOperator>},
    {OpId::ClearError, &MakeOperator<CQMClearErrorOperator>},
};

}  // namespace

MakerTable ControlFlowOperators() { return kControlFlowOperators; }

}  // namespace qumel
