// The gate of a context: admits one thread at a time, keeps the context alive while a thread uses it, and
// finds its objects by their handles.
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

class CQMCallbackPlace;
class CQMDatum;
class CQMExecutor;
class CQMExpression;

/** A biased lock. A thread that has used a context alone for a while owns its gate, and enters and leaves by
 * plain stores. Another thread that wants to enter revokes the ownership, for which the system interrupts all
 * threads of the process, and waits until the owner has left. From then on threads enter by a lock, first
 * come, first served, until one of them has been alone for a while; each revocation makes that while longer.
 *
 * Gates are never freed, since a thread may still try to enter one whose context is gone. It is then refused,
 * or enters the context that the gate serves next, and finds that this is not the one it looked for. */
class alignas(kCacheLine) CQMContextGate {
 public:
  enum class EQMEntry {
    AsOwner,  // by plain stores
    Queued,   // by the lock, maybe after a wait
    Refused,  // not at all: the wait would never end
    Closed,   // not at all: the context is gone
  };

  /** Returns a gate that serves context from now on. Throws std::bad_alloc. */
  static CQMContextGate& Open(CQMExecutor& context);
  /** Called by the context that the gate serves, when it is destroyed. */
  void Recycle();

  // Marks, which take the place of a pointer to a gate where there is none. Nobody can enter them.
  static inline CQMContextGate* None();
  static inline CQMContextGate* Lost();
  static inline CQMContextGate* Queued();
  bool IsMark() const { return m_isMark; }

  /** The context. Only a thread that keeps it alive may use it. */
  CQMExecutor* GetContext() const { return m_context.load(std::memory_order_relaxed); }

  // ---- entering and leaving ----
  /** For a caller that is in no context. After false it has to call Acquire, or Settle if it does not want to
   * enter any more. */
  bool EnterAsOwner(SQMCaller& caller) { return AnnounceOwner(caller) || EnterFenced(caller); }
  void LeaveAsOwner(SQMCaller& caller) {
    if (!EndAnnouncement(caller)) LeaveFenced(caller);
  }
  // Each consists of two parts: what the fast path does, and what has to follow when that gives false.
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
  // The objects of the context that hosts know by handles; for a thread that has entered.
  /** Finds an object of this class in the cache of those found before. */
  template <class Object>
  bool FindAgain(Handle handle, Object*& object) const {
    CQMLinkedObject* found = nullptr;
    if (!std::get<CQMHandleCache<Object>>(m_found).Find(handle, found)) return false;
    object = static_cast<Object*>(found);
    return true;
  }
  /** Finds an object of this class and puts it into the cache; null where handle names no such object of the
   * context. */
  template <class Object>
  Object* Find(Handle handle);
  /** For a caller that is not in this context. Waits until no other thread is. */
  EQMEntry Acquire(SQMCaller& caller);
  /** Another thread may wait for caller, since it took the attempt to enter for an entry: ends that wait. */
  void Settle(SQMCaller& caller);
  /** Gives an attempt to enter up that AnnounceOwner began. */
  void Withdraw(SQMCaller& caller) {
    caller.used.store(nullptr, CQMAsymmetricBarrier::kStore);
    Settle(caller);
  }
  /** Leaves after an entry that was Queued. */
  void Release();
  /** Whether caller has entered by the lock and has not left. */
  bool IsHeldBy(SQMCaller const& caller) const { return m_holder.load() == &caller; }

  /** How many threads wait to enter; for tests. */
  int CountWaiters();

  // ---- keeping the context alive without entering it ----
  /** The context, which stays alive until LetGo; null when it is gone. */
  CQMExecutor* Keep();
  void LetGo();
  /** Admits nobody any more and turns the waiting threads away. Returns context if it is not in use;
   * otherwise the last thread that uses it destroys it. */
  std::unique_ptr<CQMExecutor> Close(std::unique_ptr<CQMExecutor> context);

  enum class EQMKind : bool { Gate, Mark };
  explicit constexpr CQMContextGate(EQMKind kind);
  ~CQMContextGate();

 private:
  static constexpr int kMostPatience = 1024;

  using Owner = std::atomic<SQMCaller*>;
  Owner& OwnerNow() { return CQMAsymmetricBarrier::NeedsFences() ? m_fencedOwner : m_owner; }
  EQMEntry Wait(SQMCaller& caller, std::unique_lock<std::mutex>& lock);
  // to be called with m_mutex locked
  void DispossessOwner();
  std::unique_ptr<CQMExecutor> PassOn();
  std::unique_ptr<CQMExecutor> TakeUnused();
  SQMCaller* RemoveFirstWaiter();

  Owner m_owner{nullptr};  // may enter by plain stores
  std::atomic<CQMExecutor*> m_context{nullptr};
  std::tuple<CQMHandleCache<CQMExpression>, CQMHandleCache<CQMDatum>, CQMHandleCache<CQMCallbackPlace>>
      m_found;
  bool const m_isMark;
  bool m_isOpen = false;
  Owner m_fencedOwner{nullptr};  // the owner instead, where the system has no barrier for other threads
  std::mutex m_mutex;            // guards what follows, and changes of the owner
  /** The thread that has entered by the lock, or a former owner that may still be inside. Others wait only
   * while there is one. */
  std::atomic<SQMCaller*> m_holder{nullptr};
  SQMCaller* m_firstWaiter = nullptr;
  SQMCaller* m_lastWaiter = nullptr;
  int m_keepers = 0;
  std::unique_ptr<CQMExecutor> m_condemned;  // destroyed by the last thread that uses it
  SQMCaller const* m_lastCaller = nullptr;
  int m_turns = 0;     // how often the last caller has entered since another one did
  int m_patience = 1;  // how many such turns make a caller the owner
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

/** A gate that is never destroyed, since threads may still call when static objects are. */
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
