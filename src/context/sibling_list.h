// A list of objects chained through their sibling links: contexts, thread records.
#pragma once

#include <memory>
#include <utility>

namespace qumel {

/** Owns its objects, but has no destructor, so that a list of static storage duration is never destroyed: its
 * user has to empty it. The objects of a list belong to no object tree. It has no lock. */
template <class Object>
class CQMSiblingList {
 public:
  Object* GetFirst() const { return m_first; }
  static Object* GetNext(Object const* object) { return static_cast<Object*>(object->GetNextObject()); }

  Object* Append(std::unique_ptr<Object> owner) {
    Object* const object = owner.release();
    object->SetPreviousObject(m_last);
    object->SetNextObject(nullptr);
    if (m_last != nullptr) m_last->SetNextObject(object);
    if (m_first == nullptr) m_first = object;
    m_last = object;
    return object;
  }

  /** object must be in this list. */
  std::unique_ptr<Object> Remove(Object* object) {
    auto* const previous = static_cast<Object*>(object->GetPreviousObject());
    Object* const next = GetNext(object);
    if (previous != nullptr) previous->SetNextObject(next);
    if (next != nullptr) next->SetPreviousObject(previous);
    if (m_first == object) m_first = next;
    if (m_last == object) m_last = previous;
    object->SetPreviousObject(nullptr);
    object->SetNextObject(nullptr);
    return std::unique_ptr<Object>(object);
  }

  std::unique_ptr<Object> RemoveFirst() { return m_first != nullptr ? Remove(m_first) : nullptr; }

  /** The first object that fits, or null. */
  template <class Predicate>
  Object* Find(Predicate fits) const {
    Object* object = m_first;
    while (object != nullptr && !fits(*object)) object = GetNext(object);
    return object;
  }

 private:
  Object* m_first = nullptr;
  Object* m_last = nullptr;
};

}  // namespace qumel
