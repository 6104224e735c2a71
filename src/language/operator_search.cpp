// The rows of a token or an id, from both lists.
#include "language/operator_search.h"

namespace qumel {

SQMOperatorToken CQMOperatorSearch::Find(std::string_view token, HeldOperators& held) const {
  SQMHashedText const key(token);
  SQMTokenRows const shared = m_shared != nullptr ? m_shared->Find(key) : SQMTokenRows();
  SQMTokenRows const own = m_own != nullptr ? m_own->Find(key) : SQMTokenRows();
  if (shared.defined == nullptr && own.defined == nullptr) return {shared.standard, own.standard};
  std::vector<CQMOpInfoRef>& rows = held.emplace_back();
  for (SQMTokenRows const* list : {&shared, &own}) {
    rows.insert(rows.end(), list->standard.begin(), list->standard.end());
    if (list->defined != nullptr) rows.push_back(list->defined);
  }
  return {std::span(rows).first(shared.Count()), std::span(rows).subspan(shared.Count())};
}

CQMOpInfoRef CQMOperatorSearch::FindFirst(std::string_view token) const {
  SQMHashedText const key(token);
  CQMOpInfoRef info = m_shared != nullptr ? m_shared->FindByToken(key) : nullptr;
  return info == nullptr && m_own != nullptr ? m_own->FindByToken(key) : info;
}

CQMOpInfoRef CQMOperatorSearch::FindById(long id) const {
  CQMOpInfoRef info = m_shared != nullptr ? m_shared->FindById(id) : nullptr;
  return info == nullptr && m_own != nullptr ? m_own->FindById(id) : info;
}

}  // namespace qumel
