// Reading and writing the values of datums, by part and element, and their texts.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "values/datum.h"

namespace qumel {

// ---- bounds ----

/** Bytes that may be used from address on, one element at most. */
std::size_t CQMDatum::RoomAt(std::byte const* address) const {
  CQMDatum const& storage = Storage();
  std::size_t const left = storage.m_value != nullptr
                               ? storage.m_storageBytes - static_cast<std::size_t>(address - storage.m_value)
                               : kInlineBytes;
  return std::min(left, static_cast<std::size_t>(m_elementSize));
}

/** Whether the values have the part; promotes on demand. */
bool CQMDatum::IsPartThere(long part, bool promote) {
  if (part != 1 || IsComplex()) return true;
  return promote && ChangeDatumType(EQMDataType::Complex) == EQMDataType::Complex;
}

// ---- parts ----

void CQMDatum::SetComplex(double real, double imaginary) {
  if (IsPartThere(1, true)) {
    Real() = real;
    reinterpret_cast<double*>(m_current)[1] = imaginary;
  } else if (RoomAt(m_current) >= sizeof real) {
    Real() = real;
  }
}

void* CQMDatum::GetValue(long part, bool promote) {
  if (!IsPartThere(part, promote)) return &(m_zeroImaginary = 0.0);
  return part == 1 ? m_current + m_partSize : m_current;
}

void* CQMDatum::GetValue(long part, bool promote, long flatIndex) {
  if (!IsPartThere(part, promote)) return &(m_zeroImaginary = 0.0);
  std::byte* const element = ElementAddress(IsArray() ? flatIndex : 0);
  return part == 1 ? element + m_partSize : element;
}

void* CQMDatum::GetValue(long part, bool promote, std::span<long const> indices) {
  long const position = GetElementPosition(indices);
  return position >= 0 ? GetValue(part, promote, position) : nullptr;
}

void CQMDatum::WritePart(std::byte* element, long part, void const* source) {
  if (m_type == EQMDataType::String) {
    auto const* const text = static_cast<char const*>(source);
    return StoreText(element, {text, static_cast<std::size_t>(CopyDataLength(source))});
  }
  std::size_t const room = RoomAt(element);
  std::size_t const offset = part == 1 ? static_cast<std::size_t>(m_partSize) : 0;
  auto const length = static_cast<std::size_t>(m_partSize);
  if (offset + length <= room) std::memmove(element + offset, source, length);
}

void CQMDatum::SetValue(void const* source) {
  if (source != nullptr) WritePart(m_current, 0, source);
}

void CQMDatum::SetValue(long part, void const* source) {
  if (source != nullptr && IsPartThere(part, true)) WritePart(m_current, part, source);
}

void CQMDatum::SetValue(long part, void const* source, long flatIndex) {
  if (source == nullptr || !IsPartThere(part, true)) return;
  if (m_dimensionCount < 2) return WritePart(ElementAddress(0), part, source);
  if (HasElement(flatIndex)) WritePart(ElementAddress(flatIndex), part, source);
}

void CQMDatum::SetValue(long part, void const* source, std::span<long const> indices) {
  long const position = GetElementPosition(indices);
  if (source == nullptr || position < 0 || !IsPartThere(part, true) || !HasElement(position)) return;
  WritePart(ElementAddress(position), part, source);
}

long CQMDatum::CopyDataLength(void const* source) const {
  if (m_type != EQMDataType::String) return m_partSize;
  if (source == nullptr) return 0;
  return static_cast<long>(
      strnlen(static_cast<char const*>(source), static_cast<std::size_t>(m_elementSize)));
}

// ---- texts ----

std::string_view CQMDatum::GetText() const {
  auto const* const text = reinterpret_cast<char const*>(m_current);
  return {text, strnlen(text, RoomAt(m_current))};
}

void CQMDatum::StoreText(std::byte* element, std::string_view text) {
  m_joinedLength = kUnknownLength;
  std::size_t const room = RoomAt(element);
  if (room == 0) return;
  bool const ownsElement =
      Storage().m_ownsStorage;  // the bytes behind a text in memory of the host are the host's
  std::size_t const oldEnd = ownsElement ? strnlen(reinterpret_cast<char const*>(element), room) : 0;
  std::size_t const length = std::min(text.size(), room - 1);
  if (length > 0) std::memmove(element, text.data(), length);
  element[length] = std::byte{0};
  if (oldEnd > length) std::memset(element + length, 0, oldEnd - length);
}

void CQMDatum::SetText(std::string_view text) {
  if (IsString()) StoreText(m_current, text);
}

void CQMDatum::SetWholeText(std::string_view text) {
  std::size_t const needed = text.size() + 1;
  bool const mayGrow = m_type == EQMDataType::String && m_target == nullptr && m_ownsStorage && !IsArray();
  if (!mayGrow || needed <= RoomAt(m_current)) return SetText(text);
  std::string const copy(text);  // text may lie in the storage that goes
  GrowBuffer(needed);
  UpdateProxyDatums();
  SetText(copy);
}

/** Makes a buffer of zeros for at least needed bytes. By doubling: a text that grows by every turn of a loop
 * is not copied by every turn. */
void CQMDatum::GrowBuffer(std::size_t needed) {
  constexpr auto kLongest = static_cast<std::size_t>(kMaximumArrayBytes);
  if (needed > kLongest) throw std::bad_alloc();
  std::size_t const size = std::clamp(2 * static_cast<std::size_t>(m_elementSize), needed, kLongest);
  if (!StoreElements(1, static_cast<std::int32_t>(size))) throw std::bad_alloc();
}

/** Whether this is a text of its own that nothing else points to. */
bool CQMDatum::IsPlainText() const {
  return m_type == EQMDataType::String && m_ownsStorage && HoldsOwnStorage() && !IsArray() &&
         GetFirstChildObject() == nullptr;
}

/** Exchanges the buffers, but gives no long one away: or the links of a chain would have as many as they are.
 */
void CQMDatum::TakeBufferOf(CQMDatum& giver) {
  bool const isShort = m_storage != nullptr && m_elementSize <= kDefaultStringSize;
  if (!isShort && !StoreElements(1, kDefaultStringSize)) throw std::bad_alloc();
  std::swap(m_storage, giver.m_storage);
  std::swap(m_value, giver.m_value);
  std::swap(m_storageBytes, giver.m_storageBytes);
  std::swap(m_elementSize, giver.m_elementSize);
  giver.m_joinedLength = kUnknownLength;
  giver.RefreshCurrent();
  RefreshCurrent();
}

void CQMDatum::SetJoinedText(CQMDatum& first, bool mayTakeFirst, CQMDatum& second, bool mayTakeSecond) {
  std::string_view const head = first.ResultText();
  std::string_view const tail = second.ResultText();
  bool const takesFirst = mayTakeFirst && first.m_storage != nullptr && first.IsPlainText();
  bool const takesSecond = mayTakeSecond && second.m_storage != nullptr && second.IsPlainText();
  if (!(takesFirst || takesSecond) || !IsPlainText()) {
    std::string joined;
    joined.reserve(head.size() + tail.size());
    return SetWholeText(joined.append(head).append(tail));
  }
  bool const appends = takesFirst && (!takesSecond || head.size() >= tail.size());
  TakeBufferOf(appends ? first : second);  // head or tail stays where it is
  std::size_t const length = head.size() + tail.size();
  if (length + 1 > m_storageBytes) {
    std::string const copy(appends ? head : tail);
    GrowBuffer(length + 1);
    std::memcpy(m_value + (appends ? 0 : head.size()), copy.data(), copy.size());
  } else if (!appends) {
    std::memmove(m_value + head.size(), tail.data(), tail.size());
  }
  if (appends) std::memcpy(m_value + head.size(), tail.data(), tail.size());
  else std::memcpy(m_value, head.data(), head.size());
  m_value[length] = std::byte{0};
  m_joinedLength = length;
}

}  // namespace qumel
