// Exported functions on named contexts.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

unsigned long long qmCreatePublicContext(char const* name) {
  return Guarded<Handle>(0, [=] { return CreatePublicContext(name); });
}
unsigned long long qmCreatePrivateContext(char const* name) {
  return Guarded<Handle>(0, [=] { return CreatePrivateContext(name); });
}
bool qmDestroyPublicContext(char const* name) {
  return Guarded<bool>(false, [=] { return DropPublicExecutor(name); });
}
bool qmDestroyPrivateContext(char const* name) {
  return Guarded<bool>(false, [=] { return DestroyPrivateContext(name); });
}
unsigned long long qmSetContext(char const* name, bool lock) {
  return Guarded<Handle>(0, [=] { return SetContext(name, lock); });
}
bool qmSetDefaultContext(char const* name) {
  return Guarded<bool>(false, [=] { return SetDefaultContext(name); });
}
bool qmResetDefaultContext(void) {
  return Guarded<bool>(false, [] { return ResetDefaultContext(); });
}
unsigned long long qmGetContextHandle(char const* name) {
  return Guarded<Handle>(0, [=] { return GetContextHandle(name); });
}
char const* qmGetContextName(unsigned long long handle) {
  return Guarded<char const*>("", [=] { return GetContextName(handle); });
}
char const* qmGetCurrentContextName(void) {
  return Guarded<char const*>("", [] { return GetCurrentContextName(); });
}
unsigned long long qmGetCurrentContextHandle(void) {
  return Guarded<Handle>(0, [] { return GetCurrentContextHandle(); });
}
bool qmLockContext(void) {
  return Guarded<bool>(false, [] { return LockContext(); });
}
bool qmReleaseContext(void) {
  return Guarded<bool>(false, [] { return ReleaseContext(); });
}
bool qmClearContext(void) {
  return Guarded<bool>(false, [] { return ClearContext(); });
}
