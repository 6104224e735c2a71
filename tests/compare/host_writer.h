// Writes what the host of a program does with variables and settings: what it creates, links, sets, deletes
// and evaluates before the runs of the program and between them.
#pragma once

#include "compare/operator_writer.h"
#include "compare/scene.h"
#include "compare/typed_calls.h"

namespace qumel::compare {

class HostWriter {
 public:
  HostWriter(Scene& scene, Program& program) : m_scene(scene), m_random(scene.random), m_program(program) {}

  /** Some of the variables that all programs share, most of them made by the host, some by the text. */
  void WriteVariables();
  /** What changes before run number run. */
  void WriteChanges(std::size_t run, OperatorWriter& operators);

 private:
  char Scope();
  AnyValue Value();
  void Create(Acts& acts, Variable const& variable);
  void Link(Acts& acts, Variable const& variable);
  void Set(Acts& acts, Variable const& variable);
  void Retype(Acts& acts, Variable const& variable);
  void ChangeMemory(Acts& acts);
  void ChangeSetting(Acts& acts);
  void Evaluate(Acts& acts);

  Scene& m_scene;
  Random& m_random;
  Program& m_program;
};

}  // namespace qumel::compare
