// Writes what the host of a program does with operators of its own: bodies and callbacks that it defines,
// gives later, deletes and defines anew.
#pragma once

#include "compare/scene.h"

namespace qumel::compare {

class OperatorWriter {
 public:
  OperatorWriter(Scene& scene, Program& program)
      : m_scene(scene), m_random(scene.random), m_program(program) {}

  /** Operators that the text may use, and what defines them. */
  void WriteOperators(int count);
  /** Something that happens to one of them between two runs. */
  void WriteChange(Acts& acts);

 private:
  HostOperator NewOperator();
  void Define(Acts& acts, HostOperator const& op);
  void DefineByBody(Acts& acts, HostOperator const& op, bool bodyComesLater);
  void DefineByCallback(Acts& acts, HostOperator const& op);
  void DefineRecursive(Acts& acts);
  void GiveBody(Acts& acts, HostOperator const& op, std::string const& body);
  void Delete(Acts& acts, std::string const& name);
  std::string Body(HostOperator const& op);
  std::string ParameterList(HostOperator const& op) const;

  Scene& m_scene;
  Random& m_random;
  Program& m_program;
  char m_scope = 'G';
  int m_bodies = 0;
};

}  // namespace qumel::compare
