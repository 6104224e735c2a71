// Types and storage of datums: what each type records, where the elements lie, promotion to complex.
#include "values/datum.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qumel {

constinit std::atomic<std::uint32_t> CQMDatum::sm_storageEpoch{0};

CQMDatum::CQMDatum() : m_current(m_inline) { SetTypeTag(kTypeTag); }

CQMDatum::CQMDatum(EQMDataType type, char const* name) : CQMDatum() {
  if (name != nullptr) SetObjectName(name);
  SetDatumType(type);
}

// ---- storage ----

// False when there is no memory for so much: then the datum is as it was.
bool CQMDatum::StoreElements(std::int64_t count, std::int32_t elementSize) {
  if (elementSize > 0 && count > kMaximumArrayBytes / elementSize) return false;
  auto const bytes = static_cast<std::size_t>(count) * static_cast<std::size_t>(elementSize);
  std::unique_ptr<std::byte[]> storage;
  if (bytes > kInlineBytes) {
    try {
      storage = std::make_unique<std::byte[]>(bytes + kReadMargin);
    } catch (std::bad_alloc const&) {
      return false;
    }
  }
  std::fill(std::begin(m_inline), std::end(m_inline), std::byte{0});
  m_storage = std::move(storage);
  m_value = bytes == 0 ? nullptr : m_storage != nullptr ? m_storage.get() : m_inline;
  m_storageBytes = bytes;
  m_elementSize = elementSize;
  m_joinedLength = kUnknownLength;
  RefreshCurrent();
  return true;
}

void CQMDatum::DropStorage() {
  std::fill(std::begin(m_inline), std::end(m_inline), std::byte{0});
  m_storage.reset();
  m_value = nullptr;
  m_storageBytes = 0;
  RefreshCurrent();
}

void CQMDatum::SetValuePointer(void* memory) {
  CQMDatum& datum = FinalTarget();
  datum.DropStorage();
  datum.m_value = static_cast<std::byte*>(memory);
  if (memory != nullptr) {
    long const count = datum.HasStoredDimensions() ? datum.GetArraySize() : 1;
    datum.m_storageBytes = static_cast<std::size_t>(count) * static_cast<std::size_t>(datum.m_elementSize);
  }
  datum.RefreshCurrent();
  datum.UpdateProxyDatums();
  datum.MoveEpoch();
}

void CQMDatum::ClearValue() {
  CQMDatum& datum = FinalTarget();
  datum.m_joinedLength = kUnknownLength;
  if (datum.m_value == nullptr) {
    std::fill(std::begin(datum.m_inline), std::end(datum.m_inline), std::byte{0});
  } else if (datum.m_ownsStorage && datum.HoldsOwnStorage()) {
    std::size_t const bytes =
        datum.IsArray() ? datum.m_storageBytes
                        : std::min(datum.m_storageBytes, static_cast<std::size_t>(datum.m_elementSize));
    std::memset(datum.m_value, 0, bytes);
  }
}

// ---- type ----

void CQMDatum::SetDatumType(EQMDataType type) {
  CQMDatum& datum = FinalTarget();
  SQMTypeTraits const traits = TraitsOf(type);
  std::int32_t const stringSize = datum.m_elementSize >= 1 ? datum.m_elementSize : kDefaultStringSize;
  std::int32_t const elementSize = type == EQMDataType::String ? stringSize : traits.elementSize;
  if (datum.m_ownsStorage) {
    if (!datum.StoreElements(1, elementSize)) throw std::bad_alloc();
  } else {
    datum.m_elementSize = elementSize;
    datum.DropStorage();
  }
  datum.m_type = type;
  datum.m_partSize = traits.partSize;
  datum.m_class = traits.datumClass;
  datum.UpdateProxyDatums();
  datum.MoveEpoch();
}

void CQMDatum::BecomeScalar(EQMDataType type) {
  CQMDatum& datum = FinalTarget();
  datum.m_dimensions.reset();
  datum.m_dimensionCount = 0;
  // a datum that becomes a text keeps the size of its elements as the length of the buffer
  datum.m_elementSize = 0;
  datum.SetDatumType(type);
}

constinit std::atomic<std::uint32_t> CQMDatum::sm_promotionCount{0};

EQMDataType CQMDatum::ChangeDatumType(EQMDataType type) {
  CQMDatum& datum = FinalTarget();
  if (type == EQMDataType::Complex && datum.Promote() && !datum.Name().empty()) {
    sm_promotionCount.fetch_add(1, std::memory_order_relaxed);
  }
  return datum.m_type;
}

void CQMDatum::PromoteUnannounced() { FinalTarget().Promote(); }

// Of a datum that is no proxy. False when it is no number.
bool CQMDatum::Promote() {
  if (m_type != EQMDataType::Number && m_type != EQMDataType::Real) return false;

  // The old elements are copied as they lie, so they must outlive the making of the new storage.
  constexpr SQMTypeTraits kTraits = TraitsOf(EQMDataType::Complex);
  std::byte inlineValue[kInlineBytes];
  std::memcpy(inlineValue, m_inline, kInlineBytes);
  std::byte const* const old = m_value == m_inline ? inlineValue : m_value;
  std::size_t const oldBytes = m_storageBytes;
  auto const elementSize = static_cast<std::size_t>(std::max(m_elementSize, 1));
  long const dimensioned = HasStoredDimensions() ? GetArraySize() : 1;
  auto const count = std::max<std::int64_t>(dimensioned, static_cast<std::int64_t>(oldBytes / elementSize));
  std::unique_ptr<std::byte[]> oldStorage = std::move(m_storage);
  if (!StoreElements(count, kTraits.elementSize)) {
    m_storage = std::move(oldStorage);
    throw std::bad_alloc();
  }
  if (old != nullptr) std::memcpy(m_value, old, std::min(oldBytes, m_storageBytes));

  m_revision = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_revision) + 1U);
  m_type = EQMDataType::Complex;
  m_class = kTraits.datumClass;
  m_partSize = kTraits.partSize;
  m_ownsStorage = true;
  UpdateProxyDatums();
  MoveEpoch();
  return true;
}

void CQMDatum::SetDatumAtomSize(long size) {
  CQMDatum& datum = FinalTarget();
  if (size < 0 || size > kMaximumArrayBytes) return;
  if (datum.m_elementSize == 0 || size == 0) datum.m_elementSize = static_cast<std::int32_t>(size);
}

long CQMDatum::GetDatumTypeSize(EQMDataType type) {
  if (IsBetween(type, EQMDataType::Byte, EQMDataType::LastByte)) return 1;
  if (IsBetween(type, EQMDataType::Short, EQMDataType::LastShort)) return 2;
  if (IsBetween(type, EQMDataType::Int, EQMDataType::Single)) return 4;
  switch (type) {
    case EQMDataType::Boolean: return 1;
    case EQMDataType::Pointer: return 4;
    case EQMDataType::Date:
    case EQMDataType::Time: return 6;
    case EQMDataType::Number:  // room for an imaginary part
    case EQMDataType::Complex:
    case EQMDataType::TimeStamp: return 16;
    default: return 0;
  }
}

}  // namespace qumel
