// Items turned back into infix text, statement by statement.
#include "base/errors.h"
#include "language/conversion.h"
#include "language/fragment_reversion.h"
#include "language/infix_writer.h"
#include "language/post_fixer.h"
#include "language/reversion_items.h"

namespace qumel {

namespace {

constexpr std::string_view kEmptyText = "//";  // a note converts to nothing
constexpr char kStatementEnd = ';';

/** Writes the items of a statement, and puts on trial whether the converter makes the same items of that. */
class CQMStatementWriter {
 public:
  CQMStatementWriter(SQMReadingRules const& rules, CQMOperatorSearch const& search, CQMItemList const& source)
      : m_rules(rules), m_source(source), m_conversion(rules, search), m_writer(rules, source) {}

  /** items are those of statement. */
  std::string Write(std::span<SQMReversionItem const> items, CQMItemList::Items statement) {
    using EQMStyle = CQMFragmentReversion::EQMStyle;
    m_postfix.clear();
    m_source.AppendPostfix(statement, m_postfix);
    std::string text = TextOf(items, EQMStyle::Natural);
    if (GoesBack(text)) return text;
    std::string flat = TextOf(items, EQMStyle::Flat);
    // what no text converts to is shown as nearly as can be
    return GoesBack(flat) ? flat : text;
  }

 private:
  std::string TextOf(std::span<SQMReversionItem const> items, CQMFragmentReversion::EQMStyle style) {
    m_writer.Clear();
    CQMFragmentReversion(m_rules, items, style).Write(m_writer);
    return m_writer.GetText();
  }

  bool GoesBack(std::string text) {
    text += kStatementEnd;
    m_items.Begin(text);
    return m_conversion.Run(text, m_items) == Error::None && m_items.GetPostfix() == m_postfix;
  }

  SQMReadingRules const& m_rules;
  CQMItemList const& m_source;
  CQMConversion m_conversion;
  CQMInfixWriter m_writer;
  CQMItemList m_items;
  std::string m_postfix;
};

}  // namespace

long CQMPostFixer::RevertExpression(CQMItemList const& items, std::string& infix, char quoteMark) const {
  SQMReadingRules rules = m_rules;
  rules.quoteMark = quoteMark;
  CQMReversionReader reader(rules, m_search, items.GetItems());
  CQMStatementWriter writer(rules, m_search, items);
  infix = reader.IsAtEnd() ? kEmptyText : std::string_view();
  while (!reader.IsAtEnd()) {
    if (long const code = reader.ReadStatement(); code != Error::None) return code;
    std::string const text = writer.Write(reader.GetItems(), reader.GetStatement());
    infix += text;
    bool const isLast = reader.IsAtEnd();
    if (!isLast || text.empty()) infix += kStatementEnd;
    if (!isLast) infix += ' ';
  }
  return Error::None;
}

}  // namespace qumel
