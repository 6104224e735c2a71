// What keeps contexts, threads' records and process-wide variables alive while a call uses them, and their
// destruction after it.
#pragma once

#include <memory>

#include "context/context_gate.h"
#include "context/executor.h"
#include "context/thread_info.h"

namespace qumel {

/** The fast path of a call into the current context, which nearly every call can take: the thread is in no
 * other call and owns the gate. The call publishes the gate that it uses by a plain store, like a hazard
 * pointer, and takes that back by another; whatever else may be the case costs a comparison. */
class CQMOwnerUse {
 public:
  CQMOwnerUse() : m_caller(*t_caller) {}

  /** False when the fast path cannot be taken: CQMContextUse then needs to know the gate that was tried. */
  [[gnu::always_inline]] bool Enter() {
    if (m_caller.used.load(std::memory_order_relaxed) != nullptr) [[unlikely]]
      return false;
    m_gate = m_caller.current.load(std::memory_order_relaxed);
    return m_gate->AnnounceOwner(m_caller);
  }
  /** The gate that the thread is in, or could not get into; null when none was tried. */
  CQMContextGate* GetGate() const { return m_gate; }
  /** The context that the thread is in, for code that is rarely run: nothing is kept in a register for it. */
  CQMExecutor& FindContext() const { return *m_caller.used.load(std::memory_order_relaxed)->GetContext(); }
  /** Gives value back, so that calls end by a jump to the slow way out, where it is needed. */
  template <class Value>
  [[gnu::always_inline]] Value Leave(Value value) {
    // the gate is read again, which costs less than to keep it during the call
    CQMContextGate& gate = *m_caller.used.load(std::memory_order_relaxed);
    if (gate.EndAnnouncement(m_caller)) [[likely]]
      return value;
    return LeaveSlowly(m_caller, gate, value);
  }

 private:
  template <class Value>
  [[gnu::noinline, gnu::cold]] static Value LeaveSlowly(SQMCaller& caller, CQMContextGate& gate,
                                                        Value value) {
    gate.LeaveFenced(caller);
    return value;
  }

  SQMCaller& m_caller;
  CQMContextGate* m_gate = nullptr;
};

/** One call of the calling thread in a context, from its arrival until it returns, by whichever way it gets
 * in. It waits until no other thread is in the context. Calls may nest, when a callback of the host calls the
 * library. A context that is destroyed meanwhile, by the callback or by another thread, lives on until the
 * last call in it has returned. */
class CQMContextUse {
 public:
  /** Evaluations that callbacks ask for nest this deep: each takes stack of the thread. */
  static constexpr int kMostNestedCalls = 200;

  /** Whether a call needs the current context of the thread. */
  enum class EQMNeed { Current, CurrentIfAny, None };
  /** A call in the current context. For Current it is found or made where there is none; there is none only
   * for want of memory, after the library was unloaded, and when the wait for it would never end.
   * CurrentIfAny makes none current, and the thread may go without. tried is the gate that the fast path
   * could not get into, if it tried one. */
  explicit CQMContextUse(EQMNeed need = EQMNeed::Current, CQMContextGate* tried = nullptr);
  /** A call in the context that guards the object of handle, whichever is current; there is none when there
   * is no such object, or when the calling thread cannot have the current context that the call needs. */
  CQMContextUse(Handle handle, EQMNeed need, CQMContextGate* tried = nullptr);
  ~CQMContextUse() { Leave(); }
  CQMContextUse(CQMContextUse const&) = delete;
  CQMContextUse& operator=(CQMContextUse const&) = delete;

  CQMExecutor* GetExecutor() const { return m_executor; }
  /** The object of the handle; null without a context. */
  CQMLinkedObject* GetObject() const { return m_executor != nullptr ? m_object : nullptr; }
  /** Whether the context is the current one of the thread. */
  bool IsInCurrent() const {
    return m_executor != nullptr && m_gate == m_caller->current.load(std::memory_order_relaxed);
  }
  /** Whether the wait was refused. */
  bool IsRefused() const { return m_isRefused; }
  /** Whether the calling thread's calls nest too deep, or its stack is too small, for one that may call the
   * host back. */
  static bool IsTooDeep();

 private:
  enum class EQMEntry : unsigned char {
    None,
    AsOwner,
    Queued,        // outermost, by the lock
    NestedQueued,  // beneath a call in another context
    Nested,        // beneath a call in the same context
  };

  bool HasNeeded(EQMNeed need);
  void Enter(CQMContextGate& gate);
  void SetEntry(EQMEntry entry, CQMContextGate& gate);
  void Leave();

  SQMCaller* m_caller;
  CQMContextGate* m_gate = nullptr;
  CQMExecutor* m_executor = nullptr;
  CQMLinkedObject* m_object = nullptr;
  EQMEntry m_entry = EQMEntry::None;
  bool m_isRefused = false;
};

/** A call that uses the record of the calling thread. Other threads destroy the record, if they do, after it.
 */
class CQMRecordUse {
 public:
  CQMRecordUse();
  ~CQMRecordUse();
  CQMRecordUse(CQMRecordUse const&) = delete;
  CQMRecordUse& operator=(CQMRecordUse const&) = delete;

  /** Null for want of memory and after the unloading of the library. */
  CQMThreadInfo* GetRecord() const { return m_record; }

 private:
  bool FindRecord();

  SQMCaller* m_caller = nullptr;
  CQMThreadInfo* m_record = nullptr;
};

/** Keeps a context alive, whether or not another thread is in it: while its name is read, and while a thread
 * waits for its lock. */
class CQMKeptContext {
 public:
  /** The current context of the calling thread, if it has one. Without mayWait the calling thread may be in
   * it, which costs less; then it waits for nobody as long as this lives. */
  explicit CQMKeptContext(bool mayWait = false);
  /** A context that cannot be destroyed before this returns. */
  explicit CQMKeptContext(CQMExecutor* executor);
  ~CQMKeptContext() {
    if (m_isIn) m_gate->LeaveAsOwner(*t_caller);
    else if (m_executor != nullptr) m_gate->LetGo();
  }
  CQMKeptContext(CQMKeptContext const&) = delete;
  CQMKeptContext& operator=(CQMKeptContext const&) = delete;

  CQMExecutor* Get() const { return m_executor; }

 private:
  CQMContextGate* m_gate = nullptr;
  CQMExecutor* m_executor = nullptr;
  bool m_isIn = false;
};

/** Keeps the process-wide variable of a handle alive while the calling thread uses it; deleting it waits. The
 * thread calls nobody meanwhile. */
class CQMSharedVariableUse {
 public:
  explicit CQMSharedVariableUse(Handle handle);
  ~CQMSharedVariableUse() { t_caller->variable.store(nullptr, CQMAsymmetricBarrier::kStore); }
  CQMSharedVariableUse(CQMSharedVariableUse const&) = delete;
  CQMSharedVariableUse& operator=(CQMSharedVariableUse const&) = delete;

  /** Null when handle names no object that is guarded by no context. */
  CQMLinkedObject* GetObject() const { return m_object; }

 private:
  CQMLinkedObject* m_object;
};

/** Records that a wait of the calling thread was refused: in the current context, if the thread is in it. */
void ReportRefusedWait();

/** Takes executor, which is in no list any more, away from all threads and from the default, and destroys it
 * now or when the last call in it has returned. */
void DestroyWhenUnused(std::unique_ptr<CQMExecutor> executor);

/** Under the thread list's lock, of a record that is in no list any more: it loses its current context, and
 * is kept for the call that uses it, for which the answer is null, or comes back to be destroyed once the
 * lock is released. */
std::unique_ptr<CQMThreadInfo> RetireThread(std::unique_ptr<CQMThreadInfo> record);

}  // namespace qumel
