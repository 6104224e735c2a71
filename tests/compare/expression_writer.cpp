// Writing expressions.
#include "compare/expression_writer.h"

#include <algorithm>
#include <utility>

namespace qumel::compare {

namespace {

/** Which of several ways is taken: percent is used up by one after the other. */
class Ways {
 public:
  explicit Ways(Random& random) : m_left(random.Between(1, 100)) {}
  bool Take(int percent) {
    bool const isTaken = m_left > 0 && m_left <= percent;
    m_left -= percent;
    return isTaken;
  }

 private:
  int m_left;
};

/** Repeats of a loop inside an operator: they are literals. */
bool CountsRepeats(OperatorForm const& form, char operand) { return form.token == "roll" && operand == 'n'; }

}  // namespace

void ExpressionWriter::Emit(std::string text, bool isFixed) {
  if (m_random.Chance(30)) text += ' ';
  m_pieces.push_back({std::move(text), isFixed});
}

// ---- literals ----

std::string ExpressionWriter::Decimal(std::string digits) const {
  if (m_scene.settings.radixMark == 'C') std::replace(digits.begin(), digits.end(), '.', ',');
  return digits;
}

std::string ExpressionWriter::NumberLiteral() {
  Ways ways(m_random);
  if (ways.Take(45)) return std::to_string(m_random.Between(0, 9));
  if (ways.Take(12)) return std::to_string(m_random.Between(10, 100000));
  if (ways.Take(5)) return Decimal(std::to_string(m_random.Between(0, 9)) + m_random.Pick({".5", ".25"}));
  if (ways.Take(10))
    return Decimal(std::to_string(m_random.Between(0, 30)) + "." + std::to_string(m_random.Between(0, 999)));
  // a comma is a decimal point only behind a digit, and at the end of a number it parts operands
  bool const hasPoint = m_scene.settings.radixMark == 'P';
  if (ways.Take(4)) return (hasPoint ? "." : "") + std::to_string(m_random.Between(0, 9999));
  if (ways.Take(3)) return std::to_string(m_random.Between(0, 99)) + (hasPoint ? "." : "");
  if (ways.Take(7)) {
    return Decimal(std::to_string(m_random.Between(1, 9)) + "." + std::to_string(m_random.Between(0, 99)) +
                   m_random.Pick({"E", "X", "E+", "E-"}) + std::to_string(m_random.Between(0, 12)));
  }
  if (ways.Take(9)) {
    return Decimal(m_random.Pick({"0x1F", "0xFF.8", "0h1A", "0x1X2", "0b101", "0b.1", "0b1E11", "0b11X-10",
                                  "0o17", "0o7.4", "0t1E", "0tD.6", "0t1X1", "0d123", "0d1.5"}));
  }
  return Decimal(
      m_random.Pick({"1E308", "1.7976931348623157E308", "1E999", "4.9E-324", "2.5E-310", "1E-400",
                     "2147483647", "2147483648", "4294967296", "0.1", "123456789012345678", "1E15"}));
}

std::string ExpressionWriter::TextLiteral() {
  char const quote = m_scene.settings.quoteMark == '1' ? '\'' : '"';
  std::string content =
      m_random.Pick({"", "a", "abc", "abd", "hello world", "12.5 apples", "x = 1; y", "a\\tb\\n",
                     "say \\\"it\\\" \\'now\\'", "a\\\\b", "gr\xC3\xBC\xC3\x9F", "// no", "\\q"});
  if (m_random.Chance(2)) content.append(static_cast<std::size_t>(m_random.Between(100, 1200)), 'l');
  return quote + content + quote;
}

// ---- operands ----

void ExpressionWriter::WriteLeaf(Type type) {
  if (m_random.Between(1, 400) == 1) return Emit(m_random.Pick({"v9", "undefined"}));
  Variable const* const variable = m_random.Chance(55) ? m_scene.Find(type, 0, m_isArgument) : nullptr;
  if (variable != nullptr) return Emit(variable->name);
  if (type == Type::Text) return Emit(TextLiteral());
  if (type == Type::Boolean) {
    // the words are not read behind a parenthesis
    bool const isRead = !m_pieces.empty() && !m_pieces.back().text.starts_with('(');
    if (isRead && m_random.Chance(40)) return Emit(m_random.Pick({"true", "false"}));
    Emit(NumberLiteral());
    Emit(m_random.Pick({"<", ">", "==", "<="}));
    return Emit(NumberLiteral());
  }
  Emit(NumberLiteral());
}

void ExpressionWriter::WriteEnclosed(Type type, int depth) {
  Emit("(");
  Write(type, depth);
  Emit(")");
}

void ExpressionWriter::WriteOperand(Type type, int depth) {
  if (depth <= 0) {
    return type == Type::Boolean && m_random.Chance(60) ? WriteEnclosed(type, 0) : WriteLeaf(type);
  }
  // without parentheses the precedences decide what the operands are, and with them often the types
  bool const isEnclosed = m_random.Chance(type == Type::Number ? 55 : 92);
  if (isEnclosed) WriteEnclosed(type, depth);
  else Write(type, m_random.Chance(50) ? 0 : depth);
}

void ExpressionWriter::WriteIndex(int extent) {
  Ways ways(m_random);
  if (ways.Take(75)) return Emit(std::to_string(m_random.Between(0, extent - 1)), true);
  if (ways.Take(2)) return Emit(std::to_string(m_random.Between(0, 9)), true);
  Emit("abs");
  WriteEnclosed(Type::Number, 1);
  Emit("% " + std::to_string(extent), true);
}

void ExpressionWriter::WriteElement(Variable array) {
  Emit(array.name);
  Emit("[");
  for (std::size_t i = 0; i < array.extents.size(); ++i) {
    if (i > 0) Emit(",");
    WriteIndex(array.extents[i]);
  }
  Emit("]");
}

Type ExpressionWriter::WriteTarget(Type type) {
  std::size_t const dimensions = m_random.Chance(20) ? m_random.Below(3) + 1 : 0;
  Variable const* target = dimensions > 0 ? m_scene.Find(type, dimensions, true) : nullptr;
  if (target == nullptr) target = m_scene.Find(type, 0, true);
  if (target == nullptr) {
    std::string const name = type == Type::Text ? "vs" : type == Type::Boolean ? "vb" : "vn";
    Emit(name);
    m_scene.Add({name, type});
    return type;
  }
  Type const found = target->type;
  if (target->extents.empty()) Emit(target->name);
  else WriteElement(*target);
  return found;
}

// ---- operators ----

Type ExpressionWriter::OperandType(OperatorForm const& form, char operand, Type common) {
  switch (operand) {
    case 's':
    case 't': return Type::Text;
    case 'p':
    case 'q': return Type::Boolean;
    case 'a':
    case 'b': return form.returns == Type::Boolean ? common : Type::Number;
    default: return Type::Number;
  }
}

void ExpressionWriter::WriteMoreOperands(int depth) {
  for (int i = m_random.Chance(3) ? 28 : m_random.Between(0, 3); i > 0; --i) {
    Emit(",");
    Write(Type::Number, depth > 1 ? 1 : 0);
  }
}

void ExpressionWriter::WriteForm(OperatorForm const& form, int depth) {
  bool const changesText = form.returns == Type::Text;
  Type const common = m_random.Chance(70) ? Type::Number : m_random.Pick({Type::Text, Type::Boolean});
  for (std::size_t i = 0; i < form.parts.size(); ++i) {
    FormPart const& part = form.parts[i];
    bool const isLast = i + 1 == form.parts.size() || form.parts[i + 1].text == ")";
    if (part.operand == 0) {
      Emit(part.text);
    } else if (part.operand == 'v') {
      Type const type = changesText ? Type::Text : Type::Number;
      if (m_scene.Find(type, 0, true) != nullptr && m_random.Chance(97)) WriteTarget(type);
      else WriteOperand(type, depth - 1);
    } else if (changesText && OperandType(form, part.operand, common) == Type::Number &&
               m_random.Chance(75)) {
      Emit(std::to_string(m_random.Between(0, 3)));  // a place or a length that the text may have
    } else if (CountsRepeats(form, part.operand)) {
      m_pieces.back().isFixed = true;
      Emit(std::to_string(m_random.Between(-1, 4)) + ")", true);
      return;
    } else {
      Variable const* const array =
          form.isList && m_random.Chance(25) ? m_scene.Find(Type::Number, 1) : nullptr;
      if (array != nullptr) Emit(array->name);
      else WriteOperand(OperandType(form, part.operand, common), depth - 1);
      if (form.isList && isLast) WriteMoreOperands(depth);
    }
  }
}

void ExpressionWriter::WriteFormOf(Type type, int depth) {
  std::vector<OperatorForm const*> fitting;
  for (OperatorForm const& form : m_scene.forms.operators) {
    bool const isWord = form.token == "true" || form.token == "false";
    bool const needsComplex = form.token == "conj" || form.token == "arg" || form.token.starts_with('|');
    bool const mayStand = !needsComplex || form.token == "|" || m_scene.usesComplex || m_random.Chance(10);
    if (form.returns == type && !isWord && mayStand) fitting.push_back(&form);
  }
  WriteForm(*m_random.PickFrom(fitting), depth);
}

void ExpressionWriter::WriteCall(HostOperator const& op, int depth) {
  bool const wasArgument = std::exchange(m_isArgument, true);
  auto const& types = op.parameters;
  if (op.fix == "infix" || op.fix == "postfix") WriteOperand(types[0], depth - 1);
  Emit(op.name);
  if (op.fix == "infix") WriteOperand(types[1], depth - 1);
  if (op.fix == "prefix" && types.size() == 1 && m_random.Chance(40)) {
    WriteOperand(types[0], depth - 1);
  } else if (op.fix == "prefix") {
    Emit("(");
    for (std::size_t i = 0; i < types.size(); ++i) {
      if (i > 0) Emit(",");
      Write(types[i], depth - 1);
    }
    Emit(")");
  }
  m_isArgument = wasArgument;
}

bool ExpressionWriter::WriteCallOf(Type type, int depth) {
  std::vector<HostOperator const*> fitting;
  for (HostOperator const& op : m_scene.operators)
    if (op.fix == "nofix" ? m_random.Chance(5)  // they stand alone in a statement
                          : op.returns == type ||
                                (type == Type::Number && op.returns == Type::Complex && m_scene.usesComplex))
      fitting.push_back(&op);
  if (fitting.empty()) return false;
  WriteCall(*m_random.PickFrom(fitting), depth);
  return true;
}

void ExpressionWriter::WriteArithmetic(int depth) {
  WriteOperand(Type::Number, depth - 1);
  std::string const op = m_random.Pick({"+", "+", "-", "-", "*", "*", "/", "^", "%"});
  Emit(op);
  if (op == "^") return Emit(std::to_string(m_random.Between(0, 4)));
  WriteOperand(Type::Number, depth - 1);
}

// ---- operands side by side, which precedences and directions join ----

/** An infix operator of two numbers, or of two truth values when it returns one. */
std::string ExpressionWriter::InfixToken(Type returns) {
  std::vector<std::string> fitting;
  for (OperatorForm const& form : m_scene.forms.operators) {
    bool const joinsLike = form.parts[0].operand == (returns == Type::Boolean ? 'p' : 'x');
    bool const needsComplex = form.token == "|_" || form.token == "|/";
    if (form.IsInfix() && form.returns == returns && joinsLike && (m_scene.usesComplex || !needsComplex))
      fitting.push_back(form.token);
  }
  for (HostOperator const& op : m_scene.operators) {
    bool const joins = op.fix == "infix" && op.returns == returns && op.parameters[0] == returns;
    if (joins && op.parameters[1] == returns) fitting.push_back(op.name);
  }
  return m_random.PickFrom(fitting);
}

void ExpressionWriter::WriteNumberChain(bool isArithmetic) {
  for (int i = m_random.Between(1, 4); i >= 0; --i) {
    if (m_random.Chance(25)) Emit(m_random.Pick({"-", "+", "~", "sin", "sqrt", "abs", "ln", "real", "log"}));
    WriteLeaf(Type::Number);
    if (m_random.Chance(4)) Emit("!");
    if (i > 0) Emit(isArithmetic ? m_random.Pick({"+", "-", "*", "/", "^"}) : InfixToken(Type::Number));
  }
}

void ExpressionWriter::WriteBooleanChain() {
  for (int i = m_random.Between(0, 2); i >= 0; --i) {
    if (m_random.Chance(15)) Emit(m_random.Pick({"not", "!"}));
    if (m_random.Chance(25)) {
      WriteLeaf(Type::Boolean);
    } else {
      bool const isArithmetic = m_random.Chance(80);  // bits bind looser than comparisons
      WriteNumberChain(isArithmetic);
      Emit(m_random.Pick({"<", ">", "<=", ">=", "==", "!=", "<>"}));
      WriteNumberChain(isArithmetic);
    }
    if (i > 0) Emit(InfixToken(Type::Boolean));
  }
}

void ExpressionWriter::WriteImpliedProduct(int depth) {
  if (m_random.Chance(50)) WriteEnclosed(Type::Number, depth - 1);
  else Emit(NumberLiteral());
  switch (m_random.Between(1, 4)) {
    case 1: return Emit(m_random.Pick({"pi", "phi", "sqrt 2", "sin 30"}));
    case 2: return WriteEnclosed(Type::Number, depth - 1);
    default: return WriteLeaf(Type::Number);
  }
}

void ExpressionWriter::WriteAssignment(Type type, int depth) {
  std::vector<OperatorForm const*> fitting;
  for (OperatorForm const& form : m_scene.forms.assignments) {
    bool const isForTexts = form.token == "$+=";
    bool const isForAll =
        form.token == "=" || form.token == "<=>" || (form.token == "+=" && type == Type::Text);
    if (isForAll || (isForTexts ? type == Type::Text : IsNumeric(type))) fitting.push_back(&form);
  }
  OperatorForm const& form = *m_random.PickFrom(fitting);
  bool const isNew = m_scene.Find(type, 0, true) == nullptr;
  Type const target = WriteTarget(type);
  Emit(isNew || m_random.Chance(50) ? "=" : form.token);
  if (m_pieces.back().text.starts_with("<=>")) WriteTarget(target);
  else Write(type, depth);
}

// ---- by type ----

void ExpressionWriter::Write(Type type, int depth) {
  if (depth > 0 && m_random.Chance(12) && WriteCallOf(type, depth)) return;
  switch (type) {
    case Type::Text: return WriteText(depth);
    case Type::Boolean: return WriteBoolean(depth);
    default: return WriteNumber(depth);
  }
}

void ExpressionWriter::WriteNumber(int depth) {
  if (depth <= 0) return WriteLeaf(Type::Number);
  Ways ways(m_random);
  if (ways.Take(30)) return WriteArithmetic(depth);
  if (ways.Take(12)) return WriteNumberChain(false);
  if (ways.Take(36)) return WriteFormOf(Type::Number, depth);
  if (ways.Take(8)) {
    std::size_t const dimensions = m_random.Below(3) + 1;
    if (Variable const* const array = m_scene.Find(Type::Number, dimensions)) return WriteElement(*array);
  }
  if (ways.Take(4) && m_scene.settings.allowsImpliedMultiplication) return WriteImpliedProduct(depth);
  if (ways.Take(3)) {
    Emit("(");
    WriteAssignment(Type::Number, depth - 1);
    return Emit(")");
  }
  if (ways.Take(3) && m_scene.usesComplex) {
    Emit("(");
    WriteOperand(Type::Number, 0);
    Emit(m_random.Pick({"|_", "|/"}));
    WriteOperand(Type::Number, 0);
    return Emit(")");
  }
  WriteLeaf(Type::Number);
}

void ExpressionWriter::WriteText(int depth) {
  if (depth <= 0) return WriteLeaf(Type::Text);
  Ways ways(m_random);
  if (ways.Take(55)) return WriteFormOf(Type::Text, depth);
  if (ways.Take(25)) {
    WriteOperand(Type::Text, depth - 1);
    Emit("+");
    return WriteOperand(Type::Text, depth - 1);
  }
  if (Variable const* const array = m_scene.Find(Type::Text, 1)) return WriteElement(*array);
  WriteLeaf(Type::Text);
}

void ExpressionWriter::WriteBoolean(int depth) {
  if (depth <= 0) return WriteLeaf(Type::Boolean);
  if (m_random.Chance(15)) return WriteBooleanChain();
  if (m_random.Chance(85)) return WriteFormOf(Type::Boolean, depth);
  if (Variable const* const array = m_scene.Find(Type::Boolean, 1)) return WriteElement(*array);
  WriteLeaf(Type::Boolean);
}

}  // namespace qumel::compare
