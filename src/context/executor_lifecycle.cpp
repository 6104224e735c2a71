// Making and destroying contexts, the process-wide tables that live as long as any context does, and the
// context's lock.
#include <array>
#include <cerrno>
#include <mutex>
#include <new>
#include <utility>

#include "context/context_use.h"
#include "context/executor.h"
#include "context/process_state.h"
#include "engine/operator_factory.h"
#include "engine/resolver.h"
#include "language/standard_operators.h"
#include "values/datum.h"

namespace qumel {

namespace {

/** The standard operators of the contexts' own lists. */
std::shared_ptr<CQMStandardOperators const> FindGlobalDialect(bool impliedMultiplication) {
  std::scoped_lock const lock(g_process.cosmicMutex);
  auto& shared = (*g_process.globalDialects)[impliedMultiplication ? 1 : 0];
  auto dialect = shared.lock();
  if (dialect == nullptr)
    shared = dialect = std::make_shared<CQMStandardOperators const>(false, impliedMultiplication);
  return dialect;
}

/** Lets symbol tables, which know nothing of datums, make variables. */
constexpr SQMVariableTraits kVariables{
    [](char const* name, EQMDataType type) -> CQMObject* {
      return std::make_unique<CQMDatum>(type, name).release();
    },
    [](CQMObject& variable, void const* value) { static_cast<CQMDatum&>(variable).SetValue(value); },
    [](CQMObject const& object) {
      return object.HasTypeTag(CQMDatum::kTypeTag) ? static_cast<CQMDatum const&>(object).GetType()
                                                   : EQMDataType::Undefined;
    },
};

template <class Object>
void Destroy(Object*& place) {
  std::unique_ptr<Object> const owner(std::exchange(place, nullptr));
}

}  // namespace

CQMExecutor::CQMExecutor() : m_gate(CQMContextGate::Open(*this)) {
  SetTypeTag(kTypeTag);
  sem_init(&m_semaphore, 1, 1);
  std::scoped_lock const lock(g_process.cosmicMutex);
  ++sm_lExecutorCount;
}

CQMExecutor::~CQMExecutor() {
  CleanUp();
  DeleteHandle();  // while the gate still serves this context
  sem_destroy(&m_semaphore);
  std::scoped_lock const lock(g_process.cosmicMutex);
  if (--sm_lExecutorCount == 0) DestroyCosmicTables();
  m_gate.Recycle();
}

std::unique_ptr<CQMExecutor> CQMExecutor::Make(char const* name, SQMSettings const& settings,
                                               EQMContextKind kind) {
  auto executor = std::make_unique<CQMExecutor>();
  executor->SetObjectName(name);
  CopySettings(settings, kind, *executor);
  bool const isMade = executor->Initialize() && executor->GetObjectHandle(&executor->GetGate()) != 0;
  if (!isMade) throw std::bad_alloc();
  return executor;
}

bool CQMExecutor::Initialize() {
  if (m_initialized) return true;
  try {
    BuildTables();
    m_initialized = true;
  } catch (std::exception const&) {
    CleanUp();
  }
  return m_initialized;
}

void CQMExecutor::BuildTables() {
  CreateCosmicTables(m_settings.allowImpliedMultiplication);
  m_globalOperators = std::make_unique<CQMOperatorList>(false);
  m_globalOperators->SetStandard(FindGlobalDialect(m_settings.allowImpliedMultiplication));
  m_postFixer = std::make_unique<CQMPostFixer>();
  m_factory = std::make_unique<CQMOperatorFactory>();
  m_globalSymbols = std::make_unique<CQMSymbolTable>(&kVariables);
  m_globalSymbols->SetParentObject(sm_pCosmicSymTab);
  m_errors = std::make_unique<CQMSymbolTable>();
  m_errors->SetParentObject(sm_pCosmicErrTab);
  m_postFixer->SetOperatorLists(sm_pCosmicOperatorList, m_globalOperators.get());
  bool const hasComma = m_settings.radixMark == RadixMark::kComma;
  m_postFixer->SetReadingRules({
      .caseSensitive = m_settings.caseSensitive,
      .hierarchical = m_settings.hierarchical,
      .impliedMultiplication = m_settings.allowImpliedMultiplication,
      .radixMark = hasComma ? ',' : '.',
      .quoteMark = m_settings.quoteMark == QuoteMark::kSingle ? '\'' : '"',
      .listSeparator = hasComma ? ';' : ',',
      .statementSeparator = hasComma ? ':' : ';',
  });
  m_factory->Initialize(this);
}

void CQMExecutor::CleanUp() {
  m_initialized = false;
  DestroyChildren();  // expressions, before the tables whose variables they refer to
  m_resolvers = {};
  m_postFixer.reset();
  m_factory.reset();
  m_globalSymbols.reset();
  m_errors.reset();
  m_globalOperators.reset();
  m_conversion = {};
  m_annotation = {};
  m_reversion = {};
}

void CQMExecutor::CreateCosmicTables(bool impliedMultiplication) {
  std::scoped_lock const lock(g_process.cosmicMutex);
  if (sm_pCosmicOperatorList == nullptr) {
    auto list = std::make_unique<CQMOperatorList>(true);
    LoadStandardDialect(*list, impliedMultiplication);
    sm_pCosmicOperatorList = list.release();
  }
  if (g_process.globalDialects == nullptr)
    g_process.globalDialects = std::make_unique<GlobalDialects>().release();
  if (sm_pCosmicSymTab == nullptr)
    sm_pCosmicSymTab = std::make_unique<CQMSymbolTable>(&kVariables, true).release();
  if (sm_pCosmicErrTab == nullptr) {
    auto table = std::make_unique<CQMSymbolTable>(nullptr, true);
    LoadStandardMessages(*table);
    sm_pCosmicErrTab = table.release();
  }
}

void CQMExecutor::DestroyCosmicTables() {
  Destroy(sm_pCosmicOperatorList);
  Destroy(g_process.globalDialects);
  Destroy(sm_pCosmicSymTab);
  Destroy(sm_pCosmicErrTab);
}

// ---- the lock ----

bool CQMExecutor::AcquireExecutor(SQMCaller& holder) {
  if (m_lockHolder.load() == &holder) return true;  // a thread that waited for itself would wait for ever
  if (sem_trywait(&m_semaphore) != 0) {
    if (!CQMWaits::Begin(holder, m_lockHolder)) {
      ReportRefusedWait();
      return false;
    }
    while (sem_wait(&m_semaphore) != 0 && errno == EINTR) {
    }
    CQMWaits::End(holder);
  }
  if (IsRetired()) {
    sem_post(&m_semaphore);  // for the next thread that waits
    return false;
  }
  m_lockHolder.store(&holder);
  return true;
}

void CQMExecutor::ReleaseExecutor(SQMCaller& holder) {
  SQMCaller* expected = &holder;
  if (m_lockHolder.compare_exchange_strong(expected, nullptr)) sem_post(&m_semaphore);
}

void CQMExecutor::Retire() {
  m_retired.store(true);
  sem_post(&m_semaphore);
}

// ---- resolvers ----

CQMResolver* CQMExecutor::GetResolver(EQMResolverClass kind) {
  enum : std::size_t { Optimized, Baseline, Complex };
  auto const obtain = [this]<class Resolver>(std::size_t index) {
    CQMResolver*& place = m_resolvers[index];
    if (place == nullptr) {
      auto made = std::make_unique<Resolver>();
      made->SetParentObject(this);
      AddChildObject(made.get());
      place = made.release();
    }
    return place;
  };
  switch (kind) {
    case EQMResolverClass::RealBaseline: return obtain.template operator()<CQMRealBaselineResolver>(Baseline);
    case EQMResolverClass::Complex:
    case EQMResolverClass::Complex5:
    case EQMResolverClass::Complex6: return obtain.template operator()<CQMComplexBaselineResolver>(Complex);
    default: return obtain.template operator()<CQMRealOptimizedResolver>(Optimized);
  }
}

}  // namespace qumel
