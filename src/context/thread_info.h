// The record of one calling thread: its current context, its private contexts and its copies of the settings.
#pragma once

#include <atomic>

#include "context/context_list.h"
#include "context/executor.h"
#include "context/settings.h"

namespace qumel {

/** Touched by its own thread only. Other threads may do two things, both under the lock of the thread list:
 * take a context away that they destroy (Forget), and ask which context the thread's call runs in (IsUsing).
 */
class CQMThreadInfo : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kThreadInfo;

  /** A record without a thread; results are not forced complex. */
  CQMThreadInfo() : CQMThreadInfo(0) { m_settings.forceComplexResults = false; }
  /** The record of a thread; starts with forced complex results, on purpose. */
  explicit CQMThreadInfo(unsigned long threadId);
  ~CQMThreadInfo() override;

  unsigned long GetThreadId() const { return m_threadId; }
  CQMExecutor* GetExecutor() {
    CQMExecutor* const current = m_current.load(std::memory_order_acquire);
    if (current != ForgottenMark()) return current;
    ForgetLocally();
    return nullptr;
  }

  CQMExecutor* FindExecutor(char const* name) const;
  bool IsExecutor(CQMLinkedObject const* object) const;
  /** The private context of that name, made when there is none; it does not become current. Null for null. */
  CQMExecutor* AddExecutor(char const* name);
  bool DropExecutor(char const* name);
  /** Makes executor current; with lock, waits for its lock first, and fails when the context is destroyed
   * meanwhile. A lock on the context that was current before is kept. Null changes nothing and tells whether
   * there is a current context. */
  bool SetExecutor(CQMExecutor* executor, bool lock);
  bool SetExecutor(char const* name, bool lock);
  /** Gives the lock back if there is one; the copies of the settings get their defaults. */
  void ClearExecutor();
  /** False when the context is destroyed during the wait, and without a current context. */
  bool LockExecutor();
  bool UnlockExecutor();

  // Getters answer for the current context when there is one, else with the record's copy. Setters of the
  // first group act only without a current context; those of the second store and pass on.
  bool GetAllowImpliedMult() { return Effective().allowImpliedMultiplication; }
  char GetRadixMark() { return Effective().radixMark; }
  char GetQuoteMark() { return Effective().quoteMark; }
  char GetBooleanTrue() { return Effective().booleanTrue; }
  bool GetInvertArrayIndices() { return Effective().invertArrayIndices; }
  char GetNumberBase() { return Effective().numberBase; }
  char GetAngleUnit() { return Effective().angleUnit; }
  bool GetAllowComplexResults() { return Effective().allowComplexResults; }
  bool GetForceComplexResults() { return Effective().forceComplexResults; }
  char GetCoordinateFormat() { return Effective().coordinateFormat; }
  char GetDefaultVariableScope() { return Effective().defaultVariableScope; }
  int GetFormattedResultPrecisionLimit() { return Effective().precisionLimit; }

  void SetAllowImpliedMult(bool value);
  void SetRadixMark(char mark);
  void SetQuoteMark(char mark);
  void SetBooleanTrue(char mark);
  void SetInvertArrayIndices(bool value);
  void SetNumberBase(char base);
  void SetAngleUnit(char unit);
  void SetCoordinateFormat(char format);
  void SetAllowComplexResults(bool allow);
  /** Stores force, and tells the current context to allow complex results; crossed over on purpose. */
  void SetForceComplexResults(bool force);
  void SetDefaultVariableScope(char scope);
  void SetFormattedResultPrecisionLimit(int digits);

  SQMSettings const& GetCopies() {
    GetExecutor();  // a context taken away leaves defaults behind
    return m_settings;
  }

  // ---- for other threads ----
  /** Takes executor away if it is current; the thread finds out at its next call. */
  void Forget(CQMExecutor* executor);
  /** Marks the private contexts: they go when this record does. */
  void RetireExecutors();
  /** Whether the outermost call of the thread runs in executor, or a nested one is about to. */
  bool IsUsing(CQMExecutor const* executor) const {
    return m_used.load() == executor || m_entering.load() == executor;
  }
  /** Whether a call of the thread uses this record. */
  bool IsInUse() const { return m_calls.load() != 0; }

 private:
  friend class CQMContextUse;

  SQMSettings const& Effective() {
    CQMExecutor const* const current = GetExecutor();
    return current != nullptr ? current->GetSettings() : m_settings;
  }
  /** Stands in m_current for a context that another thread took away. */
  static CQMExecutor* ForgottenMark();
  void ForgetLocally();

  unsigned long m_threadId;
  std::atomic<CQMExecutor*> m_current{nullptr};
  bool m_locked = false;
  CQMContextList m_privates;
  SQMSettings m_settings;
  std::atomic<CQMExecutor*> m_used{nullptr};      // by the outermost call
  std::atomic<CQMExecutor*> m_entering{nullptr};  // by a nested call, until the context counts it
  std::atomic<int> m_calls{0};
};

}  // namespace qumel
