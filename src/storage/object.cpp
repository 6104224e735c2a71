// Names and references of the object base.
#include "storage/object.h"

#include <cstring>

namespace qumel {

constinit std::atomic<long> CQMObject::sm_lNextObjectID{0};
constinit std::atomic<long> CQMObject::sm_lQMObjectCount{0};

void CQMObject::ReleaseRef() {
  long count = m_refCount.load(std::memory_order_relaxed);
  while (count > 0 && !m_refCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) {
  }
  bool const isUnreferenced = count <= 1;  // a count that was 0 already deletes too
  if (isUnreferenced && IsMarkedForDeletion()) delete this;
}

void CQMObject::ResetRefCount(long count) {
  m_refCount.store(count, std::memory_order_release);
  DeleteOnRefCountZero(false);
}

char const* CQMObject::SetObjectName(char const* name) {
  std::string_view const text = name != nullptr ? name : "";
  auto copy = std::make_unique<char[]>(text.size() + 1);  // before the old name goes: name may be that one
  std::memcpy(copy.get(), text.data(), text.size());
  m_name = std::move(copy);
  return m_name.get();
}

char* CQMObject::GetObjectName(char* destination) {
  if (m_name == nullptr) SetObjectName(nullptr);
  if (destination == nullptr) return m_name.get();
  return static_cast<char*>(std::memmove(destination, m_name.get(), std::strlen(m_name.get()) + 1));
}

}  // namespace qumel
