// The blocks of an arena.
#include "base/arena.h"

#include <algorithm>

namespace qumel {

void CQMArena::AddBlock(std::size_t needed) {
  std::size_t const wanted = m_block != nullptr ? 2 * m_block->size : kFirstBlock;
  std::size_t const size = std::max(wanted, needed + sizeof(SQMBlock));
  m_block = new (::operator new(size)) SQMBlock{m_block, size};
  m_next = m_block->Begin();
  m_end = reinterpret_cast<std::byte*>(m_block) + size;
}

/** Frees the blocks that are older than kept, or all without one. */
void CQMArena::FreeBlocksBefore(SQMBlock* kept) {
  SQMBlock*& first = kept != nullptr ? kept->before : m_block;
  while (first != nullptr) {
    SQMBlock* const block = first;
    first = block->before;
    ::operator delete(block);
  }
}

}  // namespace qumel
