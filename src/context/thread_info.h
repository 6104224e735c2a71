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
  /** The current context, or null. Only a thread that keeps it alive may use it. */
  CQMExecutor* GetExecutor();

  CQMExecutor* FindExecutor(char const* name) const;
  bool IsExecutor(CQMLinkedObject const* object) const;
  /** Finds or makes the private context of that name, which does not become current. Null for null. */
  CQMExecutor* AddExecutor(char const* name);
  bool DropExecutor(char const* name);
  /** Makes executor current. With lock, it waits for the lock of the context first, and fails when the
   * context is destroyed meanwhile or the wait would never end. The lock of the former current context is
   * kept. For null nothing changes, and the result tells whether there is a current context. */
  bool SetExecutor(CQMExecutor* executor, bool lock);
  /** Releases the lock if the thread has it, and resets the copies of the settings to their defaults. */
  void ClearExecutor();
  /** False without a current context, when that is destroyed during the wait, and when the wait would never
   * end. */
  bool LockExecutor();
  bool UnlockExecutor();

  /** Those of the current context when there is one, else the record's copies. */
  SQMSettings const& GetSettings() {
    CQMExecutor const* const current = GetExecutor();
    return current != nullptr ? current->GetSettings() : m_settings;
  }
  // One setter for each row: those of fixed settings act only without a current context; the others change
  // the copy and pass the value on to the current context.
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
