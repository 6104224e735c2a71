// The array index: makes an array at its first use, and picks an element afterwards.
#pragma once

#include <memory>
#include <span>
#include <utility>

#include "engine/call.h"
#include "engine/operator.h"
#include "engine/program.h"

namespace qumel {

/** Operand 0 is the array, the others are numbers. The result is a proxy of the array, with a current element
 * of its own, so that several index expressions on one array do not disturb each other. */
class CQMArrayIndexOperator final : public CQMOperator {
 public:
  static constexpr long kMostIndices = 7;

  long GetOperandsNeeded() override { return 2; }
  long GetOperandsMaximum() override { return 1 + kMostIndices; }

  CQMDatum* SetResultOperand(CQMArena& arena, CQMDatum* datum) override {
    CQMDatum* const array = GetOperandCount() > 0 ? GetOperandList()[0] : nullptr;
    if (array == nullptr) return CQMOperator::SetResultOperand(arena, datum);
    auto* const element = arena.Make<CQMDatum>(*array);
    element->ViewOneElement();
    return KeepResultOperand(element);
  }

  long VerifyOperands() override;
  SQMWays GetWays() const override { return kWays<&Do>; }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override;

 private:
  static long Do(CQMCall& call);
  template <EQMSource source>
  static SQMStep const* Select(SQMStep const* step, SQMFrame& frame, double carried);
  template <EQMSource source>
  static SQMStep const* SelectInSlot(SQMStep const* step, SQMFrame& frame, double carried);
  CQMDatum& Array() const { return Operand(0).FinalTarget(); }
  static long Dimension(CQMDatum& array, CQMOperatorContext const& context, std::span<double const> extents);

  bool m_hasAskedAgain = false;
};

}  // namespace qumel
