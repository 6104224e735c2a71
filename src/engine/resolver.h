// Resolvers run a compiled expression, each in its way: step by step, with steps joined, or by complex
// numbers.
#pragma once

#include "engine/operator.h"
#include "engine/program.h"

namespace qumel {

/** Stateless; one of each kind serves all expressions of a context. */
class CQMResolver : public CQMLinkedObject {
 public:
  /** The kind of steps that it runs. */
  virtual EQMWay GetWay() const = 0;
  /** Runs from the operator at position on, until the end or until a status ends the run. Returns the status
   * that ended it; position is then that of the operator that did, or of the one to go on with. */
  static long Resolve(CQMProgram& program, long& position) { return program.Run(position); }
};

/** One operator after the other, each result stored: what the other way of real evaluation is compared with.
 */
class CQMRealBaselineResolver final : public CQMResolver {
 public:
  EQMWay GetWay() const override { return EQMWay::StepByStep; }
};

class CQMRealOptimizedResolver final : public CQMResolver {
 public:
  EQMWay GetWay() const override { return EQMWay::Joined; }
};

class CQMComplexBaselineResolver final : public CQMResolver {
 public:
  EQMWay GetWay() const override { return EQMWay::Complex; }
};

}  // namespace qumel
