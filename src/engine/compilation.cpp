// Recycling of what compilations use.
#include "engine/compilation.h"

#include <utility>

#include "engine/expression.h"
#include "engine/operator_context.h"

namespace qumel {

namespace {

// What serves later evaluations: as many as nest in one another now and then, and of a size that short texts
// need.
constexpr std::size_t kMostSpare = 4;
constexpr std::size_t kMostSpareOperators = 1024;
constexpr std::size_t kMostSpareItems = 4096;
constexpr std::size_t kMostSpareBytes = 64 * 1024;

}  // namespace

void SQMCompilation::Clear() {
  program.Clear();
  blocksToReset.clear();
  bodies.clear();
  operators.clear();
  operands.clear();
  hasControlWords = false;
  stack.clear();
  verification.unverified.clear();
  arena.Clear();
  if (!names.empty()) names.clear();  // after the arena: results may be proxies of names
}

CQMOperatorContext::CQMOperatorContext() = default;
CQMOperatorContext::~CQMOperatorContext() = default;

std::unique_ptr<SQMCompilation> CQMOperatorContext::TakeCompilation() {
  if (m_spare.empty()) {
    m_spare.reserve(kMostSpare);  // so that giving back needs no memory
    return std::make_unique<SQMCompilation>();
  }
  std::unique_ptr<SQMCompilation> taken = std::move(m_spare.back());
  m_spare.pop_back();
  return taken;
}

void CQMOperatorContext::GiveBack(std::unique_ptr<SQMCompilation> compilation) {
  compilation->Clear();
  bool const isSmall = compilation->operators.capacity() <= kMostSpareOperators &&
                       compilation->items.Capacity() <= kMostSpareItems &&
                       compilation->arena.Size() <= kMostSpareBytes;
  if (isSmall && m_spare.size() < kMostSpare) m_spare.push_back(std::move(compilation));
}

}  // namespace qumel
