// Choosing the call for a type.
#include "compare/typed_calls.h"

#include <array>
#include <cstdio>

namespace qumel::compare {

namespace {

constexpr long kTextRoom = 16;
constexpr long kMostIndex = 12;  // no array of a program is longer in any direction, unless by mistake

/** Dimensions and extents or indices, as the interface takes them. */
struct Place {
  long dims = 0, i1 = -1, i2 = -1, i3 = -1;
};

Place ExtentsOf(Variable const& array) {
  auto const extent = [&](std::size_t i) { return i < array.extents.size() ? long{array.extents[i]} : -1; };
  return {static_cast<long>(array.extents.size()), extent(0), extent(1), extent(2)};
}

bool SetElement(Library const& library, char scope, char const* name, Type type, AnyValue const& value,
                Place const& at) {
  switch (type) {
    case Type::Complex:
      return library.qmSetComplexArrayElement(scope, name, value.value, value.imaginary, at.dims, at.i1,
                                              at.i2, at.i3, -1, -1, -1);
    case Type::Boolean:
      return library.qmSetBoolArrayElement(scope, name, value.value > 0, at.dims, at.i1, at.i2, at.i3, -1, -1,
                                           -1);
    case Type::Text:
      return library.qmSetStrArrayElement(scope, name, value.text.c_str(), at.dims, at.i1, at.i2, at.i3, -1,
                                          -1, -1);
    default:
      return library.qmSetNumArrayElement(scope, name, value.value, at.dims, at.i1, at.i2, at.i3, -1, -1, -1);
  }
}

std::string ScalarShown(Library const& library, char scope, char const* name, char type) {
  double real = 0, imaginary = 0;
  switch (type) {
    case 'N': return Bits(library.qmGetNumVarValue(scope, name));
    case 'C':
      library.qmGetComplexVarValue(scope, name, &real, &imaginary);
      return Bits(real) + "," + Bits(imaginary);
    case 'B': return library.qmGetBoolVarValue(scope, name) ? "true" : "false";
    case 'S': return "\"" + Escaped(library.qmGetStrVarValue(scope, name)) + "\"";
    default: return "";
  }
}

std::string ElementShown(Library const& library, char scope, char const* name, char type, Place const& at) {
  double real = 0, imaginary = 0;
  switch (type) {
    case 'N':
      return Bits(library.qmGetNumArrayElement(scope, name, at.dims, at.i1, at.i2, at.i3, -1, -1, -1));
    case 'C':
      library.qmGetComplexArrayElement(scope, name, &real, &imaginary, at.dims, at.i1, at.i2, at.i3, -1, -1,
                                       -1);
      return Bits(real) + "," + Bits(imaginary);
    case 'B':
      return library.qmGetBoolArrayElement(scope, name, at.dims, at.i1, at.i2, at.i3, -1, -1, -1) ? "true"
                                                                                                  : "false";
    case 'S':
      return "\"" +
             Escaped(library.qmGetStrArrayElement(scope, name, at.dims, at.i1, at.i2, at.i3, -1, -1, -1)) +
             "\"";
    default: return "";
  }
}

/** The number of elements along one dimension, found by asking for one after the other; 0 when the array has
 * another number of dimensions. */
long ExtentAlong(Library const& library, char scope, char const* name, char type, Place at,
                 long Place::*index) {
  for (long i = 0; i < kMostIndex; ++i) {
    at.*index = i;
    library.qmClearLastError();
    ElementShown(library, scope, name, type, at);
    if (library.qmGetLastErrorID() != 0) return i;
  }
  return kMostIndex;
}

std::string ArrayShown(Library const& library, char scope, char const* name, char type) {
  for (long dims = 1; dims <= 3; ++dims) {
    Place const first{dims, 0, dims > 1 ? 0 : -1, dims > 2 ? 0 : -1};
    long const e1 = ExtentAlong(library, scope, name, type, first, &Place::i1);
    if (e1 == 0) continue;
    long const e2 = dims > 1 ? ExtentAlong(library, scope, name, type, first, &Place::i2) : 1;
    long const e3 = dims > 2 ? ExtentAlong(library, scope, name, type, first, &Place::i3) : 1;
    std::string shown;
    for (long i = 0; i < e1 * e2 * e3; ++i) {
      Place at = first;
      at.i1 = i / (e2 * e3);
      if (dims > 1) at.i2 = i / e3 % e2;
      if (dims > 2) at.i3 = i % e3;
      shown += (shown.empty() ? "" : " ") + ElementShown(library, scope, name, type, at);
    }
    return "[" + std::to_string(e1) + "," + std::to_string(e2) + "," + std::to_string(e3) + "] " + shown;
  }
  return "[?]";
}

}  // namespace

std::string AnyValue::ShownAs(Type type) const {
  std::array<char, 64> numbers{};
  if (type == Type::Boolean) return value > 0 ? "true" : "false";
  if (type == Type::Text) return "\"" + Escaped(text.c_str()) + "\"";
  std::snprintf(numbers.data(), numbers.size(), type == Type::Complex ? "%.17g, %.17g" : "%.17g", value,
                imaginary);
  return numbers.data();
}

Handle CreateVariable(Library const& library, char scope, Variable const& variable, AnyValue const& value) {
  char const* const name = variable.name.c_str();
  if (variable.extents.empty()) {
    switch (variable.type) {
      case Type::Complex: return library.qmCreateComplexVar(scope, name, value.value, value.imaginary);
      case Type::Boolean: return library.qmCreateBoolVar(scope, name, value.value > 0);
      case Type::Text: return library.qmCreateStrVar(scope, name, kTextRoom, value.text.c_str());
      default: return library.qmCreateNumVar(scope, name, value.value);
    }
  }
  auto const [dims, e1, e2, e3] = ExtentsOf(variable);
  switch (variable.type) {
    case Type::Complex: return library.qmCreateComplexArray(scope, name, dims, e1, e2, e3, -1, -1, -1);
    case Type::Boolean: return library.qmCreateBoolArray(scope, name, dims, e1, e2, e3, -1, -1, -1);
    case Type::Text: return library.qmCreateStrArray(scope, name, kTextRoom, dims, e1, e2, e3, -1, -1, -1);
    default: return library.qmCreateNumArray(scope, name, dims, e1, e2, e3, -1, -1, -1);
  }
}

bool LinkVariable(Host& host, char scope, Variable const& variable, std::size_t place) {
  Library const& library = host.library;
  char const* const name = variable.name.c_str();
  double* const numbers = host.memory.numbers + place;
  bool* const flags = reinterpret_cast<bool*>(host.memory.flags + place);
  char* const text = host.memory.text + place;
  if (variable.extents.empty()) {
    switch (variable.type) {
      case Type::Complex: return library.qmLinkComplexVar(scope, name, numbers);
      case Type::Boolean: return library.qmLinkBoolVar(scope, name, flags);
      case Type::Text: return library.qmLinkStrVar(scope, name, text, kTextRoom);
      default: return library.qmLinkNumVar(scope, name, numbers);
    }
  }
  auto const [dims, e1, e2, e3] = ExtentsOf(variable);
  switch (variable.type) {
    case Type::Complex: return library.qmLinkComplexArray(scope, name, numbers, dims, e1, e2, e3, -1, -1, -1);
    case Type::Boolean: return library.qmLinkBoolArray(scope, name, flags, dims, e1, e2, e3, -1, -1, -1);
    case Type::Text:
      return library.qmLinkStrArray(scope, name, text, kTextRoom, dims, e1, e2, e3, -1, -1, -1);
    default: return library.qmLinkNumArray(scope, name, numbers, dims, e1, e2, e3, -1, -1, -1);
  }
}

bool SetVariable(Library const& library, char scope, Variable const& variable, AnyValue const& value) {
  char const* const name = variable.name.c_str();
  if (variable.extents.empty()) {
    switch (variable.type) {
      case Type::Complex: return library.qmSetComplexVar(scope, name, value.value, value.imaginary);
      case Type::Boolean: return library.qmSetBoolVar(scope, name, value.value > 0);
      case Type::Text: return library.qmSetStrVar(scope, name, value.text.c_str());
      default: return library.qmSetNumVar(scope, name, value.value);
    }
  }
  auto const [dims, e1, e2, e3] = ExtentsOf(variable);
  AnyValue element = value;
  bool isSet = true;
  for (Place at{dims, 0, dims > 1 ? 0 : -1, dims > 2 ? 0 : -1}; at.i1 < e1; element.value += 1.5) {
    isSet = SetElement(library, scope, name, variable.type, element, at) && isSet;
    if (dims > 2 && ++at.i3 < e3) continue;
    if (dims > 2) at.i3 = 0;
    if (dims > 1 && ++at.i2 < e2) continue;
    if (dims > 1) at.i2 = 0;
    ++at.i1;
  }
  return isSet;
}

std::string VariableShown(Library const& library, char scope, std::string const& name) {
  char const type = library.qmGetVarType(scope, name.c_str());
  std::string const value = library.qmIsArray(scope, name.c_str())
                                ? ArrayShown(library, scope, name.c_str(), type)
                                : ScalarShown(library, scope, name.c_str(), type);
  return type + (" " + value);
}

}  // namespace qumel::compare
