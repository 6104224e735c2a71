// What the object tree asks of the process-wide data space that it makes and destroys.
#include <memory>

#include "objects/linked_object.h"
#include "tables/data_space.h"

namespace qumel {

CQMDataSpace* MakeDataSpace(char const* directory) {
  return std::make_unique<CQMDataSpace>(directory).release();
}

void UnmakeDataSpace(CQMDataSpace* space) { std::unique_ptr<CQMDataSpace> const owner(space); }

long CQMLinkedObject::GetDataSpaceSize() {
  CQMDataSpace* const space = GetDataSpace();
  return space != nullptr ? space->GetSize() : 0;
}

long CQMLinkedObject::CacheDataSpace() {
  CQMDataSpace* const space = GetDataSpace();
  return space != nullptr ? space->ScramRAM() : 0;
}

}  // namespace qumel
