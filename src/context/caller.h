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

/** What the other threads may know of a calling thread. Everything that the library keeps for a thread hangs
 * on this record. It is never freed, so that other threads may look at it at any time; when its thread has
 * ended, a later thread to which the system gives the same id takes it over. */
struct alignas(kCacheLine) SQMCaller {
  explicit SQMCaller(unsigned long id);
  /** The record that stands for every thread that has not called yet. It is never written: it looks like the
   * record of a thread that is in a context already, and calls of that kind take the slow path. */
  constexpr explicit SQMCaller(CQMContextGate* alwaysUsed)
      : used(alwaysUsed), current(nullptr), threadId(0) {}

  /** Ends the calls that a thread that has ended left open. */
  void Renew();

  // ---- announced by plain stores, for other threads to look at ----
  /** The gate that the outermost call went through as its owner; the queued mark when it came through another
   * one by its lock; null when no call of the thread is in a context. */
  std::atomic<CQMContextGate*> used{nullptr};
  /** The gate of the current context; the none mark when there is none, the lost mark when another thread
   * took it away. */
  std::atomic<CQMContextGate*> current;
  /** The process-wide variable that a call uses by its handle. */
  std::atomic<CQMLinkedObject const*> variable{nullptr};
  std::atomic<bool> usesRecord{false};

  // ---- touched by the thread itself alone ----
  int nested = 0;                   // calls in contexts beneath the outermost one
  CQMThreadInfo* record = nullptr;  // as long as the generation is the library's
  unsigned long generation = 0;

  // ---- waiting ----
  enum EQMWait : int { Waiting, Granted, Dismissed };
  std::atomic<int> wait{Granted};
  SQMCaller* nextWaiter = nullptr;
  std::atomic<SQMCaller*> const* awaited = nullptr;  // where the name stands of the thread that it waits for

  unsigned long const threadId;
  SQMCaller* nextCaller = nullptr;

  // ---- names of contexts as the thread was told them, a buffer a function ----
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

/** Waits until no thread uses variable by its handle, which must name nothing any more. */
void WaitUntilUnused(CQMLinkedObject const& variable);

/** The graph of who waits for whom. A wait that would close a circle is refused: it would never end. */
class CQMWaits {
 public:
  /** Enters that caller waits for whoever stands in holder, which stays valid until the end of the wait;
   * false when that one waits for caller, if only by way of others. */
  static bool Begin(SQMCaller& caller, std::atomic<SQMCaller*> const& holder);
  static void End(SQMCaller& caller);
  /** Ends the wait of caller as the new holder. */
  static void HandOver(std::atomic<SQMCaller*>& holder, SQMCaller& caller);
};

}  // namespace qumel
