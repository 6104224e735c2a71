// Writing what hosts do with variables and settings.
#include "compare/host_writer.h"

#include <limits>

#include "compare/statement_writer.h"

namespace qumel::compare {

namespace {

/** Names that hosts make variables of; each has one type in all programs, so that contexts can be shared. */
Variable const kVariables[] = {{"x", Type::Number},         {"y", Type::Number},
                               {"z", Type::Number},         {"n", Type::Number},
                               {"r", Type::Number},         {"u", Type::Complex},
                               {"w", Type::Complex},        {"s", Type::Text},
                               {"t", Type::Text},           {"p", Type::Boolean},
                               {"q", Type::Boolean},        {"a", Type::Number, {4}},
                               {"m", Type::Number, {2, 3}}, {"h", Type::Number, {2, 2, 2}},
                               {"c", Type::Complex, {3}},   {"st", Type::Text, {3}},
                               {"b", Type::Boolean, {4}}};

std::string Answer(bool value) { return value ? "true" : "false"; }

std::string Shown(char scope, Variable const& variable) {
  std::string shown = std::string(TypeWord(variable.type)) + " '" + scope + "' " + variable.name;
  for (int const extent : variable.extents) shown += "[" + std::to_string(extent) + "]";
  return shown;
}

}  // namespace

char HostWriter::Scope() { return m_random.Pick({'G', 'G', 'G', 'G', 'x', 'C'}); }

AnyValue HostWriter::Value() {
  double const infinity = std::numeric_limits<double>::infinity();
  auto const number = [&]() -> double {
    if (m_random.Chance(55)) return m_random.Between(-3, 12);
    if (m_random.Chance(60)) return m_random.Between(-2000, 2000) / 64.0;
    return m_random.Pick({0.0, -0.0, 1.0, infinity, -infinity, std::numeric_limits<double>::quiet_NaN(),
                          5e-324, -3e-310, 1e308, -1e308, 2147483648.0, -2147483649.0, 1e-150, 0.1, 170.0,
                          171.0});
  };
  return {number(), m_random.Chance(30) ? m_random.Pick({0.0, -0.0}) : number(),
          m_random.Pick({"", "host", "12 monkeys", "abc", "a text longer than some rooms", "tab\tbed",
                         "\xE2\x82\xAC"})};
}

void HostWriter::Create(Acts& acts, Variable const& variable) {
  char const scope = Scope();
  AnyValue const value = Value();
  bool const keepsReference = m_random.Chance(15);
  acts.push_back({"create " + Shown(scope, variable) + " = " + value.ShownAs(variable.type) +
                      (keepsReference ? ", kept" : ""),
                  [=](Host& host) {
                    Handle const handle = CreateVariable(host.library, scope, variable, value);
                    if (keepsReference) host.kept.push_back(handle);
                    else host.library.qmReleaseVarHandle(handle);
                    return Answer(handle != 0);
                  }});
  if (!variable.extents.empty() && m_random.Chance(75)) Set(acts, variable);
}

void HostWriter::Link(Acts& acts, Variable const& variable) {
  char const scope = Scope();
  // few places, so that names often share one
  std::size_t const place = m_random.Chance(40) ? 0 : m_random.Below(4);
  acts.push_back({"link " + Shown(scope, variable) + " to place " + std::to_string(place),
                  [=](Host& host) { return Answer(LinkVariable(host, scope, variable, place)); }});
}

void HostWriter::Set(Acts& acts, Variable const& variable) {
  char const scope = m_random.Pick({'x', 'x', 'G', 'C'});
  AnyValue const value = Value();
  Variable aimed = variable;
  if (m_random.Chance(5))
    aimed.type = m_random.Pick({Type::Number, Type::Complex, Type::Text, Type::Boolean});
  std::string const shown = Shown(scope, aimed) + " = " + value.ShownAs(aimed.type);
  if (aimed.type != Type::Number || !aimed.extents.empty() || m_random.Chance(80)) {
    acts.push_back(
        {"set " + shown, [=](Host& host) { return Answer(SetVariable(host.library, scope, aimed, value)); }});
    return;
  }
  acts.push_back({"set by handle " + shown, [=](Host& host) {
                    Library const& library = host.library;
                    Handle const handle = library.qmGetVarHandle(scope, aimed.name.c_str());
                    std::string answer = Answer(library.qmSetNumVarByHandle(handle, value.value));
                    answer += library.qmGetVarTypeByHandle(handle);
                    answer += Bits(library.qmGetNumVarValueByHandle(handle));
                    return answer + Answer(library.qmReleaseVarHandle(handle));
                  }});
}

void HostWriter::Retype(Acts& acts, Variable const& variable) {
  std::string const name = variable.name;
  acts.push_back({"delete " + name, [=](Host& host) {
                    return std::to_string(host.library.qmDeleteVar('G', name.c_str())) + " " +
                           std::to_string(host.library.qmDeleteVar('C', name.c_str()));
                  }});
  if (m_random.Chance(25)) return;
  Type const type = m_random.Pick({Type::Number, Type::Complex, Type::Text, Type::Boolean});
  Create(acts, m_random.Chance(80) ? Variable{name, type} : Variable{name, type, {3}});
}

void HostWriter::ChangeMemory(Acts& acts) {
  std::size_t const place = m_random.Below(6);
  AnyValue const value = Value();
  acts.push_back(
      {"memory place " + std::to_string(place) + " = " + value.ShownAs(Type::Number), [=](Host& host) {
         host.memory.numbers[place] = value.value;
         host.memory.flags[place] = value.value > 0 ? 1 : 0;
         return std::string();
       }});
}

void HostWriter::ChangeSetting(Acts& acts) {
  struct Setting {
    char const* name;
    void (*set)(Library const& library, int choice);
  };
  static constexpr Setting kSettings[] = {
      {"angle unit", [](Library const& library, int choice) { library.qmSetAngleUnit("DGMR"[choice % 4]); }},
      {"output base",
       [](Library const& library, int choice) { library.qmSetOutputBase("BODTH"[choice % 5]); }},
      {"default scope",
       [](Library const& library, int choice) { library.qmSetDefaultVariableScope("CGL"[choice % 3]); }},
      {"precision",
       [](Library const& library, int choice) { library.qmSetFormattedResultPrecisionLimit(choice); }},
      {"coordinates",
       [](Library const& library, int choice) { library.qmSetCoordinateFormat("RP"[choice % 2]); }},
      {"complex results",
       [](Library const& library, int choice) { library.qmSetAllowComplexResults(choice % 3 > 0); }}};
  Setting const& setting = kSettings[m_random.Below(std::size(kSettings))];
  int const choice = m_random.Between(0, 19);
  acts.push_back({std::string(setting.name) + " choice " + std::to_string(choice), [=](Host& host) {
                    setting.set(host.library, choice);
                    return std::string();
                  }});
}

void HostWriter::Evaluate(Acts& acts) {
  std::string text =
      m_random.Pick({"allowcomplex; x = sqrt(-4)", "allowcomplex; y = (2 |_ 3)", "a[1] = sqrt(-9)", "u = 3",
                     "x = 2; y = x * 2", "global vn = 2", "cosmic va = 4; va++", "x = y = z = 0",
                     "forcecomplex", "radians; hex", "rect; decimal; degrees"});
  if (m_random.Chance(50)) {
    Pieces pieces;
    StatementWriter(m_scene, pieces).WriteProgram(0, Type::Number);
    text = Join(pieces);
  }
  acts.push_back({"evaluate " + Escaped(text.c_str()),
                  [=](Host& host) { return Escaped(host.library.qmEvalExpStrToStr(text.c_str())); }});
}

void HostWriter::WriteVariables() {
  StatementWriter statements(m_scene, m_program.pieces);
  for (Variable const& variable : kVariables) {
    m_program.names.insert(variable.name);
    if (variable.type == Type::Complex && !m_scene.usesComplex && !m_random.Chance(8)) continue;
    // every text finds a number, a text and a truth value
    bool const isBasic = variable.name == "x" || variable.name == "s" || variable.name == "p";
    int const way = m_random.Between(1, isBasic ? 58 : 100);
    if (way > 64) continue;
    if (way <= 40) Create(m_program.preparations, variable);
    else if (way <= 58) Link(m_program.preparations, variable);
    else {
      statements.WriteDeclaration(variable);
      m_program.pieces.push_back({"; "});
    }
    m_scene.Add(variable);
  }
}

void HostWriter::WriteChanges(std::size_t run, OperatorWriter& operators) {
  Acts& acts = m_program.changes[run];
  for (int i = m_random.Between(0, 2); i >= 0; --i) {
    Variable const* const variable =
        m_scene.variables.empty() ? nullptr : &m_random.PickFrom(m_scene.variables);
    int const way = m_random.Between(1, 100);
    if (way <= 8) ChangeMemory(acts);
    else if (way <= 16) ChangeSetting(acts);
    else if (way <= 23) Evaluate(acts);
    else if (way <= 32) operators.WriteChange(acts);
    else if (variable == nullptr || !variable->isTarget) continue;
    else if (way <= 40) Retype(acts, *variable);
    else Set(acts, *variable);
  }
}

}  // namespace qumel::compare
