// The object tree, the handles of its objects, and the life of the process-wide handle list and data space.
#include "objects/linked_object.h"

#include <mutex>
#include <new>

namespace qumel {

// Bare pointers, not owners that a process exit would destroy: objects may outlive static destruction.
constinit std::atomic<CQMHandleList*> CQMLinkedObject::sm_pHandleList{nullptr};
constinit std::atomic<CQMDataSpace*> CQMLinkedObject::sm_pDataSpace{nullptr};

namespace {

constinit std::mutex g_lifeMutex;  // guards the creation and destruction of both

template <class Object, class Make>
void CreateLocked(std::atomic<Object*>& place, Make make) {
  if (place.load(std::memory_order_relaxed) != nullptr) return;
  try {
    place.store(make(), std::memory_order_release);
  } catch (std::bad_alloc const&) {
  }
}

void CreateHandleListLocked(std::atomic<CQMHandleList*>& place) {
  CreateLocked(place, [] { return std::make_unique<CQMHandleList>().release(); });
}

}  // namespace

// ---- the process-wide objects ----

void CQMLinkedObject::CountInFirst() {
  std::scoped_lock const lock(g_lifeMutex);
  if (sm_lQMObjectCount.load(std::memory_order_relaxed) == 0) {
    CreateLocked(sm_pDataSpace, [] { return MakeDataSpace(nullptr); });
    CreateHandleListLocked(sm_pHandleList);
  }
  sm_lQMObjectCount.fetch_add(1, std::memory_order_acq_rel);
}

void CQMLinkedObject::CountOutLast() {
  std::scoped_lock const lock(g_lifeMutex);
  if (sm_lQMObjectCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  UnmakeDataSpace(sm_pDataSpace.exchange(nullptr, std::memory_order_acq_rel));
  std::unique_ptr<CQMHandleList> const list(sm_pHandleList.exchange(nullptr, std::memory_order_acq_rel));
}

/** The handle list, which is made if memory did not suffice for it before. */
CQMHandleList* CQMLinkedObject::ObtainHandleList() {
  if (GetHandleList() == nullptr) {
    std::scoped_lock const lock(g_lifeMutex);
    CreateHandleListLocked(sm_pHandleList);
  }
  return GetHandleList();
}

// ---- handles ----

Handle CQMLinkedObject::GetObjectHandle(CQMContextGate* gate) {
  Handle handle = m_handle.load(std::memory_order_acquire);
  if (handle == 0) {
    CQMHandleList* const list = ObtainHandleList();
    Handle const issued = list != nullptr ? list->AssignHandle(this, gate) : 0;
    if (issued == 0) return 0;
    if (m_handle.compare_exchange_strong(handle, issued, std::memory_order_acq_rel)) handle = issued;
    else list->MarkHandleDeleted(issued);  // another thread was first
  }
  m_handleReferences.fetch_add(1, std::memory_order_relaxed);
  ReserveRef();
  return handle;
}

bool CQMLinkedObject::ReleaseObjectHandle() {
  long count = m_handleReferences.load(std::memory_order_relaxed);
  while (count > 0 &&
         !m_handleReferences.compare_exchange_weak(count, count - 1, std::memory_order_relaxed)) {
  }
  if (count <= 0) return false;
  ReleaseRef();
  return true;
}

bool CQMLinkedObject::DeleteHandle() {
  Handle const handle = m_handle.exchange(0, std::memory_order_acq_rel);
  if (handle != 0) GetHandleList()->MarkHandleDeleted(handle);
  return handle != 0;
}

// ---- the tree ----

void CQMLinkedObject::AddChildObject(CQMLinkedObject* child) {
  if (child->m_list != nullptr) child->m_list->ReleaseChildObject(child);
  child->m_list = this;
  child->m_previous = m_lastChild;
  (m_lastChild != nullptr ? m_lastChild->m_next : m_firstChild) = child;
  m_lastChild = child;
}

void CQMLinkedObject::ReleaseChildObject(CQMLinkedObject* child) {
  if (child->m_list != this) return;
  (child->m_previous != nullptr ? child->m_previous->m_next : m_firstChild) = child->m_next;
  (child->m_next != nullptr ? child->m_next->m_previous : m_lastChild) = child->m_previous;
  child->m_previous = child->m_next = child->m_list = nullptr;
}

void CQMLinkedObject::DestroyChildren() {
  while (m_firstChild != nullptr) {
    std::unique_ptr<CQMLinkedObject> const child(m_firstChild);
    ReleaseChildObject(child.get());  // before it goes: its destructor may look at this list
  }
}

long CQMLinkedObject::GetChildCount() const {
  long count = 0;
  for (CQMLinkedObject const* child = m_firstChild; child != nullptr; child = child->m_next) ++count;
  return count;
}

}  // namespace qumel
