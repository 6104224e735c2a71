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

CQMHandleList* MakeHandleList() { return std::make_unique<CQMHandleList>().release(); }

void DestroyHandleListLocked(std::atomic<CQMHandleList*>& place) {
  std::unique_ptr<CQMHandleList> const list(place.exchange(nullptr, std::memory_order_acq_rel));
}

}  // namespace

// ---- the process-wide objects ----

void CQMLinkedObject::CountInFirst() {
  std::scoped_lock const lock(g_lifeMutex);
  if (sm_lQMObjectCount.load(std::memory_order_relaxed) == 0) {
    CreateLocked(sm_pDataSpace, [] { return MakeDataSpace(nullptr); });
    CreateLocked(sm_pHandleList, &MakeHandleList);
  }
  sm_lQMObjectCount.fetch_add(1, std::memory_order_acq_rel);
}

void CQMLinkedObject::CountOutLast() {
  std::scoped_lock const lock(g_lifeMutex);
  if (sm_lQMObjectCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  UnmakeDataSpace(sm_pDataSpace.exchange(nullptr, std::memory_order_acq_rel));
  DestroyHandleListLocked(sm_pHandleList);
}

void CQMLinkedObject::CreateHandleList() {
  std::scoped_lock const lock(g_lifeMutex);
  CreateLocked(sm_pHandleList, &MakeHandleList);
}

void CQMLinkedObject::DestroyHandleList() {
  std::scoped_lock const lock(g_lifeMutex);
  DestroyHandleListLocked(sm_pHandleList);
}

void CQMLinkedObject::CreateDataSpace(char const* directory) {
  std::scoped_lock const lock(g_lifeMutex);
  CreateLocked(sm_pDataSpace, [directory] { return MakeDataSpace(directory); });
}

void CQMLinkedObject::DestroyDataSpace() {
  std::scoped_lock const lock(g_lifeMutex);
  UnmakeDataSpace(sm_pDataSpace.exchange(nullptr, std::memory_order_acq_rel));
}

// ---- handles ----

Handle CQMLinkedObject::GetObjectHandle(CQMContextGate* gate) {
  Handle handle = m_handle.load(std::memory_order_acquire);
  if (handle == 0) {
    if (GetHandleList() == nullptr) CreateHandleList();
    CQMHandleList* const list = GetHandleList();
    Handle const issued = list != nullptr ? list->AssignHandle(this, gate) : 0;
    if (issued == 0) return 0;
    if (m_handle.compare_exchange_strong(handle, issued, std::memory_order_acq_rel)) handle = issued;
    else list->MarkHandleDeleted(issued);  // another thread was first, with the handle that stands there
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
  if (handle == 0) return false;
  // In a list that was made anew since, the handle may stand for another object.
  if (GetObject(handle) == this) GetHandleList()->MarkHandleDeleted(handle);
  return true;
}

// ---- the tree ----

void CQMLinkedObject::SetParentObject(CQMLinkedObject* parent) {
  m_parent = parent;
  CacheRootObject();
}

CQMLinkedObject* CQMLinkedObject::GetRootObject() {
  CQMLinkedObject* root = this;
  while (root->m_parent != nullptr) root = root->m_parent;
  return root;
}

CQMLinkedObject* CQMLinkedObject::CacheRootObject() {
  m_rootCache = GetRootObject();
  return m_rootCache;
}

void CQMLinkedObject::AddChildObject(CQMLinkedObject* child) {
  if (child == nullptr) return;
  if (child->m_list != nullptr) child->m_list->ReleaseChildObject(child);
  child->m_list = this;
  child->m_previous = m_lastChild;
  child->m_next = nullptr;
  (m_lastChild != nullptr ? m_lastChild->m_next : m_firstChild) = child;
  m_lastChild = child;
  ++m_childCount;
}

void CQMLinkedObject::AdoptChildren(CQMLinkedObject* from) {
  if (from == nullptr || from == this) return;
  while (CQMLinkedObject* const child = from->m_firstChild) {
    AddChildObject(child);
    child->SetParentObject(this);
  }
  from->ReleaseChildren(nullptr);
}

void CQMLinkedObject::ReleaseChildren(CQMLinkedObject* other) {
  if (other != nullptr) {
    other->AdoptChildren(this);
    return;
  }
  for (CQMLinkedObject* child = m_firstChild; child != nullptr; child = child->m_next)
    child->m_list = nullptr;
  m_firstChild = nullptr;
  m_lastChild = nullptr;
  m_childCount = 0;
}

void CQMLinkedObject::ReleaseChildObject(CQMLinkedObject* child) {
  if (child == nullptr || child->m_list != this) return;
  bool const isFirst = child == m_firstChild;
  bool const isLast = child == m_lastChild;
  if (isFirst && isLast) return ReleaseChildren(nullptr);
  Unlink(child);
  --m_childCount;
  // An inner child still knows who stood beside it.
  if (isFirst) child->m_next = nullptr;
  if (isLast) child->m_previous = nullptr;
}

void CQMLinkedObject::ReleaseSelf() {
  if (m_parent != nullptr) m_parent->ReleaseChildObject(this);
}

void CQMLinkedObject::DestroyChildren() {
  while (m_firstChild != nullptr) {
    // Unlinked before it goes: its destructor may ask this list to release it.
    std::unique_ptr<CQMLinkedObject> const child(m_firstChild);
    Unlink(child.get());
    child->m_next = nullptr;
  }
}

void CQMLinkedObject::LeaveChildren() {
  if (m_destroyChildren) return DestroyChildren();
  for (CQMLinkedObject* child = m_firstChild; child != nullptr; child = child->m_next) {
    if (child->m_parent == this) child->SetParentObject(nullptr);
  }
  ReleaseChildren(nullptr);
}

void CQMLinkedObject::Unlink(CQMLinkedObject* child) {
  (child->m_previous != nullptr ? child->m_previous->m_next : m_firstChild) = child->m_next;
  (child->m_next != nullptr ? child->m_next->m_previous : m_lastChild) = child->m_previous;
  child->m_list = nullptr;
}

CQMLinkedObject* CQMLinkedObject::GetNthChildObject(long n) {
  return m_firstChild != nullptr && n >= 1 ? m_firstChild->GetNthSiblingObject(n) : nullptr;
}

CQMLinkedObject* CQMLinkedObject::GetNthSiblingObject(long n) {
  CQMLinkedObject* sibling = this;
  for (; n > 1 && sibling != nullptr; --n) sibling = sibling->m_next;
  return sibling;
}

CQMLinkedObject* CQMLinkedObject::GetFirstSiblingObject() {
  CQMLinkedObject* sibling = this;
  while (sibling->m_previous != nullptr) sibling = sibling->m_previous;
  return sibling;
}

CQMLinkedObject* CQMLinkedObject::GetLastSiblingObject() {
  CQMLinkedObject* sibling = this;
  while (sibling->m_next != nullptr) sibling = sibling->m_next;
  return sibling;
}

CQMLinkedObject* CQMLinkedObject::GetLastChildObject() {
  return m_firstChild != nullptr ? m_firstChild->GetLastSiblingObject() : nullptr;
}

long CQMLinkedObject::UpdateChildCount() {
  m_childCount = 0;
  for (CQMLinkedObject* child = m_firstChild; child != nullptr; child = child->m_next) ++m_childCount;
  return m_childCount;
}

}  // namespace qumel
