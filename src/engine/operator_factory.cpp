// The process-wide table of makers, and the way to the operators that hosts defined.
#include "engine/operator_factory.h"

#include <array>

#include "engine/defined_operators.h"
#include "engine/operator_context.h"
#include "engine/reachable_definitions.h"

namespace qumel {

namespace {

std::array<OperatorMaker, OpId::LastStandard + 1> makers{};

}  // namespace

void CQMOperatorFactory::RegisterTables(std::span<MakerTable const> tables) {
  for (MakerTable const& table : tables) {
    for (SQMMakerRow const& row : table) makers[static_cast<std::size_t>(row.id)] = row.make;
  }
}

std::unique_ptr<CQMOperator> CQMOperatorFactory::GetOperator(long id, CQMReachableDefinitions* known) {
  std::unique_ptr<CQMOperator> made;
  if (id >= 0 && id <= OpId::LastStandard) {
    if (OperatorMaker const make = makers[static_cast<std::size_t>(id)]; make != nullptr) made = make();
  } else if (auto definition = FindDefinition(id, known); definition != nullptr) {
    made = MakeDefinedOperator(std::move(definition));
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
