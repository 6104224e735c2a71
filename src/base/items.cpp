// Item lists: keeping what they were read from, and writing them as postfix text.
#include "base/items.h"

#include <algorithm>
#include <limits>
#include <new>

#include "base/number_base.h"
#include "base/number_text.h"

namespace qumel {

CQMItemList CQMItemList::Kept() const {
  CQMItemList kept;
  kept.m_items = m_items;
  std::size_t const size = m_text.size() + m_pool.size();
  kept.m_ownText = std::make_unique_for_overwrite<char[]>(size);
  std::ranges::copy(m_pool, std::ranges::copy(m_text, kept.m_ownText.get()).out);
  kept.m_text = {kept.m_ownText.get(), size};
  return kept;
}

void CQMItemList::Begin(std::string_view text) {
  m_items.clear();
  m_pool.clear();
  m_ownText.reset();
  m_text = text;
  // characters are kept at most once beside the text
  if (text.size() > std::numeric_limits<std::uint32_t>::max() / 2) throw std::bad_alloc();
}

SQMStretch CQMItemList::PooledSince(std::size_t poolSize) const {
  return {static_cast<std::uint32_t>(m_text.size() + poolSize),
          static_cast<std::uint32_t>(m_pool.size() - poolSize)};
}

void CQMItemList::AppendPostfix(SQMItem const& item, std::string& postfix) const {
  postfix += static_cast<char>(item.kind);
  switch (item.kind) {
    case EQMItem::Number: AppendLiteral(Written(item), postfix); break;
    case EQMItem::Name: postfix += Written(item); break;
    case EQMItem::String:
      postfix += DecimalText(static_cast<long>(item.characters.length));
      postfix += PostfixMark::kLength;
      postfix += Characters(item);
      break;
    case EQMItem::Operator:
      postfix += DecimalText(item.id);
      postfix += PostfixMark::kCount;
      postfix += DecimalText(item.operandCount);
      break;
    case EQMItem::MarkedOperator: postfix += DecimalText(item.id); break;
    case EQMItem::End: break;
  }
}

void CQMItemList::AppendPostfix(Items items, std::string& postfix) const {
  for (SQMItem const& item : items) AppendPostfix(item, postfix);
}

std::string CQMItemList::GetPostfix() const {
  std::string postfix;
  AppendPostfix(m_items, postfix);
  return postfix;
}

}  // namespace qumel
