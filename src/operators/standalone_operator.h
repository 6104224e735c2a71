// The base of operators that take no operands: constants, mode words, the last result.
#pragma once

#include "engine/operator.h"

namespace qumel {

/** Operands that the text may offer are left to whoever else wants them. */
class CQMStandaloneOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 0; }
  void CreateOperandList(CQMArena& arena, long) override { CQMOperator::CreateOperandList(arena, 0); }
  long VerifyOperands() override { return Error::None; }
};

}  // namespace qumel
