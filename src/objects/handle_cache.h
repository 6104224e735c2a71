// A cache in front of the handle list, which finds the objects again that were last found by their handles.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

#include "objects/handle_list.h"

namespace qumel {

/** Remembers slots of the handle list that hold objects of one class, each in the place that its handle
 * chooses. A deleted handle is not found any more, since its slot no longer holds it. Without a lock: a cache
 * is used by one thread at a time, which also sees to it that no other thread deletes handles in the cache
 * meanwhile. It does not outlive the handle list. */
template <class Object>
class CQMHandleCache {
 public:
  constexpr CQMHandleCache() { Clear(); }

  constexpr void Clear() {
    for (std::size_t place = 0; place < kPlaces; ++place) m_slots[place] = &kEmptySlots[(place + 1) % 2];
  }
  void Keep(Handle handle, SQMHandleSlot const& slot) { m_slots[PlaceOf(handle)] = &slot; }
  /** Whether the cache knows handle, and what it names. */
  bool Find(Handle handle, CQMLinkedObject*& object) const {
    SQMHandleSlot const& slot = *m_slots[PlaceOf(handle)];
    if (slot.handle != handle) return false;
    object = slot.object.load(std::memory_order_relaxed);
    if (object == nullptr) __builtin_unreachable();  // callers need not ask
    return true;
  }

 private:
  static constexpr std::size_t kPlaces = 64;
  static_assert(std::has_single_bit(kPlaces) && kPlaces <= CQMHandleList::kSlotsPerList);

  static constexpr std::size_t PlaceOf(Handle handle) { return CQMHandleList::DecodeRight(handle) % kPlaces; }
  /** Stand in places without a slot: each holds a handle of other places, so that it is never the one that is
   * looked for. */
  static constinit inline SQMHandleSlot const kEmptySlots[2] = {
      {.handle = CQMHandleList::EncodeHandle(0, 0)}, {.handle = CQMHandleList::EncodeHandle(0, 1)}};

  std::array<SQMHandleSlot const*, kPlaces> m_slots;
};

}  // namespace qumel
