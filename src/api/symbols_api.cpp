// Exported queries: what a name stands for in the current context.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

bool qmIsOp(char scope, char const* name) {
  return OnContext(false, [=](CQMExecutor& context) { return context.IsOperator(scope, name); });
}
bool qmIsSymbol(char scope, char const* name) {
  return OnContext(false, [=](CQMExecutor& context) { return context.IsSymbol(scope, name); });
}
bool qmIsVar(char scope, char const* name) {
  return OnContext(false, [=](CQMExecutor& context) { return context.IsVariable(scope, name); });
}
bool qmIsArray(char scope, char const* name) {
  return OnContext(false, [=](CQMExecutor& context) { return context.IsArray(scope, name); });
}
