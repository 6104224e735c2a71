// What running an operator defined by a host needs to know: parameters, result type, body or callback.
#pragma once

#include <string>
#include <vector>

#include "base/data_type.h"

namespace qumel {

/** Called with the handle of the running operator; returns the status of the operation. */
using OperatorCallback = int (*)(unsigned long long handle);

struct SQMOperatorParameter {
  std::string name;  // empty when the host gave none
  EQMDataType type;
};

struct SQMOperatorDefinition {
  EQMDataType returnType = EQMDataType::Undefined;
  std::vector<SQMOperatorParameter> parameters;
  bool isRecursive = false;  // declared without a body and given one later: compiled afresh at every run
  bool hasBody = false;
  std::string body;  // postfix text
  OperatorCallback callback = nullptr;
};

}  // namespace qumel
