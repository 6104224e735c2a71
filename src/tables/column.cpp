// Storing, reading and comparing the values of a column.
#include "tables/column.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "tables/column_dump.h"
#include "tables/column_types.h"

namespace qumel {

namespace {

std::string_view TextOf(void const* text) { return static_cast<char const*>(text); }

/** Null without memory. */
std::unique_ptr<std::byte[]> CopyBytes(void const* bytes, std::size_t size) {
  try {
    auto copy = std::make_unique<std::byte[]>(size);
    std::memcpy(copy.get(), bytes, size);
    return copy;
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

}  // namespace

CQMColumn::CQMColumn(char const* name, EQMDataType type, long declaredLength, CQMDataSpace* space)
    : m_type(type), m_rules(&ColumnTypeOf(type)), m_region(AtomSizeOf(type, declaredLength), space) {
  SetTypeTag(TypeTag::kColumn);
  std::string lowered = name != nullptr ? name : "";
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), ToLower);
  SetObjectName(lowered.c_str());
}

CQMColumn::~CQMColumn() = default;

/** Calls use with text in the column's own form. */
template <class Use>
long CQMColumn::WithParsed(char const* text, Use use) const {
  if (m_rules->parse == nullptr) return use(text);
  std::byte value[kLargestParsedAtom]{};
  m_rules->parse(text, value);
  return use(value);
}

// ---- appending ----

long CQMColumn::AppendAtom() {
  if (HasHeapTexts()) {
    try {
      m_heapTexts.emplace_back();
    } catch (std::bad_alloc const&) {
      return 0;
    }
  }
  long const row = m_region.AppendAtom();
  if (row == 0 && HasHeapTexts()) m_heapTexts.pop_back();
  if (row != 0) ++m_changeCount;
  return row;
}

long CQMColumn::AppendValue() { return AppendAtom() != 0 ? TableResult::Done : TableResult::OutOfMemory; }

long CQMColumn::AppendValue(void const* value) {
  if (value == nullptr) return AppendValue();
  std::unique_ptr<std::byte[]> copy;
  if (!HoldStill(value, copy)) return TableResult::OutOfMemory;
  long const row = AppendAtom();
  if (row == 0) return TableResult::OutOfMemory;
  if (HasHeapTexts()) return SetHeapText(row, TextOf(value), EQMTextMode::Replace);
  if (!HasFixedTexts()) return SetAtom(row, value);
  std::string_view const text = TextOf(value);
  return SetFixedText(row, text.substr(0, static_cast<std::size_t>(m_region.GetAtomSize() - 1)),
                      EQMTextMode::Replace);
}

long CQMColumn::AppendValue(char const* text) {
  if (text == nullptr) return AppendValue();
  return WithParsed(text, [this](void const* value) { return AppendValue(value); });
}

// ---- setting ----

long CQMColumn::SetColumnValue(long row, void const* value, EQMTextMode mode) {
  if (!IsValid(row)) return TableResult::RowOutOfRange;
  std::unique_ptr<std::byte[]> copy;
  if (!HoldStill(value, copy)) return TableResult::OutOfMemory;
  ++m_changeCount;
  if (HasHeapTexts()) return SetHeapText(row, value != nullptr ? TextOf(value) : "", mode);
  if (HasFixedTexts()) return SetFixedText(row, value != nullptr ? TextOf(value) : "", mode);
  return SetAtom(row, value);
}

long CQMColumn::SetColumnValue(long row, char const* text, EQMTextMode mode) {
  if (!IsValid(row)) return TableResult::RowOutOfRange;
  if (text == nullptr) return TableResult::OutOfMemory;
  return WithParsed(text, [=, this](void const* value) { return SetColumnValue(row, value, mode); });
}

long CQMColumn::SetAtom(long row, void const* value) {
  std::byte* const atom = m_region.GetAtomPtr(row);
  if (atom == nullptr) return TableResult::OutOfMemory;
  auto const size = static_cast<std::size_t>(m_region.GetAtomSize());
  if (value != nullptr) std::memmove(atom, value, size);
  else std::memset(atom, 0, size);
  m_region.SetFlushFlag(row);
  return TableResult::Done;
}

/** Leaves the old text, and succeeds, when the new one does not fit. A joined text needs one byte more than
 * one that replaces. */
long CQMColumn::SetFixedText(long row, std::string_view text, EQMTextMode mode) {
  auto const atom = reinterpret_cast<char*>(m_region.GetAtomPtr(row));
  if (atom == nullptr) return TableResult::OutOfMemory;
  auto const room = static_cast<std::size_t>(m_region.GetAtomSize());
  std::size_t const oldLength = mode == EQMTextMode::Replace ? 0 : std::strlen(atom);
  std::size_t const length = oldLength + text.size();
  if (mode == EQMTextMode::Replace ? length < room : length + 1 < room) {
    if (mode == EQMTextMode::Prepend && oldLength != 0) {
      std::string const old(atom, oldLength);  // text may be this atom
      std::memmove(atom, text.data(), text.size());
      std::memcpy(atom + text.size(), old.data(), oldLength);
    } else {
      std::memmove(atom + oldLength, text.data(), text.size());
    }
    atom[length] = '\0';
  }
  m_region.SetFlushFlag(row);
  return TableResult::Done;
}

long CQMColumn::SetHeapText(long row, std::string_view text, EQMTextMode mode) {
  auto& owner = m_heapTexts[static_cast<std::size_t>(row - 1)];
  std::string_view const old = owner != nullptr && mode != EQMTextMode::Replace ? owner.get() : "";
  std::string_view const first = mode == EQMTextMode::Prepend ? text : old;
  std::string_view const second = mode == EQMTextMode::Prepend ? old : text;
  std::byte* const atom = m_region.GetAtomPtr(row);
  if (atom == nullptr) return TableResult::OutOfMemory;
  try {
    auto joined = std::make_unique<char[]>(first.size() + second.size() + 1);
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), joined.get()));
    owner = std::move(joined);
  } catch (std::bad_alloc const&) {
    return TableResult::OutOfMemory;
  }
  char const* const address = owner.get();
  std::memcpy(atom, &address, sizeof address);
  m_region.SetFlushFlag(row);
  return TableResult::Done;
}

void CQMColumn::KeepValues(std::span<std::int32_t const> rows) {
  if (HasHeapTexts()) {
    std::size_t kept = 0;
    for (std::int32_t const row : rows) {
      if (IsValid(row)) m_heapTexts[kept++].swap(m_heapTexts[static_cast<std::size_t>(row - 1)]);
    }
    m_heapTexts.resize(kept);
  }
  m_region.KeepAtoms(rows);
  ++m_changeCount;
}

// ---- reading ----

void const* CQMColumn::GetColumnValue(long row) const {
  void const* const value = Operand(row);
  return value == nullptr && HasHeapTexts() && IsValid(row) ? "" : value;
}

std::string CQMColumn::GetFormatedColumnValue(long row) const {
  std::string text;
  if (void const* const value = Operand(row); value != nullptr) m_rules->format(value, text);
  return text;
}

std::size_t CQMColumn::ValueSize(void const* value) const {
  if (HasHeapTexts() || HasFixedTexts()) return TextOf(value).size() + 1;
  return static_cast<std::size_t>(m_region.GetAtomSize());
}

std::unique_ptr<std::byte[]> CQMColumn::CopyOf(void const* value) const {
  return CopyBytes(value, ValueSize(value));
}

bool CQMColumn::HoldStill(void const*& value, std::unique_ptr<std::byte[]>& copy) const {
  if (value == nullptr || !m_region.IsMovable()) return true;
  copy = CopyOf(value);
  value = copy.get();
  return value != nullptr;
}

bool CQMColumn::HoldStill(char const*& text, std::unique_ptr<std::byte[]>& copy) const {
  if (text == nullptr || !m_region.IsMovable()) return true;
  copy = CopyBytes(text, TextOf(text).size() + 1);
  text = reinterpret_cast<char const*>(copy.get());
  return text != nullptr;
}

// ---- comparing ----

int CQMColumn::CompareValue(void const* key, long row) const {
  std::unique_ptr<std::byte[]> copy;
  return HoldStill(key, copy) ? CompareHeld(key, row) : 1;
}

int CQMColumn::CompareHeld(void const* key, long row) const {
  if (!IsValid(row)) return 1;
  void const* const value = Operand(row);
  if (HasHeapTexts() || (key != nullptr && value != nullptr)) return m_rules->order.compare(key, value);
  return key == nullptr ? -1 : 1;
}

int CQMColumn::CompareValue(long rowA, long rowB) const {
  if (!IsValid(rowA) || !IsValid(rowB)) return 1;
  if (HasHeapTexts()) return CompareHeld(Operand(rowA), rowB);
  void const* first = Operand(rowA);
  std::unique_ptr<std::byte[]> copy;
  return first != nullptr && HoldStill(first, copy) ? CompareHeld(first, rowB) : 1;
}

// ---- filling anew ----

long CQMColumn::InflateIndex(long count) {
  ++m_changeCount;
  m_heapTexts.clear();
  m_region.ReleaseRegion();
  for (auto number = std::int32_t{1}; number <= count; ++number) {
    if (long const result = AppendValue(static_cast<void const*>(&number)); result != TableResult::Done)
      return result;
  }
  return TableResult::Done;
}

// ---- dump ----

void CQMColumn::DumpColumn(char const* name) const {
  try {
    std::string const base = name != nullptr ? name : "column_" + std::to_string(GetSerialNumber());
    CQMDumpFile file(base + ".txt");
    file.Write(std::string(Name()) + "\n");
    for (long row = 1; row <= GetAtomsInColumn(); ++row)
      file.Write(std::to_string(row) + ": " + GetFormatedColumnValue(row) + "\n");
  } catch (std::bad_alloc const&) {
  }
}

}  // namespace qumel
