// The converter as contexts see it: conversion and the search for operators.
#include "language/post_fixer.h"

#include "base/errors.h"
#include "language/characters.h"
#include "language/conversion.h"

namespace qumel {

CQMPostFixer::CQMPostFixer() : m_conversion(std::make_unique<CQMConversion>(m_rules, m_search)) {}

CQMPostFixer::~CQMPostFixer() = default;

void CQMPostFixer::SetOperatorLists(CQMOperatorList const* shared, CQMOperatorList const* own) {
  m_search.SetLists(shared, own);
}

long CQMPostFixer::ConvertExpression(std::string_view text, CQMItemList& items) {
  m_parseIndex = 0;
  items.Begin(text);
  std::string_view const trimmed = TrimSpace(text);
  if (trimmed.empty()) return Error::BadExpression;
  long const code = m_conversion->Run(trimmed, items);
  m_parseIndex = static_cast<long>(m_conversion->GetPosition());
  return code;
}

bool CQMPostFixer::TokenIsOperator(std::string_view token) const {
  HeldOperators held;
  return m_search.Find(token, held).IsOperator();
}

bool CQMPostFixer::FindOperatorByID(long id, CQMOpInfo& found) const {
  return Accept(m_search.FindById(id).get(), found);
}

bool CQMPostFixer::FindOperatorByToken(std::string_view token, CQMOpInfo& found) const {
  return Accept(m_search.FindFirst(token).get(), found);
}

long CQMPostFixer::FindOperator(std::string_view token, EQMItemClass previous, EQMItemClass next,
                                CQMOpInfo& found) const {
  HeldOperators held;
  CQMOpInfo const* const chosen = CQMOperatorSearch::Choose(m_search.Find(token, held), previous, next);
  return Accept(chosen, found) ? Error::None : Error::UnknownOperator;
}

bool CQMPostFixer::Accept(CQMOpInfo const* found, CQMOpInfo& out) const {
  if (found == nullptr) return false;
  out = *found;
  out.precedence = PrecedenceOf(*found, m_rules.hierarchical);
  return true;
}

}  // namespace qumel
