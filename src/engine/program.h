// The program of a compiled expression: a flat list of steps, made from its operators and refreshed when
// storage that it refers to moves or changes its type.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/step.h"

namespace qumel {

class CQMDatum;
class CQMOperator;
class CQMOperatorContext;

/** How far steps may be joined. Without joining, a program does one operator after the other and stores every
 * result; that is what tests compare the other form with. */
enum class EQMJoining : std::uint8_t { None, Carrying };

/** The functions that do one step: storing its result; only handing it on to the next step; and, of
 * comparisons, going on by the outcome. Null where there is none. */
struct SQMStepFunctions {
  StepFunction storing = nullptr;
  StepFunction handingOn = nullptr;
  StepFunction branching = nullptr;
};

/** An operand as a step reads it. */
struct SQMStepOperand {
  std::byte* address;
  EQMSource source;
};

/** What an operator is given to make its step with. */
class CQMStepMaker {
 public:
  CQMStepMaker(std::span<std::unique_ptr<CQMOperator> const> operators, std::vector<SQMStep>& steps,
               CQMOperatorContext const& context, double const& toRadians, EQMJoining joining);

  /** Returns whether every operator has made a step of its own. */
  bool MakeAll();

  /** Whether operand index of op is a number, and where; of a number that the step before computes, Carried
   * if mayCarry. */
  bool FindNumber(CQMOperator const& op, long index, bool mayCarry, SQMStepOperand& operand);
  /** Whether operand index of op is a boolean, and where. */
  static bool FindBoolean(CQMOperator const& op, long index, std::byte*& address);
  /** Whether the result of op is a number or boolean of its own. */
  static bool HasNumberResult(CQMOperator const& op);
  static bool HasBooleanResult(CQMOperator const& op);
  /** Sets the functions of the step that is being made. */
  bool Use(SQMStepFunctions const& functions);
  /** Lets the comparison before do the branch that is being made, where its outcome serves nothing else. */
  void JoinWithComparison(CQMOperator const& op);
  SQMStep const* StepAt(long position) const;
  long Position() const { return m_position; }
  CQMOperatorContext const& GetContext() const { return m_context; }
  /** The angle factor as it was when the run began. */
  std::byte* FirstAngleFactor() const {
    return reinterpret_cast<std::byte*>(const_cast<double*>(&m_toRadians));
  }

 private:
  bool IsResultOfStepBefore(CQMDatum const& operand) const;

  std::span<std::unique_ptr<CQMOperator> const> m_operators;
  std::vector<SQMStep>& m_steps;
  CQMOperatorContext const& m_context;
  double const& m_toRadians;
  EQMJoining m_joining;
  long m_position = 0;
  bool m_takesCarried = false;
  SQMStepFunctions m_before;   // of the step before
  SQMStepFunctions m_current;  // of the step that is being made
};

class CQMProgram {
 public:
  /** Makes the steps for operators, which must outlive the program. */
  void Make(std::span<std::unique_ptr<CQMOperator> const> operators, CQMOperatorContext const& context,
            EQMJoining joining);
  void Clear();
  std::span<std::unique_ptr<CQMOperator> const> GetOperators() const { return m_operators; }
  /** Whether every step does its work without an operator: then a run can neither call the host nor throw. */
  bool IsQuiet() const { return m_isQuiet; }

  /** Runs from position on until the end or a status. Returns the status; position becomes that of the
   * operator that ended the run, or of the one to go on with. */
  long Run(long& position);

  /** Makes the steps anew if storage has moved since they were made. */
  void Refresh() {
    if (m_epoch != CurrentEpoch()) Remake();
  }

 private:
  static std::uint32_t CurrentEpoch();
  void Remake();

  std::span<std::unique_ptr<CQMOperator> const> m_operators;
  CQMOperatorContext const* m_context = nullptr;
  EQMJoining m_joining = EQMJoining::None;
  bool m_isQuiet = false;
  std::uint32_t m_epoch = 0;
  double m_toRadians = 1.0;  // when the run began
  std::vector<SQMStep> m_steps;
};

}  // namespace qumel
