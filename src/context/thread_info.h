// The record of one calling thread: its current context, its private contexts and its copies of the settings.
#pragma once

#include "context/context_gate.h"
#include "context/context_list.h"
#include "context/executor.h"
#include "context/settings.h"

namespace qumel {

/** Used by its own thread only, and by whoever destroys it. Which context is current is kept in the thread's
 * caller, where a thread that destroys the context can clear it. */
class CQMThreadInfo : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kThreadInfo;

  /** The record of a thread. It starts with forced complex results, unlike one whose context was cleared:
   * private contexts that a thread makes before any other call force them, which hosts know. Without a caller
   * no context can become current. */
  explicit CQMThreadInfo(unsigned long threadId, SQMCaller* caller = nullptr);
  ~CQMThreadInfo() override;

  unsigned long GetThreadId() const { return m_threadId; }
  /** The current context; to be used only while it is kept alive. */
  CQMExecutor* GetExecutor();

  CQMExecutor* FindExecutor(char const* name) const;
  bool IsExecutor(CQMLinkedObject const* object) const;
  /** The private context of that name, made when there is none; it does not become current. Null for null. */
  CQMExecutor* AddExecutor(char const* name);
  bool DropExecutor(char const* name);
  /** Makes executor current; with lock, waits for its lock first, and fails when the context is destroyed
   * meanwhile or the wait would never end. A lock on the context that was current before is kept. Null
   * changes nothing and tells whether there is a current context. */
  bool SetExecutor(CQMExecutor* executor, bool lock);
  /** Gives the lock back if there is one, and resets the copies of the settings to their defaults. */
  void ClearExecutor();
  /** False when the context is destroyed during the wait or that would never end, and without a current
   * context. */
  bool LockExecutor();
  bool UnlockExecutor();

  /** Those of the current context when there is one, else the record's copies. */
  SQMSettings const& GetSettings() {
    CQMExecutor const* const current = GetExecutor();
    return current != nullptr ? current->GetSettings() : m_settings;
  }
  // The setters, one a row: those of fixed settings act only without a current context, the others store a
  // value in the copy and pass it on.
#define QM_SETTING(group, member, name, exported, Type, ...) void Set##name(Type value);
#include "context/settings.inc"

  SQMSettings const& GetCopies() {
    GetExecutor();  // resets the copies if another thread has destroyed the current context
    return m_settings;
  }

  // ---- for whoever destroys the record ----
  /** Whether a call of the thread uses this record. */
  bool IsInUse() const {
    return m_caller != nullptr && m_caller->usesRecord.load(CQMAsymmetricBarrier::kLoad);
  }
  /** Clears the current context of the thread, which will get another record. */
  void Detach();

 private:
  void ForgetExecutor();

  unsigned long m_threadId;
  SQMCaller* m_caller;
  bool m_locked = false;
  CQMContextList m_privates;
  SQMSettings m_settings;
};

}  // namespace qumel
