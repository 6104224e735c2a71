// The barrier of the rare side: the system makes every running thread of the process pass one.
#include "base/asymmetric_barrier.h"

#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qumel {

constinit bool CQMAsymmetricBarrier::s_needsFences = true;

namespace {

bool CallSystem(int command) { return syscall(SYS_membarrier, command, 0, 0) == 0; }

}  // namespace

void CQMAsymmetricBarrier::Choose() {
  s_needsFences =
      !CallSystem(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED) || !CallSystem(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
}

void CQMAsymmetricBarrier::Heavy() {
#if !defined(QUMEL_THREAD_SANITIZER)
  if (s_needsFences) Fence();
  else CallSystem(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
#endif
}

}  // namespace qumel
