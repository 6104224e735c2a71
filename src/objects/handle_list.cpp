// Issuing and deleting handles.
#include "objects/handle_list.h"

#include <new>

namespace qumel {

CQMHandleList::CQMHandleList() {
  AppendHandleList();
  AppendHandleList();
}

Handle CQMHandleList::AssignHandle(CQMLinkedObject* object, CQMContextGate* gate) {
  std::scoped_lock const lock(m_mutex);
  if (m_nextFreeSlot == kSlotsPerList) {
    try {
      AppendHandleList();
    } catch (std::bad_alloc const&) {
      return 0;
    }
  }
  unsigned const right = m_nextFreeSlot++;
  Handle const handle = EncodeHandle(static_cast<unsigned>(m_lists.size() - 1), right);
  SQMHandleSlot& slot = (*m_lists.back())[right];
  slot.gate.store(gate, std::memory_order_relaxed);
  slot.handle = handle;
  slot.object.store(object, std::memory_order_release);
  return handle;
}

void CQMHandleList::MarkHandleDeleted(Handle handle) {
  std::scoped_lock const lock(m_mutex);
  SQMHandleSlot& slot = *FindSlot(handle);
  slot.handle = NeighbourOf(handle);
  slot.object.store(nullptr, std::memory_order_release);
}

// These throw std::bad_alloc, and then nothing has changed.

void CQMHandleList::AppendHandleList() {
  if (m_directories.empty() || m_lists.size() == m_directories.back()->capacity) ExtendHandleListList();
  m_lists.push_back(std::make_unique<Slots>());
  m_directories.back()->lists[m_lists.size() - 1].store(m_lists.back().get(), std::memory_order_release);
  m_nextFreeSlot = 0;
}

void CQMHandleList::ExtendHandleListList() {
  m_directories.push_back(std::make_unique<SQMDirectory>(m_lists.size() + kListsPerGrowth));
  SQMDirectory& grown = *m_directories.back();
  for (std::size_t i = 0; i < m_lists.size(); ++i)
    grown.lists[i].store(m_lists[i].get(), std::memory_order_relaxed);
  m_directory.store(&grown, std::memory_order_release);
}

}  // namespace qumel
