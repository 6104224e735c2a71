// Private contexts, the current context and its lock, and the setters of a thread's record.
#include "context/thread_info.h"

#include "context/context_use.h"

namespace qumel {

CQMThreadInfo::CQMThreadInfo(unsigned long threadId, SQMCaller* caller)
    : m_threadId(threadId), m_caller(caller) {
  SetTypeTag(kTypeTag);
  m_settings.forceComplexResults = true;
}

CQMThreadInfo::~CQMThreadInfo() {
  Detach();
  while (auto executor = m_privates.RemoveFirst()) DestroyWhenUnused(std::move(executor));
}

// ---- private contexts ----

CQMExecutor* CQMThreadInfo::FindExecutor(char const* name) const {
  return name != nullptr ? m_privates.FindByName(name) : nullptr;
}

bool CQMThreadInfo::IsExecutor(CQMLinkedObject const* object) const {
  return object != nullptr &&
         m_privates.Find([object](CQMExecutor const& own) { return &own == object; }) != nullptr;
}

CQMExecutor* CQMThreadInfo::AddExecutor(char const* name) {
  if (name == nullptr) return nullptr;
  if (CQMExecutor* const known = FindExecutor(name); known != nullptr) return known;
  return m_privates.Append(CQMExecutor::Make(name, GetCopies(), EQMContextKind::Private));
}

bool CQMThreadInfo::DropExecutor(char const* name) {
  CQMExecutor* const executor = FindExecutor(name);
  if (executor == nullptr) return false;
  if (GetExecutor() == executor) ClearExecutor();
  DestroyWhenUnused(m_privates.Remove(executor));
  return true;
}

void CQMThreadInfo::Detach() {
  ClearExecutor();
  m_caller = nullptr;
}

// ---- the current context ----

CQMExecutor* CQMThreadInfo::GetExecutor() {
  if (m_caller == nullptr) return nullptr;
  CQMContextGate* const gate = m_caller->current.load();
  if (gate == CQMContextGate::Lost()) ForgetExecutor();
  return gate->GetContext();
}

bool CQMThreadInfo::SetExecutor(CQMExecutor* executor, bool lock) {
  if (executor == nullptr) return GetExecutor() != nullptr;
  if (m_caller == nullptr || (lock && !executor->AcquireExecutor(*m_caller))) return false;
  m_caller->current.store(&executor->GetGate());
  if (executor->IsRetired()) {  // another thread has begun to destroy it, maybe during the wait
    if (lock) executor->ReleaseExecutor(*m_caller);
    ForgetExecutor();
    return false;
  }
  m_locked = lock;
  m_settings = executor->GetSettings();
  return true;
}

void CQMThreadInfo::ClearExecutor() {
  UnlockExecutor();
  ForgetExecutor();
}

bool CQMThreadInfo::LockExecutor() {
  CQMExecutor* const current = GetExecutor();
  if (current == nullptr) return false;
  if (!m_locked) m_locked = current->AcquireExecutor(*m_caller);
  return m_locked;
}

bool CQMThreadInfo::UnlockExecutor() {
  CQMExecutor* const current = GetExecutor();
  if (current != nullptr && m_locked) current->ReleaseExecutor(*m_caller);
  m_locked = false;
  return true;
}

void CQMThreadInfo::ForgetExecutor() {
  if (m_caller != nullptr) m_caller->current.store(CQMContextGate::None());
  m_locked = false;
  m_settings = {};
}

// ---- settings ----

using namespace SettingRule;

#define QM_SETTING(group, member, name, exported, Type, initial, accepted, copied, effect) \
  void CQMThreadInfo::Set##name(Type value) {                                              \
    CQMExecutor* const current = GetExecutor();                                            \
    if (EQMSettingGroup::group == EQMSettingGroup::Fixed && current != nullptr) return;    \
    auto const rule = accepted;                                                            \
    StoreAccepted(m_settings.member, rule, value);                                         \
    if (current == nullptr) return;                                                        \
    Type const passed = rule.kPassesStored ? Type{m_settings.member} : value;              \
    if (EQMSettingGroup::group == EQMSettingGroup::Switch) {                               \
      current->SetAllowComplexResults(passed != Type{});                                   \
    } else {                                                                               \
      current->Set##name(passed);                                                          \
    }                                                                                      \
  }
#include "context/settings.inc"

}  // namespace qumel
