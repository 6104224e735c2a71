// Lets allocations fail on purpose, to see what is left when memory runs out, and counts them, to see how
// work grows.
#pragma once

#include <cstddef>
#include <limits>

namespace qumel::testing {

/** While it lives, `failures` allocations of this thread, or all, throw std::bad_alloc after the first
 * `spared` ones. A test program that uses it or CountedAllocations lists support/failing_allocation.cpp among
 * its sources, which replaces the global operator new. */
class FailingAllocation {
 public:
  static constexpr long kAll = std::numeric_limits<long>::max();

  explicit FailingAllocation(long spared = 0, long failures = kAll);
  ~FailingAllocation();
  FailingAllocation(FailingAllocation const&) = delete;
  FailingAllocation& operator=(FailingAllocation const&) = delete;

  /** Whether an allocation has failed since. */
  static bool HasFailed();
};

/** What this thread has allocated since it was made. */
class CountedAllocations {
 public:
  CountedAllocations();
  /** Whether it was freed again or not. */
  std::size_t Count() const;
  std::size_t Bytes() const;
  /** Of what was not freed yet, with what it takes beyond the bytes asked for. */
  long KeptBytes() const;

 private:
  std::size_t m_count, m_bytes;
  long m_kept;
};

}  // namespace qumel::testing
