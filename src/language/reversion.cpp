// Postfix text turned back into infix text, statement by statement.
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
  CQMStatementWriter(SQMReadingRules const& rules, CQMOperatorSearch const& search)
      : m_rules(rules), m_conversion(rules, search), m_writer(rules) {}

  /** items are those of postfix. */
  std::string Write(std::span<SQMReversionItem const> items, std::string_view postfix) {
    using EQMStyle = CQMFragmentReversion::EQMStyle;
    std::string text = TextOf(items, EQMStyle::Natural);
    if (GoesBack(text, postfix)) return text;
    std::string flat = TextOf(items, EQMStyle::Flat);
    // what no text converts to is shown as nearly as can be
    return GoesBack(flat, postfix) ? flat : text;
  }

 private:
  std::string TextOf(std::span<SQMReversionItem const> items, CQMFragmentReversion::EQMStyle style) {
    m_writer.Clear();
    CQMFragmentReversion(m_rules, items, style).Write(m_writer);
    return m_writer.GetText();
  }

  bool GoesBack(std::string text, std::string_view postfix) {
    text += kStatementEnd;
    m_items.Begin(text, CQMItemList::EQMSource::Infix);
    if (m_conversion.Run(text, m_items) != Error::None) return false;
    m_converted.clear();
    m_items.AppendPostfix(m_converted);
    return m_converted == postfix;
  }

  SQMReadingRules const& m_rules;
  CQMConversion m_conversion;
  CQMInfixWriter m_writer;
  CQMItemList m_items;
  std::string m_converted;
};

}  // namespace

long CQMPostFixer::RevertExpression(std::string_view postfix, std::string& infix, char quoteMark) const {
  SQMReadingRules rules = m_rules;
  rules.quoteMark = quoteMark;
  CQMReversionReader reader(rules, m_search, postfix);
  CQMStatementWriter writer(rules, m_search);
  infix = postfix.empty() ? kEmptyText : std::string_view();
  while (!reader.IsAtEnd()) {
    std::string_view const rest = reader.GetRest();
    if (long const code = reader.ReadStatement(); code != Error::None) return code;
    std::string const text =
        writer.Write(reader.GetItems(), rest.substr(0, rest.size() - reader.GetRest().size()));
    infix += text;
    bool const isLast = reader.IsAtEnd();
    if (!isLast || text.empty()) infix += kStatementEnd;
    if (!isLast) infix += ' ';
  }
  return Error::None;
}

}  // namespace qumel
