// Items as postfix text, laid out one a line with the readable token of each beside it.
#include "language/post_fixer.h"

namespace qumel {

namespace {

constexpr char kLineFeed = '\n';
constexpr std::size_t kShortLine = 8;  // its line feed included; such a line takes a second tab

/** Appends note behind the item that begins the last line, which is at lineBegin unless item itself holds
 * lines. */
void AppendNote(std::string_view note, std::size_t lineBegin, std::string_view item, std::string& text) {
  if (std::size_t const inner = item.rfind(kLineFeed); inner != std::string_view::npos) {
    lineBegin = text.size() - (item.size() - inner);
  }
  text += text.size() - lineBegin <= kShortLine ? "\t\t" : "\t";
  text += note;
}

}  // namespace

void CQMPostFixer::AnnotateExpression(CQMItemList const& items, std::string& text) const {
  text = kLineFeed;
  std::string whole;
  for (SQMItem const& item : items.GetItems()) {
    whole.clear();
    items.AppendPostfix(item, whole);
    std::size_t const lineBegin = text.size();
    text += kLineFeed;
    text += whole;
    if (item.kind == EQMItem::Operator) {
      CQMOpInfoRef const info = m_search.FindById(item.id);
      if (info != nullptr) AppendNote(info->token, lineBegin, whole, text);
    } else if (item.kind != EQMItem::MarkedOperator && item.kind != EQMItem::End) {
      AppendNote(std::string_view(whole).substr(1), lineBegin, whole, text);
    }
  }
}

}  // namespace qumel
