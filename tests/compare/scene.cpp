// Finding variables of a scene.
#include "compare/scene.h"

#include <algorithm>

namespace qumel::compare {

Variable const* Scene::Find(Type type, std::size_t dimensions, bool mustBeTarget) {
  std::vector<Variable const*> found;
  for (Variable const& variable : variables) {
    bool const fits = variable.type == type || (type == Type::Number && IsNumeric(variable.type));
    if (fits && variable.extents.size() == dimensions && (variable.isTarget || !mustBeTarget))
      found.push_back(&variable);
  }
  return found.empty() ? nullptr : random.PickFrom(found);
}

void Scene::Add(Variable const& variable) {
  auto const hasName = [&](Variable const& other) { return other.name == variable.name; };
  if (std::none_of(variables.begin(), variables.end(), hasName)) variables.push_back(variable);
}

char const* TypeWord(Type type) {
  switch (type) {
    case Type::Text: return "string";
    case Type::Boolean: return "boolean";
    case Type::Complex: return "complex number";
    default: return "number";
  }
}

}  // namespace qumel::compare
