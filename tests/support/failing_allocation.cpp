// The replaced global allocation functions behind FailingAllocation.
#include "support/failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

constexpr long kNeverFails = -1;
thread_local long g_spared = kNeverFails;

}  // namespace

namespace qumel::testing {

FailingAllocation::FailingAllocation(long spared) { g_spared = spared; }
FailingAllocation::~FailingAllocation() { g_spared = kNeverFails; }

}  // namespace qumel::testing

// The other forms of new and delete are defined in terms of these by the standard library; those for arrays
// are not where a sanitizer brings its own.
void* operator new(std::size_t size) {
  if (g_spared == 0) throw std::bad_alloc();
  if (g_spared > 0) --g_spared;
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
  try {
    return operator new(size);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete[](void* memory) noexcept { ::operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { ::operator delete(memory); }
