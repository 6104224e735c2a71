// A cache in front of the handle list.
#pragma once

#include <array>
#include <bit>
#include <cstddef>

#include "objects/handle_list.h"

namespace qumel {

/** A direct-mapped cache of slots of the handle list that hold objects of one class. A deleted handle is not
 * found, since its slot does not hold it any more. There is no lock: a cache is used by one thread at a time,
 * and no other thread may delete a handle in it meanwhile. Its user clears it before the handle list goes. */
template <class Object>
class CQMHandleCache {
 public:
  constexpr CQMHandleCache() { Clear(); }

  constexpr void Clear() {
    for (std::size_t place = 0; place < kPlaces; ++place) m_slots[place] = &kEmptySlots[(place + 1) % 2];
  }
  void Keep(Handle handle, SQMHandleSlot const& slot) { m_slots[PlaceOf(handle)] = &slot; }
  /** Whether handle is in the cache; object becomes what it names. */
  bool Find(Handle handle, CQMLinkedObject*& object) const {
    SQMHandleSlot const& slot = *m_slots[PlaceOf(handle)];
    if (slot.handle != handle) return false;
    object = slot.object.load(std::memory_order_relaxed);
    if (object == nullptr) __builtin_unreachable();  // saves the check of the caller
    return true;
  }

 private:
  static constexpr std::size_t kPlaces = 64;
  static_assert(std::has_single_bit(kPlaces) && kPlaces <= CQMHandleList::kSlotsPerList);

  static constexpr std::size_t PlaceOf(Handle handle) { return CQMHandleList::DecodeRight(handle) % kPlaces; }
  /** Slots for the places that are free. The one in a place holds a handle of another place, so that it never
   * is the handle that is looked for. */
  static constinit inline SQMHandleSlot const kEmptySlots[2] = {
      {.handle = CQMHandleList::EncodeHandle(0, 0)}, {.handle = CQMHandleList::EncodeHandle(0, 1)}};

  std::array<SQMHandleSlot const*, kPlaces> m_slots;
};

}  // namespace qumel
