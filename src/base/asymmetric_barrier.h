// Barriers for two sides of which one is called often and pays nothing, while the other pays for both.
#pragma once

#include <atomic>

#if defined(__SANITIZE_THREAD__)
#define QUMEL_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QUMEL_THREAD_SANITIZER
#endif
#endif

namespace qumel {

/** The frequent side stores its announcement, passes Light, and loads what the rare side may have stored. The
 * rare side stores, passes Heavy, and loads the announcement. At least one of the two sees what the other
 * stored. Stores and loads take the orders named here: the thread sanitizer knows no barriers, so that they
 * are sequentially consistent where it watches. */
class CQMAsymmetricBarrier {
 public:
#if defined(QUMEL_THREAD_SANITIZER)
  static constexpr std::memory_order kStore = std::memory_order_seq_cst;
  static constexpr std::memory_order kLoad = std::memory_order_seq_cst;
#else
  static constexpr std::memory_order kStore = std::memory_order_release;
  static constexpr std::memory_order kLoad = std::memory_order_acquire;
#endif

  /** Finds out, once, whether the system can interrupt the other threads for Heavy; before the first
   * announcement. */
  static void Choose();
  /** Whether it cannot, so that the frequent side needs fences, too. */
  static bool NeedsFences() { return s_needsFences; }
  /** For tests of either way; no thread may be between an announcement and its end. */
  static void SetNeedsFences(bool needsFences) { s_needsFences = needsFences; }

  static void Light() {
    ForbidReordering();
    if (s_needsFences) Fence();
  }
  static void Heavy();

  /** The part of Light that costs no instruction; for callers that see to the fence themselves. */
  static void ForbidReordering() { std::atomic_signal_fence(std::memory_order_seq_cst); }
  static void Fence() {
#if !defined(QUMEL_THREAD_SANITIZER)
    std::atomic_thread_fence(std::memory_order_seq_cst);
#endif
  }

 private:
  static bool s_needsFences;
};

}  // namespace qumel
