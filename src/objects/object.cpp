// Names and references of the object base.
#include "objects/object.h"

#include <cstring>

namespace qumel {

constinit std::atomic<long> CQMObject::sm_lNextObjectID{0};
constinit std::atomic<long> CQMObject::sm_lQMObjectCount{0};

void CQMObject::ReleaseRef() {
  long state = m_references.load(std::memory_order_acquire);
  while (state >= kOneReference && !m_references.compare_exchange_weak(state, state - kOneReference)) {
  }
  long const left = state >= kOneReference ? state - kOneReference : state;
  if (left == kDeleteMark) delete this;  // also when the count was 0 before
}

void CQMObject::ResetRefCount(long count) {
  m_references.store(count * kOneReference, std::memory_order_release);
}

char const* CQMObject::SetObjectName(char const* name) {
  std::string_view const text = name != nullptr ? name : "";
  auto copy =
      std::make_unique<char[]>(text.size() + 1);  // before the old name is freed, of which name may be a part
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
