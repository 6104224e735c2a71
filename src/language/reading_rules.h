// How the texts of a context are read.
#pragma once

namespace qumel {

/** How expressions are read; fixed when a context is initialised. */
struct SQMReadingRules {
  bool caseSensitive = true;  // carried; names and operators always compare with case
  bool hierarchical = true;   // false: every operator binds equally, left to right
  bool impliedMultiplication = true;
  char radixMark = '.';
  char quoteMark = '"';
  char listSeparator = ',';       // parts operands and parameters; ',' parts operands in any case
  char statementSeparator = ';';  // carried; the tokenizer always reads ';' and ':'
};

}  // namespace qumel
