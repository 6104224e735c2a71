// Loads the modules of Lua and LuaJIT. RTLD_LOCAL keeps each to the library that it was linked with.
#include <dlfcn.h>

#include <stdexcept>

#include "bench/engine.h"

namespace bench {
namespace {

using MakeEngine = Engine*(Variables&);

MakeEngine& Load(char const* file, char const* name) {
  void* const module = dlopen(file, RTLD_NOW | RTLD_LOCAL);  // stays, since engines outlive this function
  void* const symbol = module ? dlsym(module, name) : nullptr;
  if (!symbol) throw std::runtime_error(dlerror());
  return *reinterpret_cast<MakeEngine*>(symbol);
}

}  // namespace

std::unique_ptr<Engine> LoadLua(Variables& variables) {
  static MakeEngine& make = Load("qumel_bench_lua.so", "MakeEngine");
  return std::unique_ptr<Engine>(make(variables));
}

std::unique_ptr<Engine> LoadLuaJit(Variables& variables) {
  static MakeEngine& make = Load("qumel_bench_luajit.so", "MakeEngine");
  return std::unique_ptr<Engine>(make(variables));
}

std::unique_ptr<Engine> LoadLuaJitLoop(Variables& variables) {
  static MakeEngine& make = Load("qumel_bench_luajit.so", "MakeLoopEngine");
  return std::unique_ptr<Engine>(make(variables));
}

}  // namespace bench
