// What keeps a context and a thread's record alive while a call runs in them, and their destruction after it.
#pragma once

#include <memory>

#include "context/thread_info.h"

namespace qumel {

/** One call of the calling thread, from its arrival until it returns. Calls may nest, when a callback of the
 * host calls in. Contexts and records that are destroyed meanwhile, by the callback or by another thread,
 * live on until the last call that uses them has returned. */
class CQMContextUse {
 public:
  /** Evaluations that callbacks ask for nest this deep: each takes stack of the thread. */
  static constexpr int kMostNestedCalls = 200;

  /** A call that uses the current context. Without create there need not be one, else only for want of memory
   * or after the unloading of the library; there may be no record then either. */
  explicit CQMContextUse(bool create);
  /** A call that uses a context known to be alive. */
  CQMContextUse(CQMThreadInfo& record, CQMExecutor& executor);
  ~CQMContextUse();
  CQMContextUse(CQMContextUse const&) = delete;
  CQMContextUse& operator=(CQMContextUse const&) = delete;

  CQMThreadInfo* GetRecord() const { return m_record; }
  CQMExecutor* GetExecutor() const { return m_executor; }
  /** Whether the calling thread's calls nest too deep, or its stack is too small, for one that may call the
   * host back. */
  static bool IsTooDeep();

 private:
  void EnterCurrent();

  CQMThreadInfo* m_record = nullptr;
  CQMExecutor* m_executor = nullptr;
  bool m_isOutermost = false;
};

/** Takes executor, which is in no list any more, away from all threads and from the default, and destroys it
 * now or when the last call in it has returned. */
void DestroyWhenUnused(std::unique_ptr<CQMExecutor> executor);

}  // namespace qumel
