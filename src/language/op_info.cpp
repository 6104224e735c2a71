// Copying of descriptors.
#include "language/op_info.h"

namespace qumel {

CQMOpInfo& CQMOpInfo::operator=(CQMOpInfo const& source) {
  if (this == &source) return *this;
  token = source.token;
  id = source.id;
  fix = source.fix;
  minOperands = source.minOperands;
  maxOperands = source.maxOperands;
  leftContext = source.leftContext;
  rightContext = source.rightContext;
  precedence = source.precedence;
  rightAssociative = source.rightAssociative;
  userDefined = source.userDefined;
  enclose = source.enclose;
  bodyPending = source.bodyPending;
  returnType = source.returnType;
  definition = source.definition;
  return *this;
}

}  // namespace qumel
