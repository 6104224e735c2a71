// Calls announce what they use; whoever destroys a context or a record looks at these announcements.
#include "context/context_use.h"

#include "base/stack_room.h"
#include "context/library.h"
#include "context/library_state.h"

namespace qumel {

namespace {

thread_local constinit int t_nesting = 0;

/** Under the thread list's lock. A context that is taken away from all records gets no new users. */
bool IsUsed(CQMExecutor const* executor) {
  auto const isUser = [executor](CQMThreadInfo const& record) { return record.IsUsing(executor); };
  // the announcements first: a nested call takes its own back only after the context has counted it
  return g_library.threads.Find(isUser) != nullptr || g_library.retiredThreads.Find(isUser) != nullptr ||
         executor->HasNestedUse();
}

/** Moves what fits from one list to the other. */
template <class Object, class Predicate>
void MoveIf(CQMSiblingList<Object>& from, CQMSiblingList<Object>& to, Predicate fits) {
  for (Object* object = from.GetFirst(); object != nullptr;) {
    Object* const next = from.GetNext(object);
    if (fits(*object)) to.Append(from.Remove(object));
    object = next;
  }
}

void DestroyUnused() {
  CQMSiblingList<CQMThreadInfo> records;
  CQMSiblingList<CQMExecutor> executors;
  {
    std::scoped_lock const lock(g_library.threadListMutex);
    MoveIf(g_library.retiredThreads, records, [](CQMThreadInfo& record) {
      if (record.IsInUse()) return false;
      record.ClearExecutor();
      --g_library.retiredCount;
      return true;
    });
    MoveIf(g_library.retiredExecutors, executors, [](CQMExecutor& executor) {
      if (IsUsed(&executor)) return false;
      --g_library.retiredCount;
      return true;
    });
  }
  while (records.RemoveFirst() != nullptr) {
  }
  while (executors.RemoveFirst() != nullptr) {
  }
}

}  // namespace

CQMContextUse::CQMContextUse(bool create) {
  ++t_nesting;
  for (;;) {
    m_record = GetThreadInfo(create);
    if (m_record == nullptr) return;
    EnterCurrent();
    // where there is a default, a context was found, and destroyed by another thread since: look again
    bool const isLost = create && m_executor == nullptr && g_library.defaultExecutor.load() != nullptr;
    if (!isLost) return;
    m_record->m_calls.fetch_sub(1);
  }
}

CQMContextUse::CQMContextUse(CQMThreadInfo& record, CQMExecutor& executor)
    : m_record(&record), m_executor(&executor) {
  ++t_nesting;
  int const calls = record.m_calls.load(std::memory_order_relaxed);
  m_isOutermost = calls == 0;
  record.m_calls.store(calls + 1, std::memory_order_relaxed);
  if (m_isOutermost) {
    record.m_used.store(&executor, std::memory_order_release);
  } else {
    executor.CountNestedUse(1);
  }
}

CQMContextUse::~CQMContextUse() {
  --t_nesting;
  if (m_record == nullptr) return;
  if (m_executor != nullptr) {
    if (m_isOutermost) {
      m_record->m_used.store(nullptr, std::memory_order_release);
    } else {
      m_executor->CountNestedUse(-1);
    }
  }
  m_record->m_calls.store(m_record->m_calls.load(std::memory_order_relaxed) - 1, std::memory_order_release);
  // from here on both may be gone
  if (g_library.retiredCount.load(std::memory_order_relaxed) != 0) DestroyUnused();
}

void CQMContextUse::EnterCurrent() {
  int const calls = m_record->m_calls.load(std::memory_order_relaxed);
  m_isOutermost = calls == 0;
  m_record->m_calls.store(calls + 1, std::memory_order_relaxed);
  std::atomic<CQMExecutor*>& announcement = m_isOutermost ? m_record->m_used : m_record->m_entering;
  // Announced first and then seen to be still current: whoever destroys it takes it away first and then looks
  // here.
  do {
    m_executor = m_record->GetExecutor();
    announcement.store(m_executor);
  } while (m_executor != m_record->m_current.load());
  if (m_isOutermost || m_executor == nullptr) return;
  m_executor->CountNestedUse(1);
  announcement.store(nullptr);
}

bool CQMContextUse::IsTooDeep() { return t_nesting > kMostNestedCalls || (t_nesting > 1 && IsStackLow()); }

void DestroyWhenUnused(std::unique_ptr<CQMExecutor> executor) {
  CQMExecutor* const dying = executor.get();
  {
    std::scoped_lock const lock(g_library.threadListMutex);
    dying->Retire();
    for (CQMSiblingList<CQMThreadInfo> const* list : {&g_library.threads, &g_library.retiredThreads}) {
      list->Find([dying](CQMThreadInfo& record) {
        record.Forget(dying);
        return false;
      });
    }
    if (g_library.defaultExecutor.load() == dying) {
      g_library.defaultExecutor.store(g_library.primaryExecutor.load());
    }
    // counted before the look, so that a call that ends now either is not seen or sees the count
    ++g_library.retiredCount;
    if (IsUsed(dying)) {
      g_library.retiredExecutors.Append(std::move(executor));
    } else {
      --g_library.retiredCount;
    }
  }
}

std::unique_ptr<CQMThreadInfo> RetireThread(std::unique_ptr<CQMThreadInfo> record) {
  ++g_library.retiredCount;
  if (record->IsInUse()) {
    record->RetireExecutors();
    g_library.retiredThreads.Append(std::move(record));
    return nullptr;
  }
  --g_library.retiredCount;
  record->ClearExecutor();
  return record;
}

}  // namespace qumel
