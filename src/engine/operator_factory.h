// Makes operator objects by id.
#pragma once

#include <memory>

#include "engine/operator.h"

namespace qumel {

class CQMOperatorContext;
class CQMReachableDefinitions;
struct SQMOperatorDefinition;

// The floor of the operators, which stands above this one, defines these two.
/** A new standard operator in arena, or null for an id that names none. */
CQMOperator* MakeOperator(long id, CQMArena& arena);
/** The operator of the definition of a host; null for one that has neither a body nor a
 * callback. */
CQMOperator* MakeDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition, CQMArena& arena);

class CQMOperatorFactory : public CQMLinkedObject {
 public:
  void Initialize(CQMOperatorContext* context) { m_context = context; }
  /** A new operator in arena that carries id, or null for an id that names nothing. Ids above LastStandard
   * are looked up among the operators that hosts defined: first those that known has, to which others are
   * added. */
  virtual CQMOperator* GetOperator(long id, CQMArena& arena, CQMReachableDefinitions* known = nullptr);

 private:
  std::shared_ptr<SQMOperatorDefinition const> FindDefinition(long id, CQMReachableDefinitions* known) const;

  CQMOperatorContext* m_context = nullptr;
};

}  // namespace qumel
