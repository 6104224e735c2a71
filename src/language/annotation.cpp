// Postfix text laid out one item a line, with the readable token of each item beside it.
#include "base/number_text.h"
#include "base/postfix_reader.h"
#include "language/post_fixer.h"

namespace qumel {

namespace {

constexpr char kLineFeed = '\n';
constexpr std::size_t kShortLine = 8;  // its line feed included; such a line takes a second tab

bool IsOperand(char mark) {
  return mark == PostfixMark::kNumber || mark == PostfixMark::kName || mark == PostfixMark::kString;
}

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

void CQMPostFixer::AnnotateExpression(std::string_view postfix, std::string& text) const {
  text = kLineFeed;
  CQMPostfixReader reader(postfix);
  for (std::string_view rest = postfix; !rest.empty();) {
    SQMPostfixItem item;
    reader.Next(item);
    std::string_view const whole = rest.substr(0, rest.size() - reader.GetRest().size());
    rest = reader.GetRest();
    std::size_t const lineBegin = text.size();
    if (item.mark != '\0') text += kLineFeed;
    text += whole;
    if (IsOperand(item.mark)) {
      AppendNote(whole.substr(1), lineBegin, whole, text);
    } else if (item.mark == PostfixMark::kOperator) {
      long const id = ParseLong(item.text.substr(0, item.text.find(PostfixMark::kCount)));
      CQMOpInfoRef const info = m_search.FindById(id);
      if (info != nullptr) AppendNote(info->token, lineBegin, whole, text);
    }
  }
}

}  // namespace qumel
