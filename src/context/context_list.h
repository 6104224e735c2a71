// A list of contexts that are found by their names.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "context/executor.h"
#include "context/sibling_list.h"

namespace qumel {

/** Owns its contexts, of which no two have the same name and none is renamed. Like CQMSiblingList it has no
 * destructor, so that its user has to empty it, and no lock. */
class CQMContextList {
 public:
  CQMExecutor* Append(std::unique_ptr<CQMExecutor> owner) {
    if (2 * (m_count + 1) > m_size) Grow();
    ++m_count;
    char const* const name = owner->Name().data();
    m_places[PlaceOf(name)] = {owner.get(), HashOf(name)};
    return m_contexts.Append(std::move(owner));
  }

  /** executor must be in this list. */
  std::unique_ptr<CQMExecutor> Remove(CQMExecutor* executor) {
    std::uint32_t place = PlaceOf(executor->Name().data());
    m_places[place].context = nullptr;
    // contexts in the places that follow without a gap may belong further forward now
    while (m_places[place = Next(place)].context != nullptr) {
      SQMPlace const moved = std::exchange(m_places[place], {});
      m_places[PlaceOf(moved.context->Name().data())] = moved;
    }
    if (--m_count == 0) Resize(0);
    return m_contexts.Remove(executor);
  }
  std::unique_ptr<CQMExecutor> RemoveFirst() {
    return m_contexts.GetFirst() != nullptr ? Remove(m_contexts.GetFirst()) : nullptr;
  }

  /** Null when no context has that name. */
  CQMExecutor* FindByName(char const* name) const {
    return m_count != 0 ? m_places[PlaceOf(name)].context : nullptr;
  }
  /** The first context that fits, or null. */
  template <class Predicate>
  CQMExecutor* Find(Predicate fits) const {
    return m_contexts.Find(fits);
  }

 private:
  // A hash table with linear probing.
  struct SQMPlace {
    CQMExecutor* context = nullptr;
    std::uint32_t hash = 0;
  };

  static std::uint32_t HashOf(char const* name) {
    constexpr std::uint32_t kStart = 2166136261U, kPrime = 16777619U;  // of FNV-1a
    std::uint32_t hash = kStart;
    for (; *name != '\0'; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * kPrime;
    return hash;
  }
  std::uint32_t Next(std::uint32_t place) const { return (place + 1) & (m_size - 1); }
  /** The place of the context of that name, or the free place where it would be entered. */
  std::uint32_t PlaceOf(char const* name) const {
    std::uint32_t const hash = HashOf(name);
    std::uint32_t place = hash & (m_size - 1);
    for (; m_places[place].context != nullptr; place = Next(place)) {
      if (m_places[place].hash == hash && std::strcmp(m_places[place].context->Name().data(), name) == 0) {
        break;
      }
    }
    return place;
  }
  void Grow() {
    constexpr std::uint32_t kFirstSize = 8;
    Resize(m_size != 0 ? 2 * m_size : kFirstSize);
    for (CQMExecutor* context = m_contexts.GetFirst(); context != nullptr;
         context = m_contexts.GetNext(context)) {
      char const* const name = context->Name().data();
      m_places[PlaceOf(name)] = {context, HashOf(name)};
    }
  }
  void Resize(std::uint32_t size) {
    auto places = size != 0 ? std::make_unique<SQMPlace[]>(size) : nullptr;
    std::unique_ptr<SQMPlace[]> const old(std::exchange(m_places, places.release()));
    m_size = size;
  }

  CQMSiblingList<CQMExecutor> m_contexts;
  SQMPlace* m_places = nullptr;
  std::uint32_t m_size = 0;  // a power of two, or 0
  std::uint32_t m_count = 0;
};

}  // namespace qumel
