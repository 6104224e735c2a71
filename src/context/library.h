// What the exported functions do that concerns the whole library: its start and end, the records of threads,
// and the named contexts.
#pragma once

#include "context/executor.h"
#include "context/thread_info.h"

namespace qumel {

/** Name of the primary context; no other context may take it. */
inline constexpr char kPrimaryName[] = "Qumel";
inline constexpr float kVersion = 2.5f;

/** The calling thread's record. With create, the thread is given the default context if it has no current
 * one. Null when memory is exhausted and after the library was unloaded. A thread finds its record again
 * without a lock. */
CQMThreadInfo* GetThreadInfo(bool create);
CQMExecutor* FindPublicExecutor(char const* name);
bool IsPublicExecutor(CQMExecutor const* executor);
bool DropPublicExecutor(char const* name);
bool DropThreadInfo();

// Lock and unlock the lists for hosts that look at them. The holder may call the library, as long as no other
// thread holds the other list. A thread that releases what it does not hold changes nothing.
void AcquireExecutorList();
void ReleaseExecutorList();
void AcquireThreadList();
void ReleaseThreadList();

bool InitializeLibrary();
/** Destroys all thread records and public contexts; the primary context stays and becomes the default
 * context. False after the library was unloaded. */
bool ResetLibrary();
/** Destroys everything for good: no records and no contexts are made any more. */
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
