// Entering, finding and deleting symbols.
#include "tables/symbol_table.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tables/table.h"

namespace qumel {

namespace {

struct SQMSymbolEntry {
  CQMObject* object;
  std::string const* name;  // as it was entered; the object may be renamed
  long slot;                // of the table's row: does not change when other rows go
};

/** Entries by key. Those of one key stand in the order in which they were entered. */
template <class Key, class Hash = std::hash<Key>>
class EntryMap {
 public:
  template <class View>
  SQMSymbolEntry const* FindFirst(View const& key) const {
    auto const found = m_chains.find(key);
    return found != m_chains.end() ? &found->second.first : nullptr;
  }
  template <class View>
  bool Holds(View const& key, CQMObject const* object) const {
    auto const found = m_chains.find(key);
    if (found == m_chains.end()) return false;
    SQMChain const& chain = found->second;
    return chain.first.object == object ||
           std::any_of(chain.later.begin(), chain.later.end(),
                       [object](auto const& e) { return e.object == object; });
  }
  /** Where the key and the entry are kept; the key stays there as long as it has an entry. */
  std::pair<Key const*, SQMSymbolEntry*> Add(Key key, SQMSymbolEntry const& entry) {
    auto const [place, isNew] = m_chains.try_emplace(std::move(key), SQMChain{entry, {}});
    auto& [first, later] = place->second;
    return {&place->first, isNew ? &first : &later.emplace_back(entry)};
  }
  template <class View>
  void Remove(View const& key, long slot) {
    auto const found = m_chains.find(key);
    if (found == m_chains.end()) return;
    auto& [first, later] = found->second;
    if (first.slot != slot) {
      std::erase_if(later, [slot](auto const& entry) { return entry.slot == slot; });
    } else if (later.empty()) {
      m_chains.erase(found);
    } else {
      first = later.front();
      later.erase(later.begin());
    }
  }
  template <class Action>
  void ForEach(Action action) {
    for (auto& [key, chain] : m_chains) {
      action(chain.first);
      std::for_each(chain.later.begin(), chain.later.end(), action);
    }
  }

 private:
  struct SQMChain {
    SQMSymbolEntry first;
    std::vector<SQMSymbolEntry> later;  // nearly always empty
  };
  std::unordered_map<Key, SQMChain, Hash, std::equal_to<>> m_chains;
};

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>{}(name); }
};

}  // namespace

// ---- rows ----

/** The rows of the table, and the look-aside maps that find them: the first entry of a key in a map is the
 * first living row that the sorted index of the table gives, without a sort after every change. */
class CQMSymbolTable::Rows {
 public:
  using ReadLock = std::shared_lock<std::shared_mutex>;
  using ChangeLock = std::unique_lock<std::shared_mutex>;

  explicit Rows(bool shared) : m_shared(shared) {}

  long Count() const { return m_count.load(std::memory_order_acquire); }
  ReadLock LockForReading() { return m_shared ? ReadLock(m_mutex) : ReadLock(); }
  ChangeLock LockForChange() { return m_shared ? ChangeLock(m_mutex) : ChangeLock(); }

  SQMSymbolEntry const* FindFirst(std::string_view name) const { return m_byName.FindFirst(name); }
  SQMSymbolEntry const* FindFirst(long serialNumber) const { return m_bySerial.FindFirst(serialNumber); }

  long Add(CQMObject& object);
  void Remove(SQMSymbolEntry const& entry);
  void DestroyObjects();

 private:
  static constexpr long kNameColumn = 1, kSerialColumn = 2, kObjectColumn = 3;
  static constexpr long kNoSlot = 0;
  static constexpr long kSparedRows = 1000;  // dead ones in a small table are not worth a new table

  static std::unique_ptr<CQMTable> MakeTable();
  static long AppendRow(CQMTable& table, char const* name, std::int32_t serialNumber, CQMObject* object);
  template <class Value>
  Value ValueOfRow(long column, long row);
  void KillRow(long slot);
  void DropDeadRows();

  bool const m_shared;
  std::shared_mutex m_mutex;
  std::atomic<long> m_count{0};
  std::unique_ptr<CQMTable> m_table;  // made with the first row; rows without an object are dead
  EntryMap<std::string, NameHash> m_byName;
  EntryMap<long> m_bySerial;
};

long CQMSymbolTable::Rows::Add(CQMObject& object) {
  if (object.Name().size() > static_cast<std::size_t>(kLongestName)) return Error::Overflow;
  if (m_bySerial.Holds(object.GetSerialNumber(), &object)) return Error::None;
  SQMSymbolEntry entry{&object, nullptr, kNoSlot};
  try {
    if (m_table == nullptr) m_table = MakeTable();
    if (m_table == nullptr) return Error::OutOfMemory;
    entry.slot = AppendRow(*m_table, object.Name().data(),
                           static_cast<std::int32_t>(object.GetSerialNumber()), &object);
    if (entry.slot == kNoSlot) return Error::OutOfMemory;
    auto const [name, named] = m_byName.Add(std::string(object.Name()), entry);
    entry.name = named->name = name;
    m_bySerial.Add(object.GetSerialNumber(), entry);
  } catch (std::bad_alloc const&) {
    if (entry.name != nullptr) m_byName.Remove(*entry.name, entry.slot);
    if (entry.slot != kNoSlot) KillRow(entry.slot);
    return Error::OutOfMemory;
  }
  m_count.fetch_add(1, std::memory_order_release);
  return Error::None;
}

void CQMSymbolTable::Rows::Remove(SQMSymbolEntry const& entry) {
  KillRow(entry.slot);
  m_bySerial.Remove(entry.object->GetSerialNumber(), entry.slot);
  m_byName.Remove(*entry.name, entry.slot);
  m_count.fetch_sub(1, std::memory_order_release);
  if (m_table->GetRowCount() > kSparedRows + 2 * Count()) DropDeadRows();
}

std::unique_ptr<CQMTable> CQMSymbolTable::Rows::MakeTable() {
  auto table = std::make_unique<CQMTable>();
  bool const isMade = table->GetIndexCount() > 0 &&  // a table without its row map takes no row, ever
                      table->AppendColumn("name", EQMDataType::String, kLongestName) == TableResult::Done &&
                      table->AppendColumn("serialno", EQMDataType::RowNumber) == TableResult::Done &&
                      table->AppendColumn("object", EQMDataType::Pointer) == TableResult::Done &&
                      table->DefineIndex("name", {{"name"}}) == TableResult::Done &&
                      table->DefineIndex("serialno", {{"serialno"}}) == TableResult::Done;
  return isMade ? std::move(table) : nullptr;
}

/** The slot of the new row, or kNoSlot without memory. */
long CQMSymbolTable::Rows::AppendRow(CQMTable& table, char const* name, std::int32_t serialNumber,
                                     CQMObject* object) {
  long const slot = table.AppendRow();
  if (slot <= kNoSlot) return kNoSlot;
  bool const isSet =
      table.SetValue(kNameColumn, static_cast<void const*>(name)) == TableResult::Done &&
      table.SetValue(kSerialColumn, static_cast<void const*>(&serialNumber)) == TableResult::Done &&
      table.SetValue(kObjectColumn, static_cast<void const*>(&object)) == TableResult::Done;
  if (isSet) return slot;
  table.DeleteRow();
  return kNoSlot;
}

template <class Value>
Value CQMSymbolTable::Rows::ValueOfRow(long column, long row) {
  Value result{};
  if (void const* const value = m_table->GetValueByRowNumber(column, row))
    std::memcpy(&result, value, sizeof result);
  return result;
}

void CQMSymbolTable::Rows::DestroyObjects() {
  if (m_table == nullptr) return;
  m_count.store(0, std::memory_order_release);  // what goes is not found any more
  m_table->SelectIndex(nullptr);
  for (long row = m_table->GetLastRow(); row > 0; --row) {
    std::unique_ptr<CQMObject>{ValueOfRow<CQMObject*>(kObjectColumn, row)};
  }
}

/** The row itself stays: to take out one row moves all behind it. */
void CQMSymbolTable::Rows::KillRow(long slot) {
  m_table->GetColumn(kObjectColumn)->SetColumnValue(slot, static_cast<void const*>(nullptr));
}

/** When most rows are dead, the others move to a new table, so that variables that come and go take no memory
 * for good. */
void CQMSymbolTable::Rows::DropDeadRows() {
  try {
    std::unique_ptr<CQMTable> table = MakeTable();
    if (table == nullptr) return;
    m_table->SelectIndex(nullptr);
    long const rows = m_table->GetLastRow();
    std::vector<long> slots;  // those of living rows until now; in the new table a row's slot is its number
    for (long row = 1; row <= rows; ++row) {
      auto* const object = ValueOfRow<CQMObject*>(kObjectColumn, row);
      if (object == nullptr) continue;
      slots.push_back(m_table->GetColumnRowNumber(row));
      void const* const name = m_table->GetValueByRowNumber(kNameColumn, row);
      std::string const nameCopy(name != nullptr ? static_cast<char const*>(name) : "");
      auto const serialNumber = ValueOfRow<std::int32_t>(kSerialColumn, row);
      if (AppendRow(*table, nameCopy.c_str(), serialNumber, object) != static_cast<long>(slots.size()))
        return;
    }
    auto const renumber = [&slots](SQMSymbolEntry& entry) {
      entry.slot = std::lower_bound(slots.begin(), slots.end(), entry.slot) - slots.begin() + 1;
    };
    m_byName.ForEach(renumber);
    m_bySerial.ForEach(renumber);
    m_table = std::move(table);
  } catch (std::bad_alloc const&) {  // later, then
  }
}

// ---- the table ----

CQMSymbolTable::CQMSymbolTable(SQMVariableTraits const* variables, bool shared)
    : m_rows(std::make_unique<Rows>(shared)), m_variables(variables) {
  SetTypeTag(kTypeTag);
}

CQMSymbolTable::~CQMSymbolTable() { m_rows->DestroyObjects(); }

long CQMSymbolTable::AddSymbol(CQMObject* object) {
  if (object == nullptr) return Error::None;
  auto const lock = m_rows->LockForChange();
  return m_rows->Add(*object);
}

long CQMSymbolTable::AddNewSymbol(CQMObject& object) {
  auto const lock = m_rows->LockForChange();
  SQMSymbolEntry const* const entry = m_rows->FindFirst(object.Name());
  if (entry != nullptr && !entry->object->IsMarkedForDeletion()) return Error::AlreadyExists;
  return m_rows->Add(object);
}

long CQMSymbolTable::AddVariableSymbol(char const* name, EQMDataType type, void const* value) {
  if (m_variables == nullptr) return Error::InvocationFailed;
  std::string_view const text = name != nullptr ? name : "";
  if (IsSymbol(text, false)) return Error::AlreadyExists;
  std::unique_ptr<CQMObject> variable(m_variables->make(text.data(), type));
  if (variable == nullptr) return Error::OutOfMemory;
  // The value is there before another thread can see the variable.
  if (value != nullptr) m_variables->setValue(*variable, value);
  long const code = AddNewSymbol(*variable);                       // another thread may have been first
  if (code == Error::None) static_cast<void>(variable.release());  // the table owns it now
  return code;
}

long CQMSymbolTable::AddConstantSymbol(char const*, EQMDataType, void const*) { return Error::None; }

CQMObject* CQMSymbolTable::GetSymbol(std::string_view name, bool thisTableOnly) {
  return FindSymbol(name, thisTableOnly);
}
CQMObject* CQMSymbolTable::GetSymbol(long serialNumber, bool thisTableOnly) {
  return FindSymbol(serialNumber, thisTableOnly);
}
bool CQMSymbolTable::IsSymbol(std::string_view name, bool thisTableOnly) {
  return WithSymbol(name, thisTableOnly, [](CQMObject*) {});
}
bool CQMSymbolTable::IsSymbol(long serialNumber, bool thisTableOnly) {
  return WithSymbol(serialNumber, thisTableOnly, [](CQMObject*) {});
}
EQMDataType CQMSymbolTable::GetSymbolType(std::string_view name, bool thisTableOnly) {
  return FindSymbolType(name, thisTableOnly);
}
EQMDataType CQMSymbolTable::GetSymbolType(long serialNumber, bool thisTableOnly) {
  return FindSymbolType(serialNumber, thisTableOnly);
}
long CQMSymbolTable::DeleteSymbol(std::string_view name, bool destroy) {
  return DeleteSymbolOf(name, destroy);
}
long CQMSymbolTable::DeleteSymbol(long serialNumber, bool destroy) {
  return DeleteSymbolOf(serialNumber, destroy);
}

long CQMSymbolTable::TakeSymbol(std::string_view name, std::unique_ptr<CQMObject>& taken) {
  return TakeSymbolOf(name, taken);
}

CQMObject* CQMSymbolTable::ReserveSymbol(std::string_view name, bool thisTableOnly) {
  CQMObject* found = nullptr;
  WithSymbol(name, thisTableOnly, [&found](CQMObject* object) {
    if (object->IsMarkedForDeletion()) return;
    object->ReserveRef();
    found = object;
  });
  return found;
}

long CQMSymbolTable::GetSymbolCount() const { return m_rows->Count(); }

CQMSymbolTable* CQMSymbolTable::GetParentTable() const {
  CQMLinkedObject* const parent = GetParentObject();
  return parent != nullptr && parent->HasTypeTag(kTypeTag) ? static_cast<CQMSymbolTable*>(parent) : nullptr;
}

template <class Key, class Action>
bool CQMSymbolTable::WithSymbol(Key key, bool thisTableOnly, Action action) {
  for (CQMSymbolTable* table = this; table != nullptr;
       table = thisTableOnly ? nullptr : table->GetParentTable()) {
    if (table->m_rows->Count() == 0) continue;
    auto const lock = table->m_rows->LockForReading();
    if (SQMSymbolEntry const* const entry = table->m_rows->FindFirst(key); entry != nullptr) {
      action(entry->object);
      return true;
    }
  }
  return false;
}

template <class Key>
CQMObject* CQMSymbolTable::FindSymbol(Key key, bool thisTableOnly) {
  CQMObject* found = nullptr;
  WithSymbol(key, thisTableOnly, [&found](CQMObject* object) {
    if (!object->IsMarkedForDeletion()) found = object;
  });
  return found;
}

template <class Key>
EQMDataType CQMSymbolTable::FindSymbolType(Key key, bool thisTableOnly) {
  EQMDataType type = EQMDataType::Undefined;
  WithSymbol(key, thisTableOnly, [this, &type](CQMObject* object) {
    if (m_variables != nullptr && !object->IsMarkedForDeletion()) type = m_variables->typeOf(*object);
  });
  return type;
}

template <class Key>
long CQMSymbolTable::DeleteSymbolOf(Key key, bool destroy) {
  std::unique_ptr<CQMObject> object;
  long const code = TakeSymbolOf(key, object);
  if (!destroy) static_cast<void>(object.release());
  return code;
}

template <class Key>
long CQMSymbolTable::TakeSymbolOf(Key key, std::unique_ptr<CQMObject>& taken) {
  auto const lock = m_rows->LockForChange();
  SQMSymbolEntry const* const entry = m_rows->FindFirst(key);
  if (entry == nullptr || entry->object->IsMarkedForDeletion()) return Error::NotFound;
  if (entry->object->GetRefCount() != 0) return Error::VariableInUse;
  taken.reset(entry->object);
  m_rows->Remove(SQMSymbolEntry(*entry));
  return Error::None;
}

}  // namespace qumel
