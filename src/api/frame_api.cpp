// Exported functions on the lists of contexts and threads, whose types are opaque to hosts.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

SQMThread* uGetThreadInfo(bool create) {
  return Guarded<SQMThread*>(nullptr, [=] { return reinterpret_cast<SQMThread*>(GetThreadInfo(create)); });
}
SQMContext* uFindExecutor(char const* name) {
  return Guarded<SQMContext*>(nullptr,
                              [=] { return reinterpret_cast<SQMContext*>(FindPublicExecutor(name)); });
}
bool uIsExecutor(SQMContext const* context) {
  return Guarded<bool>(false,
                       [=] { return IsPublicExecutor(reinterpret_cast<CQMExecutor const*>(context)); });
}
bool uDropExecutor(char const* name) { return qmDestroyPublicContext(name); }
bool uDropThreadInfo(void) {
  return Guarded<bool>(false, [] { return DropThreadInfo(); });
}
void uAcquireExecutorList(void) { AcquireExecutorList(); }
void uReleaseExecutorList(void) { ReleaseExecutorList(); }
void uAcquireThreadList(void) { AcquireThreadList(); }
void uReleaseThreadList(void) { ReleaseThreadList(); }
