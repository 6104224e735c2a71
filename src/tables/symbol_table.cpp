// Entering, finding and deleting symbols.
#include "tables/symbol_table.h"

#include <cstdint>
#include <new>

namespace qumel {

CQMSymbolTable::CQMSymbolTable(SQMVariableTraits const* variables, bool shared)
    : m_variables(variables), m_shared(shared) {
  SetTypeTag(kTypeTag);
  bool const isMade = m_table.AppendColumn("name", EQMDataType::String, kLongestName) == TableResult::Done &&
                      m_table.AppendColumn("serialno", EQMDataType::RowNumber) == TableResult::Done &&
                      m_table.AppendColumn("object", EQMDataType::Pointer) == TableResult::Done &&
                      m_table.DefineIndex("name", {{"name"}}) == TableResult::Done &&
                      m_table.DefineIndex("serialno", {{"serialno"}}) == TableResult::Done;
  if (!isMade) throw std::bad_alloc();
  m_objects = &m_table.GetColumn(kObjectColumn)->GetRegion();
}

CQMSymbolTable::~CQMSymbolTable() {
  m_count.store(0, std::memory_order_release);  // what goes is not found any more
  for (long row = m_table.GetRowCount(); row > 0; --row) {
    std::unique_ptr<CQMObject>{ObjectAt(m_table.GetColumnRowNumber(row))};
  }
}

long CQMSymbolTable::FindSlot(long serialNumber) const {
  auto const number = static_cast<std::int32_t>(serialNumber);
  return m_table.FindSlotByKey(kSerialIndex, {&number});
}

long CQMSymbolTable::Add(CQMObject& object) {
  if (object.Name().size() > static_cast<std::size_t>(kLongestName)) return Error::Overflow;
  long const known = FindSlot(object.GetSerialNumber());
  if (known != 0 && ObjectAt(known) == &object) return Error::None;
  auto const serialNumber = static_cast<std::int32_t>(object.GetSerialNumber());
  CQMObject* const address = &object;
  if (m_table.AppendRow({object.Name().data(), &serialNumber, &address}) <= 0) return Error::OutOfMemory;
  m_count.fetch_add(1, std::memory_order_release);
  return Error::None;
}

long CQMSymbolTable::AddSymbol(CQMObject* object) {
  if (object == nullptr) return Error::None;
  auto const lock = LockForChange();
  return Add(*object);
}

long CQMSymbolTable::AddNewSymbol(CQMObject& object) {
  auto const lock = LockForChange();
  long const slot = FindSlot(object.Name());
  if (slot != 0 && !ObjectAt(slot)->IsMarkedForDeletion()) return Error::AlreadyExists;
  return Add(object);
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

CQMObject* CQMSymbolTable::GetSymbol(SQMHashedText const& name, bool thisTableOnly) {
  return FindSymbol(name, thisTableOnly);
}
CQMObject* CQMSymbolTable::GetSymbol(long serialNumber, bool thisTableOnly) {
  return FindSymbol(serialNumber, thisTableOnly);
}
bool CQMSymbolTable::IsSymbol(SQMHashedText const& name, bool thisTableOnly) {
  return WithSymbol(name, thisTableOnly, [](CQMObject*) {});
}
bool CQMSymbolTable::IsSymbol(long serialNumber, bool thisTableOnly) {
  return WithSymbol(serialNumber, thisTableOnly, [](CQMObject*) {});
}
EQMDataType CQMSymbolTable::GetSymbolType(SQMHashedText const& name, bool thisTableOnly) {
  return FindSymbolType(name, thisTableOnly);
}
EQMDataType CQMSymbolTable::GetSymbolType(long serialNumber, bool thisTableOnly) {
  return FindSymbolType(serialNumber, thisTableOnly);
}
long CQMSymbolTable::DeleteSymbol(SQMHashedText const& name, bool destroy) {
  return DeleteSymbolOf(name, destroy);
}
long CQMSymbolTable::DeleteSymbol(long serialNumber, bool destroy) {
  return DeleteSymbolOf(serialNumber, destroy);
}

long CQMSymbolTable::TakeSymbol(SQMHashedText const& name, std::unique_ptr<CQMObject>& taken) {
  return TakeSymbolOf(name, taken);
}

CQMObject* CQMSymbolTable::ReserveSymbol(SQMHashedText const& name, bool thisTableOnly) {
  CQMObject* found = nullptr;
  WithSymbol(name, thisTableOnly, [&found](CQMObject* object) {
    if (object->IsMarkedForDeletion()) return;
    object->ReserveRef();
    found = object;
  });
  return found;
}

CQMSymbolTable* CQMSymbolTable::GetParentTable() const {
  CQMLinkedObject* const parent = GetParentObject();
  return parent != nullptr && parent->HasTypeTag(kTypeTag) ? static_cast<CQMSymbolTable*>(parent) : nullptr;
}

template <class Key, class Action>
bool CQMSymbolTable::WithOwnSymbol(Key const& key, Action action) {
  long const slot = FindSlot(key);
  if (slot != 0) action(ObjectAt(slot));
  return slot != 0;
}

template <class Key, class Action>
bool CQMSymbolTable::WithSharedSymbol(Key const& key, Action action) {
  if (GetSymbolCount() == 0) return false;
  std::shared_lock<std::shared_mutex> const lock(m_mutex);
  return WithOwnSymbol(key, action);
}

template <class Key, class Action>
bool CQMSymbolTable::WithSymbol(Key const& key, bool thisTableOnly, Action action) {
  if (m_shared ? WithSharedSymbol(key, action) : WithOwnSymbol(key, action)) return true;
  CQMSymbolTable* const parent = thisTableOnly ? nullptr : GetParentTable();
  return parent != nullptr && parent->WithSymbol(key, thisTableOnly, action);
}

template <class Key>
CQMObject* CQMSymbolTable::FindSymbol(Key const& key, bool thisTableOnly) {
  CQMObject* found = nullptr;
  WithSymbol(key, thisTableOnly, [&found](CQMObject* object) {
    if (!object->IsMarkedForDeletion()) found = object;
  });
  return found;
}

template <class Key>
EQMDataType CQMSymbolTable::FindSymbolType(Key const& key, bool thisTableOnly) {
  EQMDataType type = EQMDataType::Undefined;
  WithSymbol(key, thisTableOnly, [this, &type](CQMObject* object) {
    if (m_variables != nullptr && !object->IsMarkedForDeletion()) type = m_variables->typeOf(*object);
  });
  return type;
}

template <class Key>
long CQMSymbolTable::DeleteSymbolOf(Key const& key, bool destroy) {
  std::unique_ptr<CQMObject> object;
  long const code = TakeSymbolOf(key, object);
  if (!destroy) static_cast<void>(object.release());
  return code;
}

template <class Key>
long CQMSymbolTable::TakeSymbolOf(Key const& key, std::unique_ptr<CQMObject>& taken) {
  auto const lock = LockForChange();
  long const slot = FindSlot(key);
  if (slot == 0 || ObjectAt(slot)->IsMarkedForDeletion()) return Error::NotFound;
  if (ObjectAt(slot)->GetRefCount() != 0) return Error::VariableInUse;
  taken.reset(ObjectAt(slot));
  m_table.DeleteSlot(slot);
  m_count.fetch_sub(1, std::memory_order_release);
  return Error::None;
}

}  // namespace qumel
