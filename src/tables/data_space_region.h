// A growable array of atoms of one size, laid over chunks of a data space.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "objects/object.h"

namespace qumel {

class CQMDataSpace;

/** Atoms count from 1. The first chunk comes with the first atom and is small; each further one doubles what
 * the region holds, until chunks have their full size. Atoms stay where they are while the region grows. Not
 * to be shared by threads that change it; reading a region in memory takes no lock. */
class CQMDataSpaceRegion : public CQMObject {
 public:
  static constexpr long kFirstChunkBytes = 32;  // about what the first chunk holds; at least one atom
  static constexpr long kChunkBytes = 65536;    // about what a full chunk holds
  static constexpr long kMaxAtomsPerChunk = 1024;
  static constexpr long kMaxAtoms = 0x7FFFFFFF;
  static constexpr long kMaxAtomSize = 0x3FFFFFFF;

  /** space must outlive the region; null is the library's shared data space, or a space of the region's own
   * where no shared one exists. An atom size out of range is taken for the nearest bound. */
  explicit CQMDataSpaceRegion(long atomSize, CQMDataSpace* space = nullptr);
  ~CQMDataSpaceRegion() override;

  /** The number of a new atom of zeros, or 0 when memory or atom numbers are exhausted. */
  long AppendAtom();
  /** Frees every chunk. */
  void ReleaseRegion();

  /** The address of an atom; null when there is no such atom or its chunk cannot be read. In a file-backed
   * region it holds only until another atom is looked for. */
  std::byte* GetAtomPtr(long atom) const { return ValidateItemNumber(atom) ? FindAtom(atom) : nullptr; }
  /** The same for an atom that exists. */
  std::byte* FindAtom(long atom) const {
    SQMSlot const& slot = m_slots[SlotOf(atom)];
    std::byte* const chunk = slot.memory != nullptr ? slot.memory : LookForChunk(slot.chunk);
    return chunk != nullptr ? chunk + PlaceIn(slot, atom) * m_atomSize : nullptr;
  }
  bool ValidateItemNumber(long atom) const { return atom >= 1 && atom <= m_atomCount; }
  /** Tells that an atom was changed through its address. */
  void SetFlushFlag(long atom);
  /** Moves count atoms from first on to target on; the ranges may overlap. False when an atom of
   * either range does not exist or cannot be read. */
  bool MoveAtoms(long first, long target, long count);
  /** Drops all atoms but those named, in ascending order; these count anew from 1. Only
   * where addresses hold (see IsMovable). */
  void KeepAtoms(std::span<std::int32_t const> atoms);

  long GetAtomSize() const { return m_atomSize; }
  long GetAtomCount() const { return m_atomCount; }
  long GetBytesUsed() const { return m_atomCount * m_atomSize; }
  /** Whether addresses of atoms may change while the atoms stay. */
  bool IsMovable() const { return m_movable; }

 private:
  struct SQMSlot {
    std::int32_t chunk;
    std::uint32_t first;  // how many atoms stand in the chunks before
    std::byte* memory;    // null in a file-backed space: there the chunk must be looked for each time
  };

  // The chunks that double the region hold a power of two of atoms each, full ones as many as fit.
  std::size_t SlotOf(long atom) const {
    auto const before = static_cast<std::uint32_t>(atom - 1);
    if (before < m_doubledAtoms)
      return static_cast<std::size_t>(std::bit_width((before << 1 | 1) | m_firstMask)) - m_firstWidth;
    return m_doubledSlots + (before - m_doubledAtoms) / m_atomsPerChunk;  // narrow, which takes half the time
  }
  long CapacityOf(std::size_t slot) const;
  static long PlaceIn(SQMSlot const& slot, long atom) { return atom - 1 - static_cast<long>(slot.first); }
  std::byte* LookForChunk(long chunk) const;
  bool ExtendRegion();
  void DropSlotsFrom(std::size_t slot);
  bool MoveRun(long first, long target, long count);

  CQMDataSpace* m_space = nullptr;
  std::unique_ptr<CQMDataSpace> m_ownSpace;
  bool m_movable = false;
  std::uint32_t m_atomsPerChunk;  // of a full chunk
  std::uint32_t m_doubledAtoms;   // in the chunks before the first full one
  std::uint32_t m_doubledSlots;
  std::uint32_t m_firstMask;  // 2 * n - 1 for n atoms in the first chunk
  std::uint32_t m_firstWidth;
  long m_atomSize;
  long m_atomCount = 0;
  std::vector<SQMSlot> m_slots;
};

}  // namespace qumel
