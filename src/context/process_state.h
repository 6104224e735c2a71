// The process-wide state of this floor, and the order of all locks of the library.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>

#include "context/caller.h"
#include "context/context_list.h"
#include "context/executor.h"
#include "context/sibling_list.h"
#include "context/thread_info.h"

namespace qumel {

/** The lock of a list that hosts may lock, too, to look at it. The thread that holds it may lock it again. */
class CQMListLock {
 public:
  void lock() { m_mutex.lock(); }
  void unlock() { m_mutex.unlock(); }

  void LockForHost() {
    m_mutex.lock();
    ++m_hostHolds;
    m_host.store(OwnThreadId(), std::memory_order_relaxed);
  }
  /** Does nothing for a thread whose host does not hold the lock. */
  void UnlockForHost() {
    if (m_host.load(std::memory_order_relaxed) != OwnThreadId()) return;
    if (--m_hostHolds == 0) m_host.store(0, std::memory_order_relaxed);
    m_mutex.unlock();
  }

 private:
  std::recursive_mutex m_mutex;
  std::atomic<unsigned long> m_host{0};  // the thread that holds the lock for its host
  int m_hostHolds = 0;                   // how often; touched by that thread alone
};

/** The standard operators of the contexts' own lists, without implied multiplication and with it, as long as
 * some context uses them. */
using GlobalDialects = std::array<std::weak_ptr<CQMStandardOperators const>, 2>;

/** Made when the library is loaded and never destroyed: calls may come at any time, also after unloading.
 *
 * A thread may take a lock only while it holds none, or locks of an earlier line; no two of one line:
 *
 *   1  the gate of a context, as a call in it holds it: see CQMContextGate
 *   2  threadList, executorList
 *   3  cosmicMutex
 *   4  the mutex inside a gate
 *   5  freeGatesMutex, callersMutex, waitsMutex, errorMutex
 *   6  those of the floors below: first shared tables and operator lists, then the life of the handle list
 *      and of the data space, then the locks inside these two; bodies of operators and proxies of shared
 *      variables have locks under which no other is taken
 *
 * Gates alone may be waited for out of their order, since CQMWaits refuses a wait that would close a circle.
 * A host that holds a lock of the second line may call the library, as long as no other thread holds the
 * other one. */
struct SQMProcessState {
  // ---- threads ----
  CQMListLock threadList;  // guards all of this part
  CQMSiblingList<CQMThreadInfo> threads;
  CQMSiblingList<CQMThreadInfo> retiredThreads;  // out of the list, with a call that still uses them
  std::atomic<int> retiredCount{0};
  /** Moved on when records go: what threads remember of their record is void then. */
  std::atomic<unsigned long> generation{1};
  bool isInitialized = false;
  std::atomic<bool> isUnloaded{false};
  CQMLinkedObject* primaryObject = nullptr;  // the root of the object tree
  std::atomic<CQMExecutor*> primaryExecutor{nullptr};
  std::atomic<CQMExecutor*> defaultExecutor{nullptr};

  // ---- public contexts ----
  CQMListLock executorList;  // guards the list
  CQMContextList executors;

  // ---- what all contexts share ----
  /** Guards the making and destroying of the process-wide operator list, symbol table and error table, and
   * the count of contexts that they live by: the sm_ members of CQMExecutor. */
  std::mutex cosmicMutex;
  GlobalDialects* globalDialects = nullptr;  // lives with them, and is guarded by their lock
  std::mutex errorMutex;  // two contexts may define the same process-wide message at the same time

  // ---- calls ----
  std::mutex callersMutex;                       // guards changes of the list of callers
  std::atomic<SQMCaller*> firstCaller{nullptr};  // the list only ever grows, at its beginning
  std::mutex waitsMutex;                         // guards the graph of who waits for whom
  std::mutex freeGatesMutex;                     // guards the gates that serve no context
  CQMContextGate* firstFreeGate = nullptr;
};

extern constinit SQMProcessState g_process;

/** Under the lock of the list of public contexts. */
CQMExecutor* FindPublicLocked(char const* name);

}  // namespace qumel
