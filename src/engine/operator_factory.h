// Makes operator objects by id.
#pragma once

#include <memory>

#include "engine/operator.h"

namespace qumel {

class CQMOperatorContext;
class CQMReachableDefinitions;
struct SQMOperatorDefinition;

// The floor of the operators, which stands above this one, defines these two.
/** A new standard operator, or null for an id that names none. */
std::unique_ptr<CQMOperator> MakeOperator(long id);
/** The operator object that runs the definition of a host; null for one that has neither a body nor a
 * callback. */
std::unique_ptr<CQMOperator> MakeDefinedOperator(std::shared_ptr<SQMOperatorDefinition const> definition);

class CQMOperatorFactory : public CQMLinkedObject {
 public:
  void Initialize(CQMOperatorContext* context) { m_context = context; }
  /** A new operator that carries id, or null for an id that names nothing. Ids above LastStandard are looked
   * up among the operators that hosts defined: first those that known has, to which others are added. */
  virtual std::unique_ptr<CQMOperator> GetOperator(long id, CQMReachableDefinitions* known = nullptr);

 private:
  std::shared_ptr<SQMOperatorDefinition const> FindDefinition(long id, CQMReachableDefinitions* known) const;

  CQMOperatorContext* m_context = nullptr;
};

}  // namespace qumel
