// Making and finding variables, and finding the elements of arrays.
#include "context/variables.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "context/caller.h"
#include "tables/symbol_table.h"

namespace qumel {

namespace {

/** Pads value with zeros, since a datum copies as many bytes as its own type has. */
using PartBytes = std::array<std::byte, 2 * sizeof(double) + 1>;

PartBytes Widen(std::span<std::byte const> value) {
  PartBytes bytes{};
  std::copy(value.begin(), value.end(), bytes.begin());
  return bytes;
}

/** Whether datum has the part: an imaginary part has only what holds numbers. */
bool HasPart(CQMDatum const& datum, long part) {
  return part == 0 || OperandClassOf(datum.GetType()) == EQMTypeClass::Numeric;
}

}  // namespace

void StorePart(CQMDatum& datum, long part, std::span<std::byte const> value) {
  if (HasPart(datum, part)) datum.SetValue(part, Widen(value).data());
}

void StorePart(CQMDatum& datum, SQMIndices const& indices, long part, std::span<std::byte const> value) {
  if (HasPart(datum, part)) datum.SetValue(part, Widen(value).data(), indices.Used());
}

bool CQMVariables::IsTaken(char scope, char const* name, EQMExistence existence) const {
  bool const thisTableOnly = scope == Scope::kGlobal && existence == EQMExistence::ByScope;
  return TableOf(scope)->IsSymbol(std::string_view(name), thisTableOnly);
}

// The tables hold nothing but datums. That of the context needs no reference: no other thread can change it.

CQMDatum* CQMVariables::FindOwn(CQMExecutor& context, char const* name) {
  CQMSymbolTable* const table = context.GetGlobalSymbolTable();
  if (name == nullptr || table == nullptr) return nullptr;
  return static_cast<CQMDatum*>(table->GetSymbol(std::string_view(name), true));
}

std::unique_ptr<CQMDatum, CQMVariables::SQMRelease> CQMVariables::ReserveShared(char const* name) const {
  CQMSymbolTable* const table = TableOf(Scope::kCosmic);
  CQMObject* const found =
      name != nullptr && table != nullptr ? table->ReserveSymbol(std::string_view(name), true) : nullptr;
  return std::unique_ptr<CQMDatum, SQMRelease>(static_cast<CQMDatum*>(found));
}

CQMVariables::NewDatum CQMVariables::Make(char scope, char const* name, EQMExistence existence,
                                          SQMNewVariable const& wanted) {
  if (name == nullptr || *name == '\0') return Refuse(Error::NotDefined), nullptr;
  if (IsTaken(scope, name, existence)) return Refuse(Error::AlreadyExists), nullptr;
  return MakeDatum(scope, name, wanted, nullptr);
}

CQMVariables::NewDatum CQMVariables::MakeArray(char scope, char const* name, SQMNewVariable const& wanted,
                                               SQMIndices const& extents) {
  if (name == nullptr || *name == '\0') return Refuse(Error::NotDefined), nullptr;
  if (IsTaken(scope, name, EQMExistence::ByScope)) return Refuse(Error::AlreadyExists), nullptr;
  // documented: after an error a host has to clear it before it can make arrays
  if (m_context.GetLastErrorID() != Error::None) return nullptr;
  if (!extents.IsValidCount() ||
      std::ranges::any_of(extents.Used(), [](long extent) { return extent < 1; })) {
    return Refuse(Error::IndexOutOfBounds), nullptr;
  }
  return MakeDatum(scope, name, wanted, &extents);
}

CQMVariables::NewDatum CQMVariables::MakeDatum(char scope, char const* name, SQMNewVariable const& wanted,
                                               SQMIndices const* extents) {
  if (wanted.isLink && wanted.memory == nullptr) return Refuse(Error::NotFound), nullptr;
  bool const isText = wanted.type == EQMDataType::String;
  if (isText && wanted.textLength < 1) return Refuse(Error::IndexOutOfBounds), nullptr;
  if (isText && wanted.textLength > CQMDatum::kMaximumArrayBytes) return Refuse(Error::OutOfMemory), nullptr;

  auto datum = std::make_unique<CQMDatum>();
  datum->SetDatumName(name);
  datum->SetScope(scope == Scope::kCosmic ? Scope::kCosmic : Scope::kGlobal);
  datum->SetOwnsStorage(!wanted.isLink);
  if (isText) datum->SetDatumAtomSize(wanted.textLength);
  datum->SetDatumType(wanted.type);
  if (extents != nullptr) {
    datum->SetArrayBase(m_context.GetArrayBase());
    datum->SetInvertArrayIndices(m_context.GetInvertArrayIndices());
    std::vector<long> all(extents->Used().begin(), extents->Used().end());
    if (isText) all.push_back(wanted.textLength);
    if (long const code = datum->SetIsArray(std::span<long const>(all)); code != Error::None) {
      return Refuse(code), nullptr;
    }
  }
  if (wanted.isLink) datum->SetValuePointer(wanted.memory);
  return datum;
}

bool CQMVariables::Enter(char scope, NewDatum datum) {
  if (datum == nullptr) return false;
  long const code = TableOf(scope)->AddNewSymbol(*datum);
  m_context.SetLastError(code);
  if (code != Error::None) return false;
  static_cast<void>(datum.release());  // the table owns it now
  return true;
}

Handle CQMVariables::EnterWithHandle(char scope, NewDatum datum) {
  if (datum == nullptr) return 0;
  Handle const handle = datum->GetObjectHandle(GuardOf(*datum));
  if (handle == 0) return Refuse(Error::OutOfMemory), 0;
  return Enter(scope, std::move(datum)) ? handle : 0;
}

long CQMVariables::FindElement(CQMDatum const& datum, bool (*accepts)(EQMDataType), SQMIndices const& indices,
                               std::byte const*& element) {
  if (!accepts(datum.GetType())) return Error::TypeMismatch;
  bool const mayExist = datum.IsArray() && datum.GetDimensionCount() == indices.count &&
                        indices.IsValidCount() &&
                        std::ranges::find(indices.Used(), -1) == indices.Used().end();
  element = mayExist ? datum.FindElement(indices.Used()) : nullptr;
  return element != nullptr ? Error::None : Error::IndexOutOfBounds;
}

char CQMVariables::LetterOf(CQMDatum const* datum) {
  if (datum == nullptr) return TypeLetter::kNone;
  switch (datum->GetType()) {
    case EQMDataType::Number: return TypeLetter::kNumber;
    case EQMDataType::Complex: return TypeLetter::kComplex;
    case EQMDataType::String:
    case EQMDataType::Text: return TypeLetter::kString;
    case EQMDataType::Boolean: return TypeLetter::kBoolean;
    default: return TypeLetter::kNone;
  }
}

Handle CQMVariables::GetHandle(char scope, char const* name) {
  return OnFound(scope, name, EQMLookup::ByScope, [this](CQMDatum* datum) -> Handle {
    if (datum == nullptr) return Refuse(Error::NotDefined), 0;
    Handle const handle = datum->GetObjectHandle(GuardOf(*datum));
    if (handle == 0) Refuse(Error::OutOfMemory);
    return handle;
  });
}

bool CQMVariables::IsArray(char scope, char const* name) {
  return OnFound(scope, name, EQMLookup::ByScope,
                 [](CQMDatum const* datum) { return datum != nullptr && datum->IsArray(); });
}

long CQMVariables::Delete(char scope, char const* name) {
  m_context.ClearLastError();
  if (name == nullptr) return Refuse(Error::NotFound), Error::NotFound;
  std::unique_ptr<CQMObject> taken;
  long const code = TableOf(scope)->TakeSymbol(name, taken);
  m_context.SetLastError(code);
  if (taken != nullptr) {
    auto& datum = static_cast<CQMDatum&>(*taken);
    // a thread in another context may use a process-wide variable by its handle
    if (datum.DeleteHandle() && GuardOf(datum) == nullptr) WaitUntilUnused(datum);
  }
  return code;
}

}  // namespace qumel
