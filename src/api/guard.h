// The way in for exported functions: it finds what the call works on and lets no exception out.
#pragma once

#include <type_traits>

#include "context/context_use.h"
#include "context/library.h"

namespace qumel {

/** Answers failure for whatever call throws. */
template <class Value, class Call>
Value Guarded(std::type_identity_t<Value> failure, Call call) noexcept {
  try {
    return call();
  } catch (...) {
    return failure;
  }
}

/** The value of call on the context that use names; failure without one. Whatever is thrown becomes
 * OutOfMemory. */
template <class Value, class Call>
Value OnUsedContext(CQMContextUse const& use, Value failure, Call& call) {
  CQMExecutor* const context = use.GetExecutor();
  if (context == nullptr) return failure;
  try {
    Value const value = call(*context);
    // a text of a context that a callback destroyed is about to go
    if (std::is_pointer_v<Value> && context->IsRetired()) return failure;
    return value;
  } catch (...) {
    context->SetLastError(Error::OutOfMemory);
    return failure;
  }
}

/** Runs call on the calling thread's current context, which is found or made where there is none. */
template <class Value, class Call>
Value OnContext(Value failure, Call call) noexcept {
  CQMContextUse const use;
  return OnUsedContext(use, failure, call);
}

/** As above, for functions without a value. */
template <class Call>
void OnContext(Call call) noexcept {
  OnContext(false, [&call](CQMExecutor& context) {
    call(context);
    return true;
  });
}

/** Runs call on the calling thread's record, in its current context if it has one. */
template <class Value, class Call>
Value OnThread(Value failure, Call call) noexcept {
  CQMRecordUse const record;
  CQMContextUse const use(CQMContextUse::EQMNeed::CurrentIfAny);
  if (record.GetRecord() == nullptr || use.IsRefused()) return failure;
  return Guarded<Value>(failure, [&] { return static_cast<Value>(call(*record.GetRecord())); });
}

}  // namespace qumel
