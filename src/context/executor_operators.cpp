// Queries: what a name stands for in a context.
#include "context/executor.h"
#include "context/variables.h"

namespace qumel {

bool CQMExecutor::IsOperator(char scope, char const* token) const {
  if (token == nullptr) return false;
  auto const holds = [token](CQMOperatorList const* list) {
    return list != nullptr && list->HasToken(token);
  };
  switch (scope) {
    case Scope::kCosmic: return holds(sm_pCosmicOperatorList);
    case Scope::kGlobal: return holds(m_globalOperators.get());
    default: return holds(m_globalOperators.get()) || holds(sm_pCosmicOperatorList);
  }
}

bool CQMExecutor::IsVariable(char scope, char const* name) {
  return CQMVariables(*this).IsVariable(scope, name);
}

bool CQMExecutor::IsArray(char scope, char const* name) { return CQMVariables(*this).IsArray(scope, name); }

bool CQMExecutor::IsSymbol(char scope, char const* name) {
  return IsVariable(scope, name) || IsOperator(scope, name);
}

std::shared_ptr<SQMOperatorDefinition const> CQMExecutor::FindOperatorDefinition(long id) {
  for (CQMOperatorList const* list : {sm_pCosmicOperatorList, m_globalOperators.get()}) {
    if (list == nullptr) continue;
    if (CQMOpInfoRef const info = list->FindById(id); info != nullptr) return info->definition;
  }
  return nullptr;
}

}  // namespace qumel
