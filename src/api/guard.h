// Entry guard of the exported functions: finds what a call works on, keeps that alive until the call returns,
// and turns exceptions into failure values.
#pragma once

#include <type_traits>

#include "context/context_use.h"
#include "context/library.h"

namespace qumel {

/** The value of call, or failure if it throws. */
template <class Value, class Call>
Value Guarded(std::type_identity_t<Value> failure, Call call) noexcept {
  try {
    return call();
  } catch (...) {
    return failure;
  }
}

/** Whether a call may run functions of the host. Calls of that kind nest, to a limited depth. */
enum class EQMHost : bool { IsNotCalled, MayBeCalled };

// ---- calls in the current context ----

/** The value of call on the context that use has entered; failure without one. Whatever is thrown becomes
 * OutOfMemory. */
template <EQMHost host = EQMHost::IsNotCalled, class Value, class Call>
Value OnUsedContext(CQMContextUse const& use, Value failure, Call const& call) {
  CQMExecutor* const context = use.GetExecutor();
  if (context == nullptr) return failure;
  if (host == EQMHost::MayBeCalled && CQMContextUse::IsTooDeep()) {
    context->SetLastError(Error::OutOfMemory);
    return failure;
  }
  try {
    Value const value = call(*context);
    // a callback may have destroyed the context, and with it the text
    if (std::is_pointer_v<Value> && context->IsRetired()) return failure;
    return value;
  } catch (...) {
    context->SetLastError(Error::OutOfMemory);
    return failure;
  }
}

/** The value of call on the context that use has entered. */
template <class Value, class Call, class... Arguments>
Value OnOwnContext(CQMOwnerUse const& use, Value failure, Call const& call, Arguments... arguments) {
  try {
    Value const value = call(*use.GetGate()->GetContext(), arguments...);
    if (std::is_pointer_v<Value> && use.FindContext().IsRetired()) return failure;
    return value;
  } catch (...) {
    use.FindContext().SetLastError(Error::OutOfMemory);
    return failure;
  }
}

/** The slow path of OnContext. */
template <EQMHost host, class Value, class Call, class... Arguments>
[[gnu::noinline, gnu::cold]] Value OnContextSlowly(CQMContextGate* tried, Value failure, Call call,
                                                   Arguments... arguments) noexcept {
  CQMContextUse const use(CQMContextUse::EQMNeed::Current, tried);
  return OnUsedContext<host>(use, failure, [&](CQMExecutor& context) { return call(context, arguments...); });
}

/** Runs call, with arguments, on the calling thread's current context; a thread without one is given the
 * default context. Captured values, unlike arguments, are stored in memory for the slow path before the fast
 * one is tried. */
template <EQMHost host = EQMHost::IsNotCalled, class Value, class Call, class... Arguments>
Value OnContext(Value failure, Call call, Arguments... arguments) noexcept {
  CQMOwnerUse use;
  if (!use.Enter()) [[unlikely]]
    return OnContextSlowly<host>(use.GetGate(), failure, call, arguments...);
  return use.Leave(OnOwnContext(use, failure, call, arguments...));
}

/** As above, for functions without a value. */
template <class Call>
void OnContext(Call call) noexcept {
  OnContext(false, [&call](CQMExecutor& context) {
    call(context);
    return true;
  });
}

// ---- calls on the record of the calling thread ----

/** Runs call on the calling thread's record, in its current context if it has one. */
template <class Call>
void OnThread(Call call) noexcept {
  CQMRecordUse const record;
  CQMContextUse const use(CQMContextUse::EQMNeed::CurrentIfAny);
  if (record.GetRecord() != nullptr && !use.IsRefused()) call(*record.GetRecord());
}

/** The slow path of OnSettings. */
template <class Value, class Call>
[[gnu::noinline, gnu::cold]] Value OnSettingsSlowly(CQMContextGate* tried, Value missing,
                                                    Call call) noexcept {
  if (tried != nullptr) tried->Withdraw(*t_caller);  // finding the record may have to wait
  CQMRecordUse const record;
  CQMContextUse const use(CQMContextUse::EQMNeed::CurrentIfAny);
  bool const isMissing = record.GetRecord() == nullptr || use.IsRefused();
  return isMissing ? missing : call(record.GetRecord()->GetSettings());
}

/** The value of call for the settings of the calling thread's current context, or of its record when there is
 * none; missing when it can have no record. */
template <class Value, class Call>
Value OnSettings(Value missing, Call call) noexcept {
  CQMOwnerUse use;
  if (!use.Enter()) [[unlikely]]
    return OnSettingsSlowly(use.GetGate(), missing, call);
  return use.Leave(call(use.GetGate()->GetContext()->GetSettings()));
}

}  // namespace qumel
