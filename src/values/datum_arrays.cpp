// Arrays of datums: dimensions, indices, the current element.
#include <algorithm>
#include <array>
#include <limits>
#include <new>

#include "base/conversions.h"
#include "values/datum.h"

namespace qumel {

namespace {

/** Calls function with the integer parts of values. Of a list too long to be valid, so much is handed on that
 * it stays too long. */
template <class Function>
auto WithIntegers(std::span<double const> values, Function function) {
  std::array<long, CQMDatum::kMaximumDimensions + 2> integers;
  std::size_t const count = std::min(values.size(), integers.size());
  std::transform(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count), integers.begin(),
                 &TruncateToInt32);
  return function(std::span<long const>(integers.data(), count));
}

}  // namespace

// ---- dimensions ----

long CQMDatum::GetArraySize() const {
  if (m_dimensionCount == 0) return 0;
  std::int64_t size = 1;
  for (std::int32_t k = 0; k < m_dimensionCount; ++k) {
    if (__builtin_mul_overflow(size, m_dimensions[k], &size)) return std::numeric_limits<long>::max();
  }
  return static_cast<long>(std::min<std::int64_t>(size, std::numeric_limits<long>::max()));
}

long CQMDatum::GetArrayDim(long n) const { return n >= 1 && n <= m_dimensionCount ? m_dimensions[n - 1] : 0; }

void CQMDatum::SetArrayBase(long base) {
  CQMDatum& datum = FinalTarget();
  using Limits = std::numeric_limits<std::int32_t>;
  auto const stored = static_cast<std::int32_t>(std::clamp<long>(base, Limits::min(), Limits::max()));
  if (datum.m_dimensionCount == 0) datum.m_arrayBase = stored;
  if (m_dimensionCount == 0) m_arrayBase = stored;
}

void CQMDatum::SetInvertArrayIndices(bool invert) {
  CQMDatum& datum = FinalTarget();
  if (datum.m_dimensionCount == 0) datum.m_invertIndices = invert;
  if (m_dimensionCount == 0) m_invertIndices = invert;
}

void CQMDatum::SetIsArray(long count) {
  CQMDatum& datum = FinalTarget();
  if (count <= 0 || !datum.StoreElements(count, datum.m_elementSize)) return;
  datum.m_ownsStorage = true;
  datum.UpdateProxyDatums();
  datum.MoveEpoch();
}

long CQMDatum::SetIsArray(std::span<long const> extents) {
  if (m_target != nullptr) {
    if (m_target->IsArray()) return Error::None;
    long const code = m_target->SetIsArray(extents);
    if (code == Error::None) CopyDimensions(*m_target);
    return code;
  }
  if (IsArray() || extents.empty()) return Error::None;
  if (extents.size() > static_cast<std::size_t>(kMostExtents)) return Error::IndexOutOfBounds;
  if (std::any_of(extents.begin(), extents.end(), [](long extent) { return extent <= 0; })) {
    return Error::IndexOutOfBounds;
  }

  bool const isString = m_type == EQMDataType::String;
  if (isString && extents.back() > kMaximumArrayBytes) return Error::OutOfMemory;
  std::int32_t const elementSize = isString ? static_cast<std::int32_t>(extents.back()) : m_elementSize;
  if (isString) extents = extents.first(extents.size() - 1);
  std::int64_t count = 1;
  bool const getsStorage = extents.size() <= static_cast<std::size_t>(kMaximumDimensions);
  for (long const extent : extents) {
    if (extent > kMaximumArrayBytes) return Error::OutOfMemory;
    if (getsStorage && (count *= extent) > kMaximumArrayBytes / std::max(elementSize, 1))
      return Error::OutOfMemory;
  }

  std::unique_ptr<std::int32_t[]> dimensions;
  try {
    dimensions = std::make_unique<std::int32_t[]>(extents.size() + 1);
  } catch (std::bad_alloc const&) {
    return Error::OutOfMemory;
  }
  if (m_invertIndices) {
    std::copy(extents.rbegin(), extents.rend(), dimensions.get());
  } else {
    std::copy(extents.begin(), extents.end(), dimensions.get());
  }
  dimensions[extents.size()] = 1;

  bool const awaitsLink = !m_ownsStorage && m_value == nullptr;
  if (awaitsLink) {
    m_elementSize = elementSize;
  } else if (getsStorage) {
    if (!StoreElements(count, elementSize)) return Error::OutOfMemory;
    m_ownsStorage = true;
  }
  m_dimensionCount = static_cast<std::int32_t>(extents.size());
  m_dimensions = m_dimensionCount > 0 ? std::move(dimensions) : nullptr;
  UpdateProxyDatums();
  MoveEpoch();
  return Error::None;
}

long CQMDatum::SetIsArray(std::span<double const> extents) {
  return WithIntegers(extents, [this](std::span<long const> integers) { return SetIsArray(integers); });
}

// ---- indices ----

// Strides follow from the extents behind; the sums of seven recorded extents may be beyond any number.
bool CQMDatum::Locate(std::span<long const> indices, long base, long& flatIndex) const {
  if (indices.size() != static_cast<std::size_t>(m_dimensionCount)) return false;
  std::int64_t flat = 0;
  std::int64_t stride = 1;
  for (std::int32_t k = m_dimensionCount - 1; k >= 0; --k) {
    std::int64_t const index =
        indices[static_cast<std::size_t>(m_invertIndices ? m_dimensionCount - 1 - k : k)];
    if (index < m_arrayBase || index > std::int64_t{m_arrayBase} + m_dimensions[k] - 1) return false;
    std::int64_t step;
    if (__builtin_mul_overflow(index - base, stride, &step) || __builtin_add_overflow(flat, step, &flat))
      return false;
    if (__builtin_mul_overflow(stride, m_dimensions[k], &stride)) return false;
  }
  using Limits = std::numeric_limits<long>;
  if (flat < Limits::min() || flat > Limits::max()) return false;
  flatIndex = static_cast<long>(flat);
  return true;
}

long CQMDatum::GetFlatIndex(std::span<long const> indices) const {
  long flatIndex;
  return Locate(indices, 0, flatIndex) ? flatIndex : -1;
}

long CQMDatum::GetFlatIndex(std::span<double const> indices) const {
  return WithIntegers(indices, [this](std::span<long const> integers) { return GetFlatIndex(integers); });
}

long CQMDatum::GetElementPosition(std::span<long const> indices) const {
  long position;
  return Locate(indices, m_arrayBase, position) ? position : -1;
}

long CQMDatum::GetElementPosition(std::span<double const> indices) const {
  return WithIntegers(indices,
                      [this](std::span<long const> integers) { return GetElementPosition(integers); });
}

long CQMDatum::VerifyElement(std::span<long const> indices) const {
  return GetElementPosition(indices) >= 0 ? Error::None : Error::IndexOutOfBounds;
}

long CQMDatum::VerifyElement(std::span<double const> indices) const {
  return GetElementPosition(indices) >= 0 ? Error::None : Error::IndexOutOfBounds;
}

// ---- the current element ----

bool CQMDatum::HasElement(long flatIndex) const {
  CQMDatum const& storage = Storage();
  auto const end = (static_cast<std::uint64_t>(flatIndex) + 1) * static_cast<std::uint64_t>(m_elementSize);
  return storage.m_value != nullptr && flatIndex >= 0 && flatIndex < kMaximumArrayBytes &&
         end <= storage.m_storageBytes;
}

std::byte const* CQMDatum::ElementAddress(long flatIndex) const {
  CQMDatum const& storage = Storage();
  if (storage.m_value == nullptr) return m_inline;
  return HasElement(flatIndex) ? storage.m_value + static_cast<std::ptrdiff_t>(flatIndex) * m_elementSize
                               : storage.m_value;
}

std::byte const* CQMDatum::FindElement(std::span<long const> indices) const {
  long const position = GetElementPosition(indices);
  // the first one is there whether or not the datum has storage
  return position == 0 || (position > 0 && HasElement(position)) ? ElementAddress(position) : nullptr;
}

void CQMDatum::RefreshCurrent() {
  m_current = ElementAddress(m_currentElement);
  if (m_target != nullptr) m_value = m_target->m_value != nullptr ? m_current : nullptr;
}

long CQMDatum::SetCurrentElement(long flatIndex) {
  if (flatIndex != 0 && !HasElement(flatIndex)) return Error::IndexOutOfBounds;
  m_currentElement = static_cast<std::int32_t>(flatIndex);
  RefreshCurrent();
  return Error::None;
}

long CQMDatum::SetCurrentElement(std::span<long const> indices) {
  long const position = GetElementPosition(indices);
  return position >= 0 ? SetCurrentElement(position) : Error::IndexOutOfBounds;
}

long CQMDatum::SetCurrentElement(std::span<double const> indices) {
  long const position = GetElementPosition(indices);
  return position >= 0 ? SetCurrentElement(position) : Error::IndexOutOfBounds;
}

}  // namespace qumel
