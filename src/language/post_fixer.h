// The converter: infix text to items, and items shown or turned back into infix.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/items.h"
#include "language/op_info.h"
#include "language/operator_search.h"
#include "language/reading_rules.h"
#include "objects/object.h"

namespace qumel {

class CQMConversion;
class CQMOperatorList;

/** Postfix text is a sequence of items without separators: "#" number, "@" name, "$" length ":" string, "!"
 * operator id
 *  "." operand count, "&" id of a marked operator, ";" end of statement. One conversion at a time. */
class CQMPostFixer : public CQMObject {
 public:
  CQMPostFixer();
  ~CQMPostFixer() override;

  void SetOperatorLists(CQMOperatorList const* shared, CQMOperatorList const* own);
  void SetReadingRules(SQMReadingRules const& rules) { m_rules = rules; }
  SQMReadingRules const& GetReadingRules() const { return m_rules; }

  /** 0 or an error code. On failure there are no items; GetParseIndex tells where the tokenizer stood,
   * counted from the first character after leading white space. text must outlive the items. */
  long ConvertExpression(std::string_view text, CQMItemList& items);
  long GetParseIndex() const { return m_parseIndex; }

  /** One item a line with the readable token beside it. Cannot fail. */
  void AnnotateExpression(CQMItemList const& items, std::string& text) const;
  /** Infix text that converts back to the same items; 0 or an error code. */
  long RevertExpression(CQMItemList const& items, std::string& infix, char quoteMark) const;

  bool TokenIsOperator(std::string_view token) const;
  /** By id or token, in the shared list first and then in the context's own; false when nothing is found.
   * Precedence is that of the reading rules. */
  bool FindOperatorByID(long id, CQMOpInfo& found) const;
  bool FindOperatorByToken(std::string_view token, CQMOpInfo& found) const;
  /** The first entry of token whose masks fit its neighbours, in the same order of lists; UnknownOperator for
   * none. */
  long FindOperator(std::string_view token, EQMItemClass previous, EQMItemClass next, CQMOpInfo& found) const;

 private:
  bool Accept(CQMOpInfo const* found, CQMOpInfo& out) const;

  SQMReadingRules m_rules;
  CQMOperatorSearch m_search;
  std::unique_ptr<CQMConversion> m_conversion;  // kept, so that its buffers are
  long m_parseIndex = 0;
};

}  // namespace qumel
