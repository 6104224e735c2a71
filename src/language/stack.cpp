// Pushing, popping and moving the items of a stack.
#include "language/stack.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "base/errors.h"

namespace qumel {

long CQMStack::InitStack(std::int32_t depth) {
  if (depth < 0) return Error::StackCreateFailed;
  try {
    m_items = std::vector<Item>(static_cast<std::size_t>(depth));
  } catch (std::exception const&) {
    return Error::StackCreateFailed;
  }
  m_initialDepth = depth;
  m_top = -1;
  m_growChunk = kDefaultGrowChunk;
  m_autoGrow = true;
  m_lastItemClass = 0;
  return Error::None;
}

/** A free slot above the top. */
long CQMStack::MakeRoom() {
  if (m_top + 1 < GetDepth()) return Error::None;
  return m_autoGrow ? GrowDepth() : static_cast<long>(Error::StackFull);
}

long CQMStack::Push(Item item) {
  if (item == nullptr) return Error::StackItemNull;
  if (long const code = MakeRoom(); code != Error::None) return code;
  m_items[static_cast<std::size_t>(++m_top)] = std::move(item);
  return Error::None;
}

long CQMStack::Pop() {
  Item dropped;
  return Pop(dropped);
}

long CQMStack::Pop(Item& item) {
  if (m_top < 0) return Error::StackEmpty;
  item = std::move(m_items[static_cast<std::size_t>(m_top--)]);
  return Error::None;
}

long CQMStack::GetStackItem(std::int32_t index, CQMObject*& item) const {
  item = Holds(index) ? m_items[static_cast<std::size_t>(index)].get() : nullptr;
  return Holds(index) ? Error::None : Error::StackNoSuchIndex;
}

long CQMStack::Thunk(std::int32_t index) {
  Item dropped;
  return Thunk(index, dropped);
}

long CQMStack::Thunk(std::int32_t index, Item& item) {
  if (!Holds(index)) {
    item.reset();
    return Error::StackNoSuchIndex;
  }
  item = std::move(m_items[static_cast<std::size_t>(index)]);
  Contract(index);
  return Error::None;
}

long CQMStack::Slide(std::int32_t index, Item item) {
  if (item == nullptr) return Error::StackItemNull;
  if (index < 0 || index > m_top + 1) return Error::StackNoSuchIndex;
  if (long const code = Expand(index); code != Error::None) return code;
  m_items[static_cast<std::size_t>(index)] = std::move(item);
  return Error::None;
}

long CQMStack::Expand(std::int32_t index) {
  if (index < 0) return Error::StackNoSuchIndex;
  if (long const code = MakeRoom(); code != Error::None) return code;
  ++m_top;
  auto const opened = m_items.begin() + std::min(index, m_top);
  auto const top = m_items.begin() + m_top;
  std::move_backward(opened, top, top + 1);
  opened->reset();
  return Error::None;
}

void CQMStack::Contract(std::int32_t index) {
  if (!Holds(index)) return;
  auto const closed = m_items.begin() + index;
  auto const top = m_items.begin() + m_top;
  std::move(closed + 1, top + 1, closed);
  top->reset();
  --m_top;
}

long CQMStack::SetStackDepth(std::int64_t depth) {
  if (depth <= GetDepth()) return Error::None;
  if (depth > std::numeric_limits<std::int32_t>::max()) return Error::StackSetDepthFailed;
  try {
    m_items.resize(static_cast<std::size_t>(depth));
  } catch (std::exception const&) {
    return Error::StackSetDepthFailed;
  }
  return Error::None;
}

long CQMStack::GrowDepth() {
  bool const grown = SetStackDepth(std::int64_t{GetDepth()} + m_growChunk) == Error::None;
  return grown ? Error::None : Error::StackGrowDepthFailed;
}

long CQMStack::ShrinkDepth() {
  bool const shrunk = SetStackDepth(std::int64_t{GetDepth()} - m_growChunk) == Error::None;
  return shrunk ? Error::None : Error::StackShrinkDepthFailed;
}

long CQMStack::SetDepthAutoGrowChunk(std::int32_t slots) {
  if (slots < 1) return Error::StackBadGrowChunk;
  m_growChunk = slots;
  return Error::None;
}

void CQMStack::ClearStack() {
  while (m_top >= 0) Pop();
}

long CQMStack::ResetStack() {
  ClearStack();
  return SetStackDepth(m_initialDepth);
}

}  // namespace qumel
