// The record of a calling thread that the other threads look at, and the graph of who waits for whom.
#pragma once

#include <atomic>
#include <cstddef>

#include "base/asymmetric_barrier.h"

namespace qumel {

class CQMContextGate;
class CQMLinkedObject;
class CQMThreadInfo;

/** Data that different threads write lies on different cache lines, which would otherwise travel between the
 * processors. */
inline constexpr std::size_t kCacheLine = 64;

/** The record of a calling thread; everything that the library keeps for a thread hangs on it. It is never
 * freed, so that other threads may read it at any time. When its thread has ended, a later thread to which
 * the system gives the same id takes the record over. */
struct alignas(kCacheLine) SQMCaller {
  explicit SQMCaller(unsigned long id);
  /** The record that stands for every thread that has not called yet. It is never written: it looks like the
   * record of a thread that is inside a call already, so that its calls take the slow path. */
  constexpr explicit SQMCaller(CQMContextGate* alwaysUsed)
      : used(alwaysUsed), current(nullptr), threadId(0) {}

  /** Resets what a thread has left behind that ended in the middle of a call. */
  void Renew();

  // ---- published by plain stores, for other threads to read ----
  /** Like a hazard pointer: the gate whose context the outermost call uses as the gate's owner; the queued
   * mark when it entered a context by the lock of its gate; null while the thread is in no call. */
  std::atomic<CQMContextGate*> used{nullptr};
  /** The gate of the current context; the none mark when there is none, the lost mark when another thread has
   * destroyed the context. */
  std::atomic<CQMContextGate*> current;
  /** The process-wide variable that a call uses by its handle. */
  std::atomic<CQMLinkedObject const*> variable{nullptr};
  std::atomic<bool> usesRecord{false};

  // ---- used by the thread itself alone ----
  int nested = 0;                   // how many calls are inside the outermost one
  CQMThreadInfo* record = nullptr;  // valid as long as the generation is that of the process
  unsigned long generation = 0;

  // ---- waiting ----
  enum EQMWait : int { Waiting, Granted, Dismissed };
  std::atomic<int> wait{Granted};
  SQMCaller* nextWaiter = nullptr;
  std::atomic<SQMCaller*> const* awaited = nullptr;  // holds the thread that this one waits for

  unsigned long const threadId;
  SQMCaller* nextCaller = nullptr;

  // ---- names of contexts that were returned to the host, one buffer for each exported function ----
  static constexpr std::size_t kNameSize = 128;
  char contextName[kNameSize] = {};
  char currentName[kNameSize] = {};
};

/** What identifies the calling thread; never 0. */
unsigned long OwnThreadId();

/** The record of the calling thread, or the one that stands for every thread that has not called yet; never
 * null. It is the only thread-local variable of its model, initial-exec, which is the fastest: a library that
 * is loaded by dlopen shares a small reserve of that kind with all others. */
extern thread_local constinit SQMCaller* t_caller __attribute__((tls_model("initial-exec")));
extern constinit SQMCaller g_unknownCaller;

/** The record of the calling thread; null before its first call. */
inline SQMCaller* FindCaller() { return t_caller != &g_unknownCaller ? t_caller : nullptr; }
/** The record of the calling thread, which is made where there is none. Throws std::bad_alloc. */
SQMCaller& ObtainCaller(unsigned long threadId);

SQMCaller* FirstCaller();

/** Waits until no thread uses variable by its handle. The handle must have been deleted before. */
void WaitUntilUnused(CQMLinkedObject const& variable);

/** The wait-for graph of the threads. A wait that would close a cycle is refused, since it would never end.
 */
class CQMWaits {
 public:
  /** Records that caller waits for the thread in holder, which has to stay valid until the wait ends. False,
   * and nothing is recorded, when that thread waits for caller, directly or through others. */
  static bool Begin(SQMCaller& caller, std::atomic<SQMCaller*> const& holder);
  static void End(SQMCaller& caller);
  /** Ends the wait of caller and makes it the new holder. */
  static void HandOver(std::atomic<SQMCaller*>& holder, SQMCaller& caller);
};

}  // namespace qumel
