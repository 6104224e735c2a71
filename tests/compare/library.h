// A library under comparison: the exported functions that the programs use, found in a shared object at run
// time.
#pragma once

#include <string>

#include "qumel/qumel.h"

namespace qumel::compare {

using Handle = unsigned long long;

// clang-format off
#define QUMEL_COMPARED_FUNCTIONS(X) \
  X(qmInitialize) X(qmGetQumelObjectCount) X(qmClearContext) X(qmSetContext) \
  X(qmCreatePublicContext) X(qmDestroyPublicContext) X(qmCreatePrivateContext) X(qmDestroyPrivateContext) \
  X(qmEvalExpStr) X(qmEvalExpStrToNum) X(qmEvalExpStrToComp) X(qmEvalExpStrToBool) X(qmEvalExpStrToStr) \
  X(qmParseExp) X(qmDeleteExp) X(qmEvalExpHndl) X(qmEvalExpHndlToNum) X(qmEvalExpHndlToComp) \
  X(qmEvalExpHndlToBool) X(qmEvalExpHndlToStr) \
  X(qmCheckExp) X(qmAnnotateExp) X(qmAnnotateParsedExp) X(qmRevertParsedExp) \
  X(qmGetLastResultType) X(qmGetLastNumResult) X(qmGetLastImagResult) X(qmGetLastBoolResult) \
  X(qmGetLastStrResult) X(qmGetLastParseIndex) \
  X(qmSetRadixMark) X(qmSetQuoteMark) X(qmSetBooleanTrue) X(qmSetAllowImpliedMult) \
  X(qmSetInvertArrayIndices) X(qmSetAngleUnit) X(qmSetOutputBase) X(qmSetCoordinateFormat) \
  X(qmSetDefaultVariableScope) X(qmSetFormattedResultPrecisionLimit) X(qmSetAllowComplexResults) \
  X(qmSetForceComplexResults) \
  X(qmGetRadixMark) X(qmGetQuoteMark) X(qmGetBooleanTrue) X(qmGetAllowImpliedMult) \
  X(qmGetInvertArrayIndices) X(qmGetAngleUnit) X(qmGetOutputBase) X(qmGetCoordinateFormat) \
  X(qmGetDefaultVariableScope) X(qmGetFormattedResultPrecisionLimit) X(qmGetAllowComplexResults) \
  X(qmGetForceComplexResults) \
  X(qmGetLastErrorID) X(qmGetLastErrorText) X(qmClearLastError) X(qmSetLastError) X(qmDefineError) \
  X(qmSetErrorCallback) \
  X(qmIsOp) X(qmIsSymbol) X(qmIsVar) X(qmIsArray) X(qmGetVarType) X(qmDeleteVar) \
  X(qmGetVarHandle) X(qmReleaseVarHandle) X(qmGetVarTypeByHandle) \
  X(qmCreateNumVar) X(qmLinkNumVar) X(qmSetNumVar) X(qmSetNumVarByHandle) X(qmGetNumVarValue) \
  X(qmGetNumVarValueByHandle) \
  X(qmCreateComplexVar) X(qmLinkComplexVar) X(qmSetComplexVar) X(qmSetImagVar) X(qmGetComplexVarValue) \
  X(qmCreateBoolVar) X(qmLinkBoolVar) X(qmSetBoolVar) X(qmGetBoolVarValue) \
  X(qmCreateStrVar) X(qmLinkStrVar) X(qmSetStrVar) X(qmGetStrVarValue) \
  X(qmCreateNumArray) X(qmLinkNumArray) X(qmSetNumArrayElement) X(qmGetNumArrayElement) \
  X(qmCreateComplexArray) X(qmLinkComplexArray) X(qmSetComplexArrayElement) X(qmGetComplexArrayElement) \
  X(qmCreateBoolArray) X(qmLinkBoolArray) X(qmSetBoolArrayElement) X(qmGetBoolArrayElement) \
  X(qmCreateStrArray) X(qmLinkStrArray) X(qmSetStrArrayElement) X(qmGetStrArrayElement) \
  X(qmDefineExpOp) X(qmDefineExpOpStr) X(qmLinkCallbackOp) X(qmDeleteOp) \
  X(qmGetParmCount) X(qmGetParmSig) X(qmGetParmType) X(qmGetNumParm) X(qmGetRealParm) X(qmGetImagParm) \
  X(qmGetBoolParm) X(qmGetStrParm) \
  X(qmSetNumResult) X(qmSetRealResult) X(qmSetImagResult) X(qmSetBoolResult) X(qmSetStrResult)
// clang-format on

/** The functions of one library, under their own names. */
struct Library {
#define QUMEL_COMPARED_MEMBER(function) decltype(&::function) function = nullptr;
  QUMEL_COMPARED_FUNCTIONS(QUMEL_COMPARED_MEMBER)
#undef QUMEL_COMPARED_MEMBER
};

/** Loads the shared object at path for the rest of the process. Throws std::runtime_error when it cannot be
 * loaded or lacks a function. */
Library LoadLibrary(std::string const& path);

}  // namespace qumel::compare
