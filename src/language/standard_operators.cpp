// Loading of the operators of the language into operator lists.
#include "language/standard_operators.h"

#include <memory>

#include "base/operator_table.h"
#include "language/operator_list.h"

namespace qumel {

namespace {

void LoadRow(CQMOperatorList& list, SQMOpRow const& row, bool impliedMultiplication) {
  auto info = std::make_unique<CQMOpInfo>(row.token);
  info->id = row.id;
  info->fix = row.fix;
  info->minOperands = row.operands.least;
  info->maxOperands = row.operands.most;
  info->precedence = row.precedence;
  info->rightAssociative = row.associates == Right;
  list.Load(std::move(info), impliedMultiplication);
  if (!row.context) return;
  list.SetContext(row.id, row.context->left, row.context->right);
  if (!row.context->encloses) list.SetEnclose(row.id, false);
}

}  // namespace

void LoadStandardDialect(CQMOperatorList& shared, bool impliedMultiplication) {
  for (SQMOpRow const& row : StandardOperators()) LoadRow(shared, row, impliedMultiplication);
  shared.Freeze();
}

void LoadLocalDialect(CQMOperatorList& own, bool impliedMultiplication) {
  for (SQMOpRow const& row : LocalOperators()) {
    if (row.id == OpId::ImpliedMultiplication && !impliedMultiplication) continue;
    LoadRow(own, row, impliedMultiplication);
    if (row.fix == EQMFix::Nofix && impliedMultiplication) own.AddContext(row.id, 0, ContextBit::kOperand);
  }
  own.Freeze();
}

}  // namespace qumel
