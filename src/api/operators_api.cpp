// Exported functions by which hosts define operators, and by which their callbacks read parameters and set
// results.
#include "api/guard.h"
#include "context/operator_definition.h"
#include "operators/defined_operators.h"
#include "qumel/qumel.h"

using namespace qumel;

namespace {

/** The code of call on the definer of the current context; 0 without a context. */
template <class Call>
long OnDefiner(Call call) noexcept {
  return OnContext(0L, [&](CQMExecutor& context) {
    CQMOperatorDefiner definer(context);
    long const code = Guarded<long>(Error::OutOfMemory, [&] { return call(definer); });
    if (code == Error::OutOfMemory) context.SetLastError(code);
    return code;
  });
}

/** The value of call for the operator that answers for place. */
template <class Value, class Call>
Value OnAnswering(CQMCallbackPlace& place, Value missing, Call const& call) {
  CQMCallbackOperator& answering = *place.Answering();
  try {
    return call(answering);
  } catch (...) {
    answering.NoteOutOfMemory();
    return missing;
  }
}

/** The slow path of OnOperator. */
template <class Value, class Call>
[[gnu::noinline]] Value OnOperatorSlowly(Handle handle, Value missing, Call call) noexcept {
  return Guarded<Value>(missing, [&] {
    CQMContextUse const use(handle, CQMContextUse::EQMNeed::None);
    if (use.GetObject() == nullptr) return missing;
    auto* const place = use.GetExecutor()->GetGate().Find<CQMCallbackPlace>(handle);
    return place != nullptr ? OnAnswering(*place, missing, call) : missing;
  });
}

/** Runs call on the callback operator that handle names, in its context; missing for any other handle. A
 * callback asks while its thread is in that context. */
template <class Value, class Call>
Value OnOperator(Handle handle, Value missing, Call call) noexcept {
  CQMContextGate const* const used = t_caller->used.load(std::memory_order_relaxed);
  CQMCallbackPlace* place = nullptr;
  if (used != nullptr && used->FindAgain(handle, place)) [[likely]]
    return OnAnswering(*place, missing, call);
  return OnOperatorSlowly(handle, missing, call);
}

}  // namespace

// ---- definition ----
long qmDefineExpOp(char scope, char const* name, char const* fix, char const* returns, char const* parameters,
                   char const* precedence, char const* text) {
  return OnDefiner([&](CQMOperatorDefiner& definer) {
    return definer.Define({scope, name, fix, returns, parameters, precedence}, text);
  });
}
long qmDefineExpOpStr(char scope, char const* name, char const* text) {
  return OnDefiner([&](CQMOperatorDefiner& definer) { return definer.DefineBody(scope, name, text); });
}
long qmReadExpOp(char scope, char const* name, char const* fix, char const* returns, char const* parameters,
                 char const* precedence, char const* path) {
  return OnDefiner([&](CQMOperatorDefiner& definer) {
    return definer.Read({scope, name, fix, returns, parameters, precedence}, path);
  });
}
long qmReadExpOpStr(char scope, char const* name, char const* path) {
  return OnDefiner([&](CQMOperatorDefiner& definer) { return definer.ReadBody(scope, name, path); });
}
long qmLinkCallbackOp(char scope, char const* name, char const* fix, char const* returns,
                      char const* parameters, char const* precedence, OperatorCallback callback) {
  return OnDefiner([&](CQMOperatorDefiner& definer) {
    return definer.Attach({scope, name, fix, returns, parameters, precedence}, callback);
  });
}
long qmDeleteOp(char scope, char const* name) {
  return OnDefiner([&](CQMOperatorDefiner& definer) { return definer.Delete(scope, name); });
}

// ---- callback access: each function has a name for hosts and a name among the utilities ----
#define QM_ACCESS(Type, name, utility, missing, call, ...)                                              \
  Type name(__VA_ARGS__) {                                                                              \
    return OnOperator(handle, Type{missing}, [=](CQMCallbackOperator& op) -> Type { return op.call; }); \
  }                                                                                                     \
  Type utility(__VA_ARGS__) {                                                                           \
    return OnOperator(handle, Type{missing}, [=](CQMCallbackOperator& op) -> Type { return op.call; }); \
  }
using ConstText = char const*;
QM_ACCESS(long, qmGetParmCount, QMU_GetParameterCount, 0, GetParameterCount(), Handle handle)
QM_ACCESS(ConstText, qmGetParmSig, QMU_GetParameterSignature, nullptr, GetParameterSignature(), Handle handle)
QM_ACCESS(char, qmGetParmType, QMU_GetParameterType, '\0', GetParameterType(index), Handle handle, long index)
QM_ACCESS(double, qmGetNumParm, QMU_GetNumericParameter, 0.0, GetRealParameter(index), Handle handle,
          long index)
QM_ACCESS(double, qmGetRealParm, QMU_GetRealParameter, 0.0, GetRealParameter(index), Handle handle,
          long index)
QM_ACCESS(double, qmGetImagParm, QMU_GetImaginaryParameter, 0.0, GetImaginaryParameter(index), Handle handle,
          long index)
QM_ACCESS(bool, qmGetBoolParm, QMU_GetBooleanParameter, false, GetBooleanParameter(index), Handle handle,
          long index)
QM_ACCESS(ConstText, qmGetStrParm, QMU_GetStringParameter, nullptr, GetStringParameter(index), Handle handle,
          long index)
QM_ACCESS(long, qmSetNumResult, QMU_SetNumericResult, Error::NotFound, SetNumericResult(value), Handle handle,
          double value)
QM_ACCESS(long, qmSetRealResult, QMU_SetRealResult, Error::NotFound, SetRealResult(value), Handle handle,
          double value)
QM_ACCESS(long, qmSetImagResult, QMU_SetImaginaryResult, Error::NotFound, SetImaginaryResult(value),
          Handle handle, double value)
QM_ACCESS(long, qmSetBoolResult, QMU_SetBooleanResult, Error::NotFound, SetBooleanResult(value),
          Handle handle, bool value)
QM_ACCESS(long, qmSetStrResult, QMU_SetStringResult, Error::NotFound, SetStringResult(value), Handle handle,
          char const* value)
#undef QM_ACCESS
