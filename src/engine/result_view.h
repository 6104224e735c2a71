// The result of a run, as those see it who store it or write it.
#pragma once

#include <string_view>

#include "base/data_type.h"

namespace qumel {

/** What a run has come to, by its type: Undefined where there is no value. */
struct SQMResultView {
  EQMDataType type = EQMDataType::Undefined;
  bool exists = false;  // whether there is a result at all, if only one without a value
  bool hasValue = false;
  bool boolean = false;
  double real = 0.0;
  double imaginary = 0.0;
  std::string_view text{};
};

}  // namespace qumel
