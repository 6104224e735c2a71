// From items to operators and operands.
#include <algorithm>

#include "engine/expression.h"
#include "engine/operator_factory.h"
#include "engine/reachable_definitions.h"
#include "tables/symbol_table.h"

namespace qumel {

long CQMExpression::CreateTokenLists(std::span<CQMDatum* const> parameters) {
  std::vector<CQMOperator*>& operators = m_compilation->operators;
  std::vector<SQMWorkItem>& stack = m_compilation->stack;
  auto const push = [&](CQMDatum* operand) {
    m_compilation->operands.push_back(operand);
    if (operand != nullptr) stack.push_back({operand, GetOperatorCount()});
  };
  if (m_items == nullptr) return Error::None;
  for (SQMItem const& item : m_items->GetItems()) {
    switch (item.kind) {
      case EQMItem::Operator:
        if (long const code = ReadOperator(item); code != Error::None) return Fail(code);
        break;
      case EQMItem::Number: push(ReadNumber(item)); break;
      case EQMItem::String: push(ReadString(m_items->Characters(item))); break;
      case EQMItem::Name: push(ReadSymbol(item, parameters)); break;
      case EQMItem::MarkedOperator: push(nullptr); break;
      case EQMItem::End:
        if (!operators.empty()) operators.back()->SetEndsStatement(true);
        if (long const code = Verify(0); code != Error::None) return code;
        // operands and one-shot words serve their own statement only
        stack.clear();
        m_nextScope = Scope::kDefault;
        m_nextComplexity = Complexity::kDefault;
        break;
    }
  }
  return Error::None;
}

long CQMExpression::ReadOperator(SQMItem const& item) {
  long const id = item.id;
  if (id > OpId::LastStandard && m_definitions == nullptr)
    m_definitions = std::make_shared<CQMReachableDefinitions>(m_context);
  long const index = GetOperatorCount();
  CQMOperator* const made = MakeOperatorAt(index, id);
  if (made == nullptr) return Error::UnimplementedOperator;
  CQMOperator& op = *made;
  op.SetExpression(this);
  m_compilation->operators.push_back(made);
  m_compilation->verification.unverified.push_back(index);
  m_compilation->hasControlWords |= IsControlWord(id);

  // more operands than there are could never be filled; the slot left over tells verification that one is
  // missing
  std::vector<SQMWorkItem>& stack = m_compilation->stack;
  long const count = std::clamp<long>(item.operandCount, 0, static_cast<long>(stack.size()) + 1);
  op.CreateOperandList(m_compilation->arena, count);
  long first = index;
  for (long i = 0; i < count && !stack.empty(); ++i) {
    if (op.AssignOperand(stack.back().datum) != Error::None) break;
    if (stack.back().isResult) op.SetOnlyReader(count - 1 - i);
    first = std::min(first, stack.back().firstOperator);
    stack.pop_back();
  }
  CQMDatum* const result = op.SetResultOperand(m_compilation->arena);
  result->SetOwningExpression(this);
  if (op.VerifiesImmediately()) {
    if (long const code = Verify(first); code != Error::None) return code;
  }
  // verification may have put a substitute in the operator's place; the result stays the same datum
  CQMDatum* const declared = IsTypeWord(id) ? m_compilation->operators.back()->GetOperandByIndex(0) : nullptr;
  if (declared != nullptr) {
    stack.push_back({declared, first});
  } else if (!LeavesNothing(id)) {
    stack.push_back({result, first, true});
  }
  return Error::None;
}

// What a copy takes over from its original does not depend on what was defined, deleted or evaluated since.
CQMOperator* CQMExpression::MakeOperatorAt(long index, long id) {
  CQMArena& arena = m_compilation->arena;
  if (m_original != nullptr) {
    CQMOperator* const twin = m_original->GetOperatorByIndex(index)->MakeTwin(arena);
    if (twin != nullptr) return twin;
  }
  return m_context.GetOperatorFactory()->GetOperator(id, arena, m_definitions.get());
}

CQMDatum* CQMExpression::MakeTemporary() {
  auto* const made = m_compilation->arena.Make<CQMDatum>();
  made->SetTemporary(true);
  made->SetOwningExpression(this);
  return made;
}

CQMDatum* CQMExpression::ReadNumber(SQMItem const& item) {
  CQMDatum* const datum = MakeTemporary();
  datum->SetDatumType(EQMDataType::Number);
  datum->SetLiteral(true);
  datum->SetLiteralAttributes(item.isInteger, false);
  datum->SetReal(item.number);
  return datum;
}

CQMDatum* CQMExpression::ReadString(std::string_view text) {
  CQMDatum* const datum = MakeTemporary();
  if (text.size() >= kDefaultStringSize) datum->SetDatumAtomSize(static_cast<long>(text.size() + 1));
  datum->SetDatumType(EQMDataType::String);
  datum->SetLiteral(true);
  datum->SetText(text);
  return datum;
}

CQMDatum* CQMExpression::ReadSymbol(SQMItem const& item, std::span<CQMDatum* const> parameters) {
  if (m_detached != nullptr) return static_cast<CQMDatum*>(item.bound);
  std::string_view const name = m_items->Characters(item);
  if (CQMDatum* const parameter = FindParameter(name, parameters); parameter != nullptr) return parameter;
  if (m_original != nullptr) return m_original->m_compilation->operands[m_compilation->operands.size()];
  if (CQMDatum* const local = GetSymbol(name); local != nullptr) return local;
  if (CQMDatum* const symbol = FindTableSymbol(name); symbol != nullptr) return symbol;
  auto datum = std::make_unique<CQMDatum>();
  datum->SetTemporary(true);
  datum->SetOwningExpression(this);
  datum->SetDatumName(std::string(name).c_str());
  datum->SetPending(true);
  CQMDatum* const read = datum.get();
  return m_compilation->names.try_emplace(read, std::move(datum)).first->second.get();
}

CQMDatum* CQMExpression::FindParameter(std::string_view name, std::span<CQMDatum* const> parameters) const {
  if (m_definition == nullptr) return nullptr;
  std::size_t const count = std::min(parameters.size(), m_definition->parameters.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (m_definition->parameters[i].name == name) return parameters[i];
  }
  return nullptr;
}

CQMDatum* CQMExpression::ReserveTableSymbol(CQMSymbolTable& table, std::string_view name) {
  std::vector<CQMDatum*>& references = m_compilation->references;
  references.push_back(nullptr);  // the place first: a reference once taken is never lost
  references.back() = static_cast<CQMDatum*>(table.ReserveSymbol(name, true));
  CQMDatum* const found = references.back();
  if (found == nullptr) references.pop_back();
  return found;
}

CQMDatum* CQMExpression::FindTableSymbol(std::string_view name) {
  for (CQMSymbolTable* table : {m_context.GetGlobalSymbolTable(), m_context.GetCosmicSymbolTable()}) {
    if (CQMDatum* const found = table != nullptr ? ReserveTableSymbol(*table, name) : nullptr;
        found != nullptr)
      return found;
  }
  return nullptr;
}

}  // namespace qumel
