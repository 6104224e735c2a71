// Error codes by name, and the statuses that steer an evaluation.
#pragma once

namespace qumel {

/** Codes are handed to hosts as numbers; their texts stand beside them in errors.inc. */
namespace Error {
enum EQMError : long {
#define QM_ERROR(name, code, text) name = code,
#include "base/errors.inc"
#undef QM_ERROR
};
}  // namespace Error

/** Statuses of an operation that are no errors of a host. */
namespace Status {
enum EQMStatus : long {
  Done = 0,
  NeedsComplex = 200,  // this real operation has a complex result
  Stop = Error::Stop,  // end the evaluation successfully here
};
}  // namespace Status

/** Codes above this one may be defined by hosts. */
constexpr long kLastLibraryError = 9999;

struct SQMErrorMessage {
  long code;
  char const* text;
};

constexpr SQMErrorMessage kErrorMessages[] = {
#define QM_ERROR(name, code, text) {code, text},
#include "base/errors.inc"
#undef QM_ERROR
};

}  // namespace qumel
