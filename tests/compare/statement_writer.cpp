// Writing statements.
#include "compare/statement_writer.h"

namespace qumel::compare {

namespace {

constexpr Type kTypes[] = {Type::Number, Type::Number, Type::Number, Type::Text, Type::Boolean};

}  // namespace

void StatementWriter::EndStatement() {
  m_write.Emit(m_random.Chance(97) ? ";" : ":");
  if (m_random.Chance(3)) m_pieces.back().text += "\n// a \"note; end\n";
}

// ---- declarations ----

void StatementWriter::WriteDeclaration(Variable const& variable) {
  if (m_random.Chance(30)) m_write.Emit(m_random.Pick({"local", "global", "cosmic"}));
  m_write.Emit(TypeWord(variable.type));
  if (variable.extents.empty()) {
    m_write.Emit(variable.name);
    if (m_random.Chance(10) && variable.type == Type::Text) return m_write.Emit("[20]", true);
    if (m_random.Chance(70)) {
      m_write.Emit("=");
      m_write.Write(variable.type, 1);
    }
    return;
  }
  std::string extents;
  for (int const extent : variable.extents) extents += (extents.empty() ? "" : ", ") + std::to_string(extent);
  if (variable.type == Type::Text) extents += ", 12";  // bytes of an element
  m_write.Emit(variable.name + "[" + extents + "]", true);
}

void StatementWriter::WriteNewVariable() {
  switch (m_random.Between(1, 6)) {
    case 1: return WriteDeclaration({"an", Type::Number, {m_random.Between(1, 5)}});
    case 2: return WriteDeclaration({"at", Type::Text, {3}});
    default: break;
  }
  Type const type = m_random.PickFrom(kTypes);
  char const* const name = type == Type::Text      ? "vt"
                           : type == Type::Boolean ? "vp"
                                                   : m_random.Pick({"va", "vc"});
  if (m_random.Chance(50)) {
    WriteDeclaration({name, type});
  } else {
    if (m_random.Chance(40)) m_write.Emit(m_random.Pick({"local", "global", "cosmic"}));
    m_write.Emit(name);
    m_write.Emit("=");
    m_write.Write(type, 2);
  }
  m_scene.Add({name, type});
}

// ---- statements ----

void StatementWriter::WriteSetting() {
  if (m_random.Chance(15)) {
    m_write.Emit("precision");
    return m_write.Emit(std::to_string(m_random.Between(0, 20)), true);
  }
  m_write.Emit(m_random.PickFrom(m_scene.forms.modeWords));
}

void StatementWriter::WriteEffect() {
  Type const type = m_random.PickFrom(kTypes);
  int const way = m_random.Between(1, 100);
  if (way <= 55) return m_write.WriteAssignment(type, m_random.Between(0, 2));
  if (way <= 70) return m_write.Write(type, m_random.Between(1, 2));
  if (way <= 78) return WriteNewVariable();
  if (way <= 84) return WriteSetting();
  if (way <= 92 && !m_scene.operators.empty())
    return m_write.WriteCall(m_random.PickFrom(m_scene.operators), 2);
  bool const isBefore = m_random.Chance(50);
  std::string const step = m_random.Pick({"++", "--"});
  if (isBefore) m_write.Emit(step);
  m_write.WriteTarget(Type::Number);
  if (!isBefore) m_write.Emit(step);
}

void StatementWriter::WriteBody(int depth, Place place) {
  for (int i = m_random.Between(0, 1); i >= 0; --i) WriteStatement(depth - 1, place);
}

void StatementWriter::WriteBranch(int depth, Place place) {
  m_write.Emit(m_random.Chance(75) ? "if" : "unless");
  m_write.WriteEnclosed(Type::Boolean, 2);
  m_write.Emit("then");
  WriteBody(depth, place);
  if (m_random.Chance(45)) {
    m_write.Emit("else");
    WriteBody(depth, place);
  }
  m_write.Emit("end");
}

/** The head of a loop, up to where its body begins, with the count that ends it. */
void StatementWriter::Open(std::string const& counter, std::string const& head, std::string const& tail) {
  m_write.Emit(counter + " = 0;", true);
  bool const isTested = !head.empty();
  if (isTested) {
    m_write.Emit(head, true);
    m_write.WriteEnclosed(Type::Boolean, 1);
  }
  m_write.Emit(tail, true);
}

void StatementWriter::WriteLoop(int depth) {
  std::string const counter = "i" + std::to_string(++m_scene.counters);
  std::string const most = std::to_string(m_random.Between(1, 4));
  std::string const count = " do " + counter + " += 1;";
  // a "continue" starts an "until" anew without a test, hence the second end of it
  std::string const stop = " if (" + counter + " > 6) then break; end ";
  bool const hasCondition = m_random.Chance(30);
  switch (m_random.Between(1, 4)) {
    case 1:
      Open(counter, hasCondition ? "until" : "",
           (hasCondition ? "or " : "until ") + counter + " >= " + most + count + stop);
      break;
    case 2: Open(counter, "", "always" + count + stop); break;
    default:
      Open(counter, hasCondition ? "while" : "",
           (hasCondition ? "and " : "while ") + counter + " < " + most + count);
  }
  m_scene.Add({counter, Type::Number, {}, false});
  WriteBody(depth, Place::InLoop);
  m_write.Emit("next", true);
}

void StatementWriter::WriteSelection(int depth, Place place) {
  bool const isSelect = m_random.Chance(60);
  Type const type = m_random.Chance(80) ? Type::Number : Type::Text;
  Place const inner = place == Place::InLoop ? Place::InLoop : Place::InSelection;
  m_write.Emit(isSelect ? "select" : "when");
  m_write.WriteEnclosed(type, 1);
  EndStatement();
  int const cases = m_random.Between(1, 3), byDefault = m_random.Between(0, cases + 1);
  for (int i = 0; i <= cases; ++i) {
    if (i == byDefault) {
      m_write.Emit(isSelect ? "default" : "otherwise");
      EndStatement();
      WriteBody(depth, inner);
    }
    if (i == cases) break;
    m_write.Emit(isSelect ? "case" : "is");
    m_write.WriteEnclosed(type, m_random.Between(0, 1));
    EndStatement();
    WriteBody(depth, inner);
    if (m_random.Chance(60)) m_write.Emit("break;");
  }
  m_write.Emit("end");
}

void StatementWriter::WriteJump(int depth, Place place) {
  std::string const name = "l" + std::to_string(++m_scene.labels);
  if (m_random.Chance(50)) {
    std::string const counter = "j" + std::to_string(++m_scene.counters);
    m_write.Emit(counter + " = 0; label " + name + "; " + counter + " += 1;", true);
    m_scene.Add({counter, Type::Number, {}, false});
    WriteBody(depth, place);
    return m_write.Emit("if (" + counter + " < 3) then goto " + name + "; end", true);
  }
  m_write.Emit("if");
  m_write.WriteEnclosed(Type::Boolean, 1);
  m_write.Emit("then goto " + name + "; end");
  WriteBody(depth, place);
  bool const leadsIntoBlock = m_random.Chance(30);
  if (leadsIntoBlock) {
    m_write.Emit("if");
    m_write.WriteEnclosed(Type::Boolean, 1);
    m_write.Emit("then");
    WriteBody(depth, place);
  }
  m_write.Emit("label " + name + ";");
  if (!leadsIntoBlock) return;
  WriteBody(depth, place);
  m_write.Emit("end");
}

void StatementWriter::WriteLeaving(Place place) {
  m_write.Emit("if");
  m_write.WriteEnclosed(Type::Boolean, 2);
  m_write.Emit("then");
  int const way = m_random.Between(1, 100);
  if (place == Place::InLoop && way <= 40) m_write.Emit("continue;");
  else if (place != Place::Outside && way <= 70) m_write.Emit("break;");
  else if (way <= 80) m_write.Emit("exit;");
  else if (way <= 88) m_write.Emit(m_random.Pick({"seterror 3110;", "seterror 10001;", "seterror 0;"}));
  else if (way <= 92) m_write.Emit("clearerror;");
  else WriteReturn(m_random.PickFrom(kTypes)), EndStatement();
  m_write.Emit("end");
}

void StatementWriter::WriteReturn(Type type) {
  m_write.Emit("return");
  if (Variable const* const variable = m_random.Chance(30) ? m_scene.Find(type, 0) : nullptr)
    return m_write.Emit(variable->name);
  m_write.WriteEnclosed(type, m_random.Between(0, 2));
}

void StatementWriter::WriteStatement(int depth, Place place) {
  int const way = depth > 0 ? m_random.Between(1, 100) : 100;
  if (way <= 14) WriteBranch(depth, place);
  else if (way <= 28) WriteLoop(depth);
  else if (way <= 36) WriteSelection(depth, place);
  else if (way <= 42) WriteJump(depth, place);
  else if (way <= 50) WriteLeaving(place);
  else {
    WriteEffect();
    EndStatement();
  }
}

void StatementWriter::WriteProgram(int count, Type value) {
  int const depth = m_random.Chance(50) ? 0 : m_random.Between(1, 2);
  for (int i = 0; i < count; ++i) WriteStatement(depth, Place::Outside);
  if (m_random.Chance(70)) WriteReturn(value);
  else m_write.Write(value, 2);
}

}  // namespace qumel::compare
