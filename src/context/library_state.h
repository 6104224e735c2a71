// The process-wide state of the library and its locks; for the files that implement library.h and
// context_use.h.
#pragma once

#include <atomic>
#include <mutex>

#include "context/context_list.h"
#include "context/executor.h"
#include "context/sibling_list.h"
#include "context/thread_info.h"

namespace qumel {

/** Everything here is made at load and never destroyed: calls may come at any time, also after unloading.
 * Neither lock is taken while the other one is held. Hosts may hold them too. */
struct SQMLibraryState {
  std::recursive_mutex
      threadListMutex;  // guards threads, the retired, and the choice of primary and default context
  CQMSiblingList<CQMThreadInfo> threads;
  CQMSiblingList<CQMThreadInfo> retiredThreads;  // out of the list, with a call that still uses them
  std::atomic<int> retiredCount{0};
  /** Bumped when records go: what threads remember of their record is void then. */
  std::atomic<unsigned long> generation{1};
  bool isInitialized = false;
  std::atomic<bool> isUnloaded{false};
  CQMLinkedObject* primaryObject = nullptr;  // the root of the object tree
  std::atomic<CQMExecutor*> primaryExecutor{nullptr};
  std::atomic<CQMExecutor*> defaultExecutor{nullptr};

  std::recursive_mutex executorListMutex;  // guards executors
  CQMContextList executors;
};

extern constinit SQMLibraryState g_library;

/** Under the executor list's lock. */
CQMExecutor* FindPublicLocked(char const* name);

}  // namespace qumel
