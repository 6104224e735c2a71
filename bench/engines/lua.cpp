// Lua and LuaJIT: this file is compiled once for each, into modules that main never links. A formula is a
// function of the variables that it uses; a host passes their values at each call.
#include <lua.hpp>

#include <cmath>
#include <stdexcept>
#include <vector>

#include "bench/engine.h"

namespace bench {
namespace {

Dialect const kDialect = {{{"&&", "and"}, {"||", "or"}, {"!=", "~="}},
                          {{"pow", "@1^@2"}},
                          "((@1) and @2 or @3)",
                          "@1",
                          "return @1",
                          "return @1"};

constexpr char const* kLibraryNames[] = {"abs",  "acos", "acosh", "asin", "asinh", "atan",  "atanh", "cbrt",
                                         "ceil", "cos",  "cosh",  "exp",  "floor", "log",   "log10", "max",
                                         "min",  "pi",   "sin",   "sinh", "sqrt",  "tally", "tan",   "tanh"};

template <double (*kFunction)(double)>
int Wrapped(lua_State* state) {
  lua_pushnumber(state, kFunction(luaL_checknumber(state, 1)));
  return 1;
}

class State {
 public:
  State() : m_state(luaL_newstate()) {
    luaL_openlibs(m_state);
    lua_register(m_state, "cbrt", Wrapped<std::cbrt>);  // Lua lacks these four
    lua_register(m_state, "asinh", Wrapped<std::asinh>);
    lua_register(m_state, "acosh", Wrapped<std::acosh>);
    lua_register(m_state, "atanh", Wrapped<std::atanh>);
    lua_newtable(m_state);
    lua_setglobal(m_state, "tally");
    Run("for name, value in pairs(math) do _G[name] = value end");
  }
  ~State() { lua_close(m_state); }
  State(State const&) = delete;
  State& operator=(State const&) = delete;
  operator lua_State*() const { return m_state; }

  /** Runs a chunk; what it returns stays on the stack. */
  void Run(std::string const& chunk) { Check(luaL_dostring(m_state, chunk.c_str())); }
  void Check(int status) {
    if (status != 0) throw std::runtime_error(lua_tostring(m_state, -1));
  }

 private:
  lua_State* m_state;
};

/** Takes the value on top of the stack. */
double TakeNumber(lua_State* state) {
  double const value = lua_isboolean(state, -1) ? lua_toboolean(state, -1) : lua_tonumber(state, -1);
  lua_pop(state, 1);
  return value;
}

std::string Join(std::vector<std::string> const& words) {
  std::string joined;
  for (std::string const& word : words) joined += (joined.empty() ? "" : ", ") + word;
  return joined;
}

/** What a formula names: library functions, and variables with the places where they stand. */
struct Names {
  explicit Names(std::string const& text) {
    for (char const* name : kLibraryNames)
      if (Mentions(text, name)) functions.emplace_back(name);
    for (std::size_t i = 0; i < Variables::kCount; ++i) {
      if (!Mentions(text, Variables::kNames[i])) continue;
      variables.emplace_back(Variables::kNames[i]);
      places.push_back(i);
    }
  }
  /** A line that makes the functions local, as those who care for speed do. */
  std::string Locals() const {
    return functions.empty() ? "" : "local " + Join(functions) + " = " + Join(functions) + "\n";
  }

  std::vector<std::string> functions, variables;
  std::vector<std::size_t> places;
};

class Lua : public Engine {
 public:
  explicit Lua(Variables& variables) : m_variables(variables) {}

  Dialect const& GetDialect() const override { return kDialect; }

  std::unique_ptr<Formula> Compile(std::string const& text) override {
    auto state = std::make_unique<State>();
    Names names(text);
    state->Run(names.Locals() + "return function(" + Join(names.variables) + ") " + text + " end");
    return MakeFormula(m_variables, [state = std::move(state), places = std::move(names.places), this] {
      lua_pushvalue(*state, 1);
      for (std::size_t const place : places) lua_pushnumber(*state, m_variables.now[place]);
      lua_call(*state, static_cast<int>(places.size()), 1);
      return TakeNumber(*state);
    });
  }

  double EvaluateText(std::string const& text) override {
    static std::string const before =
        "local " + Join({std::begin(Variables::kNames), std::end(Variables::kNames)}) + " = ... ";
    m_state.Check(luaL_loadstring(m_state, (before + text).c_str()));
    for (double const value : m_variables.now) lua_pushnumber(m_state, value);
    lua_call(m_state, Variables::kCount, 1);
    return TakeNumber(m_state);
  }

 protected:
  Variables& m_variables;

 private:
  State m_state;
};

#ifdef LUAJIT_VERSION
/** LuaJIT translates loops, but not functions that a host calls one by one. So here the loop is in Lua as
 * well, and reads the host's doubles by its foreign function interface. */
class LoopFormula final : public Formula {
 public:
  LoopFormula(Variables& variables, std::string const& text) {
    Names const names(text);
    std::string steps, values;
    for (std::size_t i = 0; i < Variables::kCount; ++i) {
      std::string const place = std::to_string(i);
      steps += "now[" + place + "] = sums[" + place + "] - now[" + place + "] ";
    }
    for (std::size_t const place : names.places)
      values += (values.empty() ? "now[" : ", now[") + std::to_string(place) + "]";
    lua_pushlightuserdata(m_state, variables.now);
    lua_setglobal(m_state, "now");
    lua_pushlightuserdata(m_state, variables.sums);
    lua_setglobal(m_state, "sums");
    m_state.Run(
        "local ffi = require 'ffi'\n"
        "ffi.cdef 'double cbrt(double); double asinh(double); double acosh(double); double atanh(double);'\n"
        "for _, name in ipairs {'cbrt', 'asinh', 'acosh', 'atanh'} do _G[name] = ffi.C[name] end\n"
        "local now, sums = ffi.cast('double*', now), ffi.cast('double*', sums)\n" +
        names.Locals() + "local function formula(" + Join(names.variables) + ") " + text + " end\n" +
        "local function evaluate() return formula(" + values + ") end\n" +
        "local function run(turns)\n"
        "  local sum = 0\n"
        "  for turn = 1, turns do\n" +
        steps +
        "    local value = evaluate()\n"
        "    if value == true then sum = sum + 1 elseif value then sum = sum + value end\n"
        "  end\n"
        "  return sum\n"
        "end\n"
        "return evaluate, run");
  }

  double Evaluate() override {
    lua_pushvalue(m_state, 1);
    lua_call(m_state, 0, 1);
    return TakeNumber(m_state);
  }

  double Run(long turns) override {
    lua_pushvalue(m_state, 2);
    lua_pushinteger(m_state, turns);
    lua_call(m_state, 1, 1);
    return TakeNumber(m_state);
  }

 private:
  State m_state;
};

class LuaJitLoop final : public Lua {
 public:
  using Lua::Lua;
  std::unique_ptr<Formula> Compile(std::string const& text) override {
    return std::make_unique<LoopFormula>(m_variables, text);
  }
};
#endif

}  // namespace
}  // namespace bench

// The symbols of the modules.
extern "C" __attribute__((visibility("default"))) bench::Engine* MakeEngine(bench::Variables& variables) {
  return new bench::Lua(variables);
}
#ifdef LUAJIT_VERSION
extern "C" __attribute__((visibility("default"))) bench::Engine* MakeLoopEngine(bench::Variables& variables) {
  return new bench::LuaJitLoop(variables);
}
#endif
