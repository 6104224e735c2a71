// The record of one calling thread: its current context, its private contexts and its copies of the settings.
#pragma once

#include "context/executor.h"
#include "context/settings.h"

namespace qumel {

/** Touched by its own thread only, but for the clearing of a context that another thread destroys. */
class CQMThreadInfo : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kThreadInfo;

  /** A record without a thread; results are not forced complex. */
  CQMThreadInfo();
  /** The record of a thread; starts with forced complex results, on purpose. */
  explicit CQMThreadInfo(unsigned long threadId);
  ~CQMThreadInfo() override;

  unsigned long GetThreadId() const { return m_threadId; }
  CQMExecutor* GetExecutor() const { return m_current; }

  CQMExecutor* FindExecutor(char const* name) const;
  bool IsExecutor(CQMExecutor const* executor) const;
  /** The private context of that name, made when there is none; it does not become current. */
  CQMExecutor* AddExecutor(char const* name);
  bool DropExecutor(char const* name);
  /** Makes executor current; with lock, waits for its semaphore first. A lock on the context that was current before is
   *  kept. Null changes nothing and tells whether there is a current context. */
  bool SetExecutor(CQMExecutor* executor, bool lock);
  bool SetExecutor(char const* name, bool lock);
  void ClearExecutor();
  bool LockExecutor();
  bool UnlockExecutor();

  // Getters answer for the current context when there is one, else with the record's copy. Setters of the first group
  // act only without a current context; those of the second store and pass on.
  bool GetAllowImpliedMult() const { return Effective().allowImpliedMultiplication; }
  char GetRadixMark() const { return Effective().radixMark; }
  char GetQuoteMark() const { return Effective().quoteMark; }
  char GetBooleanTrue() const { return Effective().booleanTrue; }
  bool GetInvertArrayIndices() const { return Effective().invertArrayIndices; }
  char GetNumberBase() const { return Effective().numberBase; }
  char GetAngleUnit() const { return Effective().angleUnit; }
  bool GetAllowComplexResults() const { return Effective().allowComplexResults; }
  bool GetForceComplexResults() const { return Effective().forceComplexResults; }
  char GetCoordinateFormat() const { return Effective().coordinateFormat; }
  char GetDefaultVariableScope() const { return Effective().defaultVariableScope; }
  int GetFormattedResultPrecisionLimit() const { return Effective().precisionLimit; }

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

  SQMSettings const& GetCopies() const { return m_settings; }

 private:
  SQMSettings const& Effective() const { return m_current != nullptr ? m_current->GetSettings() : m_settings; }

  unsigned long m_threadId = 0;
  CQMExecutor* m_current = nullptr;
  bool m_locked = false;
  CQMExecutor* m_firstPrivate = nullptr;
  CQMExecutor* m_lastPrivate = nullptr;
  SQMSettings m_settings;
};

}  // namespace qumel
