// Exported functions on errors.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

bool qmDefineError(char scope, long code, char const* text) {
  return OnContext(false, [=](CQMExecutor& context) { return context.DefineError(scope, code, text); });
}
char const* qmGetErrorText(long code) {
  return OnContext(static_cast<char const*>(nullptr),
                   [=](CQMExecutor& context) { return context.GetErrorText(code); });
}
char const* qmGetLastErrorText(void) {
  return OnContext(static_cast<char const*>(nullptr),
                   [](CQMExecutor& context) { return context.GetLastErrorText(); });
}
long qmGetLastErrorID(void) {
  return OnContext(static_cast<long>(Error::NotInitialized),
                   [](CQMExecutor& context) { return context.GetLastErrorID(); });
}
long qmSetLastError(long code) {
  return OnContext(0L, [=](CQMExecutor& context) {
    context.SetLastError(code);
    return code;
  });
}
void qmClearLastError(void) {
  OnContext([](CQMExecutor& context) { context.ClearLastError(); });
}
bool qmSetErrorCallback(void (*callback)(long code)) {
  return OnContext(false, [=](CQMExecutor& context) {
    context.SetErrorFunction(callback);
    return true;
  });
}
bool qmClearErrorCallback(void) { return qmSetErrorCallback(nullptr); }
