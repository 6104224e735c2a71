// A stack of objects that it owns: indexed from the bottom, growing in chunks, open in the middle.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "objects/linked_object.h"

namespace qumel {

/** Results are 0 or an error code; a failed operation leaves the stack as it was. Storage never shrinks: what
 * asks for less succeeds and frees nothing. */
class CQMStack : public CQMLinkedObject {
 public:
  static constexpr char const* kTypeTag = TypeTag::kStack;
  static constexpr std::int32_t kDefaultGrowChunk = 16;
  using Item = std::unique_ptr<CQMObject>;

  CQMStack() { SetTypeTag(kTypeTag); }

  /** Begins anew with room for depth items. */
  long InitStack(std::int32_t depth);

  long Push(Item item);
  /** Destroys the top item, or hands it over. */
  long Pop();
  long Pop(Item& item);
  /** The item at index, which stays; null where there is none. */
  long GetStackItem(std::int32_t index, CQMObject*& item) const;
  /** Takes the item at index out and closes the gap. */
  long Thunk(std::int32_t index);
  long Thunk(std::int32_t index, Item& item);
  /** Puts item at index, below what stood there; just above the top is a push. */
  long Slide(std::int32_t index, Item item);
  /** Opens an empty slot at index; above the top it opens on top. */
  long Expand(std::int32_t index);
  /** Closes the slot at index; what it holds is destroyed. Ignores an index that names none. */
  void Contract(std::int32_t index);

  long SetStackDepth(std::int64_t depth);
  long GrowDepth();
  long ShrinkDepth();
  long Compress() { return SetStackDepth(std::int64_t{m_top} + 1); }
  long SetDepthAutoGrowChunk(std::int32_t slots);
  void SetAutoGrow(bool grows) { m_autoGrow = grows; }
  void ClearStack();
  long ResetStack();

  std::int32_t GetTop() const { return m_top; }
  std::int32_t GetDepth() const { return static_cast<std::int32_t>(m_items.size()); }
  /** For the user of the stack; the stack itself only clears it. */
  std::int32_t GetLastItemClass() const { return m_lastItemClass; }
  void SetLastItemClass(std::int32_t itemClass) { m_lastItemClass = itemClass; }

 private:
  bool Holds(std::int32_t index) const { return index >= 0 && index <= m_top; }
  long MakeRoom();

  std::vector<Item> m_items;  // as many as the stack is deep
  std::int32_t m_initialDepth = 0;
  std::int32_t m_top = -1;
  std::int32_t m_growChunk = kDefaultGrowChunk;
  bool m_autoGrow = true;
  std::int32_t m_lastItemClass = 0;
};

}  // namespace qumel
