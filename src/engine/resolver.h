// Resolvers run a compiled expression, each in its way: step by step, with steps joined, or by complex
// numbers.
#pragma once

#include <memory>
#include <span>

#include "engine/operator.h"
#include "engine/program.h"

namespace qumel {

/** Stateless; one of each kind serves all expressions of a context. */
class CQMResolver : public CQMLinkedObject {
 public:
  /** How the steps of the program that it runs are joined. */
  virtual EQMJoining GetJoining() const { return EQMJoining::None; }
  /** Runs from the operator at position on, until the end or until a status ends the run. Returns the status
   * that ended it; position is then that of the operator that did, or of the one to go on with. */
  virtual long Resolve(CQMProgram& program, long& position) = 0;
};

/** One operator after the other, each result stored: what the other way of real evaluation is compared with.
 */
class CQMRealBaselineResolver final : public CQMResolver {
 public:
  long Resolve(CQMProgram& program, long& position) override;
};

class CQMRealOptimizedResolver final : public CQMResolver {
 public:
  EQMJoining GetJoining() const override { return EQMJoining::Carrying; }
  long Resolve(CQMProgram& program, long& position) override;
};

class CQMComplexBaselineResolver final : public CQMResolver {
 public:
  long Resolve(CQMProgram& program, long& position) override;
};

}  // namespace qumel
