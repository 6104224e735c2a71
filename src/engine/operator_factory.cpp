// Standard operators by their rows, and those that hosts defined by their definitions.
#include "engine/operator_factory.h"

#include "engine/operator_context.h"
#include "engine/reachable_definitions.h"

namespace qumel {

CQMOperator* CQMOperatorFactory::GetOperator(long id, CQMArena& arena, CQMReachableDefinitions* known) {
  CQMOperator* made = nullptr;
  if (id <= OpId::LastStandard) {
    made = MakeOperator(id, arena);
  } else if (auto definition = FindDefinition(id, known); definition != nullptr) {
    made = MakeDefinedOperator(std::move(definition), arena);
  }
  if (made != nullptr) made->SetId(id);
  return made;
}

std::shared_ptr<SQMOperatorDefinition const> CQMOperatorFactory::FindDefinition(
    long id, CQMReachableDefinitions* known) const {
  if (known != nullptr) {
    if (auto definition = known->Find(id); definition != nullptr) return definition;
  }
  auto definition = m_context != nullptr ? m_context->FindOperatorDefinition(id) : nullptr;
  if (known != nullptr && definition != nullptr) known->Add(definition);
  return definition;
}

}  // namespace qumel
