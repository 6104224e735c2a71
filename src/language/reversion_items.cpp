// Statements, and the operators that their items name.
#include "language/reversion_items.h"

#include <algorithm>

#include "base/errors.h"

namespace qumel {

long CQMReversionReader::ReadStatement() {
  m_items.clear();
  auto const end = std::ranges::find(m_rest, EQMItem::End, &SQMItem::kind);
  for (SQMItem const& item : CQMItemList::Items(m_rest.begin(), end)) {
    bool const isOperator = item.kind == EQMItem::Operator || item.kind == EQMItem::MarkedOperator;
    SQMReversionOperator const* const op = isOperator ? FindOperator(item.id) : nullptr;
    if (isOperator && op == nullptr) return Error::UnknownOperator;
    m_items.push_back({&item, op});
  }
  std::size_t const length = m_items.size() + (end != m_rest.end() ? 1 : 0);
  m_statement = m_rest.first(length);
  m_rest = m_rest.subspan(length);
  return Error::None;
}

SQMReversionOperator const* CQMReversionReader::FindOperator(long id) {
  auto [place, isNew] = m_operators.try_emplace(id);
  if (isNew) {
    SQMReversionOperator& found = place->second;
    found.info = m_search.FindById(id);
    if (found.info != nullptr) {
      found.precedence = PrecedenceOf(*found.info, m_rules.hierarchical);
      found.rows = m_search.Find(found.info->token, m_held);
    }
  }
  return place->second.info != nullptr ? &place->second : nullptr;
}

}  // namespace qumel
