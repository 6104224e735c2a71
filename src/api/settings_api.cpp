// Exported settings: each pair of functions is one line.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

#define QM_SETTING(Type, Setter, Getter, member, missing)                                       \
  void Setter(Type value) {                                                                     \
    OnThread(false, [=](CQMThreadInfo& record) { return record.Set##member(value), true; });    \
  }                                                                                             \
  Type Getter(void) {                                                                           \
    return OnThread(Type{missing}, [](CQMThreadInfo& record) { return record.Get##member(); }); \
  }

QM_SETTING(char, qmSetAngleUnit, qmGetAngleUnit, AngleUnit, ' ')
QM_SETTING(char, qmSetOutputBase, qmGetOutputBase, NumberBase, ' ')
QM_SETTING(char, qmSetCoordinateFormat, qmGetCoordinateFormat, CoordinateFormat, ' ')
QM_SETTING(char, qmSetQuoteMark, qmGetQuoteMark, QuoteMark, ' ')
QM_SETTING(char, qmSetRadixMark, qmGetRadixMark, RadixMark, ' ')
QM_SETTING(char, qmSetBooleanTrue, qmGetBooleanTrue, BooleanTrue, ' ')
QM_SETTING(char, qmSetDefaultVariableScope, qmGetDefaultVariableScope, DefaultVariableScope, ' ')
QM_SETTING(int, qmSetFormattedResultPrecisionLimit, qmGetFormattedResultPrecisionLimit,
           FormattedResultPrecisionLimit, 0)
QM_SETTING(bool, qmSetAllowImpliedMult, qmGetAllowImpliedMult, AllowImpliedMult, false)
QM_SETTING(bool, qmSetAllowComplexResults, qmGetAllowComplexResults, AllowComplexResults, false)
QM_SETTING(bool, qmSetInvertArrayIndices, qmGetInvertArrayIndices, InvertArrayIndices, false)

void qmSetForceComplexResults(void) {
  OnThread(false, [](CQMThreadInfo& record) { return record.SetForceComplexResults(true), true; });
}
bool qmGetForceComplexResults(void) {
  return OnThread(false, [](CQMThreadInfo& record) { return record.GetForceComplexResults(); });
}
