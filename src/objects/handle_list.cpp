// Issuing, finding and deleting handles.
#include "objects/handle_list.h"

#include <new>

namespace qumel {

CQMHandleList::CQMHandleList() {
  SetTypeTag(kTypeTag);
  m_directories.push_back(std::make_unique<SQMDirectory>(kListsPerGrowth));
  m_directory.store(m_directories.back().get(), std::memory_order_release);
  AddList();
  AddList();
}

CQMHandleList::~CQMHandleList() = default;

Handle CQMHandleList::AssignHandle(CQMLinkedObject* object, CQMContextGate* gate) {
  std::scoped_lock const lock(m_mutex);
  if (m_nextFreeSlot == kSlotsPerList) AppendHandleList();
  if (m_nextFreeSlot == kSlotsPerList) return 0;
  unsigned const right = m_nextFreeSlot++;
  Handle const handle = EncodeHandle(static_cast<unsigned>(m_lists.size() - 1), right);
  SQMHandleSlot& slot = (*m_lists.back())[right];
  slot.gate.store(gate, std::memory_order_relaxed);
  slot.handle = handle;
  slot.object.store(object, std::memory_order_release);
  return handle;
}

bool CQMHandleList::MarkHandleDeleted(Handle handle) {
  std::scoped_lock const lock(m_mutex);
  if (!ValidateHandle(handle)) return false;
  SQMHandleSlot& slot = *FindSlot(handle);
  // one that belongs into another place of a cache, so that the caches that know this slot find nothing in it
  slot.handle = EncodeHandle(DecodeLeft(handle), DecodeRight(handle) ^ 1U);
  slot.object.store(nullptr, std::memory_order_release);
  return true;
}

bool CQMHandleList::DecodeHandle(Handle handle, unsigned& left, unsigned& right) const {
  bool const isValid = ValidateHandle(handle);
  left = isValid ? DecodeLeft(handle) : 0;
  right = isValid ? DecodeRight(handle) : 0;
  return isValid;
}

bool CQMHandleList::ValidateHandle(unsigned left, unsigned right) const {
  std::scoped_lock const lock(m_mutex);
  std::size_t const current = m_lists.size() - 1;
  return right < kSlotsPerList && (left < current || (left == current && right <= m_nextFreeSlot));
}

bool CQMHandleList::AppendHandleList() {
  std::scoped_lock const lock(m_mutex);
  if (m_nextFreeSlot != kSlotsPerList) return true;
  if (m_lists.size() == m_directories.back()->capacity && !ExtendHandleListList()) return true;
  try {
    AddList();
    m_nextFreeSlot = 0;
  } catch (std::bad_alloc const&) {
  }
  return true;
}

bool CQMHandleList::ExtendHandleListList() {
  std::scoped_lock const lock(m_mutex);
  try {
    SQMDirectory const& old = *m_directories.back();
    m_directories.push_back(std::make_unique<SQMDirectory>(old.capacity + kListsPerGrowth));
    SQMDirectory& grown = *m_directories.back();
    for (std::size_t i = 0; i < m_lists.size(); ++i)
      grown.lists[i].store(m_lists[i].get(), std::memory_order_relaxed);
    m_directory.store(&grown, std::memory_order_release);
    return true;
  } catch (std::bad_alloc const&) {
    return false;
  }
}

void CQMHandleList::AddList() {
  m_lists.push_back(std::make_unique<Slots>());
  m_directories.back()->lists[m_lists.size() - 1].store(m_lists.back().get(), std::memory_order_release);
}

}  // namespace qumel
