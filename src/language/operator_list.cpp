// Adding, finding and deleting the rows of an operator list.
#include "language/operator_list.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <new>

#include "base/errors.h"

namespace qumel {

// ---- the table ----

namespace {

constexpr long kInfoColumn = 3;
constexpr long kTokenIndex = 1, kIdIndex = 2;

}  // namespace

CQMOperatorTable::CQMOperatorTable() {
  constexpr auto kTokenWidth = static_cast<long>(CQMOpInfo::kLongestToken);
  bool const isMade = m_table.AppendColumn("token", EQMDataType::String, kTokenWidth) == TableResult::Done &&
                      m_table.AppendColumn("id", EQMDataType::RowNumber) == TableResult::Done &&
                      m_table.AppendColumn("info", EQMDataType::Pointer) == TableResult::Done &&
                      m_table.DefineIndex("token", {{"token"}}) == TableResult::Done &&
                      m_table.DefineIndex("id", {{"id"}}) == TableResult::Done;
  if (!isMade) throw std::bad_alloc();
  m_infos = m_table.GetColumn(kInfoColumn);
}

void CQMOperatorTable::Append(CQMOpInfoRef const& info) {
  auto const id = static_cast<std::int32_t>(info->id);
  CQMOpInfoRef const* const address = &info;
  if (m_table.AppendRow({info->token.c_str(), &id, &address}) <= 0) throw std::bad_alloc();
}

CQMOpInfoRef const* CQMOperatorTable::Find(SQMHashedText const& token) const {
  long const slot = m_table.FindSlotByText(kTokenIndex, token);
  return slot != 0 ? InfoAt(slot) : nullptr;
}

CQMOpInfoRef const* CQMOperatorTable::Find(long id) const {
  auto const number = static_cast<std::int32_t>(id);
  long const slot = m_table.FindSlotByKey(kIdIndex, {&number});
  return slot != 0 ? InfoAt(slot) : nullptr;
}

CQMOpInfoRef const* CQMOperatorTable::Remove(SQMHashedText const& token) {
  long const slot = m_table.FindSlotByText(kTokenIndex, token);
  if (slot == 0) return nullptr;
  CQMOpInfoRef const* const info = InfoAt(slot);
  m_table.DeleteSlot(slot);
  return info;
}

// ---- the list ----

CQMOperatorList::~CQMOperatorList() {
  if (m_defined != nullptr) m_defined->ForEach([](auto* info) { std::unique_ptr<CQMOpInfoRef const>{info}; });
}

std::unique_lock<std::shared_mutex> CQMOperatorList::LockForChange() {
  return m_shared ? std::unique_lock(m_mutex) : std::unique_lock<std::shared_mutex>();
}

template <class Key>
CQMOpInfoRef CQMOperatorList::FindDefined(Key const& key) const {
  if (m_definedCount.load(std::memory_order_acquire) == 0) return nullptr;
  std::shared_lock<std::shared_mutex> lock(m_mutex, std::defer_lock);
  if (m_shared) lock.lock();
  // another thread may have deleted the last one before the lock
  CQMOpInfoRef const* const found = m_defined != nullptr ? m_defined->Find(key) : nullptr;
  return found != nullptr ? *found : nullptr;
}

template CQMOpInfoRef CQMOperatorList::FindDefined(SQMHashedText const& token) const;

bool CQMOperatorList::Load(std::unique_ptr<CQMOpInfo> info) {
  m_standard->SetDefaults(*info);
  auto row = std::make_unique<CQMOpInfoRef const>(std::move(info));
  auto const lock = LockForChange();
  if (m_defined == nullptr) m_defined = std::make_unique<CQMOperatorTable>();
  if (m_defined->Find(SQMHashedText((*row)->token)) != nullptr) return false;
  m_defined->Append(*row);
  static_cast<void>(row.release());  // the table's from now on
  m_definedCount.fetch_add(1, std::memory_order_release);
  return true;
}

CQMOpInfoRef CQMOperatorList::FindByToken(SQMHashedText const& token) const {
  auto const standard = m_standard->Find(token);
  return !standard.empty() ? standard.front() : FindDefined(token);
}

CQMOpInfoRef CQMOperatorList::FindById(long id) const {
  CQMOpInfoRef const* const standard = m_standard->Find(id);
  return standard != nullptr ? *standard : FindDefined(id);
}

bool CQMOperatorList::CopyByToken(SQMHashedText const& token, CQMOpInfo& out) const {
  CQMOpInfoRef const found = FindByToken(token);
  if (found != nullptr) out = *found;
  return found != nullptr;
}

long CQMOperatorList::DeleteDefined(SQMHashedText const& token) {
  auto const lock = LockForChange();
  if (!m_standard->Find(token).empty()) return Error::DeleteNotAllowed;
  std::unique_ptr<CQMOpInfoRef const> const row(m_defined != nullptr ? m_defined->Remove(token) : nullptr);
  if (row == nullptr) return Error::NotFound;
  if ((*row)->definition != nullptr) (*row)->definition->MarkDeleted();
  if (m_definedCount.fetch_sub(1, std::memory_order_release) == 1) m_defined.reset();
  return Error::None;
}

}  // namespace qumel
