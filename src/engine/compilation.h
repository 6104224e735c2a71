// What a compilation makes: operators with their operands and results, and the program that they make. A
// context keeps what one evaluation has used for the next, with its memory.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "base/arena.h"
#include "base/items.h"
#include "engine/operator.h"
#include "engine/program.h"
#include "values/datum.h"

namespace qumel {

struct SQMCompilation {
  CQMItemList items;                    // of a text that was converted to be compiled
  CQMArena arena;                       // of operators, literals, results and blocks
  std::vector<CQMOperator*> operators;  // in execution order
  std::vector<CQMDatum*> operands;      // one an operand token
  std::vector<CQMDatum*> references;    // table symbols that the expression holds a reference on
  bool hasControlWords = false;
  std::unordered_map<CQMDatum const*, std::unique_ptr<CQMDatum>> names;  // read, and not confirmed
  std::vector<SQMBlock*> blocksToReset;  // that a run may enter without openers
  std::vector<CQMExpression*> bodies;    // of operators, which own them
  CQMProgram program;

  // of the compilation only
  struct SQMWorkItem {
    CQMDatum* datum;
    long firstOperator;     // where the operators that compute datum begin
    bool isResult = false;  // of an operator: it is pushed once, so whoever pops it alone reads it
  };
  std::vector<SQMWorkItem> stack;
  struct {
    std::vector<long> unverified;         // positions of operators, ascending
    std::vector<long> work;               // those that are being verified
    std::vector<std::size_t> signatures;  // of their operands, when they were last asked
  } verification;

  /** Forgets everything, and keeps the memory. */
  void Clear();
};

}  // namespace qumel
