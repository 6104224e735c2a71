// Loading a library under comparison.
#include "compare/library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace qumel::compare {

namespace {

template <class Function>
void Find(void* object, char const* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(object, name));
  if (function == nullptr) throw std::runtime_error(std::string("the library lacks ") + name);
}

}  // namespace

Library LoadLibrary(std::string const& path) {
  // a name without a slash would be looked for among the libraries of the system
  std::string const place = path.find('/') == std::string::npos ? "./" + path : path;
  void* const object = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (object == nullptr) throw std::runtime_error(dlerror());
  Library library;
#define QUMEL_COMPARED_FIND(function) Find(object, #function, library.function);
  QUMEL_COMPARED_FUNCTIONS(QUMEL_COMPARED_FIND)
#undef QUMEL_COMPARED_FIND
  return library;
}

}  // namespace qumel::compare
