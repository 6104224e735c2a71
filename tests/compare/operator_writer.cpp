// Writing operators of hosts.
#include "compare/operator_writer.h"

#include "compare/statement_writer.h"

namespace qumel::compare {

namespace {

char const* NameOf(Type type) { return type == Type::Complex ? "complex" : TypeWord(type); }

/** Names of parameters by type. Some are names of variables as well, which they hide. */
std::string ParameterName(Type type, std::size_t index) {
  char const* const names[][3] = {{"a1", "x", "b1"}, {"w1", "u", "w2"}, {"s1", "s", "s2"}, {"p1", "p", "p2"}};
  return names[static_cast<int>(type)][index];
}

// Counters of loops have names of their own in every body, since with a default scope they may be global.
constexpr int kCountersOfBody = 100;

std::string Code(long code) { return std::to_string(code); }

}  // namespace

HostOperator OperatorWriter::NewOperator() {
  auto const type = [&] {
    int const way = m_random.Between(1, 100);
    if (way <= 60) return Type::Number;
    if (way <= 80) return Type::Text;
    return way <= 92 ? Type::Boolean : Type::Complex;
  };
  HostOperator op;
  op.fix = m_random.Pick({"prefix", "prefix", "prefix", "infix", "postfix", "nofix"});
  op.returns = type();
  std::size_t count = m_random.Below(4);
  if (op.fix == "prefix") op.name = m_random.Pick({"f", "g", "twice"});
  else if (op.fix == "infix") op.name = m_random.Pick({"mean", "=>", "<+>"}), count = 2;
  else if (op.fix == "postfix") op.name = m_random.Pick({"pct", "#"}), count = 1;
  else op.name = "seven", count = 0;
  for (; count > 0; --count) op.parameters.push_back(type());
  return op;
}

std::string OperatorWriter::ParameterList(HostOperator const& op) const {
  std::string list;
  for (std::size_t i = 0; i < op.parameters.size(); ++i) {
    if (i > 0) list += m_scene.settings.radixMark == 'C' ? "; " : ", ";
    list += std::string(NameOf(op.parameters[i])) + " " + ParameterName(op.parameters[i], i);
  }
  return list;
}

std::string OperatorWriter::Body(HostOperator const& op) {
  Scene inner = m_scene;
  inner.variables.clear();
  inner.counters = kCountersOfBody * ++m_bodies;
  for (std::size_t i = 0; i < op.parameters.size(); ++i)
    inner.Add({ParameterName(op.parameters[i], i), op.parameters[i]});
  // a body knows its parameters best, and sees the variables of whoever runs it
  if (m_random.Chance(40))
    for (Variable const& variable : m_scene.variables)
      if (m_random.Chance(30)) inner.Add(variable);
  Pieces pieces;
  StatementWriter(inner, pieces).WriteProgram(m_random.Chance(60) ? 0 : m_random.Between(1, 3), op.returns);
  return Join(pieces);
}

void OperatorWriter::GiveBody(Acts& acts, HostOperator const& op, std::string const& body) {
  acts.push_back({"body of " + op.name + ": " + Escaped(body.c_str()), [=, scope = m_scope](Host& host) {
                    return Code(host.library.qmDefineExpOpStr(scope, op.name.c_str(), body.c_str()));
                  }});
}

void OperatorWriter::DefineByBody(Acts& acts, HostOperator const& op, bool bodyComesLater) {
  std::string const parameters = ParameterList(op), body = bodyComesLater ? "" : Body(op);
  char const* const precedence =
      m_random.Pick<char const*>({nullptr, nullptr, "+", "*", "^", "$+", "sin", "=", "nope"});
  acts.push_back({"define " + op.fix + " " + NameOf(op.returns) + " '" + m_scope + "' " + op.name + "(" +
                      parameters + ") like " + (precedence == nullptr ? "functions" : precedence) + ": " +
                      (bodyComesLater ? "later" : Escaped(body.c_str())),
                  [=, scope = m_scope](Host& host) {
                    return Code(host.library.qmDefineExpOp(scope, op.name.c_str(), op.fix.c_str(),
                                                           NameOf(op.returns), parameters.c_str(), precedence,
                                                           bodyComesLater ? nullptr : body.c_str()));
                  }});
}

void OperatorWriter::DefineByCallback(Acts& acts, HostOperator const& op) {
  // most behaviours are rare, since they stop or spoil the program
  int const way = m_random.Between(1, 100);
  Behaviour const behaviour = way <= 30   ? Behaviour::Answer
                              : way <= 48 ? Behaviour::AnswerSometimes
                              : way <= 58 ? Behaviour::AnswerComplex
                                          : static_cast<Behaviour>(m_random.Between(0, kBehaviours - 1));
  std::string const parameters = ParameterList(op);
  acts.push_back({"callback " + std::to_string(static_cast<int>(behaviour)) + " as " + op.fix + " " +
                      NameOf(op.returns) + " '" + m_scope + "' " + op.name + "(" + parameters + ")",
                  [=, scope = m_scope](Host& host) {
                    return Code(host.library.qmLinkCallbackOp(scope, op.name.c_str(), op.fix.c_str(),
                                                              NameOf(op.returns), parameters.c_str(), nullptr,
                                                              CallbackFor(behaviour)));
                  }});
}

void OperatorWriter::DefineRecursive(Acts& acts) {
  HostOperator const op{m_random.Pick({"f", "g"}), "prefix", Type::Number, {Type::Number}};
  std::string const call = op.name + "(a1 - 1)";
  std::string const step =
      m_random.Pick({std::string("a1 * "), op.name + "(a1 - 2) + ", std::string("1 + ")});
  DefineByBody(acts, op, true);
  GiveBody(acts, op,
           "if (a1 > 7) then return 0; end if (a1 < 1) then return 1; end return (" + step + call + ")");
  m_scene.operators.push_back(op);
}

void OperatorWriter::Define(Acts& acts, HostOperator const& op) {
  if (m_random.Chance(35)) DefineByCallback(acts, op);
  else if (m_random.Chance(85)) DefineByBody(acts, op, false);
  else {
    DefineByBody(acts, op, true);
    // sometimes the body comes between two runs, or never
    if (m_random.Chance(50)) GiveBody(acts, op, Body(op));
    else if (m_random.Chance(70))
      GiveBody(m_program.changes[m_random.Between(1, Program::kRuns - 1)], op, Body(op));
  }
}

void OperatorWriter::Delete(Acts& acts, std::string const& name) {
  acts.push_back({"delete operator " + name, [=, scope = m_scope](Host& host) {
                    return Code(host.library.qmDeleteOp(scope, name.c_str()));
                  }});
}

void OperatorWriter::WriteOperators(int count) {
  Acts& acts = m_program.preparations;
  if (count > 0 && m_random.Chance(30)) {
    acts.push_back({"define error", [](Host& host) {
                      return host.library.qmDefineError('G', kHostError, "Host: own error") ? "true"
                                                                                            : "false";
                    }});
  }
  for (; count > 0; --count) {
    m_scope = m_random.Chance(85) ? 'G' : 'C';
    if (m_random.Chance(20)) {
      DefineRecursive(acts);
      continue;
    }
    HostOperator const op = NewOperator();
    Define(acts, op);
    m_scene.operators.push_back(op);
  }
  for (HostOperator const& op : m_scene.operators) m_program.names.insert(op.name);
}

void OperatorWriter::WriteChange(Acts& acts) {
  if (m_scene.operators.empty()) return;
  HostOperator op = m_random.PickFrom(m_scene.operators);
  Delete(acts, op.name);
  if (m_random.Chance(20)) return;
  if (m_random.Chance(20)) op.returns = Type::Text;
  if (m_random.Chance(50)) DefineByCallback(acts, op);
  else DefineByBody(acts, op, false);
}

}  // namespace qumel::compare
