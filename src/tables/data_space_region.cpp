// Appending and addressing atoms.
#include "tables/data_space_region.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "objects/linked_object.h"
#include "tables/data_space.h"

namespace qumel {

CQMDataSpaceRegion::CQMDataSpaceRegion(long atomSize, CQMDataSpace* space) {
  SetTypeTag(TypeTag::kDataSpaceRegion);
  SetRegionAttributes(atomSize, space);
  ExtendRegion(0);
}

CQMDataSpaceRegion::~CQMDataSpaceRegion() { ReleaseRegion(); }

void CQMDataSpaceRegion::SetRegionAttributes(long atomSize, CQMDataSpace* space) {
  if (space == nullptr) space = CQMLinkedObject::GetDataSpace();
  if (space == nullptr) {
    if (m_ownSpace == nullptr) m_ownSpace = std::make_unique<CQMDataSpace>();
    space = m_ownSpace.get();
  }
  ReleaseRegion();
  m_space = space;
  m_movable = space->IsFileBacked();
  m_atomSize = std::clamp(atomSize, 1L, kMaxAtomSize);
  m_atomsPerChunk = std::clamp(kChunkBytes / m_atomSize, 1L, kMaxAtomsPerChunk);
  m_divisor = static_cast<std::uint32_t>(m_atomsPerChunk);
  m_flagOffset = m_atomSize * m_atomsPerChunk;
  m_chunkSize = m_flagOffset + m_atomsPerChunk;
}

long CQMDataSpaceRegion::ExtendRegion(long count) {
  if (count < 0) return 0;
  long const last = m_atomCount - 1;
  // The quotients truncate toward zero: the first atom uses the chunk made at construction.
  if (count > 0 &&
      last / m_atomsPerChunk == static_cast<long>((std::int64_t{last} + count) / m_atomsPerChunk))
    return 0;
  auto const slot = static_cast<std::size_t>(m_currentSlot + 1);
  try {
    if (slot == m_slots.size()) m_slots.resize(slot + kSlotBlock, SQMSlot{CQMDataSpace::kNoChunk, nullptr});
  } catch (std::bad_alloc const&) {
    return -1;
  }
  // An empty table costs no memory: most of those that a short evaluation makes stay empty.
  long const chunk = m_space->AssignChunk(m_chunkSize, EQMChunkMemory::AtFirstUse);
  if (chunk == CQMDataSpace::kNoChunk) return -1;
  m_slots[slot] = {chunk, nullptr};
  ++m_currentSlot;
  return 0;
}

long CQMDataSpaceRegion::AppendAtom() {
  if (m_atomCount == kMaxAtoms) return 0;
  long const number = m_atomCount / m_atomsPerChunk;
  if (number > m_currentSlot && ExtendRegion(number == 0 ? 0 : 1) != 0) return 0;
  SQMSlot& slot = m_slots[static_cast<std::size_t>(number)];
  if (m_movable) {
    m_space->SetNeedsFlush(slot.chunk);
  } else if (slot.memory == nullptr) {
    slot.memory = m_space->FindChunk(slot.chunk);
    if (slot.memory == nullptr) return 0;
  }
  m_bytesUsed += m_atomSize;
  return ++m_atomCount;
}

void CQMDataSpaceRegion::ReleaseRegion() {
  for (long i = 0; i <= m_currentSlot; ++i) m_space->FreeChunk(m_slots[static_cast<std::size_t>(i)].chunk);
  m_slots = {};
  m_currentSlot = -1;
  m_atomCount = 0;
  m_bytesUsed = 0;
}

std::byte* CQMDataSpaceRegion::LookForChunk(long chunk) const { return m_space->FindChunk(chunk); }

void CQMDataSpaceRegion::SetFlushFlag(long atom) {
  // Where nothing is ever written out nobody asks.
  if (m_movable && ValidateItemNumber(atom))
    m_space->SetNeedsFlush(m_slots[static_cast<std::size_t>(SlotOf(atom))].chunk);
}

// ---- moving ----

bool CQMDataSpaceRegion::MoveAtoms(long first, long target, long count) {
  if (count < 1 || first == target) return count >= 0;
  if (!ValidateItemNumber(first) || !ValidateItemNumber(target)) return false;
  if (count - 1 > m_atomCount - std::max(first, target)) return false;
  bool const isUpwards = target > first;
  while (count > 0) {
    long run;
    if (isUpwards) {  // from the last atom down, so that none is overwritten before it has moved
      run = std::min({count, PlaceOf(first + count - 1) + 1, PlaceOf(target + count - 1) + 1});
      if (!MoveRun(first + count - run, target + count - run, run)) return false;
    } else {
      run = std::min({count, m_atomsPerChunk - PlaceOf(first), m_atomsPerChunk - PlaceOf(target)});
      if (!MoveRun(first, target, run)) return false;
      first += run;
      target += run;
    }
    count -= run;
  }
  return true;
}

/** Moves atoms that lie in one chunk to places in one chunk. */
bool CQMDataSpaceRegion::MoveRun(long first, long target, long count) {
  std::byte const* source = GetAtomPtr(first);
  auto const size = static_cast<std::size_t>(count * m_atomSize);
  std::vector<std::byte> copy;
  if (m_movable && source != nullptr) {  // looking for the target may take the source from the memory
    try {
      copy.assign(source, source + size);
    } catch (std::bad_alloc const&) {
      return false;
    }
    source = copy.data();
  }
  std::byte* const place = GetAtomPtr(target);
  if (source == nullptr || place == nullptr) return false;
  std::memmove(place, source, size);
  SetFlushFlag(target);
  return true;
}

// ---- flags ----

std::byte* CQMDataSpaceRegion::FlagOf(long atom) const {
  if (!ValidateItemNumber(atom)) return nullptr;
  std::byte* const chunk = ChunkMemory(SlotOf(atom));
  return chunk != nullptr ? chunk + m_flagOffset + PlaceOf(atom) : nullptr;
}

void CQMDataSpaceRegion::SetAtomFlags(long atom, std::uint8_t flags) {
  std::byte* const flag = FlagOf(atom);
  if (flag == nullptr) return;
  *flag |= std::byte{flags};
  SetFlushFlag(atom);
}

void CQMDataSpaceRegion::ClearAtomFlags(long atom, std::uint8_t flags) {
  std::byte* const flag = FlagOf(atom);
  if (flag == nullptr) return;
  *flag &= ~std::byte{flags};
  SetFlushFlag(atom);
}

bool CQMDataSpaceRegion::TestAtomFlags(long atom, std::uint8_t flags) const {
  std::byte const* const flag = FlagOf(atom);
  return flag != nullptr && (*flag & std::byte{flags}) != std::byte{0};
}

}  // namespace qumel
