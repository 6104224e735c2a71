// Exported functions on the variables of hosts, each of which is an operation of CQMVariables on one kind of
// value.
#include "api/guard.h"
#include "context/variables.h"
#include "qumel/qumel.h"

using namespace qumel;

namespace {

/** Runs call on the variables of the calling thread's current context; failure without one. */
template <class Value, class Call>
Value OnVariables(Value failure, Call call) noexcept {
  return OnContext(failure, [=](CQMExecutor& context) { return call(CQMVariables(context)); });
}

template <class Access>
bool SetVariable(char scope, char const* name, typename Access::Value value) noexcept {
  return OnContext(
      false,
      [](CQMExecutor& context, char inScope, char const* withName, typename Access::Value newValue) {
        return CQMVariables(context).Set<Access>(inScope, withName, newValue);
      },
      scope, name, value);
}
template <class Access>
typename Access::Value GetVariable(char scope, char const* name) noexcept {
  return OnContext(
      typename Access::Value{},
      [](CQMExecutor& context, char inScope, char const* withName) {
        return CQMVariables(context).Get<Access>(inScope, withName);
      },
      scope, name);
}

CQMDatum* VariableOf(CQMLinkedObject* object) {
  bool const isVariable = object != nullptr && object->HasTypeTag(CQMDatum::kTypeTag);
  return isVariable ? static_cast<CQMDatum*>(object) : nullptr;
}

/** The value of access for the process-wide variable that handle names, or for null. */
template <class Access>
auto OnSharedVariable(Handle handle, Access access) {
  CQMSharedVariableUse const variable(handle);
  return access(VariableOf(variable.GetObject()));
}

/** The slow path of OnVariable. */
template <class Value, class Access, class Conclude>
[[gnu::noinline, gnu::cold]] Value OnVariableSlowly(Handle handle, CQMContextGate* tried, Value failure,
                                                    Access access, Conclude conclude) noexcept {
  if (CQMLinkedObject::FindTarget(handle).gate == nullptr) {
    auto const onContext = [=](CQMExecutor& context) {
      return conclude(CQMVariables(context), OnSharedVariable(handle, access));
    };
    return OnContextSlowly<EQMHost::IsNotCalled>(tried, failure, onContext);
  }
  auto outcome = access(nullptr);
  auto const concludeIn = [&](CQMExecutor& context) { return conclude(CQMVariables(context), outcome); };
  {
    CQMContextUse const use(handle, CQMContextUse::EQMNeed::Current, tried);
    if (use.IsRefused()) return failure;
    if (use.GetExecutor() != nullptr && !use.GetExecutor()->IsRetired())
      outcome = access(VariableOf(use.GetObject()));
    if (use.IsInCurrent()) return OnUsedContext(use, failure, concludeIn);
  }
  // The context of the variable is left before the one that records the error is entered: a thread that waits
  // for one of the two without being in the other cannot be part of a cycle of waits.
  return OnContext(failure, concludeIn);
}

/** Looks a variable up that is not in the cache of the gate. */
template <class Value, class Access, class Conclude>
[[gnu::noinline]] Value OnUnknownVariable(Handle handle, CQMOwnerUse use, Value failure, Access access,
                                          Conclude conclude) noexcept {
  CQMDatum* const datum = use.GetGate()->Find<CQMDatum>(handle);
  if (datum == nullptr && CQMLinkedObject::FindTarget(handle).gate != nullptr) {
    use.Leave(failure);
    return OnVariableSlowly(handle, nullptr, failure, access, conclude);
  }
  return use.Leave(OnOwnContext(use, failure, [=](CQMExecutor& context) {
    return conclude(CQMVariables(context),
                    datum != nullptr ? access(datum) : OnSharedVariable(handle, access));
  }));
}

/** Runs access on the variable that handle names, or on null, and then conclude, on the variables of the
 * current context, with the value of access. The variable is not destroyed meanwhile. failure without a
 * context. */
template <class Value, class Access, class Conclude>
Value OnVariable(Handle handle, Value failure, Access access, Conclude conclude) noexcept {
  CQMOwnerUse use;
  if (!use.Enter()) [[unlikely]]
    return OnVariableSlowly(handle, use.GetGate(), failure, access, conclude);
  CQMDatum* datum = nullptr;
  if (!use.GetGate()->FindAgain(handle, datum)) [[unlikely]]
    return OnUnknownVariable(handle, use, failure, access, conclude);
  return use.Leave(OnOwnContext(
      use, failure, [=](CQMExecutor& context) { return conclude(CQMVariables(context), access(datum)); }));
}

/** The value of access; an unknown handle is no error. */
template <class Value, class Access>
Value AskVariable(Handle handle, Value failure, Access access) noexcept {
  return OnVariable(handle, failure, access, [](CQMVariables const&, Value answer) { return answer; });
}

/** Records the error of access, and returns the value that it read, or whether it stored one. */
template <class Value, class Access>
Value UseVariable(Handle handle, Value failure, Access access) noexcept {
  return OnVariable(handle, failure, access,
                    [](CQMVariables variables, auto const& outcome) { return variables.Conclude(outcome); });
}

/** Stores the parts of value where the host wants them. */
bool WriteParts(std::complex<double> value, double* real, double* imaginary) {
  if (real != nullptr) *real = value.real();
  if (imaginary != nullptr) *imaginary = value.imag();
  return true;
}

}  // namespace

// A dimension count and six extents or indices, as parameters and as an argument.
#define QM_INDEX_PARAMETERS long dims, long i1, long i2, long i3, long i4, long i5, long i6
#define QM_INDICES (SQMIndices{dims, {i1, i2, i3, i4, i5, i6}})
// The value of an expression in v, the variables of the current context.
#define QM_ON_VARIABLES(failure, ...) OnVariables(failure, [=](CQMVariables v) { return __VA_ARGS__; })
// The outcome of an expression in datum, the variable that handle names, or null.
#define QM_ON_VARIABLE(failure, ...) \
  UseVariable(handle, failure, [=](CQMDatum* datum) { return __VA_ARGS__; })

// ---- creating ----
Handle qmCreateNumVar(char scope, char const* name, double initial) {
  return QM_ON_VARIABLES(Handle{0}, v.Create<NumberKind, NumberAccess>(scope, name, initial));
}
Handle qmCreateComplexVar(char scope, char const* name, double real, double imaginary) {
  return QM_ON_VARIABLES(Handle{0}, v.Create<ComplexKind, ComplexAccess>(scope, name, {real, imaginary}));
}
Handle qmCreateBoolVar(char scope, char const* name, bool initial) {
  return QM_ON_VARIABLES(Handle{0}, v.Create<BooleanKind, BooleanAccess>(scope, name, initial));
}
Handle qmCreateStrVar(char scope, char const* name, long length, char const* initial) {
  return QM_ON_VARIABLES(Handle{0}, v.Create<StringKind, StringAccess>(scope, name, initial, length));
}
Handle qmCreateNumArray(char scope, char const* name, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(Handle{0}, v.CreateArray<NumberKind>(scope, name, QM_INDICES));
}
Handle qmCreateComplexArray(char scope, char const* name, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(Handle{0}, v.CreateArray<ComplexKind>(scope, name, QM_INDICES));
}
Handle qmCreateBoolArray(char scope, char const* name, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(Handle{0}, v.CreateArray<BooleanKind>(scope, name, QM_INDICES));
}
Handle qmCreateStrArray(char scope, char const* name, long length, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(Handle{0}, v.CreateArray<StringKind>(scope, name, QM_INDICES, length));
}

// ---- linking ----
bool qmLinkNumVar(char scope, char const* name, double* value) {
  return QM_ON_VARIABLES(false, v.Link<NumberKind>(scope, name, value));
}
bool qmLinkComplexVar(char scope, char const* name, double* value) {
  return QM_ON_VARIABLES(false, v.Link<ComplexKind>(scope, name, value));
}
bool qmLinkBoolVar(char scope, char const* name, bool* value) {
  return QM_ON_VARIABLES(false, v.Link<BooleanKind>(scope, name, value));
}
bool qmLinkStrVar(char scope, char const* name, char* buffer, long length) {
  return QM_ON_VARIABLES(false, v.Link<StringKind>(scope, name, buffer, length));
}
bool qmLinkNumArray(char scope, char const* name, double* values, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(false, v.LinkArray<NumberKind>(scope, name, values, QM_INDICES));
}
bool qmLinkComplexArray(char scope, char const* name, double* values, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(false, v.LinkArray<ComplexKind>(scope, name, values, QM_INDICES));
}
bool qmLinkBoolArray(char scope, char const* name, bool* values, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(false, v.LinkArray<BooleanKind>(scope, name, values, QM_INDICES));
}
bool qmLinkStrArray(char scope, char const* name, char* buffer, long length, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(false, v.LinkArray<StringKind>(scope, name, buffer, QM_INDICES, length));
}

// ---- writing: each row makes four functions ----
#define QM_SETTERS(scalar, element, Access, Type)                                                           \
  bool scalar(char scope, char const* name, Type value) { return SetVariable<Access>(scope, name, value); } \
  bool scalar##ByHandle(Handle handle, Type value) {                                                        \
    return QM_ON_VARIABLE(false, CQMVariables::StoreIn<Access>(datum, value));                              \
  }                                                                                                         \
  bool element(char scope, char const* name, Type value, QM_INDEX_PARAMETERS) {                             \
    return QM_ON_VARIABLES(false, v.SetElement<Access>(scope, name, value, QM_INDICES));                    \
  }                                                                                                         \
  bool element##ByHandle(Handle handle, Type value, QM_INDEX_PARAMETERS) {                                  \
    return QM_ON_VARIABLE(false, CQMVariables::StoreElementIn<Access>(datum, value, QM_INDICES));           \
  }
QM_SETTERS(qmSetNumVar, qmSetNumArrayElement, NumberAccess, double)
QM_SETTERS(qmSetRealVar, qmSetRealArrayElement, RealPartAccess, double)
QM_SETTERS(qmSetImagVar, qmSetImagArrayElement, ImaginaryPartAccess, double)
QM_SETTERS(qmSetBoolVar, qmSetBoolArrayElement, BooleanAccess, bool)
QM_SETTERS(qmSetStrVar, qmSetStrArrayElement, StringAccess, char const*)
#undef QM_SETTERS

bool qmSetComplexVar(char scope, char const* name, double real, double imaginary) {
  return QM_ON_VARIABLES(false, v.Set<ComplexAccess>(scope, name, {real, imaginary}));
}
bool qmSetComplexVarByHandle(Handle handle, double real, double imaginary) {
  return QM_ON_VARIABLE(false, CQMVariables::StoreIn<ComplexAccess>(datum, {real, imaginary}));
}
bool qmSetComplexArrayElement(char scope, char const* name, double real, double imaginary,
                              QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLES(false, v.SetElement<ComplexAccess>(scope, name, {real, imaginary}, QM_INDICES));
}
bool qmSetComplexArrayElementByHandle(Handle handle, double real, double imaginary, QM_INDEX_PARAMETERS) {
  return QM_ON_VARIABLE(false,
                        CQMVariables::StoreElementIn<ComplexAccess>(datum, {real, imaginary}, QM_INDICES));
}

// ---- reading ----
#define QM_GETTERS(scalar, element, Access, Type)                                            \
  Type scalar(char scope, char const* name) { return GetVariable<Access>(scope, name); }     \
  Type scalar##ByHandle(Handle handle) {                                                     \
    return QM_ON_VARIABLE(Type{}, CQMVariables::LoadFrom<Access>(datum));                    \
  }                                                                                          \
  Type element(char scope, char const* name, QM_INDEX_PARAMETERS) {                          \
    return QM_ON_VARIABLES(Type{}, v.GetElement<Access>(scope, name, QM_INDICES));           \
  }                                                                                          \
  Type element##ByHandle(Handle handle, QM_INDEX_PARAMETERS) {                               \
    return QM_ON_VARIABLE(Type{}, CQMVariables::LoadElementFrom<Access>(datum, QM_INDICES)); \
  }
using ConstText = char const*;
QM_GETTERS(qmGetNumVarValue, qmGetNumArrayElement, NumberAccess, double)
QM_GETTERS(qmGetBoolVarValue, qmGetBoolArrayElement, BooleanAccess, bool)
QM_GETTERS(qmGetStrVarValue, qmGetStrArrayElement, StringAccess, ConstText)
#undef QM_GETTERS

// without a context nothing is written
void qmGetComplexVarValue(char scope, char const* name, double* real, double* imaginary) {
  OnVariables(false,
              [=](CQMVariables v) { return WriteParts(v.Get<ComplexAccess>(scope, name), real, imaginary); });
}
void qmGetComplexVarValueByHandle(Handle handle, double* real, double* imaginary) {
  OnVariable(
      handle, false, [](CQMDatum* datum) { return CQMVariables::LoadFrom<ComplexAccess>(datum); },
      [=](CQMVariables v, auto const& read) { return WriteParts(v.Conclude(read), real, imaginary); });
}
void qmGetComplexArrayElement(char scope, char const* name, double* real, double* imaginary,
                              QM_INDEX_PARAMETERS) {
  OnVariables(false, [=](CQMVariables v) {
    return WriteParts(v.GetElement<ComplexAccess>(scope, name, QM_INDICES), real, imaginary);
  });
}
void qmGetComplexArrayElementByHandle(Handle handle, double* real, double* imaginary, QM_INDEX_PARAMETERS) {
  OnVariable(
      handle, false,
      [=](CQMDatum* datum) { return CQMVariables::LoadElementFrom<ComplexAccess>(datum, QM_INDICES); },
      [=](CQMVariables v, auto const& read) { return WriteParts(v.Conclude(read), real, imaginary); });
}

// ---- queries and removal ----
Handle qmGetVarHandle(char scope, char const* name) {
  return QM_ON_VARIABLES(Handle{0}, v.GetHandle(scope, name));
}
bool qmReleaseVarHandle(Handle handle) {
  return AskVariable(handle, false,
                     [](CQMDatum* datum) { return datum != nullptr && datum->ReleaseObjectHandle(); });
}
char qmGetVarType(char scope, char const* name) {
  return QM_ON_VARIABLES(TypeLetter::kNone, v.GetType(scope, name));
}
char qmGetVarTypeByHandle(Handle handle) {
  return AskVariable(handle, TypeLetter::kNone,
                     [](CQMDatum* datum) { return CQMVariables::LetterOf(datum); });
}
bool qmIsVarHandle(Handle handle) {
  return AskVariable(handle, false, [](CQMDatum* datum) { return datum != nullptr; });
}
bool qmIsArrayHandle(Handle handle) {
  return AskVariable(handle, false, [](CQMDatum* datum) { return datum != nullptr && datum->IsArray(); });
}
long qmDeleteVar(char scope, char const* name) { return QM_ON_VARIABLES(0L, v.Delete(scope, name)); }

#undef QM_ON_VARIABLES
#undef QM_ON_VARIABLE
#undef QM_INDICES
#undef QM_INDEX_PARAMETERS
