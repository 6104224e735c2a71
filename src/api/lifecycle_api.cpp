// Exported functions on the start and the end of the library, and its counters.
#include "api/guard.h"
#include "qumel/qumel.h"

using namespace qumel;

bool qmInitialize(char const*) {
  return Guarded<bool>(false, [] { return InitializeLibrary(); });
}
bool qmLoadQumel(void) { return true; }
bool qmReset(void) {
  return Guarded<bool>(false, [] { return ResetLibrary(); });
}
bool qmRelease(void) { return qmReset(); }
bool qmUnloadQumel(void) { return uCleanUp(); }
bool uCleanUp(void) {
  return Guarded<bool>(false, [] {
    CleanUpLibrary();
    return true;
  });
}
float qmVersion(void) { return kVersion; }
long qmGetQumelObjectCount(void) { return CQMObject::sm_lQMObjectCount.load(); }
long qmGetNextQumelObjectSerialNumber(void) { return CQMObject::sm_lNextObjectID.load(); }
