// The variables of hosts: a description of each kind of value, and the operations that create, link, write,
// read and query variables of every kind, by name and by handle.
#pragma once

#include <complex>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "context/executor.h"
#include "values/datum.h"

namespace qumel {

/** A count of dimensions and six extents or indices, as hosts pass them; those behind the count are ignored.
 */
struct SQMIndices {
  long count;
  long values[CQMDatum::kMaximumDimensions];

  bool IsValidCount() const { return count >= 1 && count <= CQMDatum::kMaximumDimensions; }
  std::span<long const> Used() const { return {values, static_cast<std::size_t>(count)}; }
};

/** In which tables a name is looked up. */
enum class EQMLookup {
  ByScope,  // for 'C' the process-wide table, for 'G' the context's, else the context's and then the other
  CosmicFirst,  // the process-wide table and then the context's, in every scope: documented for reading texts
};

/** In which tables a new name must not be known. */
enum class EQMExistence {
  ByScope,     // for 'C' the process-wide table, for 'G' the context's, else both
  AlwaysBoth,  // for 'G', too, both: documented for creating texts
};

/** What a setter by name does with its value when it reports an error. */
enum class EQMOnError { StoreAnyway, StoreUnlessArray, Refuse };

// ---- kinds of variables, for creating and linking ----

template <EQMDataType type>
struct SQMKind {
  static constexpr EQMDataType kType = type;
  static constexpr EQMExistence kExistence = EQMExistence::ByScope;
};
using NumberKind = SQMKind<EQMDataType::Number>;
using ComplexKind = SQMKind<EQMDataType::Complex>;
using BooleanKind = SQMKind<EQMDataType::Boolean>;
struct StringKind : SQMKind<EQMDataType::String> {
  static constexpr EQMExistence kExistence = EQMExistence::AlwaysBoth;
};

// ---- what setters and getters accept, write and read ----

constexpr bool IsNumberOrComplex(EQMDataType type) {
  return type == EQMDataType::Number || type == EQMDataType::Complex;
}
constexpr bool IsComplexType(EQMDataType type) { return type == EQMDataType::Complex; }
constexpr bool IsBooleanType(EQMDataType type) { return type == EQMDataType::Boolean; }

/** Copies value into one part of datum by the datum's own conversion, whatever its type is. */
[[gnu::cold]] void StorePart(CQMDatum& datum, long part, std::span<std::byte const> value);
/** As above, into the element at indices. */
void StorePart(CQMDatum& datum, SQMIndices const& indices, long part, std::span<std::byte const> value);

template <class Number, bool (*accepts)(EQMDataType), long part>
struct SQMPartAccess {
  using Value = Number;
  static constexpr EQMOnError kOnError = EQMOnError::StoreAnyway;
  static bool Accepts(EQMDataType type) { return accepts(type); }
  static void Store(CQMDatum& datum, Value value) {
    // nearly every call finds a scalar that holds values of just this kind
    if (part == 0 && accepts(datum.GetType()) && !datum.IsArray()) [[likely]]
      *reinterpret_cast<Value*>(datum.Current()) = value;
    else StorePart(datum, part, BytesOf(value));
  }
  static void Store(CQMDatum& datum, SQMIndices const& indices, Value value) {
    StorePart(datum, indices, part, BytesOf(value));
  }

 private:
  static std::span<std::byte const> BytesOf(Value const& value) {
    return std::as_bytes(std::span<Value const, 1>(&value, 1));
  }
};

struct NumberAccess : SQMPartAccess<double, &IsNumberOrComplex, 0> {
  static constexpr EQMLookup kLookup = EQMLookup::ByScope;
  static constexpr bool kGetterClearsError = false;
  static Value Load(std::byte const* at) { return *reinterpret_cast<double const*>(at); }
};
using RealPartAccess = SQMPartAccess<double, &IsNumberOrComplex, 0>;
using ImaginaryPartAccess = SQMPartAccess<double, &IsComplexType, 1>;

struct BooleanAccess : SQMPartAccess<bool, &IsBooleanType, 0> {
  static constexpr EQMLookup kLookup = EQMLookup::ByScope;
  static constexpr bool kGetterClearsError = false;
  static Value Load(std::byte const* at) { return *reinterpret_cast<unsigned char const*>(at) != 0; }
};

struct ComplexAccess {
  using Value = std::complex<double>;
  static constexpr EQMOnError kOnError = EQMOnError::StoreUnlessArray;
  static constexpr EQMLookup kLookup = EQMLookup::ByScope;
  static constexpr bool kGetterClearsError = true;  // documented for the scalar getter by name alone
  static bool Accepts(EQMDataType type) { return IsComplexType(type); }
  static void Store(CQMDatum& datum, Value value) {
    RealPartAccess::Store(datum, value.real());
    ImaginaryPartAccess::Store(datum, value.imag());
  }
  static void Store(CQMDatum& datum, SQMIndices const& indices, Value value) {
    RealPartAccess::Store(datum, indices, value.real());
    ImaginaryPartAccess::Store(datum, indices, value.imag());
  }
  static Value Load(std::byte const* at) {
    auto const* const parts = reinterpret_cast<double const*>(at);
    return {parts[0], parts[1]};
  }
};

struct StringAccess {
  using Value = char const*;
  static constexpr EQMOnError kOnError = EQMOnError::Refuse;
  static constexpr EQMLookup kLookup = EQMLookup::CosmicFirst;
  static constexpr bool kGetterClearsError = false;
  static bool Accepts(EQMDataType type) { return IsText(type); }
  static void Store(CQMDatum& datum, Value value) { datum.SetText(value != nullptr ? value : ""); }
  static void Store(CQMDatum& datum, SQMIndices const& indices, Value value) {
    datum.SetValue(0, value != nullptr ? value : "", indices.Used());
  }
  static Value Load(std::byte const* at) { return reinterpret_cast<char const*>(at); }
};

/** The operations, on one context. An error becomes the last error of the context, where a success does not
 * clear it unless an operation says so. */
class CQMVariables {
 public:
  explicit CQMVariables(CQMExecutor& context) : m_context(context) {}

  // ---- creating: a handle, which holds a reference, or 0 ----
  template <class Kind, class Access>
  Handle Create(char scope, char const* name, typename Access::Value initial, long textLength = 0) {
    auto datum = Make(scope, name, Kind::kExistence, {Kind::kType, textLength, nullptr, false});
    if (datum != nullptr) Access::Store(*datum, initial);
    return EnterWithHandle(scope, std::move(datum));
  }
  template <class Kind>
  Handle CreateArray(char scope, char const* name, SQMIndices const& extents, long textLength = 0) {
    return EnterWithHandle(scope, MakeArray(scope, name, {Kind::kType, textLength, nullptr, false}, extents));
  }

  // ---- linking: the host's memory is the value; it is neither cleared nor freed ----
  template <class Kind>
  bool Link(char scope, char const* name, void* memory, long textLength = 0) {
    return Enter(scope, Make(scope, name, Kind::kExistence, {Kind::kType, textLength, memory, true}));
  }
  template <class Kind>
  bool LinkArray(char scope, char const* name, void* memory, SQMIndices const& extents, long textLength = 0) {
    return Enter(scope, MakeArray(scope, name, {Kind::kType, textLength, memory, true}, extents));
  }

  // ---- writing: true when the last error is 0 afterwards, so false after an earlier error ----
  template <class Access>
  bool Set(char scope, char const* name, typename Access::Value value) {
    return Conclude(OnFound(scope, name, EQMLookup::ByScope, [=](CQMDatum* datum) -> long {
      if (datum == nullptr) return Error::NotDefined;
      long const code = CheckScalar<Access>(*datum);
      bool const stores = code == Error::None || Access::kOnError == EQMOnError::StoreAnyway ||
                          (Access::kOnError == EQMOnError::StoreUnlessArray && !datum->IsArray());
      if (stores) Access::Store(*datum, value);
      return code;
    }));
  }
  template <class Access>
  bool SetElement(char scope, char const* name, typename Access::Value value, SQMIndices const& indices) {
    return Conclude(OnFound(scope, name, EQMLookup::ByScope, [&, value](CQMDatum* datum) {
      return StoreElementIn<Access>(datum, value, indices);
    }));
  }

  // ---- reading: the value, or zero when this call fails ----
  template <class Access>
  typename Access::Value Get(char scope, char const* name) {
    if (Access::kGetterClearsError) m_context.ClearLastError();
    return Conclude(
        OnFound(scope, name, Access::kLookup, [](CQMDatum const* datum) { return LoadFrom<Access>(datum); }));
  }
  template <class Access>
  typename Access::Value GetElement(char scope, char const* name, SQMIndices const& indices) {
    return Conclude(OnFound(scope, name, EQMLookup::ByScope,
                            [&](CQMDatum const* datum) { return LoadElementFrom<Access>(datum, indices); }));
  }

  // ---- a variable that was found by handle, or null; Conclude then records the error ----
  template <class Access>
  static long StoreIn(CQMDatum* datum, typename Access::Value value) {
    if (datum == nullptr) return Error::NotDefined;
    long const code = CheckScalar<Access>(*datum);
    if (code == Error::None) Access::Store(*datum, value);
    return code;
  }
  template <class Access>
  static long StoreElementIn(CQMDatum* datum, typename Access::Value value, SQMIndices const& indices) {
    if (datum == nullptr) return Error::NotDefined;
    std::byte const* element = nullptr;
    long const code = FindElement(*datum, &Access::Accepts, indices, element);
    if (code == Error::None) Access::Store(*datum, indices, value);
    return code;
  }
  /** An error code, and the value that was read; zero after an error. */
  template <class Value>
  struct SQMRead {
    long code;
    Value value;
  };
  template <class Access>
  static SQMRead<typename Access::Value> LoadFrom(CQMDatum const* datum) {
    if (datum == nullptr) return {Error::NotDefined, {}};
    long const code = CheckScalar<Access>(*datum);
    return {code, code == Error::None ? Access::Load(datum->Current()) : typename Access::Value{}};
  }
  template <class Access>
  static SQMRead<typename Access::Value> LoadElementFrom(CQMDatum const* datum, SQMIndices const& indices) {
    if (datum == nullptr) return {Error::NotDefined, {}};
    std::byte const* element = nullptr;
    long const code = FindElement(*datum, &Access::Accepts, indices, element);
    return {code, code == Error::None ? Access::Load(element) : typename Access::Value{}};
  }
  /** Records code if it is an error. True when the last error is 0 afterwards. */
  bool Conclude(long code) {
    if (code != Error::None) [[unlikely]]
      m_context.SetLastError(code);
    return m_context.GetLastErrorID() == Error::None;
  }
  template <class Value>
  Value Conclude(SQMRead<Value> const& read) {
    if (read.code != Error::None) [[unlikely]]
      m_context.SetLastError(read.code);
    return read.value;
  }

  // ---- queries and removal ----
  /** 0 with NotDefined for an unknown name. Every call takes a reference, until ReleaseObjectHandle of the
   * variable gives it back. */
  Handle GetHandle(char scope, char const* name);
  /** A TypeLetter; kNone for no variable and for types that have none. */
  char GetType(char scope, char const* name) {
    return OnFound(scope, name, EQMLookup::ByScope, &CQMVariables::LetterOf);
  }
  static char LetterOf(CQMDatum const* datum);
  bool IsVariable(char scope, char const* name) {
    return OnFound(scope, name, EQMLookup::ByScope, [](CQMDatum const* datum) { return datum != nullptr; });
  }
  bool IsArray(char scope, char const* name);
  /** Clears the last error first. 0, NotFound, or VariableInUse while handles or expressions hold references.
   */
  long Delete(char scope, char const* name);

 private:
  struct SQMNewVariable {
    EQMDataType type;
    long textLength;  // room for a string, its terminator included
    void* memory;     // that of the host, for links
    bool isLink;
  };

  CQMSymbolTable* TableOf(char scope) const {
    return scope == Scope::kCosmic ? CQMExecutor::sm_pCosmicSymTab : m_context.GetGlobalSymbolTable();
  }
  bool IsTaken(char scope, char const* name, EQMExistence existence) const;
  /** The value of work for the variable of that name, or for null. */
  template <class Work>
  std::invoke_result_t<Work, CQMDatum*> OnFound(char scope, char const* name, EQMLookup lookup,
                                                Work const& work) const {
    if (lookup == EQMLookup::ByScope && scope != Scope::kCosmic) {
      if (CQMDatum* const own = FindOwn(m_context, name); own != nullptr) [[likely]]
        return work(own);
      if (scope == Scope::kGlobal) return work(nullptr);
    }
    return OnFoundElsewhere(name, lookup, work);
  }
  template <class Work>
  [[gnu::noinline]] std::invoke_result_t<Work, CQMDatum*> OnFoundElsewhere(char const* name, EQMLookup lookup,
                                                                           Work work) const {
    if (auto const shared = ReserveShared(name); shared != nullptr) return work(shared.get());
    return work(lookup == EQMLookup::CosmicFirst ? FindOwn(m_context, name) : nullptr);
  }
  static CQMDatum* FindOwn(CQMExecutor& context, char const* name);
  struct SQMRelease {
    void operator()(CQMDatum* datum) const { datum->ReleaseRef(); }
  };
  /** Takes a reference, so that no other thread deletes the variable while a call uses it. */
  std::unique_ptr<CQMDatum, SQMRelease> ReserveShared(char const* name) const;
  // A new variable has its value and its handle before other threads can find it.
  using NewDatum = std::unique_ptr<CQMDatum>;
  NewDatum Make(char scope, char const* name, EQMExistence existence, SQMNewVariable const& wanted);
  NewDatum MakeArray(char scope, char const* name, SQMNewVariable const& wanted, SQMIndices const& extents);
  NewDatum MakeDatum(char scope, char const* name, SQMNewVariable const& wanted, SQMIndices const* extents);
  /** Gives datum to the table of scope, whose code becomes the last error. False for null, too. */
  bool Enter(char scope, NewDatum datum);
  Handle EnterWithHandle(char scope, NewDatum datum);
  template <class Access>
  static long CheckScalar(CQMDatum const& datum) {
    if (!Access::Accepts(datum.GetType())) [[unlikely]]
      return Error::TypeMismatch;
    return datum.IsArray() ? Error::IndexOutOfBounds : Error::None;
  }
  /** Finds the element at indices, or returns the error. */
  static long FindElement(CQMDatum const& datum, bool (*accepts)(EQMDataType), SQMIndices const& indices,
                          std::byte const*& element);
  /** The gate that guards the handle of datum; null for a process-wide variable. */
  CQMContextGate* GuardOf(CQMDatum const& datum) const {
    return datum.GetScope() == Scope::kCosmic ? nullptr : m_context.GetHandleGuard();
  }
  bool Refuse(long code) {
    m_context.SetLastError(code);
    return false;
  }

  CQMExecutor& m_context;
};

}  // namespace qumel
