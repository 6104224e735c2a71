// Resolvers run a compiled expression: they walk its operators and let these steer the position.
#pragma once

#include "engine/operator.h"
#include "engine/operator_context.h"

namespace qumel {

/** Stateless; one of each kind serves all expressions of a context. */
class CQMResolver : public CQMLinkedObject {
 public:
  /** Runs operators[position] and on, until position reaches count or a status ends the run. operands[i] and
   *  results[i] are the operand list and the result of operators[i]. Returns the status that ended the run.
   */
  virtual long Resolve(CQMOperator** operators, CQMDatum*** operands, CQMDatum** results, long count,
                       long& position) = 0;
};

class CQMRealBaselineResolver final : public CQMResolver {
 public:
  long Resolve(CQMOperator** operators, CQMDatum*** operands, CQMDatum** results, long count,
               long& position) override;
};

/** Computes the commonest real operations itself; all others through their objects. The angle factor is read
 * once, at the start of a run, so a mode word inside an expression does not reach its sin, cos and tan. */
class CQMRealOptimizedResolver final : public CQMResolver {
 public:
  explicit CQMRealOptimizedResolver(CQMOperatorContext const& context) : m_context(context) {}
  long Resolve(CQMOperator** operators, CQMDatum*** operands, CQMDatum** results, long count,
               long& position) override;

 private:
  CQMOperatorContext const& m_context;
};

class CQMComplexBaselineResolver final : public CQMResolver {
 public:
  long Resolve(CQMOperator** operators, CQMDatum*** operands, CQMDatum** results, long count,
               long& position) override;
};

}  // namespace qumel
