// The named contexts: making, finding, choosing, locking and destroying them.
#include <algorithm>
#include <cstring>
#include <new>

#include "context/context_use.h"
#include "context/library.h"
#include "context/library_state.h"

namespace qumel {

namespace {

/** Texts handed out: each function has a buffer of its own, and each thread has its own of both. */
constexpr std::size_t kNameSize = 128;
thread_local constinit char t_contextName[kNameSize] = {};
thread_local constinit char t_currentName[kNameSize] = {};

/** Longer names are cut. */
char const* CopyName(std::string_view name, char (&buffer)[kNameSize]) {
  std::size_t const length = std::min(name.size(), kNameSize - 1);
  std::memcpy(buffer, name.data(), length);
  buffer[length] = '\0';
  return buffer;
}

bool IsPrimaryName(std::string_view name) { return name == kPrimaryName; }

/** Every context gets its handle when it is made. */
Handle HandleOf(CQMExecutor const* executor) { return executor != nullptr ? executor->PeekHandle() : 0; }

/** Whether a call may lock and release the context: any but the primary one. */
bool IsLockable(CQMExecutor const* context) {
  return context != nullptr && context != g_library.primaryExecutor.load();
}

/** In the context that the calling thread asks for its last error: the current or else the default one. */
void ReportOutOfMemory() {
  {
    CQMContextUse const current(CQMContextUse::EQMNeed::CurrentIfAny);
    if (current.GetExecutor() != nullptr) return current.GetExecutor()->SetLastError(Error::OutOfMemory);
  }
  std::unique_lock lock(g_library.threadListMutex);
  CQMKeptContext const kept(g_library.defaultExecutor.load());  // it may be destroyed from here on
  lock.unlock();
  if (kept.Get() != nullptr) kept.Get()->SetLastError(Error::OutOfMemory);
}

/** What make answers for the calling thread's record; 0, with the code of exhausted memory, when it throws.
 */
template <class Make>
Handle CreateContext(char const* name, Make make) {
  CQMRecordUse const call;
  if (call.GetRecord() == nullptr || name == nullptr || IsPrimaryName(name)) return 0;
  try {
    return make(*call.GetRecord());
  } catch (std::bad_alloc const&) {
    ReportOutOfMemory();
    return 0;
  }
}

}  // namespace

CQMExecutor* FindPublicLocked(char const* name) {
  return name != nullptr ? g_library.executors.FindByName(name) : nullptr;
}

CQMExecutor* FindPublicExecutor(char const* name) {
  std::scoped_lock const lock(g_library.executorListMutex);
  return FindPublicLocked(name);
}

bool IsPublicExecutor(CQMExecutor const* executor) {
  std::scoped_lock const lock(g_library.executorListMutex);
  return executor != nullptr && g_library.executors.Find([executor](CQMExecutor const& known) {
    return &known == executor;
  }) != nullptr;
}

bool DropPublicExecutor(char const* name) {
  std::unique_ptr<CQMExecutor> executor;
  {
    std::scoped_lock const lock(g_library.executorListMutex);
    CQMExecutor* const found = FindPublicLocked(name);
    if (found == nullptr) return false;
    executor = g_library.executors.Remove(found);
  }
  DestroyWhenUnused(std::move(executor));
  return true;
}

Handle CreatePublicContext(char const* name) {
  return CreateContext(name, [name](CQMThreadInfo& record) {
    std::scoped_lock const lock(g_library.executorListMutex);
    if (CQMExecutor* const known = FindPublicLocked(name); known != nullptr) return HandleOf(known);
    auto executor = CQMExecutor::Make(name, record.GetCopies(), EQMContextKind::Public);
    return HandleOf(g_library.executors.Append(std::move(executor)));
  });
}

Handle CreatePrivateContext(char const* name) {
  return CreateContext(name, [name](CQMThreadInfo& record) { return HandleOf(record.AddExecutor(name)); });
}

bool DestroyPrivateContext(char const* name) {
  CQMRecordUse const call;
  return call.GetRecord() != nullptr && call.GetRecord()->DropExecutor(name);
}

Handle SetContext(char const* name, bool lock) {
  CQMRecordUse const call;
  CQMThreadInfo* const record = call.GetRecord();
  if (record == nullptr || name == nullptr) return 0;
  if (IsPrimaryName(name)) {
    CQMExecutor* const primary = g_library.primaryExecutor.load();
    record->SetExecutor(primary, false);
    return HandleOf(primary);
  }
  if (CQMExecutor* const own = record->FindExecutor(name); own != nullptr) {
    return record->SetExecutor(own, lock) ? HandleOf(own) : 0;
  }
  std::unique_lock listLock(g_library.executorListMutex);
  CQMExecutor* const found = FindPublicLocked(name);
  if (found == nullptr) return 0;
  if (!lock) return record->SetExecutor(found, false) ? HandleOf(found) : 0;
  CQMKeptContext const target(found);
  listLock.unlock();  // the wait for the context's lock may be long
  return record->SetExecutor(found, true) ? HandleOf(found) : 0;
}

bool SetDefaultContext(char const* name) {
  CQMRecordUse const call;
  if (call.GetRecord() == nullptr || name == nullptr) return false;
  if (IsPrimaryName(name)) return g_library.primaryExecutor.load() != nullptr && ResetDefaultContext();
  std::unique_lock listLock(g_library.executorListMutex);
  CQMKeptContext const target(FindPublicLocked(name));
  listLock.unlock();
  std::scoped_lock const lock(g_library.threadListMutex);
  if (target.Get() == nullptr || target.Get()->IsRetired()) return false;
  g_library.defaultExecutor.store(target.Get());
  return true;
}

bool ResetDefaultContext() {
  if (g_library.isUnloaded.load()) return false;
  std::scoped_lock const lock(g_library.threadListMutex);
  g_library.defaultExecutor.store(g_library.primaryExecutor.load());
  return true;
}

Handle GetContextHandle(char const* name) {
  CQMRecordUse const call;
  if (call.GetRecord() == nullptr || name == nullptr) return 0;
  if (IsPrimaryName(name)) return HandleOf(g_library.primaryExecutor.load());
  if (CQMExecutor* const own = call.GetRecord()->FindExecutor(name); own != nullptr) return HandleOf(own);
  std::scoped_lock const lock(g_library.executorListMutex);
  return HandleOf(FindPublicLocked(name));
}

char const* GetContextName(Handle handle) {
  CopyName("", t_contextName);
  CQMRecordUse const call;
  // not looked into before it is found in a list: another thread may be destroying it
  CQMLinkedObject const* const object = CQMLinkedObject::GetObject(handle);
  if (object == nullptr || call.GetRecord() == nullptr) return t_contextName;
  if (object == g_library.primaryExecutor.load()) return CopyName(kPrimaryName, t_contextName);
  if (call.GetRecord()->IsExecutor(object)) return CopyName(object->Name(), t_contextName);
  std::scoped_lock const lock(g_library.executorListMutex);
  CQMExecutor const* const known =
      g_library.executors.Find([object](CQMExecutor const& listed) { return &listed == object; });
  return known != nullptr ? CopyName(known->Name(), t_contextName) : t_contextName;
}

char const* GetCurrentContextName() {
  CQMKeptContext const current;
  return CopyName(current.Get() != nullptr ? current.Get()->Name() : "", t_currentName);
}

Handle GetCurrentContextHandle() {
  CQMKeptContext const current;
  return HandleOf(current.Get());
}

bool LockContext() {
  CQMRecordUse const call;
  CQMKeptContext const current(true);
  return IsLockable(current.Get()) && call.GetRecord() != nullptr && call.GetRecord()->LockExecutor();
}

bool ReleaseContext() {
  CQMRecordUse const call;
  CQMKeptContext const current;
  return IsLockable(current.Get()) && call.GetRecord() != nullptr && call.GetRecord()->UnlockExecutor();
}

bool ClearContext() {
  CQMRecordUse const call;
  CQMKeptContext const current;
  if (call.GetRecord() == nullptr) return false;
  call.GetRecord()->ClearExecutor();
  return true;
}

}  // namespace qumel
