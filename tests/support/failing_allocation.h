// Lets allocations fail on purpose, to see what is left when memory runs out.
#pragma once

namespace qumel::testing {

/** While it lives, every allocation of this thread after the first `spared` ones throws std::bad_alloc. A
 * test program that uses it lists support/failing_allocation.cpp among its sources, which replaces the global
 * operator new. */
class FailingAllocation {
 public:
  explicit FailingAllocation(long spared = 0);
  ~FailingAllocation();
  FailingAllocation(FailingAllocation const&) = delete;
  FailingAllocation& operator=(FailingAllocation const&) = delete;
};

}  // namespace qumel::testing
