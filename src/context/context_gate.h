// The gate of a context: lets in one thread at a time, and keeps the context alive while threads are in it.
#pragma once

#include <memory>
#include <mutex>
#include <tuple>
#include <type_traits>
#include <typeinfo>

#include "context/caller.h"
#include "objects/handle_cache.h"
#include "objects/linked_object.h"

namespace qumel {

class CQMCallbackOperator;
class CQMDatum;
class CQMExecutor;
class CQMExpression;

/** The thread that used a context alone for a while owns its gate and passes it by plain stores. Another one
 * that comes takes the ownership away, for which the system interrupts the other threads, and waits until the
 * owner has left. After that threads queue and take turns, until one has been alone again; each loss of the
 * ownership makes that while longer.
 *
 * Gates are never freed: a thread may still announce itself at one whose context is gone. It is then refused,
 * or let into the context that the gate serves next, and finds that this is not the one it looked for. */
class alignas(kCacheLine) CQMContextGate {
 public:
  enum class EQMEntry {
    AsOwner,  // announced in the caller's record
    Queued,   // by the lock
    Refused,  // the wait would never end
    Closed,   // the context is gone
  };

  /** A gate that serves context from now on. Throws without memory. */
  static CQMContextGate& Open(CQMExecutor& context);
  /** By the context that the gate serves, when it goes. */
  void Recycle();

  // Marks that stand where a gate may stand. They let nobody in.
  static inline CQMContextGate* None();
  static inline CQMContextGate* Lost();
  static inline CQMContextGate* Queued();
  bool IsMark() const { return m_isMark; }

  /** The context; to be used only while it is kept alive. */
  CQMExecutor* GetContext() const { return m_context.load(std::memory_order_relaxed); }

  // ---- in and out ----
  /** For a caller that is in no context. After false it calls Acquire, or Settle if it does not go in. */
  bool EnterAsOwner(SQMCaller& caller) { return AnnounceOwner(caller) || EnterFenced(caller); }
  void LeaveAsOwner(SQMCaller& caller) {
    if (!EndAnnouncement(caller)) LeaveFenced(caller);
  }
  // The two halves of each, for the fast path: what comes after false.
  bool AnnounceOwner(SQMCaller& caller) {
    caller.used.store(this, CQMAsymmetricBarrier::kStore);
    CQMAsymmetricBarrier::ForbidReordering();
    return m_owner.load(CQMAsymmetricBarrier::kLoad) == &caller;
  }
  bool EnterFenced(SQMCaller& caller);
  bool EndAnnouncement(SQMCaller& caller) {
    caller.used.store(nullptr, CQMAsymmetricBarrier::kStore);
    CQMAsymmetricBarrier::ForbidReordering();
    return m_owner.load(CQMAsymmetricBarrier::kLoad) == &caller;
  }
  void LeaveFenced(SQMCaller& caller);
  // The objects of the context that hosts know by handles; for whoever is in the context.
  /** Finds an object of this class that was found by handle before, unless others have taken its place. */
  template <class Object>
  bool FindAgain(Handle handle, Object*& object) const {
    CQMLinkedObject* found = nullptr;
    if (!std::get<CQMHandleCache<Object>>(m_found).Find(handle, found)) return false;
    object = static_cast<Object*>(found);
    return true;
  }
  /** Finds any object of this class; null where handle names no such object of the context. */
  template <class Object>
  Object* Find(Handle handle);
  /** For a caller that is not in this context; waits until the thread that is has left. */
  EQMEntry Acquire(SQMCaller& caller);
  void Settle(SQMCaller& caller);
  /** Ends an announcement that was in vain. */
  void Withdraw(SQMCaller& caller) {
    caller.used.store(nullptr, CQMAsymmetricBarrier::kStore);
    Settle(caller);
  }
  /** After Queued. */
  void Release();
  /** Whether caller came in by the lock and has not left. */
  bool IsHeldBy(SQMCaller const& caller) const { return m_holder.load() == &caller; }

  /** How many threads wait; for tests. */
  int CountWaiters();

  // ---- without going in ----
  /** Keeps the context alive; null when it is gone. */
  CQMExecutor* Keep();
  void LetGo();
  /** Lets nobody in any more, sends those that wait away, and answers context when it is not in use;
   * otherwise it goes when the last one has left it. */
  std::unique_ptr<CQMExecutor> Close(std::unique_ptr<CQMExecutor> context);

  enum class EQMKind : bool { Gate, Mark };
  explicit constexpr CQMContextGate(EQMKind kind);
  ~CQMContextGate();

 private:
  static constexpr int kMostPatience = 1024;

  using Owner = std::atomic<SQMCaller*>;
  Owner& OwnerNow() { return CQMAsymmetricBarrier::NeedsFences() ? m_fencedOwner : m_owner; }
  EQMEntry Wait(SQMCaller& caller, std::unique_lock<std::mutex>& lock);
  // under the lock
  void DispossessOwner();
  std::unique_ptr<CQMExecutor> PassOn();
  std::unique_ptr<CQMExecutor> TakeUnused();
  SQMCaller* RemoveFirstWaiter();

  Owner m_owner{nullptr};  // whom the fast path lets in
  std::atomic<CQMExecutor*> m_context{nullptr};
  std::tuple<CQMHandleCache<CQMExpression>, CQMHandleCache<CQMDatum>, CQMHandleCache<CQMCallbackOperator>>
      m_found;
  bool const m_isMark;
  bool m_isOpen = false;
  Owner m_fencedOwner{nullptr};  // instead, where an owner has to pass a fence after each announcement
  std::mutex m_mutex;            // of what follows, and of changes of the owner
  /** Who came in by the lock, or the dispossessed owner that may still be in. Others wait only while there is
   * one. */
  std::atomic<SQMCaller*> m_holder{nullptr};
  SQMCaller* m_firstWaiter = nullptr;
  SQMCaller* m_lastWaiter = nullptr;
  int m_keepers = 0;
  std::unique_ptr<CQMExecutor> m_condemned;  // goes with the last one that is in or keeps it
  SQMCaller const* m_lastCaller = nullptr;
  int m_turns = 0;     // of the last caller without another between
  int m_patience = 1;  // so many of them make it the owner
  CQMContextGate* m_nextFree = nullptr;
};

template <class Object>
Object* CQMContextGate::Find(Handle handle) {
  CQMHandleList const* const list = CQMLinkedObject::GetHandleList();
  SQMHandleSlot const* const slot = list != nullptr ? list->FindSlot(handle) : nullptr;
  if (slot == nullptr || slot->gate.load(std::memory_order_relaxed) != this) return nullptr;
  CQMLinkedObject* const object = slot->object.load(std::memory_order_acquire);
  if (object == nullptr) return nullptr;
  // a final class is known by its type, others by their tag
  if constexpr (std::is_final_v<Object>) {
    if (typeid(*object) != typeid(Object)) return nullptr;
  } else if (!object->HasTypeTag(Object::kTypeTag)) {
    return nullptr;
  }
  std::get<CQMHandleCache<Object>>(m_found).Keep(handle, *slot);
  return static_cast<Object*>(object);
}

/** A gate that is not destroyed with the static objects: threads may still call then. */
union UQMMark {
  constexpr UQMMark();
  ~UQMMark() {}
  CQMContextGate gate;
};
extern constinit UQMMark g_noneMark, g_lostMark, g_queuedMark;

CQMContextGate* CQMContextGate::None() { return &g_noneMark.gate; }
CQMContextGate* CQMContextGate::Lost() { return &g_lostMark.gate; }
CQMContextGate* CQMContextGate::Queued() { return &g_queuedMark.gate; }

}  // namespace qumel
