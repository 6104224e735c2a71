// Start and end of the library, and the records of the calling threads.
#include "context/library.h"

#include <utility>

#include "context/context_use.h"
#include "context/process_state.h"

namespace qumel {

namespace {

/** To be called with the thread list locked. */
void CreatePrimaryExecutor(CQMThreadInfo& creator) {
  auto executor = CQMExecutor::Make(kPrimaryName, creator.GetCopies(), EQMContextKind::Primary);
  g_process.primaryExecutor.store(executor.release());
  g_process.defaultExecutor.store(g_process.primaryExecutor.load());
}

/** To be called with the thread list locked. */
void ChooseContext(CQMThreadInfo& record) {
  // a default context that was destroyed is made again only if there is no primary context either
  if (g_process.defaultExecutor.load() == nullptr && g_process.primaryExecutor.load() == nullptr) {
    CreatePrimaryExecutor(record);
  }
  record.SetExecutor(g_process.defaultExecutor.load(), false);
}

CQMThreadInfo* FindThreadInfo(bool create) {
  std::scoped_lock const lock(g_process.threadList);
  if (g_process.isUnloaded.load()) return nullptr;
  unsigned long const id = OwnThreadId();
  CQMThreadInfo* record =
      g_process.threads.Find([id](CQMThreadInfo const& info) { return info.GetThreadId() == id; });
  SQMCaller& caller = ObtainCaller(id);
  if (record == nullptr) record = g_process.threads.Append(std::make_unique<CQMThreadInfo>(id, &caller));
  caller.record = record;
  caller.generation = g_process.generation.load();
  if (create && record->GetExecutor() == nullptr) ChooseContext(*record);
  return record;
}

void DestroyRecordsAndPublicContexts() {
  CQMSiblingList<CQMThreadInfo> records;
  {
    std::scoped_lock const lock(g_process.threadList);
    ++g_process.generation;
    while (auto record = g_process.threads.RemoveFirst()) {
      if (record = RetireThread(std::move(record)); record != nullptr) records.Append(std::move(record));
    }
  }
  while (records.RemoveFirst() != nullptr) {
  }
  CQMContextList executors;
  {
    std::scoped_lock const lock(g_process.executorList);
    std::swap(executors, g_process.executors);
  }
  while (auto executor = executors.RemoveFirst()) DestroyWhenUnused(std::move(executor));
  g_process.defaultExecutor.store(g_process.primaryExecutor.load());
}

}  // namespace

CQMThreadInfo* GetThreadInfo(bool create) {
  SQMCaller const* const caller = FindCaller();
  if (caller != nullptr && caller->generation == g_process.generation.load(std::memory_order_acquire) &&
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
  std::scoped_lock const lock(g_process.threadList);
  CQMThreadInfo* previous = g_process.threads.GetFirst();
  if (previous == nullptr) return false;
  unsigned long const id = OwnThreadId();
  while (CQMThreadInfo* const record = g_process.threads.GetNext(previous)) {
    if (record->GetThreadId() == id) {
      // the record that precedes the caller's own is destroyed, as is documented
      ++g_process.generation;
      dropped = RetireThread(g_process.threads.Remove(previous));
      break;
    }
    previous = record;
  }
  return true;
}

void AcquireExecutorList() { g_process.executorList.LockForHost(); }
void ReleaseExecutorList() { g_process.executorList.UnlockForHost(); }
void AcquireThreadList() { g_process.threadList.LockForHost(); }
void ReleaseThreadList() { g_process.threadList.UnlockForHost(); }

bool InitializeLibrary() {
  {
    std::scoped_lock const lock(g_process.threadList);
    if (g_process.isInitialized || g_process.isUnloaded.load()) return false;
    g_process.primaryObject = std::make_unique<CQMLinkedObject>().release();
    g_process.isInitialized = true;
  }
  GetThreadInfo(true);
  return true;
}

bool ResetLibrary() {
  if (g_process.isUnloaded.load()) return false;
  DestroyRecordsAndPublicContexts();
  return true;
}

void CleanUpLibrary() {
  std::unique_ptr<CQMLinkedObject> root;
  std::unique_ptr<CQMExecutor> primary;
  {
    std::scoped_lock const lock(g_process.threadList);
    g_process.isUnloaded.store(true);
    root.reset(std::exchange(g_process.primaryObject, nullptr));
    primary.reset(g_process.primaryExecutor.exchange(nullptr));
  }
  DestroyRecordsAndPublicContexts();
  g_process.defaultExecutor.store(nullptr);
  if (primary != nullptr) DestroyWhenUnused(std::move(primary));
}

}  // namespace qumel
