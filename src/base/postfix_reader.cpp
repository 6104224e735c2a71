// From postfix text to items.
#include "base/postfix_reader.h"

#include <algorithm>
#include <limits>

#include "base/number_base.h"
#include "base/number_text.h"

namespace qumel {

CQMItemList ReadPostfix(std::string_view postfix) {
  CQMItemList items;
  items.Begin(postfix, CQMItemList::EQMSource::Postfix);
  CQMPostfixReader reader(postfix);
  for (SQMPostfixItem read; reader.Next(read);) {
    SQMItem& item = items.Add(static_cast<EQMItem>(read.mark), items.PlaceOf(read.text));
    switch (item.kind) {
      case EQMItem::Number: {
        SQMBasedNumber const literal = LiteralToNumber(read.text);
        item.isInteger = literal.isInteger;
        item.number = literal.value;
        break;
      }
      case EQMItem::String: item.characters = item.place; break;
      case EQMItem::Operator:
      case EQMItem::MarkedOperator: {
        std::size_t const point = read.text.find(PostfixMark::kCount);
        item.id = ParseLong(read.text.substr(0, point));
        item.operandCount = SQMItem::kNoCount;
        if (point == std::string_view::npos) break;
        constexpr long kMost = std::numeric_limits<std::int32_t>::max();
        item.operandCount =
            static_cast<std::int32_t>(std::clamp(ParseLong(read.text.substr(point + 1)), 0L, kMost));
        break;
      }
      default: break;
    }
  }
  return items;
}

}  // namespace qumel
