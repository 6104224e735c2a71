// Exported functions that evaluate, parse and show expressions.
#include "api/guard.h"
#include "engine/expression.h"
#include "qumel/qumel.h"

using namespace qumel;

namespace {

/** The slow path of OnExpression. */
template <EQMHost host, class Value, class Call>
[[gnu::noinline, gnu::cold]] Value OnExpressionSlowly(Handle handle, CQMContextGate* tried, Value failure,
                                                      Call call) noexcept {
  CQMContextUse const use(handle, CQMContextUse::EQMNeed::Current, tried);
  CQMLinkedObject* const object = use.GetObject();
  if (object == nullptr || !object->HasTypeTag(CQMExpression::kTypeTag)) return failure;
  if (use.GetExecutor()->IsRetired()) return failure;  // it lives on only until the calls in it have returned
  return OnUsedContext<host>(use, failure, [=](CQMExecutor& context) {
    return call(context, static_cast<CQMExpression&>(*object));
  });
}

/** Looks an expression up that is not in the cache of the gate. */
template <EQMHost host, class Value, class Call>
[[gnu::noinline]] Value OnUnknownExpression(Handle handle, CQMOwnerUse use, Value failure,
                                            Call call) noexcept {
  CQMExpression* const expression = use.GetGate()->Find<CQMExpression>(handle);
  if (expression != nullptr) {
    return use.Leave(
        OnOwnContext(use, failure, [=](CQMExecutor& context) { return call(context, *expression); }));
  }
  use.Leave(0);
  return OnExpressionSlowly<host>(handle, nullptr, failure, call);
}

/** Runs call on the expression that handle names, in the context that parsed it, whichever is current. */
template <EQMHost host = EQMHost::IsNotCalled, class Value, class Call>
Value OnExpression(Handle handle, Value failure, Call call) noexcept {
  CQMOwnerUse use;
  if (!use.Enter()) [[unlikely]]
    return OnExpressionSlowly<host>(handle, use.GetGate(), failure, call);
  CQMExpression* expression = nullptr;
  if (!use.GetGate()->FindAgain(handle, expression)) [[unlikely]]
    return OnUnknownExpression<host>(handle, use, failure, call);
  return use.Leave(
      OnOwnContext(use, failure, [=](CQMExecutor& context) { return call(context, *expression); }));
}

// An evaluation may call the host back, and is refused where such calls nest too deep. Other calls, such as
// asking for that error, stay possible.
template <class Value, class Call>
Value Evaluate(Value failure, Call call) noexcept {
  return OnContext<EQMHost::MayBeCalled>(failure, call);
}
template <class Value, class Call>
Value EvaluateExpression(Handle handle, Value failure, Call call) noexcept {
  return OnExpression<EQMHost::MayBeCalled>(handle, failure, call);
}

}  // namespace

// ---- from text ----
char qmEvalExpStr(char const* text) {
  return Evaluate(TypeLetter::kNone, [=](CQMExecutor& context) { return context.Evaluate(text); });
}
double qmEvalExpStrToNum(char const* text) {
  return Evaluate(0.0, [=](CQMExecutor& context) { return context.EvaluateToNumber(text); });
}
double qmEvalExpStrToComp(char const* text, double* imaginary) {
  return Evaluate(0.0, [=](CQMExecutor& context) { return context.EvaluateToComplex(text, imaginary); });
}
bool qmEvalExpStrToBool(char const* text) {
  return Evaluate(false, [=](CQMExecutor& context) { return context.EvaluateToBoolean(text); });
}
char const* qmEvalExpStrToStr(char const* text) {
  return Evaluate(static_cast<char const*>(nullptr),
                  [=](CQMExecutor& context) { return context.EvaluateToString(text); });
}
unsigned long long qmParseExp(char const* text) {
  return Evaluate(Handle{0}, [=](CQMExecutor& context) { return context.ParseExpression(text); });
}
char const* qmAnnotateExp(char const* text) {
  return OnContext(static_cast<char const*>(nullptr),
                   [=](CQMExecutor& context) { return context.AnnotateExpression(text); });
}
char const* qmCheckExp(char const* text) {
  return OnContext(static_cast<char const*>(nullptr),
                   [=](CQMExecutor& context) { return context.CheckExpression(text); });
}

// ---- by handle ----
char qmEvalExpHndl(unsigned long long handle) {
  return EvaluateExpression(handle, TypeLetter::kNone, [](CQMExecutor& context, CQMExpression& expression) {
    return context.Evaluate(&expression);
  });
}
double qmEvalExpHndlToNum(unsigned long long handle) {
  return EvaluateExpression(handle, 0.0, [](CQMExecutor& context, CQMExpression& expression) {
    return context.EvaluateToNumber(expression);
  });
}
double qmEvalExpHndlToComp(unsigned long long handle, double* imaginary) {
  return EvaluateExpression(handle, 0.0, [=](CQMExecutor& context, CQMExpression& expression) {
    return context.EvaluateToComplex(&expression, imaginary);
  });
}
bool qmEvalExpHndlToBool(unsigned long long handle) {
  return EvaluateExpression(handle, false, [](CQMExecutor& context, CQMExpression& expression) {
    return context.EvaluateToBoolean(&expression);
  });
}
char const* qmEvalExpHndlToStr(unsigned long long handle) {
  return EvaluateExpression(
      handle, static_cast<char const*>(nullptr),
      [](CQMExecutor& context, CQMExpression& expression) { return context.EvaluateToString(&expression); });
}
char const* qmAnnotateParsedExp(unsigned long long handle) {
  return OnExpression(handle, static_cast<char const*>(nullptr),
                      [](CQMExecutor& context, CQMExpression& expression) {
                        return context.AnnotateExpression(&expression);
                      });
}
char const* qmRevertParsedExp(unsigned long long handle) {
  return OnExpression(
      handle, static_cast<char const*>(nullptr),
      [](CQMExecutor& context, CQMExpression& expression) { return context.RevertExpression(&expression); });
}
void qmDeleteExp(unsigned long long handle) {
  OnExpression(handle, false, [](CQMExecutor& context, CQMExpression& expression) {
    context.DeleteExpression(&expression);
    return true;
  });
}

// ---- the last result ----
char qmGetLastResultType(void) {
  return OnContext('\0', [](CQMExecutor& context) { return context.GetLastResultType(); });
}
double qmGetLastNumResult(void) {
  return OnContext(0.0, [](CQMExecutor& context) { return context.GetLastRealResult(); });
}
double qmGetLastRealResult(void) { return qmGetLastNumResult(); }
double qmGetLastImagResult(void) {
  return OnContext(0.0, [](CQMExecutor& context) { return context.GetLastImagResult(); });
}
bool qmGetLastBoolResult(void) {
  return OnContext(false, [](CQMExecutor& context) { return context.GetLastBoolResult(); });
}
char const* qmGetLastStrResult(void) {
  return OnContext(static_cast<char const*>(nullptr),
                   [](CQMExecutor& context) { return context.GetLastStrResult(); });
}
long qmGetLastParseIndex(void) {
  return OnContext(0L, [](CQMExecutor& context) { return context.GetLastParseIndex(); });
}
