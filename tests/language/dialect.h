// The operator lists and the converter of a context, without the context.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "language/operator_list.h"
#include "language/post_fixer.h"
#include "language/standard_operators.h"

namespace qumel {

struct SQMHostOperator {
  char const* token;
  EQMFix fix;
  std::int32_t operands;
  std::uint32_t precedence = Precedence::Function;
};

class CQMDialect {
 public:
  explicit CQMDialect(SQMReadingRules const& rules = {}) : CQMDialect(rules, rules.impliedMultiplication) {}
  /** The shared list is that of the context that was there first. */
  CQMDialect(SQMReadingRules const& rules, bool firstMultiplies) : m_rules(rules) {
    LoadStandardDialect(shared, firstMultiplies);
    LoadGlobalDialect(own, rules.impliedMultiplication);
    fixer.SetOperatorLists(&shared, &own);
    fixer.SetReadingRules(rules);
  }

  long Define(CQMOperatorList& list, SQMHostOperator const& op) {
    auto info = std::make_unique<CQMOpInfo>(op.token);
    info->id = m_nextId++;
    info->fix = op.fix;
    info->minOperands = info->maxOperands = op.operands;
    info->precedence = op.precedence;
    info->rightAssociative = op.fix == EQMFix::Prefix;
    info->userDefined = true;
    long const id = info->id;
    list.Load(std::move(info));
    return id;
  }

  long Convert(std::string_view text, std::string& postfix) {
    CQMItemList items;
    long const code = fixer.ConvertExpression(text, items);
    postfix = items.GetPostfix();
    return code;
  }
  /** The postfix text, or the decimal code of an error. */
  std::string Convert(std::string_view text) {
    std::string postfix;
    long const code = Convert(text, postfix);
    return code == Error::None ? postfix : std::to_string(code);
  }

  CQMOperatorList shared{true};
  CQMOperatorList own{false};
  CQMPostFixer fixer;

 private:
  SQMReadingRules m_rules;
  long m_nextId = 10000;
};

}  // namespace qumel
