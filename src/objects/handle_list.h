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
/** Guards the objects of a context from being destroyed while a call uses them by handle. It belongs to the
 * floor of contexts. */
class CQMContextGate;

/** 0 is never issued. Low 32 bits: list index; high 32 bits: slot in that list. */
using Handle = unsigned long long;

/** What a handle names, and what guards it; neither for a handle that names nothing. An object that belongs
 * to no context has no guard. */
struct SQMHandleTarget {
  CQMLinkedObject* object = nullptr;
  CQMContextGate* gate = nullptr;
};

/** A place for one handle; empty before it is issued and after it was deleted. */
struct SQMHandleSlot {
  std::atomic<CQMLinkedObject*> object{nullptr};
  std::atomic<CQMContextGate*> gate{nullptr};  // stored before the object, and never again
  /** The handle; of a deleted one its neighbour, which nobody looks for here. To be read only where no other
   * thread can delete the handle: see CQMHandleCache. */
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

  /** The handle now standing for object, or 0 when the lists are full and cannot grow. */
  Handle AssignHandle(CQMLinkedObject* object, CQMContextGate* gate = nullptr);
  /** Nothing for a handle that was not issued yet or was deleted. */
  SQMHandleTarget FindTarget(Handle handle) const {
    SQMHandleSlot const* const slot = FindSlot(handle);
    if (slot == nullptr) return {};
    CQMLinkedObject* const object = slot->object.load(std::memory_order_acquire);
    return object != nullptr ? SQMHandleTarget{object, slot->gate.load(std::memory_order_relaxed)}
                             : SQMHandleTarget{};
  }
  /** The slot of handle, which may be empty; null where there is none. */
  SQMHandleSlot* FindSlot(Handle handle) const {
    // Slots that were not issued yet are empty, so there is nothing to validate but the bounds.
    SQMDirectory const& directory = *m_directory.load(std::memory_order_acquire);
    unsigned const left = DecodeLeft(handle), right = DecodeRight(handle);
    if (left >= directory.capacity || right >= kSlotsPerList) return nullptr;
    Slots* const list = directory.lists[left].load(std::memory_order_acquire);
    return list != nullptr ? &(*list)[right] : nullptr;
  }
  /** An issued handle names nothing from now on. */
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

  std::atomic<SQMDirectory*> m_directory{nullptr};  // the newest; what lookups read
  std::mutex m_mutex;                               // guards all below
  std::vector<std::unique_ptr<SQMDirectory>> m_directories;
  std::vector<std::unique_ptr<Slots>> m_lists;  // the last one is the current list
  unsigned m_nextFreeSlot = 0;
};

}  // namespace qumel
