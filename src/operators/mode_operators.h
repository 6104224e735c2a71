// Words that change a setting of the context while an expression runs. What they change stays changed, also
// when the expression fails later on. Without a context they do nothing.
#pragma once

#include "base/conversions.h"
#include "base/letters.h"
#include "engine/operator_context.h"
#include "operators/standalone_operator.h"

namespace qumel {

/** Calls one setter of the context with one value. */
template <auto setter, auto value>
class CQMModeOperator final : public CQMStandaloneOperator {
 public:
  long DoOperation(long& position) override {
    if (GetContext() != nullptr) (GetContext()->*setter)(value);
    return Advance(position);
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
  long DoOperation(long& position) override {
    std::int32_t const digits = TruncateToInt32(Real(0));
    if (digits < 0) return Error::PrecisionIsNegative;
    if (GetContext() != nullptr) GetContext()->SetFormattedResultPrecisionLimit(digits);
    return Advance(position);
  }
};

}  // namespace qumel
