// Calls of the interface that exist once for each type of variable, under one name.
#pragma once

#include <string>

#include "compare/host.h"
#include "compare/scene.h"

namespace qumel::compare {

/** A value for a variable of any type: a number is value, a truth value tells whether that is positive. */
struct AnyValue {
  double value = 0, imaginary = 0;
  std::string text{};

  std::string ShownAs(Type type) const;
};

/** Creates a variable, and gives a scalar its value. Returns its handle, which holds a reference. */
Handle CreateVariable(Library const& library, char scope, Variable const& variable, AnyValue const& value);
/** Links a variable to the memory of the host, from that place on. */
bool LinkVariable(Host& host, char scope, Variable const& variable, std::size_t place);
/** Sets a scalar, or the elements of an array one after the other, each a bit larger than the one before. */
bool SetVariable(Library const& library, char scope, Variable const& variable, AnyValue const& value);

/** All that can be read of a variable: type, dimensions, values. */
std::string VariableShown(Library const& library, char scope, std::string const& name);

}  // namespace qumel::compare
