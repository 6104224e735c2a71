// Operators that give a boolean: on booleans, and by comparing two values of one kind. None stops early: all
// operands have been computed by then.
#pragma once

#include "engine/numeric_steps.h"
#include "rules/logic.h"

namespace qumel {

class CQMBooleanResultOperator : public CQMOperator {
 public:
  EQMDataType GetReturnType() override { return EQMDataType::Boolean; }

 protected:
  static long Finish(CQMCall const& call, bool value) {
    call.Result().SetBoolean(value);
    return Status::Done;
  }
  /** Any kind of operand will do as long as all are of one kind. */
  long CheckSameClass() {
    if (long const code = CheckOperands(); code != Error::None) return code;
    for (long i = 1; i < GetOperandCount(); ++i) {
      if (GetTypeClass(Operand(i).GetType()) != GetTypeClass(Operand(i - 1).GetType()))
        return Error::TypeMismatch;
    }
    return Error::None;
  }
};

// ---- logical ----

using BytesRule = bool (*)(std::uint8_t x, std::uint8_t y);

template <BytesRule rule>
class CQMLogicalOperator final : public CQMBooleanResultOperator {
 public:
  long GetOperandsNeeded() override { return 2; }
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    return Finish(call, rule(call.Operand(0).BooleanByte(), call.Operand(1).BooleanByte()));
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if (!maker.FindBooleanResult(step.result) || !maker.FindBoolean(0, step.first) ||
        !maker.FindBoolean(1, step.second)) {
      return false;
    }
    return maker.Use({&Run});
  }

 private:
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    BooleanAt(step->result) = rule(BooleanAt(step->first), BooleanAt(step->second)) ? 1 : 0;
    return GoOn(step + 1, frame, 0.0);
  }
};

/** Takes an operand of any kind and looks at the first byte of its value. */
class CQMNotOperator final : public CQMBooleanResultOperator {
 public:
  long GetOperandsNeeded() override { return 1; }
  long VerifyOperands() override { return CheckSameClass(); }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    return maker.FindBooleanResult(step.result) && maker.FindBoolean(0, step.first) && maker.Use({&Run});
  }
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) { return Finish(call, call.Operand(0).BooleanByte() == kFalseByte); }

 private:
  static SQMStep const* Run(SQMStep const* step, SQMFrame& frame, double) {
    BooleanAt(step->result) = BooleanAt(step->first) == kFalseByte ? 1 : 0;
    return GoOn(step + 1, frame, 0.0);
  }
};

// ---- relational ----

using ComparisonRule = bool (*)(long comparison);

/** Texts compare by any number, so rules go by the sign. Complex evaluation compares just the same. */
template <ComparisonRule rule>
class CQMRelationalOperator final : public CQMBooleanResultOperator {
 public:
  long GetOperandsNeeded() override { return 2; }
  long VerifyOperands() override { return CheckSameClass(); }
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) { return Finish(call, rule(call.Operand(0).CompareValue(&call.Operand(1)))); }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static bool Of(double x, double y) { return rule(ComparisonOf(x, y)); }
    };
    return MakeComparisonStep<SQMWork>(maker, step);
  }
};

}  // namespace qumel
