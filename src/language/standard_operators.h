// The standard dialect: which operators the language has, for every context and for each.
#pragma once

#include <memory>

#include "language/operator_list.h"

namespace qumel {

/** Standard operators and keywords, for the list that all contexts share. */
inline void LoadStandardDialect(CQMOperatorList& shared, bool impliedMultiplication) {
  shared.SetStandard(std::make_shared<CQMStandardOperators const>(true, impliedMultiplication));
}
/** What each context has in a list of its own. */
inline void LoadGlobalDialect(CQMOperatorList& own, bool impliedMultiplication) {
  own.SetStandard(std::make_shared<CQMStandardOperators const>(false, impliedMultiplication));
}

}  // namespace qumel
