// A program that holds all its values itself, apart from those of variables: what a parsed expression on
// numbers comes down to.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "base/items.h"
#include "engine/program.h"
#include "engine/result_view.h"
#include "values/datum.h"

namespace qumel {

class CQMDetachedProgram {
 public:
  /** Null where a step needs an operator or a datum, or where result is no number or boolean of its own or of
   * a variable. */
  static std::unique_ptr<CQMDetachedProgram> Make(std::span<CQMOperator* const> operators,
                                                  CQMExpression& expression, CQMDatum& result);
  /** Remembers what the steps take for granted of the names in items, which are bound. */
  void Sign(CQMItemList const& items) { m_signature = SignatureOf(items); }

  /** Whether the storage that the steps refer to is where it was. */
  bool IsCurrent() const { return m_epoch == CQMDatum::StorageEpoch(); }
  /** Whether it is, although an epoch has passed: that may have been the doing of other storage. */
  bool RemainsCurrent(CQMItemList const& items);
  /** Whether the result is a number; otherwise it is a boolean. */
  bool HasNumber() const { return m_type == EQMDataType::Number; }
  double GetNumber() const { return NumberAt(m_result); }
  SQMResultView GetResult() const;

  /** Runs all steps, and returns why they ended before the last one if they did. A run can neither call the
   * host nor throw, so that there is only one at a time. */
  long Run() {
    SQMStep const* step = m_steps.data();
#if QUMEL_STEPS_RETURN
    while (step != nullptr) step = step->function(step, m_frame, m_frame.carried);
#else
    step->function(step, m_frame, 0.0);
#endif
    return m_frame.status == Error::None ? static_cast<long>(Error::None) : TakeStatus();
  }
  /** Whose program it is. */
  CQMExpression& GetExpression() const { return *m_frame.expression; }
  /** The position of the operator that gave the status. */
  long EndPosition() const { return m_frame.position; }

  /** Hands the values of the last run to operators that were compiled anew. */
  void HandOver(std::span<CQMOperator* const> operators, CQMExpression const& expression);

 private:
  CQMDetachedProgram() = default;
  long TakeStatus() { return std::exchange(m_frame.status, Error::None); }
  static std::uint64_t SignatureOf(CQMItemList const& items);

  SQMFrame m_frame{nullptr};
  std::vector<SQMStep> m_steps;
  std::vector<SQMSlot> m_slots;
  std::byte* m_result = nullptr;
  EQMDataType m_type = EQMDataType::Number;
  std::uint32_t m_epoch = 0;
  std::uint64_t m_signature = 0;  // of the names' types and storage
};

}  // namespace qumel
