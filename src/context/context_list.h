// A list of contexts that are found by their names.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "context/executor.h"
#include "context/sibling_list.h"

namespace qumel {

/** No two of the contexts have the same name, and none is renamed. As CQMSiblingList it has no destructor,
 * and no lock: who uses it empties it. */
class CQMContextList {
 public:
  CQMExecutor* Append(std::unique_ptr<CQMExecutor> owner) {
    if (m_byName == nullptr) m_byName = std::make_unique<Names>().release();
    m_byName->try_emplace(owner->Name(), owner.get());
    return m_contexts.Append(std::move(owner));
  }

  /** executor must be in this list. */
  std::unique_ptr<CQMExecutor> Remove(CQMExecutor* executor) {
    m_byName->erase(executor->Name());
    if (m_byName->empty()) std::unique_ptr<Names>(std::exchange(m_byName, nullptr)).reset();
    return m_contexts.Remove(executor);
  }
  std::unique_ptr<CQMExecutor> RemoveFirst() {
    return m_contexts.GetFirst() != nullptr ? Remove(m_contexts.GetFirst()) : nullptr;
  }

  /** Null for a name that none has. */
  CQMExecutor* FindByName(std::string_view name) const {
    if (m_byName == nullptr) return nullptr;
    auto const found = m_byName->find(name);
    return found != m_byName->end() ? found->second : nullptr;
  }
  /** The first context that fits, or null. */
  template <class Predicate>
  CQMExecutor* Find(Predicate fits) const {
    return m_contexts.Find(fits);
  }

 private:
  using Names = std::unordered_map<std::string_view, CQMExecutor*>;

  CQMSiblingList<CQMExecutor> m_contexts;
  Names* m_byName = nullptr;  // while there is a context
};

}  // namespace qumel
