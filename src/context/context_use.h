// Scopes that keep a context, the record of a thread or a process-wide variable alive while a call uses it,
// and the destruction of these once no call does.
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

  /** False when the fast path cannot be taken; CQMContextUse then has to be told the gate that was tried. */
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
  /** Returns value, which lets the compiler end a call by a jump where leaving needs the slow path. */
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

/** One call of the calling thread in a context, entered on whichever path. It waits until no other thread is
 * in the context. Calls nest when a callback of the host calls the library. A context that is destroyed
 * meanwhile, by the callback or by another thread, lives on until no call uses it. */
class CQMContextUse {
 public:
  /** How deep evaluations may nest that callbacks ask for, since each of them takes stack. */
  static constexpr int kMostNestedCalls = 200;

  /** Whether a call needs the current context of the thread. */
  enum class EQMNeed { Current, CurrentIfAny, None };
  /** A call in the current context. With Current, a thread without one is given the default context; this
   * fails when memory is exhausted, after the library was unloaded, and when the wait would never end. With
   * CurrentIfAny, such a thread does without. tried is the gate that the fast path tried and failed to
   * enter, if any. */
  explicit CQMContextUse(EQMNeed need = EQMNeed::Current, CQMContextGate* tried = nullptr);
  /** A call in the context to which the object of handle belongs, whichever context is current. It fails when
   * there is no such object, or when the thread cannot have the current context that the call needs. */
  CQMContextUse(Handle handle, EQMNeed need, CQMContextGate* tried = nullptr);
  ~CQMContextUse() { Leave(); }
  CQMContextUse(CQMContextUse const&) = delete;
  CQMContextUse& operator=(CQMContextUse const&) = delete;

  CQMExecutor* GetExecutor() const { return m_executor; }
  /** The object of the handle; null when the call has entered no context. */
  CQMLinkedObject* GetObject() const { return m_executor != nullptr ? m_object : nullptr; }
  /** Whether the call has entered the current context of the thread. */
  bool IsInCurrent() const {
    return m_executor != nullptr && m_gate == m_caller->current.load(std::memory_order_relaxed);
  }
  /** Whether the call failed because its wait would never end. */
  bool IsRefused() const { return m_isRefused; }
  /** Whether calls nest too deep, or too little stack is left, for a call that may call the host back. */
  static bool IsTooDeep();

 private:
  enum class EQMEntry : unsigned char {
    None,
    AsOwner,
    Queued,        // the outermost call, by the lock of the gate
    NestedQueued,  // inside a call in another context
    Nested,        // inside a call in the same context
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

/** A call that uses the record of the calling thread. Another thread that destroys the record waits for it.
 */
class CQMRecordUse {
 public:
  CQMRecordUse();
  ~CQMRecordUse();
  CQMRecordUse(CQMRecordUse const&) = delete;
  CQMRecordUse& operator=(CQMRecordUse const&) = delete;

  /** Null when memory is exhausted and after the library was unloaded. */
  CQMThreadInfo* GetRecord() const { return m_record; }

 private:
  bool FindRecord();

  SQMCaller* m_caller = nullptr;
  CQMThreadInfo* m_record = nullptr;
};

/** Keeps a context alive without waiting for a thread that is in it: while its name is read, and while a
 * thread waits for its lock. */
class CQMKeptContext {
 public:
  /** The current context of the calling thread, if it has one. Without mayWait the thread may enter the
   * context as its owner, which costs less; it must then wait for nobody during the lifetime of this object.
   */
  explicit CQMKeptContext(bool mayWait = false);
  /** A context that nobody can destroy until the constructor returns. */
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

/** Keeps the process-wide variable of a handle alive while the calling thread uses it: a thread that deletes
 * it waits. The calling thread must neither wait nor call the host meanwhile. */
class CQMSharedVariableUse {
 public:
  explicit CQMSharedVariableUse(Handle handle);
  ~CQMSharedVariableUse() { t_caller->variable.store(nullptr, CQMAsymmetricBarrier::kStore); }
  CQMSharedVariableUse(CQMSharedVariableUse const&) = delete;
  CQMSharedVariableUse& operator=(CQMSharedVariableUse const&) = delete;

  /** Null when handle names nothing, or an object that belongs to a context. */
  CQMLinkedObject* GetObject() const { return m_object; }

 private:
  CQMLinkedObject* m_object;
};

/** Sets the last error of the current context, if the calling thread is in it, to tell that a wait was
 * refused. */
void ReportRefusedWait();

/** Destroys executor, which must be in no list any more, now or when no call uses it any more. It is no
 * thread's current context afterwards and not the default one. */
void DestroyWhenUnused(std::unique_ptr<CQMExecutor> executor);

/** To be called with the thread list locked, for a record that is in no list any more. Returns the record,
 * without a current context, for the caller to destroy once the lock is released; or null when a call uses it
 * and will destroy it at its end. */
std::unique_ptr<CQMThreadInfo> RetireThread(std::unique_ptr<CQMThreadInfo> record);

}  // namespace qumel
