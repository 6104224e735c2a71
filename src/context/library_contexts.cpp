// The named contexts: making, finding, choosing, locking and destroying them.
#include <algorithm>
#include <cstring>
#include <new>

#include "context/context_use.h"
#include "context/library.h"
#include "context/process_state.h"

namespace qumel {

namespace {

using NameBuffer = char[SQMCaller::kNameSize];

/** Copies name, cut to the size of the buffer. */
char const* CopyName(std::string_view name, NameBuffer& buffer) {
  std::size_t const length = std::min(name.size(), SQMCaller::kNameSize - 1);
  std::memcpy(buffer, name.data(), length);
  buffer[length] = '\0';
  return buffer;
}

bool IsPrimaryName(std::string_view name) { return name == kPrimaryName; }

/** The handle that every context is given when it is made; 0 for none. */
Handle HandleOf(CQMExecutor const* executor) { return executor != nullptr ? executor->PeekHandle() : 0; }

/** Whether hosts can lock the context; the primary one they cannot. */
bool IsLockable(CQMExecutor const* context) {
  return context != nullptr && context != g_process.primaryExecutor.load();
}

/** Sets the last error of the context that the calling thread asks for it: the current or else the default
 * one. */
void ReportOutOfMemory() {
  {
    CQMContextUse const current(CQMContextUse::EQMNeed::CurrentIfAny);
    if (current.GetExecutor() != nullptr) return current.GetExecutor()->SetLastError(Error::OutOfMemory);
  }
  std::unique_lock lock(g_process.threadList);
  CQMKeptContext const kept(
      g_process.defaultExecutor.load());  // another thread may destroy it once the list is unlocked
  lock.unlock();
  if (kept.Get() != nullptr) kept.Get()->SetLastError(Error::OutOfMemory);
}

/** The value of make for the calling thread's record; 0 when memory is exhausted, which becomes the last
 * error. */
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
  return name != nullptr ? g_process.executors.FindByName(name) : nullptr;
}

CQMExecutor* FindPublicExecutor(char const* name) {
  std::scoped_lock const lock(g_process.executorList);
  return FindPublicLocked(name);
}

bool IsPublicExecutor(CQMExecutor const* executor) {
  std::scoped_lock const lock(g_process.executorList);
  return executor != nullptr && g_process.executors.Find([executor](CQMExecutor const& known) {
    return &known == executor;
  }) != nullptr;
}

bool DropPublicExecutor(char const* name) {
  std::unique_ptr<CQMExecutor> executor;
  {
    std::scoped_lock const lock(g_process.executorList);
    CQMExecutor* const found = FindPublicLocked(name);
    if (found == nullptr) return false;
    executor = g_process.executors.Remove(found);
  }
  DestroyWhenUnused(std::move(executor));
  return true;
}

Handle CreatePublicContext(char const* name) {
  return CreateContext(name, [name](CQMThreadInfo& record) {
    std::scoped_lock const lock(g_process.executorList);
    if (CQMExecutor* const known = FindPublicLocked(name); known != nullptr) return HandleOf(known);
    auto executor = CQMExecutor::Make(name, record.GetCopies(), EQMContextKind::Public);
    return HandleOf(g_process.executors.Append(std::move(executor)));
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
    CQMExecutor* const primary = g_process.primaryExecutor.load();
    record->SetExecutor(primary, false);
    return HandleOf(primary);
  }
  if (CQMExecutor* const own = record->FindExecutor(name); own != nullptr) {
    return record->SetExecutor(own, lock) ? HandleOf(own) : 0;
  }
  std::unique_lock listLock(g_process.executorList);
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
  if (IsPrimaryName(name)) return g_process.primaryExecutor.load() != nullptr && ResetDefaultContext();
  std::unique_lock listLock(g_process.executorList);
  CQMKeptContext const target(FindPublicLocked(name));
  listLock.unlock();
  std::scoped_lock const lock(g_process.threadList);
  if (target.Get() == nullptr || target.Get()->IsRetired()) return false;
  g_process.defaultExecutor.store(target.Get());
  return true;
}

bool ResetDefaultContext() {
  if (g_process.isUnloaded.load()) return false;
  std::scoped_lock const lock(g_process.threadList);
  g_process.defaultExecutor.store(g_process.primaryExecutor.load());
  return true;
}

Handle GetContextHandle(char const* name) {
  CQMRecordUse const call;
  if (call.GetRecord() == nullptr || name == nullptr) return 0;
  if (IsPrimaryName(name)) return HandleOf(g_process.primaryExecutor.load());
  if (CQMExecutor* const own = call.GetRecord()->FindExecutor(name); own != nullptr) return HandleOf(own);
  std::scoped_lock const lock(g_process.executorList);
  return HandleOf(FindPublicLocked(name));
}

char const* GetContextName(Handle handle) {
  CQMRecordUse const call;
  SQMCaller* const caller = FindCaller();
  if (caller == nullptr) return "";
  NameBuffer& buffer = caller->contextName;
  // compared, but not read, until it is found in a list: another thread may be destroying it
  CQMLinkedObject const* const object = CQMLinkedObject::GetObject(handle);
  if (object == nullptr || call.GetRecord() == nullptr) return CopyName("", buffer);
  if (object == g_process.primaryExecutor.load()) return CopyName(kPrimaryName, buffer);
  if (call.GetRecord()->IsExecutor(object)) return CopyName(object->Name(), buffer);
  std::scoped_lock const lock(g_process.executorList);
  CQMExecutor const* const known =
      g_process.executors.Find([object](CQMExecutor const& listed) { return &listed == object; });
  return CopyName(known != nullptr ? known->Name() : "", buffer);
}

char const* GetCurrentContextName() {
  CQMKeptContext const current;
  SQMCaller* const caller = FindCaller();
  if (caller == nullptr) return "";
  return CopyName(current.Get() != nullptr ? current.Get()->Name() : "", caller->currentName);
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
