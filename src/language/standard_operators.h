// The standard dialect: which operators the language has, and their loading into operator lists.
#pragma once

namespace qumel {

class CQMOperatorList;

/** Standard operators and keywords, for the list that all contexts share; freezes it. */
void LoadStandardDialect(CQMOperatorList& shared, bool impliedMultiplication);
/** What each context has in a list of its own; freezes it. */
void LoadLocalDialect(CQMOperatorList& own, bool impliedMultiplication);

}  // namespace qumel
