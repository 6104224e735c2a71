// The process-wide frame: start and end of the library, the thread records, and the named contexts.
#pragma once

#include "context/executor.h"
#include "context/thread_info.h"

namespace qumel {

/** Name of the primary context; no other context may take it. */
inline constexpr char kPrimaryName[] = "Qumel";
inline constexpr float kVersion = 2.5f;

/** The calling thread's record; with create also with a current context where one can be had. Null after
 * unloading and when memory is exhausted. A record found before is returned without a lock. */
CQMThreadInfo* GetThreadInfo(bool create);
CQMExecutor* FindPublicExecutor(char const* name);
bool IsPublicExecutor(CQMExecutor const* executor);
bool DropPublicExecutor(char const* name);
bool DropThreadInfo();

// For hosts that look at the lists themselves. The holder may go on calling the library, unless another
// thread holds the other list; a release by a thread that holds nothing does nothing.
void AcquireExecutorList();
void ReleaseExecutorList();
void AcquireThreadList();
void ReleaseThreadList();

bool InitializeLibrary();
/** Destroys all thread records and public contexts; the primary context stays and becomes the default again.
 * False after unloading. */
bool ResetLibrary();
/** Destroys everything. From now on there are no records and no contexts. */
void CleanUpLibrary();

Handle CreatePublicContext(char const* name);
Handle CreatePrivateContext(char const* name);
bool DestroyPrivateContext(char const* name);
Handle SetContext(char const* name, bool lock);
bool SetDefaultContext(char const* name);
bool ResetDefaultContext();
Handle GetContextHandle(char const* name);
char const* GetContextName(Handle handle);
char const* GetCurrentContextName();
Handle GetCurrentContextHandle();
bool LockContext();
bool ReleaseContext();
bool ClearContext();

}  // namespace qumel
