// The program of a compiled expression: a flat list of steps, made from its operators and refreshed when
// storage that it refers to moves or changes its type.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "base/data_type.h"
#include "engine/step.h"

namespace qumel {

class CQMDatum;
class CQMOperator;
class CQMOperatorContext;

/** The ways to run a program. */
enum class EQMWay : std::uint8_t {
  StepByStep,  // one operator after the other, each result stored: what tests compare the next way with
  Joined,      // neighbouring steps hand values on
  Complex,     // as the first, with complex numbers
};

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

/** Where the value of a literal or a result stands that no datum holds any more. */
union SQMSlot {
  double number;
  std::byte boolean;
  std::byte* element;
};

/** What an operator is given to make its step with. */
class CQMStepMaker {
 public:
  /** slots has room for the values of a detached program, and is null for others. */
  CQMStepMaker(std::span<CQMOperator* const> operators, std::vector<SQMStep>& steps,
               CQMExpression const& expression, double const& toRadians, EQMWay way,
               std::vector<SQMSlot>* slots = nullptr);

  /** Returns whether every step works on values at fixed addresses. */
  bool MakeAll();

  // ---- operands and results, of the operator whose step is made ----
  /** Whether operand index is a number, and where; of a number that the step before computes, Carried if
   * mayCarry. */
  bool FindNumber(long index, bool mayCarry, SQMStepOperand& operand);
  /** Whether operand index is a boolean, and where. */
  bool FindBoolean(long index, std::byte*& address);
  /** Whether the result is a number or a boolean of its own, and where. */
  bool FindNumberResult(std::byte*& address) { return FindResult(EQMDataType::Number, address); }
  bool FindBooleanResult(std::byte*& address) { return FindResult(EQMDataType::Boolean, address); }
  /** What opener remembers during a run; a program that asks for it cannot be detached. */
  SQMBlock* PlaceBlock(CQMOperator const& opener);
  /** The value of datum, which is a literal or the result of an operator, or belongs to a variable. */
  std::byte* PlaceOf(CQMDatum& datum);
  /** Whether some step refers to what only its operators hold. */
  bool NeedsObjects() const { return m_needsObjects; }
  /** Whether the program is to hold all values itself. */
  bool IsDetached() const { return m_slots != nullptr; }
  SQMStep const* StepAt(long position) const { return m_steps.data() + position; }
  long Position() const { return m_position; }
  CQMOperatorContext const& GetContext() const;
  /** The angle factor as it was when the run began. */
  std::byte* FirstAngleFactor() const {
    return reinterpret_cast<std::byte*>(const_cast<double*>(&m_toRadians));
  }

  // ---- the step ----
  /** Sets its functions. */
  bool Use(SQMStepFunctions const& functions);
  /** Lets the comparison before do the branch that is being made, where its outcome serves nothing else. */
  void JoinWithComparison();

 private:
  CQMOperator& Current() const { return *m_operators[static_cast<std::size_t>(m_position)]; }
  bool FindResult(EQMDataType type, std::byte*& address);
  bool IsResultOfStepBefore(CQMDatum const& operand) const;
  SQMSlot& SlotOf(CQMDatum& datum);
  SQMSlot& NextSlot();

  std::span<CQMOperator* const> m_operators;
  std::vector<SQMStep>& m_steps;
  std::vector<SQMSlot>* m_slots;
  CQMExpression const& m_expression;
  double const& m_toRadians;
  EQMWay m_way;
  long m_position = 0;
  bool m_takesCarried = false;
  bool m_needsObjects = false;
  SQMStepFunctions m_before;   // of the step before
  SQMStepFunctions m_current;  // of the step that is being made
};

class CQMProgram {
 public:
  /** Makes the steps for operators, which must outlive the program. */
  void Make(std::span<CQMOperator* const> operators, CQMExpression& expression, EQMWay way);
  void Clear();
  /** Whether every step works on values at fixed addresses: then a run can neither call the host nor throw.
   */
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

  std::span<CQMOperator* const> m_operators;
  CQMExpression* m_expression = nullptr;
  EQMWay m_way = EQMWay::StepByStep;
  bool m_isQuiet = false;
  std::uint32_t m_epoch = 0;
  double m_toRadians = 1.0;  // when the run began
  std::vector<SQMStep> m_steps;
};

}  // namespace qumel
