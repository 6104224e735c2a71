// Statements of postfix text, and the operators that their items name.
#include "language/reversion_items.h"

#include <algorithm>
#include <limits>

#include "base/errors.h"
#include "base/number_text.h"

namespace qumel {

long CQMReversionReader::ReadStatement() {
  m_items.clear();
  m_isComplete = false;
  for (SQMPostfixItem item; !m_isComplete && m_reader.Next(item);) {
    if (item.mark == PostfixMark::kEnd) {
      m_isComplete = true;
    } else if (long const code = Add(item); code != Error::None) {
      return code;
    }
  }
  return Error::None;
}

long CQMReversionReader::Add(SQMPostfixItem const& item) {
  switch (item.mark) {
    case PostfixMark::kNumber:
    case PostfixMark::kName:
    case PostfixMark::kString: m_items.push_back({item}); return Error::None;
    case PostfixMark::kOperator:
    case PostfixMark::kMarkedOperator: break;
    default: return Error::UnknownToken;
  }
  std::size_t const point = item.text.find(PostfixMark::kCount);
  SQMReversionOperator const* const op = FindOperator(ParseLong(item.text.substr(0, point)));
  if (op == nullptr) return Error::UnknownOperator;
  long const count =
      point == std::string_view::npos ? op->info->minOperands : ParseLong(item.text.substr(point + 1));
  constexpr long kMost = std::numeric_limits<std::int32_t>::max();
  m_items.push_back({item, op, static_cast<std::int32_t>(std::clamp(count, 0L, kMost))});
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
