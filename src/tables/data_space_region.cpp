// Appending and addressing atoms.
#include "tables/data_space_region.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "objects/linked_object.h"
#include "tables/data_space.h"

namespace qumel {

CQMDataSpaceRegion::CQMDataSpaceRegion(long atomSize, CQMDataSpace* space)
    : m_space(space != nullptr ? space : CQMLinkedObject::GetDataSpace()),
      m_atomSize(std::clamp(atomSize, 1L, kMaxAtomSize)) {
  SetTypeTag(TypeTag::kDataSpaceRegion);
  if (m_space == nullptr) {
    m_ownSpace = std::make_unique<CQMDataSpace>();
    m_space = m_ownSpace.get();
  }
  m_movable = m_space->IsFileBacked();
  m_atomsPerChunk = static_cast<std::uint32_t>(std::clamp(kChunkBytes / m_atomSize, 1L, kMaxAtomsPerChunk));
  auto const firstAtoms = std::bit_floor(
      std::min(m_atomsPerChunk, static_cast<std::uint32_t>(std::max(kFirstChunkBytes / m_atomSize, 1L))));
  m_doubledAtoms = std::bit_floor(m_atomsPerChunk);
  m_firstMask = 2 * firstAtoms - 1;
  m_firstWidth = static_cast<std::uint32_t>(std::bit_width(m_firstMask));
  m_doubledSlots = static_cast<std::uint32_t>(std::bit_width(m_doubledAtoms / firstAtoms));
}

CQMDataSpaceRegion::~CQMDataSpaceRegion() { ReleaseRegion(); }

/** How many atoms the chunk of a slot has room for. */
long CQMDataSpaceRegion::CapacityOf(std::size_t slot) const {
  if (slot >= m_doubledSlots) return m_atomsPerChunk;
  std::uint32_t const firstAtoms = (m_firstMask + 1) / 2;
  return slot == 0 ? firstAtoms : firstAtoms << (slot - 1);
}

/** Takes one more chunk. */
bool CQMDataSpaceRegion::ExtendRegion() {
  try {
    SQMSlot& slot = m_slots.emplace_back();
    slot.first = static_cast<std::uint32_t>(m_atomCount);
  } catch (std::bad_alloc const&) {
    return false;
  }
  long const chunk = m_space->AssignChunk(m_atomSize * CapacityOf(m_slots.size() - 1));
  std::byte* const memory =
      chunk != CQMDataSpace::kNoChunk && !m_movable ? m_space->FindChunk(chunk) : nullptr;
  if (chunk == CQMDataSpace::kNoChunk) {
    m_slots.pop_back();
    return false;
  }
  m_slots.back().chunk = static_cast<std::int32_t>(chunk);
  m_slots.back().memory = memory;
  return true;
}

long CQMDataSpaceRegion::AppendAtom() {
  if (m_atomCount == kMaxAtoms) return 0;
  std::size_t const slot = SlotOf(m_atomCount + 1);
  if (slot == m_slots.size() && !ExtendRegion()) return 0;
  if (m_movable) m_space->SetNeedsFlush(m_slots[slot].chunk);
  return ++m_atomCount;
}

void CQMDataSpaceRegion::ReleaseRegion() {
  DropSlotsFrom(0);
  m_atomCount = 0;
}

void CQMDataSpaceRegion::DropSlotsFrom(std::size_t slot) {
  for (std::size_t i = slot; i < m_slots.size(); ++i) m_space->FreeChunk(m_slots[i].chunk);
  m_slots.resize(std::min(slot, m_slots.size()));
}

std::byte* CQMDataSpaceRegion::LookForChunk(long chunk) const { return m_space->FindChunk(chunk); }

void CQMDataSpaceRegion::SetFlushFlag(long atom) {
  // Where nothing is ever written out nobody asks.
  if (m_movable && ValidateItemNumber(atom)) m_space->SetNeedsFlush(m_slots[SlotOf(atom)].chunk);
}

// ---- moving ----

bool CQMDataSpaceRegion::MoveAtoms(long first, long target, long count) {
  if (count < 1 || first == target) return count >= 0;
  if (!ValidateItemNumber(first) || !ValidateItemNumber(target)) return false;
  if (count - 1 > m_atomCount - std::max(first, target)) return false;
  bool const isUpwards = target > first;
  auto const before = [this](long atom) { return PlaceIn(m_slots[SlotOf(atom)], atom); };
  auto const behind = [this, before](long atom) { return CapacityOf(SlotOf(atom)) - before(atom); };
  while (count > 0) {
    long run;
    if (isUpwards) {  // from the last atom down, so that none is overwritten before it has moved
      run = std::min({count, before(first + count - 1) + 1, before(target + count - 1) + 1});
      if (!MoveRun(first + count - run, target + count - run, run)) return false;
    } else {
      run = std::min({count, behind(first), behind(target)});
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

void CQMDataSpaceRegion::KeepAtoms(std::span<std::int32_t const> atoms) {
  auto const size = static_cast<std::size_t>(m_atomSize);
  long kept = 0;
  for (std::int32_t const atom : atoms) {
    if (!ValidateItemNumber(atom)) break;
    if (++kept == atom) continue;
    std::memcpy(GetAtomPtr(kept), GetAtomPtr(atom), size);
  }
  for (long atom = kept + 1; atom <= m_atomCount && SlotOf(atom) == SlotOf(kept + 1); ++atom) {
    std::memset(GetAtomPtr(atom), 0, size);
  }
  m_atomCount = kept;
  DropSlotsFrom(kept > 0 ? SlotOf(kept) + 1 : 0);
}

}  // namespace qumel
