// Names and references of the object base.
#include "storage/object.h"

#include <cstring>

namespace qumel {

std::atomic<long> CQMObject::sm_lNextObjectID{0};
std::atomic<long> CQMObject::sm_lQMObjectCount{0};

CQMObject::CQMObject() : m_serialNumber(sm_lNextObjectID.fetch_add(1, std::memory_order_relaxed)) {}

CQMObject::~CQMObject() = default;

void CQMObject::ReserveRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }

void CQMObject::ReleaseRef() {
  long count = m_refCount.load(std::memory_order_relaxed);
  while (count > 0 && !m_refCount.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) {
  }
  if (count <= 1 && m_deleteOnRefCountZero) delete this;
}

void CQMObject::ResetRefCount(long count) {
  m_refCount.store(count, std::memory_order_release);
  m_deleteOnRefCountZero = false;
}

void CQMObject::DeleteOnRefCountZero(bool mark) { m_deleteOnRefCountZero = mark; }

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
  return std::strcpy(destination, m_name.get());
}

std::string_view CQMObject::Name() const { return m_name != nullptr ? m_name.get() : ""; }

}  // namespace qumel
