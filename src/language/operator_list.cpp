// Loading, finding, changing and deleting the rows of an operator list.
#include "language/operator_list.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>

#include "base/errors.h"
#include "base/number_text.h"
#include "tables/table.h"

namespace qumel {

namespace {

constexpr char const* kTokenColumn = "token";
constexpr char const* kIdColumn = "id";
constexpr char const* kInfoColumn = "info";
constexpr long kIdWidth = 16;

struct SQMContextMasks {
  std::uint8_t left, right;
};

using namespace ContextBit;
constexpr std::uint8_t kBeforeValue = kOperand | kOpen | kPrefix | kInfix | kPostfix;
constexpr SQMContextMasks kFreeContext{kAnywhere, kAnywhere};
constexpr SQMContextMasks kPrefixContext{kSeparator | kOpen | kPrefix | kInfix, kBeforeValue};
constexpr SQMContextMasks kPostfixContext{kOperand | kClose | kPostfix,
                                          kSeparator | kClose | kPrefix | kInfix | kPostfix};

/** Indexed by fix type. */
constexpr SQMContextMasks kDefaultContexts[] = {
    kFreeContext,                                           // none
    kPrefixContext,                                         // prefix
    {kOperand | kClose | kPostfix | kNofix, kBeforeValue},  // infix
    kPostfixContext,                                        // postfix
    {kSeparator, kSeparator},                               // nofix
    kFreeContext,
    kFreeContext,
    kFreeContext,  // keywords
    kPrefixContext,
    kPostfixContext,  // marked prefix and postfix
};

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

void SetDefaults(CQMOpInfo& info, bool isShared, bool impliedMultiplication) {
  auto const [left, right] = kDefaultContexts[static_cast<std::size_t>(info.fix)];
  info.leftContext = left;
  info.rightContext = right;
  if (isShared && info.fix == EQMFix::Prefix && std::ranges::all_of(info.token, IsLetter)) {
    info.enclose = true;
    if (impliedMultiplication) info.leftContext |= kOperand | kClose;
  }
}

/** Rows that were deleted, of a table that is not worth a new one. */
constexpr long kSparedRows = 1000;

std::unique_ptr<CQMTable> MakeTable() {
  constexpr auto kTokenWidth = static_cast<long>(CQMOpInfo::kLongestToken);
  auto table = std::make_unique<CQMTable>();
  bool const isMade =
      table->GetIndexCount() > 0 &&  // a table without its row map takes no row, ever
      table->AppendColumn(kTokenColumn, EQMDataType::String, kTokenWidth) == TableResult::Done &&
      table->AppendColumn(kIdColumn, EQMDataType::String, kIdWidth) == TableResult::Done &&
      table->AppendColumn(kInfoColumn, EQMDataType::Pointer) == TableResult::Done &&
      table->DefineIndex(kTokenColumn, {{kTokenColumn}}) == TableResult::Done &&
      table->DefineIndex(kIdColumn, {{kIdColumn}}) == TableResult::Done;
  if (!isMade) throw std::bad_alloc();
  return table;
}

void AppendRow(CQMTable& table, CQMOpInfo const* info) {
  if (table.AppendRow() <= 0) throw std::bad_alloc();
  bool const isSet = table.SetValue(kTokenColumn, info->token.c_str()) == TableResult::Done &&
                     table.SetValue(kIdColumn, DecimalText(info->id).c_str()) == TableResult::Done &&
                     table.SetValue(kInfoColumn, static_cast<void const*>(&info)) == TableResult::Done;
  if (isSet) return;
  table.DeleteRow();
  throw std::bad_alloc();
}

}  // namespace

// ---- rows in memory ----

void CQMOperatorList::SQMRows::Add(CQMOpInfoRef const& row) {
  auto const place = byToken.try_emplace(row->token).first;
  try {
    place->second.push_back(row);
    byId.try_emplace(row->id, row);
  } catch (std::bad_alloc const&) {  // a row that is not found by its id must not be found by its token
    std::erase(place->second, row);
    if (place->second.empty()) byToken.erase(place);
    throw;
  }
}

std::vector<CQMOpInfoRef> const* CQMOperatorList::SQMRows::Find(std::string_view token) const {
  auto const found = byToken.find(token);
  return found != byToken.end() ? &found->second : nullptr;
}

CQMOpInfoRef CQMOperatorList::SQMRows::Find(long id) const {
  auto const found = byId.find(id);
  return found != byId.end() ? found->second : nullptr;
}

// ---- the list ----

CQMOperatorList::CQMOperatorList(bool shared) : m_shared(shared), m_table(MakeTable()) {}

CQMOperatorList::~CQMOperatorList() = default;

std::unique_lock<std::shared_mutex> CQMOperatorList::LockForChange() {
  return m_shared ? std::unique_lock(m_mutex) : std::unique_lock<std::shared_mutex>();
}

template <class Result, class Read>
Result CQMOperatorList::ReadDefined(Result none, Read read) const {
  if (m_definedCount.load(std::memory_order_acquire) == 0) return none;
  std::shared_lock<std::shared_mutex> lock(m_mutex, std::defer_lock);
  if (m_shared) lock.lock();
  return read(m_defined);
}

bool CQMOperatorList::Load(std::unique_ptr<CQMOpInfo> info, bool impliedMultiplication) {
  if (!m_frozen) m_impliedMultiplication = impliedMultiplication;
  SetDefaults(*info, m_shared, m_impliedMultiplication);
  auto const lock = LockForChange();
  if (m_frozen && m_defined.Find(info->token) != nullptr) return false;
  AppendRow(*m_table, info.get());
  if (m_frozen) {
    ++m_deadRows;  // until it is found: then its row lives
    m_defined.Add(CQMOpInfoRef(std::move(info)));
    --m_deadRows;
    m_definedCount.fetch_add(1, std::memory_order_release);
  } else {
    CQMOpInfo const* const row = m_standardInfos.emplace_back(std::move(info)).get();
    m_standard.Add(CQMOpInfoRef(std::shared_ptr<void>(), row));
  }
  return true;
}

void CQMOperatorList::SetContext(long id, std::uint8_t left, std::uint8_t right) {
  Change(id, [=](CQMOpInfo& info) {
    info.leftContext = left;
    info.rightContext = right;
  });
}

void CQMOperatorList::AddContext(long id, std::uint8_t left, std::uint8_t right) {
  Change(id, [=](CQMOpInfo& info) {
    info.leftContext |= left;
    info.rightContext |= right;
  });
}

void CQMOperatorList::SetEnclose(long id, bool enclose) {
  Change(id, [=](CQMOpInfo& info) { info.enclose = enclose; });
}

template <class Action>
void CQMOperatorList::Change(long id, Action change) {
  if (m_frozen) return;
  auto const row = std::ranges::find(m_standardInfos, id, [](auto const& info) { return info->id; });
  if (row != m_standardInfos.end()) change(**row);
}

SQMTokenRows CQMOperatorList::Find(std::string_view token) const {
  SQMTokenRows rows;
  if (auto const* const standard = m_standard.Find(token); standard != nullptr) rows.standard = *standard;
  rows.defined = ReadDefined(std::vector<CQMOpInfoRef>(), [token](SQMRows const& defined) {
    auto const* const found = defined.Find(token);
    return found != nullptr ? *found : std::vector<CQMOpInfoRef>();
  });
  return rows;
}

CQMOpInfoRef CQMOperatorList::FindByToken(std::string_view token) const {
  SQMTokenRows const rows = Find(token);
  CQMOpInfoRef const* const first = rows.First([](CQMOpInfo const&) { return true; });
  return first != nullptr ? *first : nullptr;
}

CQMOpInfoRef CQMOperatorList::FindById(long id) const {
  if (CQMOpInfoRef standard = m_standard.Find(id); standard != nullptr) return standard;
  return ReadDefined(CQMOpInfoRef(), [id](SQMRows const& defined) { return defined.Find(id); });
}

bool CQMOperatorList::HasToken(std::string_view token) const {
  return m_standard.Find(token) != nullptr ||
         ReadDefined(false, [token](SQMRows const& defined) { return defined.Find(token) != nullptr; });
}

bool CQMOperatorList::CopyById(long id, CQMOpInfo& out) const {
  CQMOpInfoRef const found = FindById(id);
  if (found != nullptr) out = *found;
  return found != nullptr;
}

bool CQMOperatorList::CopyByToken(std::string_view token, CQMOpInfo& out) const {
  CQMOpInfoRef const found = FindByToken(token);
  if (found != nullptr) out = *found;
  return found != nullptr;
}

long CQMOperatorList::DeleteDefined(std::string_view token) {
  auto const lock = LockForChange();
  if (m_standard.Find(token) != nullptr) return Error::DeleteNotAllowed;
  auto const found = m_defined.byToken.find(token);
  if (found == m_defined.byToken.end()) return Error::NotFound;
  for (CQMOpInfoRef const& row : found->second) {
    if (row->definition != nullptr) row->definition->MarkDeleted();
    m_defined.byId.erase(row->id);
    m_definedCount.fetch_sub(1, std::memory_order_release);
    ++m_deadRows;
  }
  m_defined.byToken.erase(found);
  if (m_deadRows > kSparedRows + m_definedCount.load(std::memory_order_relaxed)) DropDeadRows();
  return Error::None;
}

/** To take out one row of a table moves all behind it; so those of deleted operators stay until many go. */
void CQMOperatorList::DropDeadRows() {
  try {
    auto table = MakeTable();
    m_table->SelectIndex(nullptr);
    for (long row = 1; row <= m_table->GetRowCount(); ++row) {
      auto const* const id = static_cast<char const*>(m_table->GetValueByRowNumber(kIdColumn, row));
      long const number = ParseLong(id != nullptr ? id : "");
      CQMOpInfoRef info = m_standard.Find(number);
      if (info == nullptr) info = m_defined.Find(number);
      if (info != nullptr) AppendRow(*table, info.get());
    }
    m_table = std::move(table);
    m_deadRows = 0;
  } catch (std::bad_alloc const&) {  // later, then
  }
}

CQMTable& CQMOperatorList::Table() {
  auto const lock = LockForChange();
  if (m_deadRows > 0) DropDeadRows();
  return *m_table;
}

}  // namespace qumel
