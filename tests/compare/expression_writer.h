// Writes expressions of a wanted type: literals, variables, elements, and operators in the forms of the
// document.
#pragma once

#include "compare/scene.h"

namespace qumel::compare {

class ExpressionWriter {
 public:
  ExpressionWriter(Scene& scene, Pieces& pieces) : m_scene(scene), m_random(scene.random), m_pieces(pieces) {}

  /** An expression with at most depth operators above one another. */
  void Write(Type type, int depth);
  /** The same in parentheses. */
  void WriteEnclosed(Type type, int depth);
  /** The target of an assignment; a new name when there is no variable of that type. Returns the type that it
   * has. */
  Type WriteTarget(Type type);
  void WriteAssignment(Type type, int depth);
  void WriteElement(Variable array);
  void WriteCall(HostOperator const& op, int depth);

  void Emit(std::string text, bool isFixed = false);
  std::string TextLiteral();
  std::string NumberLiteral();

 private:
  void WriteNumber(int depth);
  void WriteText(int depth);
  void WriteBoolean(int depth);
  void WriteLeaf(Type type);
  void WriteOperand(Type type, int depth);
  void WriteForm(OperatorForm const& form, int depth);
  void WriteMoreOperands(int depth);
  void WriteFormOf(Type type, int depth);
  void WriteArithmetic(int depth);
  void WriteNumberChain(bool isArithmetic);
  void WriteBooleanChain();
  std::string InfixToken(Type returns);
  void WriteImpliedProduct(int depth);
  bool WriteCallOf(Type type, int depth);
  void WriteIndex(int extent);
  Type OperandType(OperatorForm const& form, char operand, Type common);
  std::string Decimal(std::string digits) const;

  Scene& m_scene;
  Random& m_random;
  Pieces& m_pieces;
  bool m_isArgument = false;  // of a host operator, which may change a counter that it is given
};

}  // namespace qumel::compare
