// Symbol tables: named objects found by name or serial number, in a chain along the object tree.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string_view>

#include "base/data_type.h"
#include "base/errors.h"
#include "objects/linked_object.h"
#include "tables/table.h"

namespace qumel {

/** How a symbol table makes and types variables, handed in by the floor that knows them. */
struct SQMVariableTraits {
  CQMObject* (*make)(char const* name, EQMDataType type);  // null when memory is exhausted
  void (*setValue)(CQMObject& variable, void const* value);
  EQMDataType (*typeOf)(CQMObject const& object);  // Undefined for what is no variable
};

/** A table with a row for each object: its name when it was entered, its serial number and its address. Of
 * equal names the first one entered counts. Owns the objects entered in it. With shared true, any number of
 * threads may look symbols up while one changes the table; otherwise the table belongs to one context.
 * Lookups take no lock while a shared table is empty. */
class CQMSymbolTable : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kSymbolTable;
  /** What the column of names holds. */
  static constexpr long kLongestName = 128;

  /** Throws where there is no memory. */
  explicit CQMSymbolTable(SQMVariableTraits const* variables = nullptr, bool shared = false);
  ~CQMSymbolTable() override;

  /** Enters object under its name and serial number and takes ownership of it; with any other answer than 0
   * it stays the caller's. Null is ignored, and so is an object that is entered already; names may be in the
   * table before. A name longer than kLongestName is refused with Overflow. */
  long AddSymbol(CQMObject* object);
  /** As AddSymbol, but AlreadyExists when GetSymbol finds the name in this table: of threads that enter one
   * name at once, one succeeds. */
  long AddNewSymbol(CQMObject& object);
  /** AlreadyExists when the name is known anywhere on the chain, InvocationFailed in a table that makes no
   * variables. value may be null. */
  long AddVariableSymbol(char const* name, EQMDataType type, void const* value);
  /** Enters nothing, on purpose: constants are not kept as symbols. */
  long AddConstantSymbol(char const* name, EQMDataType type, void const* value);

  /** The object, or null. An object marked for deletion counts as absent and ends the search. */
  CQMObject* GetSymbol(SQMHashedText const& name, bool thisTableOnly);
  CQMObject* GetSymbol(long serialNumber, bool thisTableOnly);
  /** As GetSymbol, with a reference taken before another thread can delete the symbol. */
  CQMObject* ReserveSymbol(SQMHashedText const& name, bool thisTableOnly);
  /** Whether a row exists, whatever its object's mark. */
  bool IsSymbol(SQMHashedText const& name, bool thisTableOnly);
  bool IsSymbol(long serialNumber, bool thisTableOnly);
  EQMDataType GetSymbolType(SQMHashedText const& name, bool thisTableOnly);
  EQMDataType GetSymbolType(long serialNumber, bool thisTableOnly);

  /** From this table only: NotFound, VariableInUse while referenced, or 0. Without destroy the caller keeps
   * the object. */
  long DeleteSymbol(SQMHashedText const& name, bool destroy);
  long DeleteSymbol(long serialNumber, bool destroy);
  /** As DeleteSymbol, but the object comes into the hands of the caller. */
  long TakeSymbol(SQMHashedText const& name, std::unique_ptr<CQMObject>& taken);

  long GetSymbolCount() const { return m_count.load(std::memory_order_acquire); }

 private:
  static constexpr long kNameColumn = 1, kSerialColumn = 2, kObjectColumn = 3;
  static constexpr long kNameIndex = 1, kSerialIndex = 2;
  using ChangeLock = std::unique_lock<std::shared_mutex>;

  ChangeLock LockForChange() { return m_shared ? ChangeLock(m_mutex) : ChangeLock(); }
  // Under the lock.
  long Add(CQMObject& object);
  long FindSlot(SQMHashedText const& name) const { return m_table.FindSlotByText(kNameIndex, name); }
  long FindSlot(long serialNumber) const;
  CQMObject* ObjectAt(long slot) const {
    CQMObject* object;
    std::memcpy(&object, m_objects->FindAtom(slot), sizeof object);
    return object;
  }

  CQMSymbolTable* GetParentTable() const;
  /** Calls action with the first object found under key; false, and no call, where there is none. */
  template <class Key, class Action>
  bool WithSymbol(Key const& key, bool thisTableOnly, Action action);
  template <class Key, class Action>
  bool WithOwnSymbol(Key const& key, Action action);
  template <class Key, class Action>
  bool WithSharedSymbol(Key const& key, Action action);
  template <class Key>
  CQMObject* FindSymbol(Key const& key, bool thisTableOnly);
  template <class Key>
  EQMDataType FindSymbolType(Key const& key, bool thisTableOnly);
  template <class Key>
  long DeleteSymbolOf(Key const& key, bool destroy);
  template <class Key>
  long TakeSymbolOf(Key const& key, std::unique_ptr<CQMObject>& taken);

  CQMTable m_table;
  CQMDataSpaceRegion const* m_objects;  // the addresses in the table
  SQMVariableTraits const* m_variables;
  bool const m_shared;
  std::atomic<long> m_count{0};
  std::shared_mutex m_mutex;
};

}  // namespace qumel
