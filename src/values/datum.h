// The one value type of the library: literals, variables, results and array elements are all CQMDatum
// objects.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

#include "base/data_type.h"
#include "base/errors.h"
#include "base/letters.h"
#include "objects/linked_object.h"

namespace qumel {

class CQMExpression;

/** A typed value, a variable or an array of up to kMaximumDimensions dimensions. The scalar accessors address
 * the current element. A datum can be a proxy: it has no storage of its own and reads and writes an element
 * of its target, which it follows through every change of type or storage; proxies are children of their
 * target. */
class CQMDatum : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kDatum;
  static constexpr long kMaximumDimensions = 6;

  CQMDatum();
  CQMDatum(EQMDataType type, char const* name);
  /** Makes a proxy of source, or of its target when source is a proxy itself. */
  CQMDatum(CQMDatum& source);
  /** As the copy; the proxies of this datum become proxies of its new target. */
  CQMDatum& operator=(CQMDatum& source);
  /** Proxies that outlive their target are left as scalars of their own, of the same type and zero; their
   * owners delete them. */
  ~CQMDatum() override;

  // ---- type ----
  EQMDataType GetType() const { return m_type; }
  EQMTypeClass GetClass() const { return m_class; }
  bool IsComplex() const { return m_type == EQMDataType::Complex; }
  bool IsString() const { return IsText(m_type); }
  bool IsBoolean() const { return m_type == EQMDataType::Boolean; }
  std::int32_t GetElementSize() const { return m_elementSize; }
  std::int32_t GetPartSize() const { return m_partSize; }
  std::int32_t GetRevision() const { return m_revision; }

  /** Gives the final target this type, with fresh zeroed storage where it owns its storage and none
   * otherwise. An array loses its elements: callers dimension it again. Without the memory it throws
   * std::bad_alloc, and nothing has changed. */
  void SetDatumType(EQMDataType type);
  /** Promotes a number to complex in place; every other request changes nothing. The elements are copied raw:
   * in an array only element 0 keeps its real part in place. Returns the type that the datum has afterwards.
   * Without the memory it throws std::bad_alloc, and nothing has changed. */
  EQMDataType ChangeDatumType(EQMDataType type);
  /** Changes whenever a number that has a name has become complex, anywhere in the process. */
  static std::uint32_t GetPromotionCount() { return sm_promotionCount.load(std::memory_order_relaxed); }
  /** As ChangeDatumType to complex, for a variable that nobody but the caller has to look at. */
  void PromoteUnannounced();
  /** Length of a string buffer, terminator included. Accepted once, before the type is set; 0 takes it back.
   * A length below 0 or above kMaximumArrayBytes is ignored. */
  void SetDatumAtomSize(long size);
  /** Room that a value of type needs, by a table of its own: Number reports 16, strings 0. */
  static long GetDatumTypeSize(EQMDataType type);

  // ---- names, marks, owners ----
  char const* GetDatumName() { return GetObjectName(); }
  void SetDatumName(char const* name) { SetObjectName(name); }
  bool IsLiteral() const { return m_literal; }
  void SetLiteral(bool literal) { m_literal = literal; }
  void SetLiteralAttributes(bool first, bool second) {
    m_literalAttributes[0] = first, m_literalAttributes[1] = second;
  }
  bool GetLiteralAttribute(int index) const { return m_literalAttributes[index]; }
  char GetScope() const { return m_scope; }
  void SetScope(char scope) { m_scope = scope; }
  bool OwnsStorage() const { return m_ownsStorage; }
  void SetOwnsStorage(bool owns) { m_ownsStorage = owns; }
  /** A name that no declaration or assignment has confirmed yet; a proxy is pending as long as its target is.
   */
  bool IsPending() const { return m_target != nullptr ? m_target->m_pending : m_pending; }
  void SetPending(bool pending) { m_pending = pending; }
  bool IsTemporary() const { return m_temporary; }
  void SetTemporary(bool temporary) { m_temporary = temporary; }
  bool IsProxy() const { return m_target != nullptr; }
  CQMDatum* GetProxyTarget() const { return m_target; }
  /** This datum, or the target of a proxy. */
  CQMDatum& FinalTarget() { return m_target != nullptr ? *m_target : *this; }
  CQMExpression* GetOwningExpression() const { return m_owner; }
  void SetOwningExpression(CQMExpression* owner) { m_owner = owner; }

  // ---- the current element, for operators and resolvers ----
  /** Address of the current element; always valid, and aligned for doubles in owned storage. */
  std::byte* Current() const { return m_current; }
  /** Where that address stands, for programs that follow a proxy from element to element. */
  std::byte** CurrentPlace() { return &m_current; }
  double& Real() const { return *reinterpret_cast<double*>(m_current); }
  /** 0 unless the datum is complex. */
  double Imaginary() const { return IsComplex() ? reinterpret_cast<double*>(m_current)[1] : 0.0; }
  void SetReal(double value) { Real() = value; }
  /** Promotes to complex first where needed. */
  void SetComplex(double real, double imaginary);
  /** Imaginary part 0, but only where there is one. */
  void ClearImaginary() {
    if (IsComplex()) reinterpret_cast<double*>(m_current)[1] = 0.0;
  }
  /** The byte of a boolean as it stands; not always 0 or 1 in linked memory. */
  std::uint8_t BooleanByte() const { return *reinterpret_cast<std::uint8_t*>(m_current); }
  void SetBoolean(bool value) { *reinterpret_cast<std::uint8_t*>(m_current) = value ? 1 : 0; }
  /** The text of a string, never longer than its buffer even where a host left it without an end. */
  std::string_view GetText() const;
  /** Stores text with an end, cut to the buffer. Safe when text lies inside this datum. */
  void SetText(std::string_view text);
  /** As SetText, after making the buffer of an owned scalar string long enough; std::bad_alloc, with nothing
   * changed, where there is no memory for it. For results, not for variables. */
  void SetWholeText(std::string_view text);
  /** Makes this result the text of first and second. Where the caller allows it, which it does for a result
   * that nobody else reads before it is computed anew, the buffer of one is taken over: a chain of additions
   * then copies each text once, and has one buffer. std::bad_alloc as for SetWholeText. */
  void SetJoinedText(CQMDatum& first, bool mayTakeFirst, CQMDatum& second, bool mayTakeSecond);

  // ---- values by part (0 real, 1 imaginary) and element ----
  /** Start of the elements, or the element of a proxy; null where there is no storage. */
  std::byte* GetValue() const { return m_value; }
  // Never null: part 1 of what is not complex is a zero that belongs to nobody, an element beyond the storage
  // is element 0. Only indices that VerifyElement refuses give null.
  void* GetValue(long part, bool promote);
  void* GetValue(long part, bool promote, long flatIndex);
  void* GetValue(long part, bool promote, std::span<long const> indices);
  /** The element at indices, or null where there is none. Changes nothing, so that any number of threads may
   * read the elements of one array. */
  std::byte const* FindElement(std::span<long const> indices) const;
  // Numbers take one part, texts end where source ends or the buffer is full. Nothing is written for null,
  // beyond the storage, and to part 1 of what cannot become complex.
  void SetValue(void const* source);
  void SetValue(long part, void const* source);
  /** With one dimension or none this writes the first element whatever flatIndex says; on purpose. */
  void SetValue(long part, void const* source, long flatIndex);
  void SetValue(long part, void const* source, std::span<long const> indices);
  long CopyDataLength(void const* source) const;
  void ClearValue();
  /** Points at memory of the host, which must be aligned for the type and, for an array, hold all elements;
   * owned storage is freed first. The caller clears the owns-storage mark. Null leaves the datum without
   * storage. */
  void SetValuePointer(void* memory);

  // ---- arrays ----
  bool IsArray() const { return m_dimensionCount > 0; }
  long GetDimensionCount() const { return m_dimensionCount; }
  long GetArraySize() const;
  long GetArrayDim(long n) const;  // n from 1; 0 outside
  long GetArrayBase() const { return m_arrayBase; }
  void SetArrayBase(long base);
  void SetInvertArrayIndices(bool invert);
  /** Frees owned storage and makes count zeroed elements; the dimensions stay. Without the memory nothing
   * changes. */
  void SetIsArray(long count);
  /** Makes an array once; for a string the last extent is the buffer length. Extents that are not positive,
   * or whose elements exceed kMaximumArrayBytes, make no array and give IndexOutOfBounds or OutOfMemory. A
   * datum that awaits linked memory gets dimensions only; seven extents of numbers are recorded and get no
   * storage. */
  long SetIsArray(std::span<long const> extents);
  long SetIsArray(std::span<double const> extents);
  /** -1 for a wrong number of indices or one out of range. The base is not subtracted. */
  long GetFlatIndex(std::span<long const> indices) const;
  long GetFlatIndex(std::span<double const> indices) const;
  /** Position in storage: as GetFlatIndex, with the base subtracted from every index. */
  long GetElementPosition(std::span<long const> indices) const;
  long GetElementPosition(std::span<double const> indices) const;
  long VerifyElement(std::span<long const> indices) const;
  long VerifyElement(std::span<double const> indices) const;
  long GetCurrentElement() const { return m_currentElement; }
  long SetCurrentElement(long flatIndex);
  long SetCurrentElement(std::span<long const> indices);
  long SetCurrentElement(std::span<double const> indices);
  /** Takes type and dimensions back: what is left is a fresh scalar of type. */
  void BecomeScalar(EQMDataType type);
  /** Makes a proxy of an array a scalar: what it shows is one element. */
  void ViewOneElement() {
    m_dimensionCount = 0;
    m_dimensions.reset();
  }

  // ---- comparison and conversion ----
  /** 10 * class of the imaginary part + class of the real part (1 negative, 2 zero, 3 positive or NaN); 0 for
   * what is neither number nor complex. */
  long GetDatumComplexity() const;
  /** 1, 0 or -1 for this against other; strings give strcmp's own number. */
  long CompareValue(CQMDatum* other);
  bool operator>(CQMDatum& other) { return CompareValue(&other) > 0; }
  bool operator>=(CQMDatum& other) { return CompareValue(&other) >= 0; }
  bool operator==(CQMDatum& other) { return CompareValue(&other) == 0; }
  bool operator<=(CQMDatum& other) { return CompareValue(&other) <= 0; }
  bool operator<(CQMDatum& other) { return CompareValue(&other) < 0; }
  static double ConvertToDouble(CQMDatum* datum);
  static void ConvertToTimeStamp(CQMDatum* datum, SQMTimeStamp* stamp);

  // ---- proxies ----
  void UpdateProxyDatums();
  void UpdateFromProxyTarget();

  // ---- programs that hold addresses ----
  /** Marks the datum as one whose addresses a program holds. */
  void SetBound() {
    if (!m_bound.load(std::memory_order_relaxed)) m_bound.store(true, std::memory_order_relaxed);
  }
  /** Moves on whenever the type, the storage or the dimensions of a bound datum change. */
  static std::uint32_t StorageEpoch() { return sm_storageEpoch.load(std::memory_order_relaxed); }
  /** The element at index of an array of one dimension; null out of bounds. */
  std::byte* FindInRow(std::int32_t index) const {
    std::int64_t const position = std::int64_t{index} - m_arrayBase;
    return position >= 0 && position < m_dimensions[0] ? m_value + position * m_elementSize : nullptr;
  }
  /** In a proxy of an array of one dimension: makes the element at index current, unless it is out of bounds.
   */
  bool SelectElement(std::int32_t index) {
    std::byte* const element = m_target->FindInRow(index);
    if (element != nullptr) ShowElement(element);
    return element != nullptr;
  }
  /** In such a proxy: makes the element at an address current. */
  void ShowElement(std::byte* element) {
    m_currentElement = static_cast<std::int32_t>((element - m_target->m_value) / m_target->m_elementSize);
    m_value = m_current = element;
  }

  // ---- compilation ----
  static constexpr std::int32_t kNoSlot = -1;
  /** Where a detached program keeps the value, while it is made. */
  std::int32_t GetSlot() const { return m_slot; }
  void SetSlot(std::int32_t slot) { m_slot = slot; }

  static constexpr long kMaximumArrayBytes = 1L << 30;

 private:
  static constexpr std::size_t kInlineBytes = 16;

  static constexpr long kMostExtents = kMaximumDimensions + 1;  // a string's buffer length included
  // Reads of eight bytes at a part of any element end inside owned storage.
  static constexpr std::size_t kReadMargin = 16;
  static constexpr std::size_t kUnknownLength = ~std::size_t{0};

  // storage
  void MoveEpoch() const {
    if (m_bound.load(std::memory_order_relaxed)) sm_storageEpoch.fetch_add(1, std::memory_order_relaxed);
  }
  bool HoldsOwnStorage() const {
    return m_value == m_inline || (m_storage != nullptr && m_value == m_storage.get());
  }
  bool HasStoredDimensions() const { return m_dimensionCount > 0 && m_dimensionCount <= kMaximumDimensions; }
  bool IsPlainText() const;
  bool StoreElements(std::int64_t count, std::int32_t elementSize);
  void GrowBuffer(std::size_t needed);
  void TakeBufferOf(CQMDatum& giver);
  bool Promote();
  void DropStorage();

  // addresses
  CQMDatum const& Storage() const { return m_target != nullptr ? *m_target : *this; }
  bool HasElement(long flatIndex) const;
  std::byte* ElementAddress(long flatIndex) {
    return const_cast<std::byte*>(std::as_const(*this).ElementAddress(flatIndex));
  }
  std::byte const* ElementAddress(long flatIndex) const;
  std::size_t RoomAt(std::byte const* address) const;
  void RefreshCurrent();
  bool IsPartThere(long part, bool promote);
  void WritePart(std::byte* element, long part, void const* source);
  void StoreText(std::byte* element, std::string_view text);
  /** As GetText, without a search for the end of what SetJoinedText stored. */
  std::string_view ResultText() const {
    if (m_joinedLength == kUnknownLength) return GetText();
    return {reinterpret_cast<char const*>(m_current), m_joinedLength};
  }
  bool Locate(std::span<long const> indices, long base, long& flatIndex) const;
  void CopyDimensions(CQMDatum const& source);

  // comparison
  bool ReadAt(std::size_t offset, void* out, std::size_t size) const;
  double SignedMagnitude() const;
  int CompareSameType(CQMDatum const& other) const;
  template <class Value>
  int CompareAs(CQMDatum const& other) const;
  template <class Field, std::size_t count>
  int CompareFields(CQMDatum const& other) const;
  int CompareDistantWord(CQMDatum const& other) const;
  int CompareBytes(CQMDatum const& other) const;

  // proxies
  void AttachTo(CQMDatum& source);
  void LeaveTarget();
  void FollowTarget();
  void BecomeOwner();

  static std::atomic<std::uint32_t> sm_promotionCount;

  std::byte* m_value = nullptr;    // start of the elements, a proxy's element, or null without storage
  std::byte* m_current;            // the current element, or m_inline where there is no storage
  std::size_t m_storageBytes = 0;  // bytes from m_value on; 0 in proxies
  std::size_t m_joinedLength = kUnknownLength;  // of the text that SetJoinedText stored
  CQMExpression* m_owner = nullptr;
  EQMDataType m_type = EQMDataType::Undefined;
  EQMTypeClass m_class = EQMTypeClass::Undefined;
  std::int32_t m_elementSize = 0;
  std::int32_t m_partSize = 0;
  std::int32_t m_revision = 0;
  std::int32_t m_slot = kNoSlot;
  std::int32_t m_dimensionCount = 0;
  std::int32_t m_arrayBase = 0;
  std::int32_t m_currentElement = 0;
  bool m_literal = false;
  bool m_literalAttributes[2] = {false, false};
  char m_scope = Scope::kDefault;
  bool m_ownsStorage = true;
  bool m_pending = false;
  bool m_temporary = false;
  bool m_invertIndices = false;
  CQMDatum* m_target = nullptr;
  std::unique_ptr<std::int32_t[]> m_dimensions;  // m_dimensionCount extents in storage order, then 1
  std::unique_ptr<std::byte[]> m_storage;        // owned elements that do not fit m_inline
  alignas(double) std::byte m_inline[kInlineBytes] = {};
  double m_zeroImaginary = 0.0;
  std::atomic<bool> m_bound{false};

  static std::atomic<std::uint32_t> sm_storageEpoch;
};

}  // namespace qumel
