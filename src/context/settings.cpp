// Accepted values, angle factors, and what contexts copy.
#include "context/settings.h"

#include "context/executor.h"

namespace qumel {

namespace {

using CopySetting = void (*)(SQMSettings const& from, CQMExecutor& to);

constexpr unsigned kPrivate = static_cast<unsigned>(EQMContextKind::Private);
constexpr unsigned kNotPublic = static_cast<unsigned>(EQMContextKind::Primary) | kPrivate;
constexpr unsigned kAll = static_cast<unsigned>(EQMContextKind::Public) | kNotPublic;

struct SQMCopyRow {
  unsigned kinds;  // the kinds of contexts that copy the setting
  CopySetting copy;
};

/** The one setter clears what the other sets: force stands behind allow. */
constexpr SQMCopyRow kCopyRows[] = {
    {kAll, [](SQMSettings const& from,
              CQMExecutor& to) { to.SetAllowImpliedMult(from.allowImpliedMultiplication); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetRadixMark(from.radixMark); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetQuoteMark(from.quoteMark); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetBooleanTrue(from.booleanTrue); }},
    {kNotPublic,
     [](SQMSettings const& from, CQMExecutor& to) { to.SetInvertArrayIndices(from.invertArrayIndices); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetNumberBase(from.numberBase); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetAngleUnit(from.angleUnit); }},
    {kAll, [](SQMSettings const& from, CQMExecutor& to) { to.SetCoordinateFormat(from.coordinateFormat); }},
    {kAll,
     [](SQMSettings const& from, CQMExecutor& to) { to.SetAllowComplexResults(from.allowComplexResults); }},
    {kPrivate,
     [](SQMSettings const& from, CQMExecutor& to) { to.SetForceComplexResults(from.forceComplexResults); }},
    {kNotPublic,
     [](SQMSettings const& from, CQMExecutor& to) { to.SetDefaultVariableScope(from.defaultVariableScope); }},
    {kPrivate, [](SQMSettings const& from,
                  CQMExecutor& to) { to.SetFormattedResultPrecisionLimit(from.precisionLimit); }},
};

}  // namespace

void CopySettings(SQMSettings const& from, EQMContextKind kind, CQMExecutor& to) {
  for (SQMCopyRow const& row : kCopyRows) {
    if ((row.kinds & static_cast<unsigned>(kind)) != 0) row.copy(from, to);
  }
}

bool StoreAccepted(CQMSetting<char>& setting, std::string_view accepted, char value) {
  if (accepted.find(value) == std::string_view::npos) return false;
  setting = value;
  return true;
}

SQMAngleFactors AngleFactorsOf(char unit) {
  switch (unit) {
    case AngleUnit::kDegrees: return {0.0174532925199, 57.2957795131};
    case AngleUnit::kGrads: return {0.015707963268, 63.6619772368};
    case AngleUnit::kMillicles: return {0.006283185307179587, 159.15494309189535};
    default: return {1.0, 1.0};
  }
}

}  // namespace qumel
