// Writing the fragments of a reverted statement, without nesting calls.
#include "base/operator_ids.h"
#include "language/fragment_reversion.h"

namespace qumel {

void CQMFragmentReversion::Write(CQMInfixWriter& writer) {
  PushList(FragmentsOf(m_statement), false);
  while (!m_pieces.empty()) {
    SQMPiece const piece = m_pieces.back();
    m_pieces.pop_back();
    switch (piece.kind) {
      case EQMPiece::Mark: writer.AddMark(piece.text); break;
      case EQMPiece::Comma: writer.AddMark(", "); break;
      case EQMPiece::Blank: writer.AddBlank(); break;
      case EQMPiece::Operator: writer.AddOperator(piece.text); break;
      case EQMPiece::OpenParen: writer.OpenParen(); break;
      case EQMPiece::Fragment: {
        SQMFragment const& fragment = m_fragments[piece.fragment];
        if (fragment.op != nullptr) PushFragment(fragment);
        else writer.AddOperand(*fragment.item);
      }
    }
  }
}

// Pieces are pushed last to first.

void CQMFragmentReversion::PushFragment(SQMFragment const& fragment) {
  SQMPiece const token{EQMPiece::Operator, fragment.op->info->token.c_str()};
  switch (fragment.shape) {
    case EQMShape::Before:
      PushPart(fragment.right);
      m_pieces.push_back(token);
      break;
    case EQMShape::Between:
      if (!fragment.isOpenEnded) PushPart(fragment.right);
      if (fragment.op->info->id != OpId::ImpliedMultiplication) m_pieces.push_back(token);
      PushWedge(fragment);
      PushPart(fragment.left);
      break;
    case EQMShape::Behind:
      m_pieces.push_back(token);
      PushWedge(fragment);
      PushPart(fragment.left);
      break;
    case EQMShape::Within: PushPart(fragment.left); break;
    case EQMShape::Sign:
      if (fragment.behind.count > 0) PushPart(fragment.behind);
      for (std::size_t i = static_cast<std::size_t>(fragment.right.count); i > 0; --i) {
        m_pieces.push_back({EQMPiece::Fragment, "", FragmentsOf(fragment.right)[i - 1]});
        m_pieces.push_back({EQMPiece::Blank});
      }
      m_pieces.back() = token;
      break;
    case EQMShape::Index:
      PushIndexes(fragment.right);
      PushPart(fragment.left);
      break;
    default: m_pieces.push_back(token);
  }
}

void CQMFragmentReversion::PushWedge(SQMFragment const& fragment) {
  if (fragment.wedge == nullptr) return;
  m_pieces.push_back({EQMPiece::Operator, fragment.wedge->info->token.c_str()});
}

void CQMFragmentReversion::PushIndexes(SQMPart const& part) {
  m_pieces.push_back({EQMPiece::Mark, "]"});
  if (part.count == 0 || NeedsLeadingComma(part)) {  // no comma may follow the bracket
    SQMPart enclosed = part;
    enclosed.isEnclosed = true;
    PushPart(enclosed);
  } else {
    if (NeedsTrailingComma(part)) m_pieces.push_back({EQMPiece::Comma});
    PushList(FragmentsOf(part), true);
  }
  m_pieces.push_back({EQMPiece::Mark, "["});
}

void CQMFragmentReversion::PushPart(SQMPart const& part) {
  bool const isEnclosed = part.isEnclosed || part.count == 0;
  if (isEnclosed) m_pieces.push_back({EQMPiece::Mark, ")"});
  if (isEnclosed && NeedsTrailingComma(part)) m_pieces.push_back({EQMPiece::Comma});
  PushList(FragmentsOf(part), true);
  if (isEnclosed && NeedsLeadingComma(part)) m_pieces.push_back({EQMPiece::Comma});
  if (isEnclosed) m_pieces.push_back({EQMPiece::OpenParen});
}

void CQMFragmentReversion::PushList(std::span<Index const> fragments, bool inList) {
  for (std::size_t i = fragments.size(); i > 0; --i) {
    m_pieces.push_back({EQMPiece::Fragment, "", fragments[i - 1]});
    if (i == 1) break;
    bool const needsComma = NeedsComma(fragments[i - 2], fragments[i - 1], inList);
    m_pieces.push_back({needsComma ? EQMPiece::Comma : EQMPiece::Blank});
  }
}

}  // namespace qumel
