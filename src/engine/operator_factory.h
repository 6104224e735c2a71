// Makes operator objects by id from tables of (id, maker) rows that each family of operators supplies.
#pragma once

#include <memory>
#include <span>

#include "engine/operator.h"

namespace qumel {

class CQMOperatorContext;
class CQMReachableDefinitions;
struct SQMOperatorDefinition;

using OperatorMaker = std::unique_ptr<CQMOperator> (*)();

struct SQMMakerRow {
  long id;
  OperatorMaker make;
};

template <class Operator>
std::unique_ptr<CQMOperator> MakeOperator() {
  return std::make_unique<Operator>();
}

using MakerTable = std::span<SQMMakerRow const>;

/** The operators of this floor: control flow, assignment, declarations, array index. */
std::span<MakerTable const> StructuralOperatorTables();

class CQMOperatorFactory : public CQMLinkedObject {
 public:
  /** Adds families to the process-wide table. The first context does so, under the lock of its
   * initialisation. */
  static void RegisterTables(std::span<MakerTable const> tables);

  void Initialize(CQMOperatorContext* context) { m_context = context; }
  /** A new operator that carries id, or null for an id that names nothing. Ids above LastStandard are looked
   * up among the operators that hosts defined: first those that known has, to which others are added. */
  std::unique_ptr<CQMOperator> GetOperator(long id, CQMReachableDefinitions* known = nullptr);

 private:
  std::shared_ptr<SQMOperatorDefinition const> FindDefinition(long id, CQMReachableDefinitions* known) const;

  CQMOperatorContext* m_context = nullptr;
};

}  // namespace qumel
