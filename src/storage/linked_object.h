// A named object that is also a node of an object tree and can be named from outside by a 64-bit handle.
#pragma once

#include <cstdint>

#include "storage/object.h"

namespace qumel {

class CQMHandleList;
class CQMDataSpace;

/** 0 is never issued. Low 32 bits: list index; high 32 bits: slot in that list. */
using Handle = unsigned long long;

/** A parent destroys its children. The tree has no lock: each tree is used by one context. */
class CQMLinkedObject : public CQMObject {
 public:
  CQMLinkedObject();
  ~CQMLinkedObject() override;

  /** Issues the handle at the first call; every call takes a reference. 0 when no handle can be issued. */
  Handle GetObjectHandle();
  bool ReleaseObjectHandle();
  /** The live object that a handle names, or null. Takes no lock. */
  static CQMLinkedObject* GetObject(Handle handle);

  void SetParentObject(CQMLinkedObject* parent);
  CQMLinkedObject* GetParentObject() const { return m_parent; }
  CQMLinkedObject* GetRootObject();
  CQMLinkedObject* CacheRootObject();
  CQMLinkedObject* GetCachedRootObject() const { return m_rootCache; }

  /** Appends child; does not set its parent. */
  void AddChildObject(CQMLinkedObject* child);
  void AdoptChildren(CQMLinkedObject* from);
  void ReleaseChildren(CQMLinkedObject* other);
  /** Unlinks child without destroying it. Its parent link stays; an inner child keeps its own sibling links. */
  void ReleaseChildObject(CQMLinkedObject* child);
  void ReleaseSelf();
  void DestroyChildren();
  void SetDestroyChildren(bool destroy) { m_destroyChildren = destroy; }

  CQMLinkedObject* GetNthChildObject(long n);
  CQMLinkedObject* GetNthSiblingObject(long n);
  CQMLinkedObject* GetFirstSiblingObject();
  CQMLinkedObject* GetLastSiblingObject();
  CQMLinkedObject* GetFirstChildObject() const { return m_firstChild; }
  CQMLinkedObject* GetLastChildObject();
  CQMLinkedObject* GetNextObject() const { return m_next; }
  CQMLinkedObject* GetPreviousObject() const { return m_previous; }
  long GetChildCount() const { return m_childCount; }
  long UpdateChildCount();
  void SetPreviousObject(CQMLinkedObject* object) { m_previous = object; }
  void SetNextObject(CQMLinkedObject* object) { m_next = object; }

  static void CreateHandleList();
  static void DestroyHandleList();
  static CQMHandleList* GetHandleList();
  static void CreateDataSpace(char const* directory);
  static void DestroyDataSpace();
  static CQMDataSpace* GetDataSpace();
  static long GetDataSpaceSize();
  static long CacheDataSpace();

 private:
  bool m_destroyChildren = true;
  long m_childCount = 0;
  Handle m_handle = 0;
  CQMLinkedObject* m_rootCache = nullptr;
  CQMLinkedObject* m_parent = nullptr;
  CQMLinkedObject* m_firstChild = nullptr;
  CQMLinkedObject* m_lastChild = nullptr;
  CQMLinkedObject* m_previous = nullptr;
  CQMLinkedObject* m_next = nullptr;
};

/** The object behind a handle when it carries the tag of Class (Class::kTypeTag), else null. */
template <class Class>
Class* ObjectFromHandle(Handle handle) {
  CQMLinkedObject* object = CQMLinkedObject::GetObject(handle);
  return object != nullptr && object->HasTypeTag(Class::kTypeTag) ? static_cast<Class*>(object) : nullptr;
}

}  // namespace qumel
