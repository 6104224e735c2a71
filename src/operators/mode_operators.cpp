// Words that change a setting of the context while an expression runs. What they change stays changed, also
// when the expression fails later on. Without a context they do nothing.
#include "base/conversions.h"
#include "base/letters.h"
#include "engine/operator_context.h"
#include "operators/operator_tables.h"
#include "operators/standalone_operator.h"

namespace qumel {

namespace {

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

using CQMRadiansOperator = CQMAngleUnitWord<AngleUnit::kRadians>;
using CQMDegreesOperator = CQMAngleUnitWord<AngleUnit::kDegrees>;
using CQMGradsOperator = CQMAngleUnitWord<AngleUnit::kGrads>;
using CQMMilliclesOperator = CQMAngleUnitWord<AngleUnit::kMillicles>;
using CQMPolarOperator = CQMCoordinateWord<CoordinateFormat::kPolar>;
using CQMRectOperator = CQMCoordinateWord<CoordinateFormat::kRectangular>;
using CQMHexOperator = CQMNumberBaseWord<NumberBase::kHexadecimal>;
using CQMDuodecOperator = CQMNumberBaseWord<NumberBase::kDuodecimal>;
using CQMDecimalOperator = CQMNumberBaseWord<NumberBase::kDecimal>;
using CQMOctalOperator = CQMNumberBaseWord<NumberBase::kOctal>;
using CQMBinaryOperator = CQMNumberBaseWord<NumberBase::kBinary>;
// each changes its own flag and leaves the other alone, on purpose
using CQMRealOnlyOperator = CQMModeOperator<&CQMOperatorContext::SetAllowComplexFlag, false>;
using CQMAllowComplexOperator = CQMModeOperator<&CQMOperatorContext::SetAllowComplexFlag, true>;
using CQMForceComplexOperator = CQMModeOperator<&CQMOperatorContext::SetForceComplexFlag, true>;

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

constexpr SQMMakerRow kModeOperators[] = {
    {OpId::Radians, &MakeOperator<CQMRadiansOperator>},
    {OpId::Degrees, &MakeOperator<CQMDegreesOperator>},
    {OpId::Grads, &MakeOperator<CQMGradsOperator>},
    {OpId::Millicles, &MakeOperator<CQMMilliclesOperator>},
    {OpId::Polar, &MakeOperator<CQMPolarOperator>},
    {OpId::Rect, &MakeOperator<CQMRectOperator>},
    {OpId::Hex, &MakeOperator<CQMHexOperator>},
    {OpId::Duodec, &MakeOperator<CQMDuodecOperator>},
    {OpId::Decimal, &MakeOperator<CQMDecimalOperator>},
    {OpId::Octal, &MakeOperator<CQMOctalOperator>},
    {OpId::Binary, &MakeOperator<CQMBinaryOperator>},
    {OpId::Precision, &MakeOperator<CQMPrecisionOperator>},
    {OpId::RealOnly, &MakeOperator<CQMRealOnlyOperator>},
    {OpId::AllowComplex, &MakeOperator<CQMAllowComplexOperator>},
    {OpId::ForceComplex, &MakeOperator<CQMForceComplexOperator>},
};

}  // namespace

MakerTable ModeOperators() { return kModeOperators; }

}  // namespace qumel
