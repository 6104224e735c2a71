// The list of the calling threads, and their wait-for graph.
#include "context/caller.h"

#include <pthread.h>

#include <memory>
#include <mutex>
#include <thread>

#include "context/context_gate.h"
#include "context/process_state.h"

namespace qumel {

constinit SQMCaller g_unknownCaller(&g_queuedMark.gate);
thread_local constinit SQMCaller* t_caller = &g_unknownCaller;

// ---- callers ----

unsigned long OwnThreadId() {
  static_assert(sizeof(pthread_t) <= sizeof(unsigned long));
  return static_cast<unsigned long>(pthread_self());
}

SQMCaller::SQMCaller(unsigned long id) : current(CQMContextGate::None()), threadId(id) {}

void SQMCaller::Renew() {
  used.store(nullptr);
  variable.store(nullptr);
  usesRecord.store(false);
  nested = 0;
  generation = 0;
}

SQMCaller* FirstCaller() { return g_process.firstCaller.load(std::memory_order_acquire); }

SQMCaller& ObtainCaller(unsigned long threadId) {
  if (SQMCaller* const known = FindCaller(); known != nullptr) return *known;
  std::scoped_lock const lock(g_process.callersMutex);
  if (FirstCaller() == nullptr) CQMAsymmetricBarrier::Choose();
  SQMCaller* caller = FirstCaller();
  while (caller != nullptr && caller->threadId != threadId) caller = caller->nextCaller;
  if (caller == nullptr) {
    caller = std::make_unique<SQMCaller>(threadId).release();
    caller->nextCaller = FirstCaller();
    g_process.firstCaller.store(caller, std::memory_order_release);
  } else {
    caller->Renew();
  }
  t_caller = caller;
  return *caller;
}

void WaitUntilUnused(CQMLinkedObject const& variable) {
  CQMAsymmetricBarrier::Heavy();
  for (SQMCaller const* caller = FirstCaller(); caller != nullptr; caller = caller->nextCaller) {
    while (caller->variable.load(CQMAsymmetricBarrier::kLoad) == &variable) std::this_thread::yield();
  }
}

// ---- waits ----

bool CQMWaits::Begin(SQMCaller& caller, std::atomic<SQMCaller*> const& holder) {
  std::scoped_lock const lock(g_process.waitsMutex);
  SQMCaller const* other = holder.load();
  while (other != nullptr) {
    if (other == &caller) return false;
    other = other->awaited != nullptr ? other->awaited->load() : nullptr;
  }
  caller.awaited = &holder;
  return true;
}

void CQMWaits::End(SQMCaller& caller) {
  std::scoped_lock const lock(g_process.waitsMutex);
  caller.awaited = nullptr;
}

void CQMWaits::HandOver(std::atomic<SQMCaller*>& holder, SQMCaller& caller) {
  std::scoped_lock const lock(g_process.waitsMutex);
  holder.store(&caller);
  caller.awaited = nullptr;
}

}  // namespace qumel
