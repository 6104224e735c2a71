// The descriptors of the standard operators, made from their rows.
#include "language/standard_operators.h"

#include <algorithm>
#include <string_view>

#include "base/operator_table.h"
#include "language/operator_list.h"

namespace qumel {

namespace {

using namespace ContextBit;

struct SQMContextMasks {
  std::uint8_t left, right;
};

constexpr std::uint8_t kBeforeValue = kOperand | kOpen | kPrefix | kInfix | kPostfix;
constexpr SQMContextMasks kFreeContext{kAnywhere, kAnywhere};
constexpr SQMContextMasks kPrefixContext{kSeparator | kOpen | kPrefix | kInfix, kBeforeValue};
constexpr SQMContextMasks kPostfixContext{kOperand | kClose | kPostfix,
                                          kSeparator | kClose | kPrefix | kInfix | kPostfix};

/** Indexed by fix type. */
constexpr SQMContextMasks kDefaultContexts[] = {
    kFreeContext,                                           // none
    kPrefixContext,                                         // prefix
    {kOperand | kClose | kPostfix | kNofix, kBeforeValue},  // infix
    kPostfixContext,                                        // postfix
    {kSeparator, kSeparator},                               // nofix
    kFreeContext,
    kFreeContext,
    kFreeContext,  // keywords
    kPrefixContext,
    kPostfixContext,  // marked prefix and postfix
};

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/** The rows of one list, those of one token side by side. */
std::vector<SQMOpRow const*> RowsByToken(bool forAll, bool impliedMultiplication) {
  std::vector<SQMOpRow const*> rows;
  for (SQMOpRow const& row : forAll ? StandardOperators() : LocalOperators()) {
    if (row.id != OpId::ImpliedMultiplication || impliedMultiplication) rows.push_back(&row);
  }
  std::ranges::stable_sort(rows, {}, [](SQMOpRow const* row) { return std::string_view(row->token); });
  return rows;
}

}  // namespace

CQMStandardOperators::CQMStandardOperators(bool forAll, bool impliedMultiplication)
    : m_isForAll(forAll), m_impliedMultiplication(impliedMultiplication) {
  auto const rows = RowsByToken(forAll, impliedMultiplication);
  m_infos = std::make_unique<CQMOpInfo[]>(rows.size());
  m_rows.reserve(rows.size());
  for (SQMOpRow const* const row : rows) {
    CQMOpInfo& info = m_infos[m_rows.size()];
    info.token = row->token;
    m_lengths[static_cast<unsigned char>(*row->token)] |= LengthBit(row->token);
    info.id = row->id;
    info.fix = row->fix;
    info.minOperands = row->operands.least;
    info.maxOperands = row->operands.most;
    info.precedence = row->precedence;
    info.rightAssociative = row->associates == Right;
    SetDefaults(info);
    if (row->context) {
      info.leftContext = row->context->left;
      info.rightContext = row->context->right;
      info.enclose = info.enclose && row->context->encloses;
    }
    if (!forAll && row->fix == EQMFix::Nofix && impliedMultiplication) info.rightContext |= kOperand;
    m_table.Append(m_rows.emplace_back(std::shared_ptr<void>(), &info));
  }
}

void CQMStandardOperators::SetDefaults(CQMOpInfo& info) const {
  auto const [left, right] = kDefaultContexts[static_cast<std::size_t>(info.fix)];
  info.leftContext = left;
  info.rightContext = right;
  if (m_isForAll && info.fix == EQMFix::Prefix && std::ranges::all_of(info.token, IsLetter)) {
    info.enclose = true;
    if (m_impliedMultiplication) info.leftContext |= kOperand | kClose;
  }
}

std::span<CQMOpInfoRef const> CQMStandardOperators::FindRows(SQMHashedText const& token) const {
  CQMOpInfoRef const* const first = m_table.Find(token);
  if (first == nullptr) return {};
  CQMOpInfoRef const* last = first;
  while (last != &m_rows.back() && last[1]->token == token.text) ++last;
  return {first, last + 1};
}

}  // namespace qumel
