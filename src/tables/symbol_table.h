// Symbol tables: named objects found by name or serial number, in a chain along the object tree.
#pragma once

#include <memory>
#include <string_view>

#include "base/data_type.h"
#include "base/errors.h"
#include "objects/linked_object.h"

namespace qumel {

/** How a symbol table makes and types variables, handed in by the floor that knows them. */
struct SQMVariableTraits {
  CQMObject* (*make)(char const* name, EQMDataType type);  // null when memory is exhausted
  void (*setValue)(CQMObject& variable, void const* value);
  EQMDataType (*typeOf)(CQMObject const& object);  // Undefined for what is no variable
};

/** Owns the objects entered in it. With shared true, any number of threads may look symbols up while one
 * changes the table; otherwise the table belongs to one context. Lookups take no lock while a shared table is
 * empty. */
class CQMSymbolTable : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kSymbolTable;
  /** What the column of names holds. */
  static constexpr long kLongestName = 128;

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
  CQMObject* GetSymbol(std::string_view name, bool thisTableOnly);
  CQMObject* GetSymbol(long serialNumber, bool thisTableOnly);
  /** As GetSymbol, with a reference taken before another thread can delete the symbol. */
  CQMObject* ReserveSymbol(std::string_view name, bool thisTableOnly);
  /** Whether a row exists, whatever its object's mark. */
  bool IsSymbol(std::string_view name, bool thisTableOnly);
  bool IsSymbol(long serialNumber, bool thisTableOnly);
  EQMDataType GetSymbolType(std::string_view name, bool thisTableOnly);
  EQMDataType GetSymbolType(long serialNumber, bool thisTableOnly);

  /** From this table only: NotFound, VariableInUse while referenced, or 0. Without destroy the caller keeps
   * the object. */
  long DeleteSymbol(std::string_view name, bool destroy);
  long DeleteSymbol(long serialNumber, bool destroy);
  /** As DeleteSymbol, but the object comes into the hands of the caller. */
  long TakeSymbol(std::string_view name, std::unique_ptr<CQMObject>& taken);

  long GetSymbolCount() const;

 private:
  class Rows;  // the table and its look-aside maps

  CQMSymbolTable* GetParentTable() const;
  /** Calls action with the first object found under key; false, and no call, where there is none. */
  template <class Key, class Action>
  bool WithSymbol(Key key, bool thisTableOnly, Action action);
  template <class Key>
  CQMObject* FindSymbol(Key key, bool thisTableOnly);
  template <class Key>
  EQMDataType FindSymbolType(Key key, bool thisTableOnly);
  template <class Key>
  long DeleteSymbolOf(Key key, bool destroy);
  template <class Key>
  long TakeSymbolOf(Key key, std::unique_ptr<CQMObject>& taken);

  std::unique_ptr<Rows> m_rows;
  SQMVariableTraits const* m_variables;
};

}  // namespace qumel
