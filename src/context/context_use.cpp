// The slow paths of calls into contexts, and the destruction of what calls may still use.
#include "context/context_use.h"

#include "base/stack_room.h"
#include "context/library.h"
#include "context/process_state.h"

namespace qumel {

// ---- contexts ----

CQMContextUse::CQMContextUse(EQMNeed need, CQMContextGate* tried) : m_caller(FindCaller()) {
  if (tried != nullptr && tried->EnterFenced(*m_caller)) {
    SetEntry(EQMEntry::AsOwner, *tried);
    return;
  }
  // the gate that the fast path tried comes first, even if it is not that of the current context any more
  for (CQMContextGate* gate = tried;; gate = nullptr) {
    if (gate == nullptr || gate->IsMark()) {
      if (!HasNeeded(need)) return;
      gate = m_caller->current.load();
    }
    Enter(*gate);
    if (m_isRefused) return;
    // if another thread has destroyed the context meanwhile, the next current one is tried
    if (m_entry != EQMEntry::None && m_caller->current.load() == gate) return;
    Leave();
  }
}

CQMContextUse::CQMContextUse(Handle handle, EQMNeed need, CQMContextGate* tried) : m_caller(FindCaller()) {
  CQMContextGate* gate = CQMLinkedObject::FindTarget(handle).gate;
  if (tried != nullptr && tried == gate) {
    m_caller->used.store(nullptr, CQMAsymmetricBarrier::kStore);  // Enter settles it, too
  } else {
    if (tried != nullptr) tried->Withdraw(*m_caller);
    if (!HasNeeded(need)) return;
    gate = CQMLinkedObject::FindTarget(handle).gate;
    if (gate == nullptr) return;
  }
  Enter(*gate);
  // looked up again, since another thread may have destroyed the object until here
  SQMHandleTarget const target = CQMLinkedObject::FindTarget(handle);
  m_object = target.object;
  if (target.object == nullptr || target.gate != gate) Leave();
}

/** Whether the calling thread has a record and the current context that it needs. Makes them where need
 * allows that. */
bool CQMContextUse::HasNeeded(EQMNeed need) {
  bool const mayMake = need == EQMNeed::Current;
  if (m_caller == nullptr || (mayMake && m_caller->current.load()->IsMark())) {
    if (GetThreadInfo(mayMake) == nullptr) return false;
    m_caller = FindCaller();
  }
  return need == EQMNeed::None || !m_caller->current.load()->IsMark();
}

void CQMContextUse::Enter(CQMContextGate& gate) {
  CQMContextGate* const used = m_caller->used.load(std::memory_order_relaxed);
  if (used != nullptr && (used == &gate || gate.IsHeldBy(*m_caller))) return SetEntry(EQMEntry::Nested, gate);
  if (used == nullptr && gate.EnterAsOwner(*m_caller)) return SetEntry(EQMEntry::AsOwner, gate);
  switch (gate.Acquire(*m_caller)) {
    case CQMContextGate::EQMEntry::AsOwner: return SetEntry(EQMEntry::AsOwner, gate);
    case CQMContextGate::EQMEntry::Queued:
      if (used == nullptr) m_caller->used.store(CQMContextGate::Queued());
      return SetEntry(used == nullptr ? EQMEntry::Queued : EQMEntry::NestedQueued, gate);
    case CQMContextGate::EQMEntry::Refused: m_isRefused = true; return ReportRefusedWait();
    case CQMContextGate::EQMEntry::Closed: return;
  }
}

void CQMContextUse::SetEntry(EQMEntry entry, CQMContextGate& gate) {
  m_entry = entry;
  m_gate = &gate;
  m_executor = gate.GetContext();
  if (entry == EQMEntry::Nested || entry == EQMEntry::NestedQueued) ++m_caller->nested;
}

void CQMContextUse::Leave() {
  m_executor = nullptr;
  switch (std::exchange(m_entry, EQMEntry::None)) {
    case EQMEntry::None: break;
    case EQMEntry::AsOwner: m_gate->LeaveAsOwner(*m_caller); break;
    case EQMEntry::Queued:
      m_caller->used.store(nullptr);
      m_gate->Release();
      break;
    case EQMEntry::NestedQueued:
      --m_caller->nested;
      m_gate->Release();
      break;
    case EQMEntry::Nested: --m_caller->nested; break;
  }
}

bool CQMContextUse::IsTooDeep() {
  int const nested = t_caller->nested;
  return nested != 0 && (nested >= kMostNestedCalls || IsStackLow());
}

void ReportRefusedWait() {
  CQMContextGate* const used = t_caller->used.load();
  CQMContextGate* const current = t_caller->current.load();
  bool const isIn = used != nullptr && (used == current || current->IsHeldBy(*t_caller));
  if (isIn) current->GetContext()->SetLastError(Error::NotInitialized);
}

void DestroyWhenUnused(std::unique_ptr<CQMExecutor> executor) {
  CQMContextGate& gate = executor->GetGate();
  {
    std::scoped_lock const lock(g_process.threadList);
    executor->Retire();
    for (SQMCaller* caller = FirstCaller(); caller != nullptr; caller = caller->nextCaller) {
      CQMContextGate* current = &gate;
      caller->current.compare_exchange_strong(current, CQMContextGate::Lost());
    }
    if (g_process.defaultExecutor.load() == executor.get()) {
      g_process.defaultExecutor.store(g_process.primaryExecutor.load());
    }
  }
  std::unique_ptr<CQMExecutor> const unused = gate.Close(std::move(executor));
}

// ---- kept contexts ----

CQMKeptContext::CQMKeptContext(bool mayWait) {
  SQMCaller* const caller = FindCaller();
  while (caller != nullptr && m_executor == nullptr) {
    m_gate = caller->current.load(std::memory_order_relaxed);
    if (m_gate->IsMark()) return;
    if (!mayWait && caller->used.load(std::memory_order_relaxed) == nullptr) {
      m_isIn = m_gate->EnterAsOwner(*caller);
      if (m_isIn) {
        m_executor = m_gate->GetContext();
        return;
      }
      m_gate->Settle(*caller);
    }
    m_executor = m_gate->Keep();
    if (m_executor == nullptr || caller->current.load() == m_gate) continue;
    m_gate->LetGo();
    m_executor = nullptr;
  }
}

CQMKeptContext::CQMKeptContext(CQMExecutor* executor) {
  if (executor == nullptr) return;
  m_gate = &executor->GetGate();
  m_executor = m_gate->Keep();
}

// ---- records ----

namespace {

[[gnu::noinline, gnu::cold]] void DestroyUnusedRecords() {
  CQMSiblingList<CQMThreadInfo> unused;  // destroyed after the lock is released
  {
    std::scoped_lock const lock(g_process.threadList);
    for (CQMThreadInfo* record = g_process.retiredThreads.GetFirst(); record != nullptr;) {
      CQMThreadInfo* const next = g_process.retiredThreads.GetNext(record);
      if (!record->IsInUse()) {
        record->Detach();
        --g_process.retiredCount;
        unused.Append(g_process.retiredThreads.Remove(record));
      }
      record = next;
    }
  }
  while (unused.RemoveFirst() != nullptr) {
  }
}

}  // namespace

CQMRecordUse::CQMRecordUse() : m_caller(FindCaller()) {
  while (m_caller == nullptr || !FindRecord()) {
    if (GetThreadInfo(false) == nullptr) return;
    m_caller = FindCaller();
  }
}

/** Finds the record that the thread remembers, unless records were destroyed since. */
bool CQMRecordUse::FindRecord() {
  m_caller->usesRecord.store(true, CQMAsymmetricBarrier::kStore);
  CQMAsymmetricBarrier::Light();
  bool const isKnown = m_caller->generation == g_process.generation.load(std::memory_order_acquire);
  if (isKnown) m_record = m_caller->record;
  return isKnown;
}

CQMRecordUse::~CQMRecordUse() {
  if (m_caller == nullptr) return;
  m_caller->usesRecord.store(false, CQMAsymmetricBarrier::kStore);
  CQMAsymmetricBarrier::Light();
  // from here on another thread may destroy the record
  if (g_process.retiredCount.load(CQMAsymmetricBarrier::kLoad) != 0) DestroyUnusedRecords();
}

std::unique_ptr<CQMThreadInfo> RetireThread(std::unique_ptr<CQMThreadInfo> record) {
  // counted before the check, so that a call that ends now is either not seen or sees the count
  ++g_process.retiredCount;
  CQMAsymmetricBarrier::Heavy();
  if (record->IsInUse()) {
    g_process.retiredThreads.Append(std::move(record));
    return nullptr;
  }
  --g_process.retiredCount;
  record->Detach();
  return record;
}

// ---- process-wide variables ----

CQMSharedVariableUse::CQMSharedVariableUse(Handle handle) {
  SQMHandleTarget const target = CQMLinkedObject::FindTarget(handle);
  m_object = target.gate == nullptr ? target.object : nullptr;
  t_caller->variable.store(m_object, CQMAsymmetricBarrier::kStore);
  CQMAsymmetricBarrier::Light();
  if (CQMLinkedObject::FindTarget(handle).object != m_object) m_object = nullptr;
}

}  // namespace qumel
