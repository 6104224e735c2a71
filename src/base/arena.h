// Memory for objects that come one by one and go all at once.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

namespace qumel {

/** Owns the objects that it makes and destroys them together, the last one first. Blocks grow by doubling; of
 * several only the largest is kept when the arena is cleared, so that an arena that serves one text after the
 * other soon asks for no memory any more. */
class CQMArena {
 public:
  CQMArena() = default;
  ~CQMArena() {
    DestroyObjects();
    FreeBlocksBefore(nullptr);
  }
  CQMArena(CQMArena const&) = delete;
  CQMArena& operator=(CQMArena const&) = delete;

  /** Throws std::bad_alloc, with nothing changed, where there is no memory. */
  template <class Object, class... Arguments>
  Object* Make(Arguments&&... arguments) {
    if constexpr (std::is_trivially_destructible_v<Object>) {
      return new (Allocate(sizeof(Object))) Object(std::forward<Arguments>(arguments)...);
    } else {
      auto* const place = static_cast<SQMOwned<Object>*>(Allocate(sizeof(SQMOwned<Object>)));
      auto* const object = new (&place->object) Object(std::forward<Arguments>(arguments)...);
      m_last = new (&place->link) SQMLink{m_last, &SQMOwned<Object>::Destroy};
      return object;
    }
  }
  /** count objects of a trivial type, all zero. */
  template <class Object>
  std::span<Object> MakeArray(std::size_t count) {
    static_assert(std::is_trivially_destructible_v<Object>);
    auto* const first = static_cast<Object*>(Allocate(count * sizeof(Object)));
    std::uninitialized_value_construct_n(first, count);
    return {first, count};
  }

  /** Destroys all objects. */
  void Clear() {
    DestroyObjects();
    if (m_block == nullptr) return;
    FreeBlocksBefore(m_block);
    m_next = m_block->Begin();
  }
  /** Bytes taken from the heap. */
  std::size_t Size() const {
    std::size_t size = 0;
    for (SQMBlock const* block = m_block; block != nullptr; block = block->before) size += block->size;
    return size;
  }

 private:
  static constexpr std::size_t kFirstBlock = 1008;  // with what the heap adds, a round size
  static constexpr std::size_t kAlignment = alignof(std::max_align_t);

  struct SQMLink {
    SQMLink* before;
    void (*destroy)(SQMLink* link);
  };
  template <class Object>
  struct SQMOwned {
    SQMLink link;
    alignas(Object) Object object;
    static void Destroy(SQMLink* link) { reinterpret_cast<SQMOwned*>(link)->object.~Object(); }
  };
  struct alignas(std::max_align_t) SQMBlock {
    SQMBlock* before;
    std::size_t size;
    std::byte* Begin() { return reinterpret_cast<std::byte*>(this + 1); }
  };

  void* Allocate(std::size_t size) {
    size = (size + kAlignment - 1) & ~(kAlignment - 1);
    if (size > static_cast<std::size_t>(m_end - m_next)) AddBlock(size);
    return std::exchange(m_next, m_next + size);
  }
  void AddBlock(std::size_t needed);
  void FreeBlocksBefore(SQMBlock* kept);
  void DestroyObjects() {
    while (m_last != nullptr) {
      SQMLink* const link = std::exchange(m_last, m_last->before);
      link->destroy(link);
    }
  }

  std::byte* m_next = nullptr;
  std::byte* m_end = nullptr;
  SQMBlock* m_block = nullptr;  // the newest and largest
  SQMLink* m_last = nullptr;
};

}  // namespace qumel
