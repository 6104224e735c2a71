// Finding the bounds of a thread's stack.
#include "base/stack_room.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qumel {

namespace {

/** Kept free for what is called at the deepest level, a callback of the host included; of small stacks only a
 * part. */
constexpr std::size_t kReserve = 64UL << 10;
constexpr std::size_t kReservedPart = 4;

/** Addresses within the stack, of which those below low are the reserve; none when the bounds are not known.
 */
struct SQMStackBounds {
  std::uintptr_t begin = 0;
  std::uintptr_t low = 0;
};

SQMStackBounds FindBounds() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  void* begin = nullptr;
  std::size_t size = 0;
  bool const isKnown = pthread_attr_getstack(&attributes, &begin, &size) == 0;
  pthread_attr_destroy(&attributes);
  if (!isKnown) return {};
  auto const address = reinterpret_cast<std::uintptr_t>(begin);
  return {address, address + std::min(kReserve, size / kReservedPart)};
}

}  // namespace

bool IsStackLow() {
  thread_local SQMStackBounds const bounds = FindBounds();
  auto const here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here >= bounds.begin && here < bounds.low;
}

}  // namespace qumel
