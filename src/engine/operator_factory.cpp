// Standard operators by their rows, and those that hosts defined by their definitions.
#include "engine/operator_factory.h"

#include "engine/operator_context.h"

namespace qumel {

std::unique_ptr<CQMOperator> CQMOperatorFactory::GetOperator(long id) {
  std::unique_ptr<CQMOperator> made;
  if (id <= OpId::LastStandard) {
    made = MakeOperator(id);
  } else if (m_context != nullptr) {
    if (auto definition = m_context->FindOperatorDefinition(id); definition != nullptr) {
      made = MakeDefinedOperator(std::move(definition));
    }
  }
  if (made != nullptr) made->SetId(id);
  return made;
}

}  // namespace qumel
