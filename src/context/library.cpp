// The start and end of the library, and the records of the calling threads.
#include "context/library.h"

#include <pthread.h>

#include <utility>

#include "context/context_use.h"
#include "context/library_state.h"

namespace qumel {

constinit SQMLibraryState g_library;

namespace {

/** How often a host locked a list in this thread. */
thread_local constinit int t_executorListHolds = 0;
thread_local constinit int t_threadListHolds = 0;

void Acquire(std::recursive_mutex& mutex, int& holds) {
  mutex.lock();
  ++holds;
}

void Release(std::recursive_mutex& mutex, int& holds) {
  if (holds == 0) return;
  --holds;
  mutex.unlock();
}

unsigned long OwnThreadId() {
  static_assert(sizeof(pthread_t) <= sizeof(unsigned long));
  return static_cast<unsigned long>(pthread_self());
}

/** Under the thread list's lock. */
void CreatePrimaryExecutor(CQMThreadInfo& creator) {
  auto executor = CQMExecutor::Make(kPrimaryName, creator.GetCopies(), EQMContextKind::Primary);
  g_library.primaryExecutor.store(executor.release());
  g_library.defaultExecutor.store(g_library.primaryExecutor.load());
}

/** Under the thread list's lock. */
void ChooseContext(CQMThreadInfo& record) {
  // a default that is gone is made anew only while there is no primary context
  if (g_library.defaultExecutor.load() == nullptr && g_library.primaryExecutor.load() == nullptr) {
    CreatePrimaryExecutor(record);
  }
  record.SetExecutor(g_library.defaultExecutor.load(), false);
}

CQMThreadInfo* FindThreadInfo(bool create) {
  std::scoped_lock const lock(g_library.threadListMutex);
  if (g_library.isUnloaded.load()) return nullptr;
  unsigned long const id = OwnThreadId();
  CQMThreadInfo* record =
      g_library.threads.Find([id](CQMThreadInfo const& info) { return info.GetThreadId() == id; });
  SQMCaller& caller = ObtainCaller(id);
  if (record == nullptr) record = g_library.threads.Append(std::make_unique<CQMThreadInfo>(id, &caller));
  caller.record = record;
  caller.generation = g_library.generation.load();
  if (create && record->GetExecutor() == nullptr) ChooseContext(*record);
  return record;
}

void DestroyRecordsAndPublicContexts() {
  CQMSiblingList<CQMThreadInfo> records;
  {
    std::scoped_lock const lock(g_library.threadListMutex);
    ++g_library.generation;
    while (auto record = g_library.threads.RemoveFirst()) {
      if (record = RetireThread(std::move(record)); record != nullptr) records.Append(std::move(record));
    }
  }
  while (records.RemoveFirst() != nullptr) {
  }
  CQMContextList executors;
  {
    std::scoped_lock const lock(g_library.executorListMutex);
    std::swap(executors, g_library.executors);
  }
  while (auto executor = executors.RemoveFirst()) DestroyWhenUnused(std::move(executor));
  g_library.defaultExecutor.store(g_library.primaryExecutor.load());
}

}  // namespace

CQMThreadInfo* GetThreadInfo(bool create) {
  SQMCaller const* const caller = FindCaller();
  if (caller != nullptr && caller->generation == g_library.generation.load(std::memory_order_acquire) &&
      (!create || !caller->current.load()->IsMark())) {
    return caller->record;
  }
  try {
    return FindThreadInfo(create);
  } catch (std::exception const&) {
    return nullptr;
  }
}

bool DropThreadInfo() {
  std::unique_ptr<CQMThreadInfo> dropped;  // destroyed after the lock is released
  std::scoped_lock const lock(g_library.threadListMutex);
  CQMThreadInfo* previous = g_library.threads.GetFirst();
  if (previous == nullptr) return false;
  unsigned long const id = OwnThreadId();
  while (CQMThreadInfo* const record = g_library.threads.GetNext(previous)) {
    if (record->GetThreadId() == id) {
      // the record before the caller's own goes, on purpose
      ++g_library.generation;
      dropped = RetireThread(g_library.threads.Remove(previous));
      break;
    }
    previous = record;
  }
  return true;
}

void AcquireExecutorList() { Acquire(g_library.executorListMutex, t_executorListHolds); }
void ReleaseExecutorList() { Release(g_library.executorListMutex, t_executorListHolds); }
void AcquireThreadList() { Acquire(g_library.threadListMutex, t_threadListHolds); }
void ReleaseThreadList() { Release(g_library.threadListMutex, t_threadListHolds); }

bool InitializeLibrary() {
  {
    std::scoped_lock const lock(g_library.threadListMutex);
    if (g_library.isInitialized || g_library.isUnloaded.load()) return false;
    g_library.primaryObject = std::make_unique<CQMLinkedObject>().release();
    g_library.isInitialized = true;
  }
  GetThreadInfo(true);
  return true;
}

bool ResetLibrary() {
  if (g_library.isUnloaded.load()) return false;
  DestroyRecordsAndPublicContexts();
  return true;
}

void CleanUpLibrary() {
  std::unique_ptr<CQMLinkedObject> root;
  std::unique_ptr<CQMExecutor> primary;
  {
    std::scoped_lock const lock(g_library.threadListMutex);
    g_library.isUnloaded.store(true);
    root.reset(std::exchange(g_library.primaryObject, nullptr));
    primary.reset(g_library.primaryExecutor.exchange(nullptr));
  }
  DestroyRecordsAndPublicContexts();
  g_library.defaultExecutor.store(nullptr);
  if (primary != nullptr) DestroyWhenUnused(std::move(primary));
}

}  // namespace qumel
