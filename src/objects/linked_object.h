// An object that is a node of an object tree and that hosts can name by a 64-bit handle.
#pragma once

#include "objects/handle_list.h"
#include "objects/object.h"

namespace qumel {

class CQMDataSpace;

// The floor of tables, which stands above, defines the process-wide data space and these functions.
/** Throws std::bad_alloc. */
CQMDataSpace* MakeDataSpace(char const* directory);
void UnmakeDataSpace(CQMDataSpace* space);

/** A parent destroys its children. The tree has no lock: each tree is used by one context. The process-wide
 * handle list and data space exist while any linked object does, whichever threads make and destroy them. */
class CQMLinkedObject : public CQMObject {
 public:
  CQMLinkedObject() {
    SetTypeTag(TypeTag::kLinkedObject);
    CountIn();
  }
  ~CQMLinkedObject() override {
    if (m_firstChild != nullptr) DestroyChildren();
    if (m_list != nullptr) m_list->ReleaseChildObject(this);
    if (m_handle.load(std::memory_order_relaxed) != 0) DeleteHandle();
    CountOut();
  }

  /** Returns the handle, which the first call issues, guarded by gate. Every call takes a reference, unless
   * no handle can be issued and the result is 0. */
  Handle GetObjectHandle(CQMContextGate* gate = nullptr);
  /** The handle, or 0 if none was issued. Takes no reference. */
  Handle PeekHandle() const { return m_handle.load(std::memory_order_acquire); }
  /** Gives back a reference that GetObjectHandle took; false when none of those is left. */
  bool ReleaseObjectHandle();
  /** Lets the handle name nothing from now on. False when there was none. */
  bool DeleteHandle();
  /** Finds the object that a handle names, without a lock; null when it names nothing. */
  static CQMLinkedObject* GetObject(Handle handle) { return FindTarget(handle).object; }
  static SQMHandleTarget FindTarget(Handle handle) {
    // 0 is a slot that is never issued
    CQMHandleList const* const list = GetHandleList();
    return list != nullptr ? list->FindTarget(handle) : SQMHandleTarget{};
  }

  // ---- the tree ----
  void SetParentObject(CQMLinkedObject* parent) { m_parent = parent; }
  CQMLinkedObject* GetParentObject() const { return m_parent; }
  /** Appends child to the list of children, after removing it from the list that holds it. Does not set its
   * parent. */
  void AddChildObject(CQMLinkedObject* child);
  /** Removes child from the list of children, if it is there. Neither destroys it nor changes its parent. */
  void ReleaseChildObject(CQMLinkedObject* child);
  /** Destroys the children, first to last. */
  void DestroyChildren();
  CQMLinkedObject* GetFirstChildObject() const { return m_firstChild; }
  CQMLinkedObject* GetLastChildObject() const { return m_lastChild; }
  long GetChildCount() const;
  // The neighbours in a list of children, or in another list of objects.
  CQMLinkedObject* GetNextObject() const { return m_next; }
  CQMLinkedObject* GetPreviousObject() const { return m_previous; }
  void SetPreviousObject(CQMLinkedObject* object) { m_previous = object; }
  void SetNextObject(CQMLinkedObject* object) { m_next = object; }

  // ---- the process-wide objects; null where memory did not suffice for them ----
  static CQMHandleList* GetHandleList() { return sm_pHandleList.load(std::memory_order_acquire); }
  static CQMDataSpace* GetDataSpace() { return sm_pDataSpace.load(std::memory_order_acquire); }
  /** 0 without a data space. */
  static long GetDataSpaceSize();
  /** Moves the contents of the data space out of memory; 0 without one. */
  static long CacheDataSpace();

 private:
  // The count of live objects goes from 0 to 1 and back only under a lock, with both process-wide objects
  // made before and destroyed after; every other step is one atomic operation.
  static void CountIn() {
    long count = sm_lQMObjectCount.load(std::memory_order_relaxed);
    while (count > 0) {
      if (sm_lQMObjectCount.compare_exchange_weak(count, count + 1, std::memory_order_acquire)) return;
    }
    CountInFirst();
  }
  static void CountOut() {
    long count = sm_lQMObjectCount.load(std::memory_order_relaxed);
    while (count > 1) {
      if (sm_lQMObjectCount.compare_exchange_weak(count, count - 1, std::memory_order_release)) return;
    }
    CountOutLast();
  }
  static void CountInFirst();
  static void CountOutLast();
  static CQMHandleList* ObtainHandleList();

  static std::atomic<CQMHandleList*> sm_pHandleList;
  static std::atomic<CQMDataSpace*> sm_pDataSpace;

  std::atomic<Handle> m_handle{0};          // several threads may ask for it at once
  std::atomic<long> m_handleReferences{0};  // those that ReleaseObjectHandle may give back
  CQMLinkedObject* m_parent = nullptr;
  CQMLinkedObject* m_list = nullptr;  // whose list of children holds this object; not always its parent
  CQMLinkedObject* m_firstChild = nullptr;
  CQMLinkedObject* m_lastChild = nullptr;
  CQMLinkedObject* m_previous = nullptr;
  CQMLinkedObject* m_next = nullptr;
};

/** The object of a handle, if it has the type tag of Class; else null. */
template <class Class>
Class* ObjectFromHandle(Handle handle) {
  CQMLinkedObject* object = CQMLinkedObject::GetObject(handle);
  return object != nullptr && object->HasTypeTag(Class::kTypeTag) ? static_cast<Class*>(object) : nullptr;
}

}  // namespace qumel
