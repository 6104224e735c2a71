// Following definitions from body to body.
#include "engine/reachable_definitions.h"

#include <mutex>
#include <unordered_set>
#include <utility>

#include "base/operator_ids.h"
#include "engine/operator_context.h"

namespace qumel {

namespace {

/** Guards the giving of bodies and all who wait for one. */
constinit std::mutex g_bodyMutex;

}  // namespace

CQMReachableDefinitions::~CQMReachableDefinitions() {
  if (m_awaited.empty()) return;
  std::scoped_lock const lock(g_bodyMutex);
  for (Definition const& definition : m_awaited) definition->m_waiting.erase(this);
}

// ---- reaching ----

template <class Take>
void CQMReachableDefinitions::ForEachNamed(SQMOperatorBody const& body, Take take) const {
  for (auto const& name : body.named) {
    Definition definition = name.lock();
    bool const isThere = definition != nullptr && !definition->IsDeleted() &&
                         (definition->owner == nullptr || definition->owner == &m_context);
    if (isThere) take(std::move(definition));
  }
}

void CQMReachableDefinitions::Add(Definition definition) {
  std::vector<Definition> next{std::move(definition)};
  while (!next.empty()) {
    Definition const added = std::move(next.back());
    next.pop_back();
    if (!m_known.try_emplace(added->id, added).second) continue;
    if (added->isRecursive && !added->HasBody()) {
      std::scoped_lock const lock(g_bodyMutex);
      if (!added->HasBody()) WaitFor(added);
    }
    if (SQMOperatorBody const* const body = added->GetBody(); body != nullptr)
      ForEachNamed(*body, [&next](Definition named) { next.push_back(std::move(named)); });
  }
}

CQMReachableDefinitions::Definition CQMReachableDefinitions::Find(long id) {
  auto found = m_known.find(id);
  if (found == m_known.end() && m_hasAnnounced.load(std::memory_order_acquire)) {
    TakeAnnounced();
    found = m_known.find(id);
  }
  return found != m_known.end() ? found->second : nullptr;
}

// ---- bodies that come later ----

/** Under the lock. */
void CQMReachableDefinitions::WaitFor(Definition const& definition) {
  if (definition->m_waiting.contains(this)) return;
  m_awaited.push_back(definition);  // first: whoever waits must be able to tell that it waits no longer
  definition->m_waiting.insert(this);
}

/** Under the lock, and perhaps in another thread than the one that uses this set. */
void CQMReachableDefinitions::Announce(SQMOperatorDefinition const& awaited, SQMOperatorBody const& body) {
  std::vector<SQMOperatorBody const*> next{&body};
  std::unordered_set<SQMOperatorDefinition const*> seen{&awaited};
  while (!next.empty()) {
    SQMOperatorBody const* const named = next.back();
    next.pop_back();
    ForEachNamed(*named, [&](Definition definition) {
      if (!seen.insert(definition.get()).second) return;
      if (definition->HasBody()) next.push_back(definition->GetBody());
      else if (definition->isRecursive) WaitFor(definition);
      m_announced.push_back(std::move(definition));
      m_hasAnnounced.store(true, std::memory_order_release);
    });
  }
}

void CQMReachableDefinitions::TakeAnnounced() {
  std::scoped_lock const lock(g_bodyMutex);
  for (Definition const& definition : m_announced) m_known.try_emplace(definition->id, definition);
  m_announced.clear();
  m_hasAnnounced.store(false, std::memory_order_release);
}

SQMOperatorBody CQMReachableDefinitions::MakeBody(CQMItemList items, CQMOperatorContext& context) {
  SQMOperatorBody body{std::move(items), {}};
  std::unordered_set<long> seen;
  for (SQMItem const& item : body.items.GetItems()) {
    if (item.kind != EQMItem::Operator || item.id <= OpId::LastStandard || !seen.insert(item.id).second)
      continue;
    if (auto const definition = context.FindOperatorDefinition(item.id)) body.named.emplace_back(definition);
  }
  return body;
}

long CQMReachableDefinitions::GiveBody(SQMOperatorDefinition& definition, SQMOperatorBody body) {
  auto given = std::make_unique<SQMOperatorBody const>(std::move(body));
  std::scoped_lock const lock(g_bodyMutex);
  if (definition.IsDeleted()) return Error::NotFound;
  if (definition.HasBody()) return Error::OperatorExists;
  for (CQMReachableDefinitions* const waiting : definition.m_waiting) waiting->Announce(definition, *given);
  definition.m_waiting.clear();
  definition.m_body = std::move(given);
  definition.m_bodyInUse.store(definition.m_body.get(), std::memory_order_release);
  return Error::None;
}

}  // namespace qumel
