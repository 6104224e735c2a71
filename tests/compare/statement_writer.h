// Writes programs of several statements: declarations, assignments, control flow, settings. Every loop has a
// counter of its own, so that each text ends.
#pragma once

#include "compare/expression_writer.h"

namespace qumel::compare {

class StatementWriter {
 public:
  StatementWriter(Scene& scene, Pieces& pieces)
      : m_scene(scene), m_random(scene.random), m_pieces(pieces), m_write(scene, pieces) {}

  /** Count statements, and mostly a value at the end, of that type. */
  void WriteProgram(int count, Type value);
  void WriteDeclaration(Variable const& variable);
  void WriteReturn(Type type);

 private:
  enum class Place { Outside, InSelection, InLoop };

  void WriteStatement(int depth, Place place);
  void WriteBody(int depth, Place place);
  void WriteEffect();
  void WriteNewVariable();
  void WriteBranch(int depth, Place place);
  void WriteLoop(int depth);
  void WriteSelection(int depth, Place place);
  void WriteJump(int depth, Place place);
  void WriteLeaving(Place place);
  void WriteSetting();
  void EndStatement();
  void Open(std::string const& counter, std::string const& head, std::string const& tail);

  Scene& m_scene;
  Random& m_random;
  Pieces& m_pieces;
  ExpressionWriter m_write;
};

}  // namespace qumel::compare
