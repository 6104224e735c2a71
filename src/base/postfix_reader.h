// Splits postfix text into its items, and reads them.
#pragma once

#include <string_view>

#include "base/items.h"

namespace qumel {

struct SQMPostfixItem {
  char mark = '\0';
  std::string_view text;  // behind the mark; of a string, its characters alone
};

class CQMPostfixReader {
 public:
  explicit CQMPostfixReader(std::string_view text) : m_rest(text) {}

  /** False at the end. Text that begins with no mark makes an item of mark '\0'. */
  bool Next(SQMPostfixItem& item) {
    if (m_rest.empty()) return false;
    item.mark = m_rest.front();
    if (PostfixMark::kAll.find(item.mark) == std::string_view::npos) {
      item = {'\0', Take(m_rest.find_first_of(PostfixMark::kAll))};
      return true;
    }
    m_rest.remove_prefix(1);
    if (item.mark == PostfixMark::kString) {
      std::size_t length = 0;
      std::size_t digits = 0;
      while (digits < m_rest.size() && m_rest[digits] >= '0' && m_rest[digits] <= '9' &&
             length <= m_rest.size()) {
        length = length * 10 + static_cast<std::size_t>(m_rest[digits++] - '0');
      }
      if (digits < m_rest.size() && m_rest[digits] == PostfixMark::kLength) ++digits;
      Take(digits);
      item.text = Take(length);
    } else {
      item.text =
          item.mark == PostfixMark::kEnd ? std::string_view() : Take(m_rest.find_first_of(PostfixMark::kAll));
    }
    return true;
  }

  /** What was not read yet. */
  std::string_view GetRest() const { return m_rest; }

 private:
  std::string_view Take(std::size_t length) {
    std::string_view const taken = m_rest.substr(0, length);
    m_rest.remove_prefix(taken.size());
    return taken;
  }

  std::string_view m_rest;
};

/** The items of postfix, which must outlive them. */
CQMItemList ReadPostfix(std::string_view postfix);

}  // namespace qumel
