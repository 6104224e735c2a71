// A growable array of atoms of one size, each with a flag byte, laid over chunks of a data space.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "objects/object.h"

namespace qumel {

class CQMDataSpace;

/** Flags of an atom. */
namespace AtomFlag {
constexpr std::uint8_t kIncomparable =
    1;  // comparisons take the atom for smaller than anything; set by callers only
constexpr std::uint8_t kDeleted = 2;
}  // namespace AtomFlag

/** Atoms count from 1. Not to be shared by threads that change it; reading a region in memory takes no lock.
 */
class CQMDataSpaceRegion : public CQMObject {
 public:
  static constexpr long kChunkBytes = 65536;  // about what one chunk holds
  static constexpr long kMaxAtomsPerChunk = 1024;
  static constexpr long kSlotBlock = 128;  // the slot array grows by so many
  static constexpr long kMaxAtoms = 0x7FFFFFFF;
  static constexpr long kMaxAtomSize = 0x3FFFFFFF;

  /** space must outlive the region; null is the library's shared data space, or a space of the region's own
   * where no shared one exists. An atom size out of range is taken for the nearest bound. */
  explicit CQMDataSpaceRegion(long atomSize, CQMDataSpace* space = nullptr);
  ~CQMDataSpaceRegion() override;

  /** Sets atom size and space of an empty region; what the region held is released. */
  void SetRegionAttributes(long atomSize, CQMDataSpace* space);

  /** The number of a new atom of zeros, or 0 when memory or atom numbers are exhausted. */
  long AppendAtom();
  /** Takes one more chunk when count more atoms end in another chunk than the present ones, and always for 0.
   *  -1 when memory is exhausted, else 0. */
  long ExtendRegion(long count);
  /** Frees every chunk. */
  void ReleaseRegion();

  /** The address of an atom; null when there is no such atom or its chunk cannot be read. In a file-backed
   * region it holds only until another atom is looked for. */
  std::byte* GetAtomPtr(long atom) const {
    if (!ValidateItemNumber(atom)) return nullptr;
    std::byte* const chunk = ChunkMemory(SlotOf(atom));
    return chunk != nullptr ? chunk + PlaceOf(atom) * m_atomSize : nullptr;
  }
  bool ValidateItemNumber(long atom) const { return atom >= 1 && atom <= m_atomCount; }
  /** Tells that an atom was changed through its address. */
  void SetFlushFlag(long atom);
  /** Moves count atoms from first on to target on; the ranges may overlap. Flags stay. False when an atom of
   * either range does not exist or cannot be read. */
  bool MoveAtoms(long first, long target, long count);

  void SetAtomFlags(long atom, std::uint8_t flags);
  void ClearAtomFlags(long atom, std::uint8_t flags);
  /** Whether any of flags is set. */
  bool TestAtomFlags(long atom, std::uint8_t flags) const;
  void DeleteAtom(long atom) { SetAtomFlags(atom, AtomFlag::kDeleted); }

  long GetAtomSize() const { return m_atomSize; }
  long GetAtomCount() const { return m_atomCount; }
  long GetBytesUsed() const { return m_bytesUsed; }
  long GetAtomsPerChunk() const { return m_atomsPerChunk; }
  long GetChunkSize() const { return m_chunkSize; }
  long GetChunksInUse() const { return m_currentSlot + 1; }
  /** Whether addresses of atoms may change while the atoms stay. */
  bool IsMovable() const { return m_movable; }

 private:
  struct SQMSlot {
    long chunk;
    std::byte* memory;  // null in a file-backed space: there the chunk must be looked for each time
  };

  // Atoms number at most kMaxAtoms; narrow divisions take half the time of wide ones.
  long SlotOf(long atom) const { return static_cast<std::uint32_t>(atom - 1) / m_divisor; }
  long PlaceOf(long atom) const { return static_cast<std::uint32_t>(atom - 1) % m_divisor; }
  std::byte* ChunkMemory(long slot) const {
    SQMSlot const& entry = m_slots[static_cast<std::size_t>(slot)];
    return entry.memory != nullptr ? entry.memory : LookForChunk(entry.chunk);
  }
  std::byte* LookForChunk(long chunk) const;
  std::byte* FlagOf(long atom) const;
  bool MoveRun(long first, long target, long count);

  CQMDataSpace* m_space = nullptr;
  std::unique_ptr<CQMDataSpace> m_ownSpace;
  bool m_movable = false;
  long m_atomSize = 1;
  long m_atomsPerChunk = kMaxAtomsPerChunk;
  std::uint32_t m_divisor = kMaxAtomsPerChunk;  // the same
  long m_chunkSize = 2 * kMaxAtomsPerChunk;
  long m_flagOffset = kMaxAtomsPerChunk;
  long m_atomCount = 0;
  long m_bytesUsed = 0;
  long m_currentSlot = -1;
  std::vector<SQMSlot> m_slots;
};

}  // namespace qumel
