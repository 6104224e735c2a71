// The process-wide table behind handles: issues them, and finds the object of one without a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace qumel {

class CQMLinkedObject;
/** Defined by the floor of contexts: keeps the objects of a context alive while a call uses them by handle.
 */
class CQMContextGate;

/** 0 is never issued. Low 32 bits: list index; high 32 bits: slot in that list. */
using Handle = unsigned long long;

/** What a handle names and which gate guards that; both null for a handle that names nothing. An object that
 * belongs to no context has no gate. */
struct SQMHandleTarget {
  CQMLinkedObject* object = nullptr;
  CQMContextGate* gate = nullptr;
};

/** The place of one handle. Its object is null before the handle is issued and after it was deleted. */
struct SQMHandleSlot {
  std::atomic<CQMLinkedObject*> object{nullptr};
  std::atomic<CQMContextGate*> gate{nullptr};  // stored before the object, never changed
  /** The handle, or the neighbour of a deleted handle, which is never looked for here. Only a thread that
   * keeps the handle from being deleted may read it, as the users of CQMHandleCache do. */
  Handle handle = 0;
};

/** Lists of kSlotsPerList slots, reached through a list of lists. Slots are never reused or moved, and lists
 * of lists that were outgrown stay until the end, so that a lookup needs no lock; issuing and deleting take
 * the mutex. */
class CQMHandleList {
 public:
  static constexpr unsigned kSlotsPerList = 1024;
  static constexpr std::size_t kListsPerGrowth = 128;

  /** Issuing starts in list 1; list 0 stays empty, so that no handle is 0. */
  CQMHandleList();

  /** Issues a handle for object; 0 when the lists are full and cannot grow. */
  Handle AssignHandle(CQMLinkedObject* object, CQMContextGate* gate = nullptr);
  /** Finds what handle names; a handle that was not issued or was deleted names nothing. */
  SQMHandleTarget FindTarget(Handle handle) const {
    SQMHandleSlot const* const slot = FindSlot(handle);
    if (slot == nullptr) return {};
    CQMLinkedObject* const object = slot->object.load(std::memory_order_acquire);
    return object != nullptr ? SQMHandleTarget{object, slot->gate.load(std::memory_order_relaxed)}
                             : SQMHandleTarget{};
  }
  /** The slot of handle, which may be empty; null where there is none. */
  SQMHandleSlot* FindSlot(Handle handle) const {
    // slots that were not issued yet are empty, so that only the bounds are to be checked
    SQMDirectory const& directory = *m_directory.load(std::memory_order_acquire);
    unsigned const left = DecodeLeft(handle), right = DecodeRight(handle);
    if (left >= directory.capacity || right >= kSlotsPerList) return nullptr;
    Slots* const list = directory.lists[left].load(std::memory_order_acquire);
    return list != nullptr ? &(*list)[right] : nullptr;
  }
  /** Lets handle, which must have been issued, name nothing from now on. */
  void MarkHandleDeleted(Handle handle);

  static constexpr Handle EncodeHandle(unsigned left, unsigned right) { return Handle{right} << 32 | left; }
  static constexpr unsigned DecodeLeft(Handle handle) { return static_cast<unsigned>(handle & 0xFFFFFFFFu); }
  static constexpr unsigned DecodeRight(Handle handle) { return static_cast<unsigned>(handle >> 32); }
  static constexpr Handle NeighbourOf(Handle handle) {
    return EncodeHandle(DecodeLeft(handle), DecodeRight(handle) ^ 1);
  }

 private:
  using Slots = std::array<SQMHandleSlot, kSlotsPerList>;
  struct SQMDirectory {  // a list of lists
    explicit SQMDirectory(std::size_t size)
        : capacity(size), lists(std::make_unique<std::atomic<Slots*>[]>(size)) {}
    std::size_t capacity;
    std::unique_ptr<std::atomic<Slots*>[]> lists;
  };

  void AppendHandleList();
  void ExtendHandleListList();

  std::atomic<SQMDirectory*> m_directory{nullptr};  // the newest, which lookups read
  std::mutex m_mutex;                               // guards what follows
  std::vector<std::unique_ptr<SQMDirectory>> m_directories;
  std::vector<std::unique_ptr<Slots>> m_lists;  // the last one is the current list
  unsigned m_nextFreeSlot = 0;
};

}  // namespace qumel
