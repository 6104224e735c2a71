// Linking: one pass over the operators of an expression finds its blocks and sets the links that the words of
// control flow follow at run time. Every fault of structure is InvocationFailed.
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/expression.h"

namespace qumel {

namespace {

constexpr std::size_t kDeepestNesting = 32;

constexpr bool IsBranch(long id) { return id == OpId::If || id == OpId::Unless; }
constexpr bool IsLoop(long id) { return id == OpId::While || id == OpId::Until || id == OpId::Always; }
constexpr bool IsSelect(long id) { return id == OpId::Select || id == OpId::When; }
constexpr bool IsScopeWord(long id) { return id >= OpId::CosmicScope && id <= OpId::ComplexWord; }

class CQMLinker {
 public:
  CQMLinker(std::span<CQMOperator* const> operators, CQMArena& arena)
      : m_operators(operators), m_arena(arena) {}
  long Link();
  /** Adds to blocks those that a goto may enter past their openers; none where there is no goto. */
  void FindBlocksToReset(std::vector<SQMBlock*>& blocks) const;

 private:
  struct SQMOpenBlock {
    long opener;
    long chain;  // the last then, else, do, case or default of the block
  };

  CQMOperator& At(long position) const { return *m_operators[static_cast<std::size_t>(position)]; }
  CQMOperator& Opener() const { return At(m_blocks.back().opener); }
  /** Whether the innermost open block is of the kind that is asked for. */
  bool IsInside(bool (*kind)(long)) const { return !m_blocks.empty() && kind(Opener().GetId()); }
  bool HasChain() const { return m_blocks.back().chain != CQMOperator::kNoLink; }
  /** Ties an operator to the block that it belongs to. */
  void Join(long position, long opener) {
    At(position).SetTopLink(opener);
    At(position).SetTopLinkOperator(&At(opener));
  }
  void SkipFromChain(long target) {
    if (HasChain()) At(m_blocks.back().chain).SetSkipLink(target);
  }

  // Each answers whether the structure is sound.
  bool LinkOperator(long position);
  bool OpenBlock(long position, bool canBreak, bool canContinue);
  bool LinkThen(long position);
  bool LinkElse(long position);
  bool LinkDo(long position);
  bool LinkEnd(long position);
  bool LinkNext(long position);
  bool LinkCase(long position);
  bool LinkDefault(long position);
  bool LinkJump(long position, std::vector<long> const& targets);
  bool LinkBreaksAndEnds();
  long LinkGotos();
  long FirstOfOperands(long position) const;

  std::span<CQMOperator* const> m_operators;
  CQMArena& m_arena;
  std::vector<SQMOpenBlock> m_blocks;
  std::vector<long> m_breakTargets;
  std::vector<long> m_continueTargets;
  std::vector<long> m_breaks;
  std::vector<long> m_gotos;
  std::vector<long> m_labels;
};

long CQMLinker::Link() {
  for (long position = 0; position < static_cast<long>(m_operators.size()); ++position) {
    if (!LinkOperator(position)) return Error::InvocationFailed;
  }
  return LinkBreaksAndEnds() ? LinkGotos() : static_cast<long>(Error::InvocationFailed);
}

void CQMLinker::FindBlocksToReset(std::vector<SQMBlock*>& blocks) const {
  if (m_gotos.empty()) return;
  for (CQMOperator const* const op : m_operators) {
    if (op->GetBlock() != nullptr) blocks.push_back(op->GetBlock());
  }
}

bool CQMLinker::LinkOperator(long position) {
  switch (At(position).GetId()) {
    case OpId::If:
    case OpId::Unless: return OpenBlock(position, false, false);
    case OpId::While:
    case OpId::Until:
    case OpId::Always: return OpenBlock(position, true, true);
    case OpId::Select:
    case OpId::When: return OpenBlock(position, true, false);
    case OpId::Then: return LinkThen(position);
    case OpId::Else: return LinkElse(position);
    case OpId::Do: return LinkDo(position);
    case OpId::End: return LinkEnd(position);
    case OpId::Next: return LinkNext(position);
    case OpId::Case:
    case OpId::Is: return LinkCase(position);
    case OpId::Default:
    case OpId::Otherwise: return LinkDefault(position);
    case OpId::Break: m_breaks.push_back(position); return LinkJump(position, m_breakTargets);
    case OpId::Continue: return LinkJump(position, m_continueTargets);
    case OpId::Goto: m_gotos.push_back(position); return true;
    case OpId::LabelMark: m_labels.push_back(position); return true;
    default: return true;
  }
}

bool CQMLinker::OpenBlock(long position, bool canBreak, bool canContinue) {
  if (m_blocks.size() == kDeepestNesting) return false;
  m_blocks.push_back({position, CQMOperator::kNoLink});
  if (canBreak) At(position).SetBlock(m_arena.Make<SQMBlock>());
  if (canBreak) m_breakTargets.push_back(position);
  if (canContinue) m_continueTargets.push_back(position);
  At(position).SetTopLink(position);
  return true;
}

bool CQMLinker::LinkThen(long position) {
  if (!IsInside(IsBranch) || HasChain()) return false;
  Opener().SetTrueLink(position + 1);
  m_blocks.back().chain = position;
  Join(position, m_blocks.back().opener);
  return true;
}

bool CQMLinker::LinkElse(long position) {
  if (!IsInside(IsBranch) || !HasChain()) return false;
  Opener().SetFalseLink(position + 1);
  SkipFromChain(position);
  m_blocks.back().chain = position;
  Join(position, m_blocks.back().opener);
  return true;
}

bool CQMLinker::LinkDo(long position) {
  if (!IsInside(IsLoop)) return false;
  if (Opener().GetId() == OpId::Until) At(position).SetLoopsWhile(false);
  m_blocks.back().chain = position;
  Join(position, m_blocks.back().opener);
  return true;
}

bool CQMLinker::LinkEnd(long position) {
  bool const endsSelect = IsInside(IsSelect);
  if (!endsSelect && (!IsInside(IsBranch) || !HasChain())) return false;
  Opener().SetSkipLink(position);
  SkipFromChain(position);
  Join(position, m_blocks.back().opener);
  if (endsSelect) m_breakTargets.pop_back();
  m_blocks.pop_back();
  return true;
}

bool CQMLinker::LinkNext(long position) {
  if (!IsInside(IsLoop) || !HasChain()) return false;
  Opener().SetSkipLink(position + 1);
  SkipFromChain(position + 1);
  Join(position, m_blocks.back().opener);
  At(position).SetSkipLink(m_blocks.back().opener + 1);  // the condition
  m_breakTargets.pop_back();
  m_continueTargets.pop_back();
  m_blocks.pop_back();
  return true;
}

bool CQMLinker::LinkCase(long position) {
  if (!IsInside(IsSelect)) return false;
  // a case that failed goes on where the value of the next one is computed
  SkipFromChain(FirstOfOperands(position));
  Opener().SetCaseCount(Opener().GetCaseCount() + 1);
  m_blocks.back().chain = position;
  Join(position, m_blocks.back().opener);
  return true;
}

bool CQMLinker::LinkDefault(long position) {
  if (!IsInside(IsSelect) || Opener().GetFalseLink() != CQMOperator::kNoLink) return false;
  SkipFromChain(position);
  Opener().SetFalseLink(position);
  m_blocks.back().chain = position;
  Join(position, m_blocks.back().opener);
  return true;
}

bool CQMLinker::LinkJump(long position, std::vector<long> const& targets) {
  if (targets.empty()) return false;
  Join(position, targets.back());
  if (At(position).GetId() == OpId::Continue) At(position).SetSkipLink(targets.back());
  return true;
}

// What is still open runs to the end of the expression; but a branch must have its "then".
bool CQMLinker::LinkBreaksAndEnds() {
  for (SQMOpenBlock const& block : m_blocks) {
    if (IsBranch(At(block.opener).GetId()) && block.chain == CQMOperator::kNoLink) return false;
  }
  for (long const position : m_breaks) {
    At(position).SetSkipLink(At(position).GetTopLinkOperator()->GetSkipLink());
  }
  for (CQMOperator* const op : m_operators) {
    if (op->GetSkipLink() == CQMOperator::kNoLink) op->SetSkipLink(static_cast<long>(m_operators.size()));
  }
  return true;
}

// Of two labels with one name the first counts.
long CQMLinker::LinkGotos() {
  std::unordered_map<std::string_view, long> positions;
  for (long const label : m_labels) {
    CQMDatum const& name = *At(label).GetOperandByIndex(0);
    if (name.GetType() == EQMDataType::Label) positions.try_emplace(name.Name(), label);
  }
  for (long const position : m_gotos) {
    auto const found = positions.find(At(position).GetOperandByIndex(0)->Name());
    if (found == positions.end()) return Error::NoGotoTarget;
    At(position).SetSkipLink(found->second);
  }
  return Error::None;
}

// The position where the operands of an operator begin to be computed, which is its own where none is
// computed. Walks back over the operators that produce them, last operand first, and over the words that
// stand among these.
long CQMLinker::FirstOfOperands(long position) const {
  std::vector<CQMDatum const*> wanted;
  auto const wantOperandsOf = [&](CQMOperator const& op) {
    for (long i = 0; i < op.GetOperandCount(); ++i) wanted.push_back(op.GetOperandByIndex(i));
  };
  auto const isWordAt = [&](long at) {
    return IsModeOperator(At(at).GetId()) || IsScopeWord(At(at).GetId());
  };
  long first = position;
  wantOperandsOf(At(position));
  while (!wanted.empty()) {
    CQMDatum const* const operand = wanted.back();
    wanted.pop_back();
    long producer = first - 1;
    while (producer >= 0 && isWordAt(producer) && !At(producer).EndsStatement()) --producer;
    if (producer < 0 || At(producer).EndsStatement()) continue;
    CQMOperator const& op = At(producer);
    bool const handsOn = IsTypeWord(op.GetId()) && op.GetOperandByIndex(0) == operand;
    if (op.GetResultOperand() != operand && !handsOn) continue;
    first = producer;
    wantOperandsOf(op);
  }
  while (first > 0 && isWordAt(first - 1) && !At(first - 1).EndsStatement()) --first;
  return first;
}

}  // namespace

long CQMExpression::Link() {
  if (!m_compilation->hasControlWords) return Error::None;
  CQMLinker linker(m_compilation->operators, m_compilation->arena);
  if (long const code = linker.Link(); code != Error::None) return Fail(code);
  linker.FindBlocksToReset(m_compilation->blocksToReset);
  return Error::None;
}

}  // namespace qumel
