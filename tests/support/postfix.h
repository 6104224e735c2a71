// Items written as postfix text, for tests that come without a converter.
#pragma once

#include <string>
#include <string_view>

#include "base/items.h"
#include "base/number_base.h"
#include "base/number_text.h"

namespace qumel {

/** The items of well-formed postfix text. An operator without a count takes nothing. */
inline CQMItemList ReadPostfix(std::string_view postfix) {
  auto const take = [&postfix](std::size_t length) {
    std::string_view const taken = postfix.substr(0, length);
    postfix.remove_prefix(taken.size());
    return taken;
  };
  std::string infix(postfix.size() * 2, ' ');  // each literal grows by one character at most
  CQMItemList items;
  items.Begin(infix);
  for (std::uint32_t at = 0; !postfix.empty();) {
    auto const kind = static_cast<EQMItem>(take(1).front());
    std::string written;
    if (kind == EQMItem::String) {
      auto const length = static_cast<std::size_t>(ParseLong(take(postfix.find(PostfixMark::kLength))));
      take(1);
      written = take(length);
    } else if (kind != EQMItem::End) {
      written = take(postfix.find_first_of("#@$!&;"));
    }
    if (kind == EQMItem::Number) {
      bool const isDecimal = written.front() == BaseLetter::kDecimal;
      std::string const digits = written.substr(written.find_first_not_of('0', 1) == 2 ? 2 : 1);
      written = isDecimal ? written.substr(1) : std::string("0") + written.front() + digits;
    }
    SQMItem& item = items.Add(kind, {at, static_cast<std::uint32_t>(written.size())});
    switch (kind) {
      case EQMItem::Number: {
        auto const [value, isInteger] = ReadLiteral(written);
        item.number = value;
        item.isInteger = isInteger;
        break;
      }
      case EQMItem::String: item.characters = item.place; break;
      case EQMItem::Operator:
      case EQMItem::MarkedOperator: {
        std::size_t const point = written.find(PostfixMark::kCount);
        item.id = ParseLong(written);
        if (point != std::string::npos)
          item.operandCount = static_cast<std::int32_t>(ParseLong(written.substr(point + 1)));
        break;
      }
      default: break;
    }
    infix.replace(at, written.size(), written);
    at += static_cast<std::uint32_t>(written.size());
  }
  return items.Kept();
}

}  // namespace qumel
