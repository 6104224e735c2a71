// Gates: their owners, the queue of the threads that wait to enter, and the end of their contexts.
#include "context/context_gate.h"

#include <algorithm>
#include <utility>

#include "context/executor.h"
#include "context/process_state.h"

namespace qumel {

constexpr CQMContextGate::CQMContextGate(EQMKind kind) : m_isMark(kind == EQMKind::Mark) {}

constexpr UQMMark::UQMMark() : gate(CQMContextGate::EQMKind::Mark) {}
constinit UQMMark g_noneMark, g_lostMark, g_queuedMark;

CQMContextGate::~CQMContextGate() = default;

// ---- the contexts that a gate serves, one after the other ----

CQMContextGate& CQMContextGate::Open(CQMExecutor& context) {
  CQMContextGate* gate = nullptr;
  {
    std::scoped_lock const lock(g_process.freeGatesMutex);
    gate = g_process.firstFreeGate;
    if (gate != nullptr) g_process.firstFreeGate = gate->m_nextFree;
  }
  if (gate == nullptr) gate = std::make_unique<CQMContextGate>(EQMKind::Gate).release();
  std::scoped_lock const lock(gate->m_mutex);
  gate->m_context.store(&context);
  gate->m_isOpen = true;
  gate->m_lastCaller = nullptr;
  gate->m_turns = 0;
  gate->m_patience = 1;
  return *gate;
}

void CQMContextGate::Recycle() {
  {
    std::scoped_lock const lock(m_mutex);
    m_isOpen = false;
    m_owner.store(nullptr);
    m_fencedOwner.store(nullptr);
    m_context.store(nullptr);
    std::apply([](auto&... caches) { (caches.Clear(), ...); }, m_found);
  }
  std::scoped_lock const lock(g_process.freeGatesMutex);
  m_nextFree = std::exchange(g_process.firstFreeGate, this);
}

// ---- entering and leaving ----

bool CQMContextGate::EnterFenced(SQMCaller& caller) {
  if (CQMAsymmetricBarrier::NeedsFences() && !m_isMark) {
    CQMAsymmetricBarrier::Fence();
    if (m_fencedOwner.load(CQMAsymmetricBarrier::kLoad) == &caller) return true;
  }
  caller.used.store(nullptr, CQMAsymmetricBarrier::kStore);
  return false;
}

void CQMContextGate::LeaveFenced(SQMCaller& caller) {
  if (CQMAsymmetricBarrier::NeedsFences()) {
    CQMAsymmetricBarrier::Fence();
    if (m_fencedOwner.load(CQMAsymmetricBarrier::kLoad) == &caller) return;
  }
  Settle(caller);
}

void CQMContextGate::Settle(SQMCaller& caller) {
  if (m_isMark) return;
  std::unique_ptr<CQMExecutor> unused;  // destroyed after the lock is released
  std::scoped_lock const lock(m_mutex);
  if (IsHeldBy(caller)) unused = PassOn();
}

CQMContextGate::EQMEntry CQMContextGate::Acquire(SQMCaller& caller) {
  if (m_isMark) return EQMEntry::Closed;
  std::unique_ptr<CQMExecutor> unused;  // destroyed after the lock is released
  std::unique_lock lock(m_mutex);
  if (IsHeldBy(caller)) unused = PassOn();  // as in Settle
  if (!m_isOpen) return EQMEntry::Closed;
  if (SQMCaller* const owner = OwnerNow().load(); owner != nullptr && owner != &caller) {
    DispossessOwner();
    m_patience = std::min(2 * m_patience, kMostPatience);
  }
  if (m_holder.load() != nullptr) return Wait(caller, lock);

  m_turns = m_lastCaller == &caller ? m_turns + 1 : 1;
  m_lastCaller = &caller;
  if (m_turns >= m_patience && caller.used.load() == nullptr) {
    m_turns = m_patience;
    OwnerNow().store(&caller);
    caller.used.store(this);
    return EQMEntry::AsOwner;
  }
  m_holder.store(&caller);
  return EQMEntry::Queued;
}

CQMContextGate::EQMEntry CQMContextGate::Wait(SQMCaller& caller, std::unique_lock<std::mutex>& lock) {
  if (!CQMWaits::Begin(caller, m_holder)) return EQMEntry::Refused;
  caller.wait.store(SQMCaller::Waiting);
  caller.nextWaiter = nullptr;
  (m_lastWaiter != nullptr ? m_lastWaiter->nextWaiter : m_firstWaiter) = &caller;
  m_lastWaiter = &caller;
  lock.unlock();
  caller.wait.wait(SQMCaller::Waiting);
  return caller.wait.load() == SQMCaller::Granted ? EQMEntry::Queued : EQMEntry::Closed;
}

void CQMContextGate::Release() {
  std::unique_ptr<CQMExecutor> unused;  // destroyed after the lock is released
  std::scoped_lock const lock(m_mutex);
  unused = PassOn();
}

/** Nobody is the owner afterwards. A former owner that may be inside is the holder until it has left. */
void CQMContextGate::DispossessOwner() {
  SQMCaller* const owner = OwnerNow().load();
  OwnerNow().store(nullptr, CQMAsymmetricBarrier::kStore);
  if (owner != t_caller) CQMAsymmetricBarrier::Heavy();
  if (owner->used.load(CQMAsymmetricBarrier::kLoad) == this) m_holder.store(owner);
}

/** The holder has left: the first waiting thread becomes the next one. */
std::unique_ptr<CQMExecutor> CQMContextGate::PassOn() {
  if (SQMCaller* const next = RemoveFirstWaiter(); next != nullptr) {
    m_lastCaller = next;
    m_turns = 0;
    CQMWaits::HandOver(m_holder, *next);
    next->wait.store(SQMCaller::Granted);
    next->wait.notify_one();
    return nullptr;
  }
  m_holder.store(nullptr);
  return TakeUnused();
}

SQMCaller* CQMContextGate::RemoveFirstWaiter() {
  SQMCaller* const first = m_firstWaiter;
  if (first == nullptr) return nullptr;
  m_firstWaiter = first->nextWaiter;
  if (m_firstWaiter == nullptr) m_lastWaiter = nullptr;
  return first;
}

int CQMContextGate::CountWaiters() {
  std::scoped_lock const lock(m_mutex);
  int count = 0;
  for (SQMCaller const* waiter = m_firstWaiter; waiter != nullptr; waiter = waiter->nextWaiter) ++count;
  return count;
}

// ---- keeping and closing ----

CQMExecutor* CQMContextGate::Keep() {
  if (m_isMark) return nullptr;
  std::scoped_lock const lock(m_mutex);
  if (!m_isOpen) return nullptr;
  ++m_keepers;
  return GetContext();
}

void CQMContextGate::LetGo() {
  std::unique_ptr<CQMExecutor> unused;  // destroyed after the lock is released
  std::scoped_lock const lock(m_mutex);
  --m_keepers;
  unused = TakeUnused();
}

std::unique_ptr<CQMExecutor> CQMContextGate::Close(std::unique_ptr<CQMExecutor> context) {
  std::scoped_lock const lock(m_mutex);
  m_isOpen = false;
  if (OwnerNow().load() != nullptr) DispossessOwner();
  while (SQMCaller* const waiter = RemoveFirstWaiter()) {
    CQMWaits::End(*waiter);
    waiter->wait.store(SQMCaller::Dismissed);
    waiter->wait.notify_one();
  }
  m_condemned = std::move(context);
  return TakeUnused();
}

/** The condemned context, once nobody uses it. */
std::unique_ptr<CQMExecutor> CQMContextGate::TakeUnused() {
  return m_holder.load() == nullptr && m_keepers == 0 ? std::move(m_condemned) : nullptr;
}

}  // namespace qumel
