// The one place of the process-wide state of this floor.
#include "context/process_state.h"

namespace qumel {

constinit SQMProcessState g_process;

constinit std::atomic<long> CQMExecutor::sm_lExecutorCount{0};
constinit std::atomic<long> CQMExecutor::sm_lNextExternalOperatorID{OpId::FirstExternal};
// Bare pointers, not owners that a process exit would destroy: threads may still run then.
constinit CQMOperatorList* CQMExecutor::sm_pCosmicOperatorList = nullptr;
constinit CQMSymbolTable* CQMExecutor::sm_pCosmicSymTab = nullptr;
constinit CQMSymbolTable* CQMExecutor::sm_pCosmicErrTab = nullptr;

}  // namespace qumel
