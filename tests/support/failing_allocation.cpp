// The replaced global allocation functions behind FailingAllocation and CountedAllocations.
#include "support/failing_allocation.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

constexpr long kNeverFails = -1;
thread_local long g_spared = kNeverFails;
thread_local long g_failures = 0;
thread_local bool g_hasFailed = false;
thread_local std::size_t g_count = 0;
thread_local std::size_t g_bytes = 0;
thread_local long g_keptBytes = 0;

bool FailsNow() {
  if (g_spared == kNeverFails) return false;
  if (g_spared > 0) {
    --g_spared;
    return false;
  }
  if (g_failures == 0) return false;
  --g_failures;
  return g_hasFailed = true;
}

}  // namespace

namespace qumel::testing {

FailingAllocation::FailingAllocation(long spared, long failures) {
  g_spared = spared;
  g_failures = failures;
  g_hasFailed = false;
}
FailingAllocation::~FailingAllocation() { g_spared = kNeverFails; }
bool FailingAllocation::HasFailed() { return g_hasFailed; }

CountedAllocations::CountedAllocations() : m_count(g_count), m_bytes(g_bytes), m_kept(g_keptBytes) {}
std::size_t CountedAllocations::Count() const { return g_count - m_count; }
std::size_t CountedAllocations::Bytes() const { return g_bytes - m_bytes; }
long CountedAllocations::KeptBytes() const { return g_keptBytes - m_kept; }

}  // namespace qumel::testing

// The other forms of new and delete are defined in terms of these by the standard library; those for arrays
// are not where a sanitizer brings its own.
void* operator new(std::size_t size) {
  if (FailsNow()) throw std::bad_alloc();
  ++g_count;
  g_bytes += size;
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  g_keptBytes += static_cast<long>(malloc_usable_size(memory));
  return memory;
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
  try {
    return operator new(size);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept {
  g_keptBytes -= static_cast<long>(malloc_usable_size(memory));
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { ::operator delete(memory); }
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete[](void* memory) noexcept { ::operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { ::operator delete(memory); }
