// Words that change a setting of the context while an expression runs. What they change stays changed, also
// when the expression fails later on.
#pragma once

#include "base/conversions.h"
#include "base/letters.h"
#include "engine/call.h"
#include "engine/operator_context.h"
#include "operators/standalone_operator.h"

namespace qumel {

/** Calls one setter of the context with one value. */
template <auto setter, auto value>
class CQMModeOperator final : public CQMStandaloneOperator {
 public:
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    (call.Context().*setter)(value);
    return Status::Done;
  }
};

template <char unit>
using CQMAngleUnitWord = CQMModeOperator<&CQMOperatorContext::SetAngleUnit, unit>;
template <char format>
using CQMCoordinateWord = CQMModeOperator<&CQMOperatorContext::SetCoordinateFormat, format>;
template <char base>
using CQMNumberBaseWord = CQMModeOperator<&CQMOperatorContext::SetNumberBase, base>;

// each changes its own flag and leaves the other alone, on purpose

/** Digits behind the point of formatted results. */
class CQMPrecisionOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 1; }
  SQMWays GetWays() const override { return kWays<&Do>; }
  static long Do(CQMCall& call) {
    std::int32_t const digits = TruncateToInt32(call.Real(0));
    if (digits < 0) return Error::PrecisionIsNegative;
    call.Context().SetFormattedResultPrecisionLimit(digits);
    return Status::Done;
  }
};

}  // namespace qumel
