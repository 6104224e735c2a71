// The rows, expanded and checked.
#include "base/operator_table.h"

namespace qumel {

namespace {

using namespace ContextBit;
using enum EQMFix;

constexpr std::int32_t kMostArguments = 32;
constexpr SQMOperandCount kList{1, kMostArguments};
constexpr SQMOperandCount kIndices{2, 6};
constexpr SQMOperandCount kOneOrTwo{1, 2};
constexpr SQMOperandCount kThreeOrFour{3, 4};

// ---- contexts ----

constexpr std::nullopt_t ByFix = std::nullopt;
constexpr std::uint8_t kBeforePrefix = kSeparator | kOpen | kPrefix | kInfix;
constexpr std::uint8_t kBeforeValue = kOperand | kOpen | kPrefix | kInfix | kPostfix;

// The signs next to an operand bind tighter than those before a parenthesis or another operator.
constexpr SQMNeighbours kNextToOperand{kBeforePrefix, kOperand};
constexpr SQMNeighbours kBeforeOther{kBeforePrefix, kOpen | kAnyOperator};
constexpr SQMNeighbours kAssigns{kOperand | kClose, kBeforeValue};
constexpr SQMNeighbours kWord{kAnywhere, kBeforeValue};
constexpr SQMNeighbours kOpenWord{kAnywhere, kBeforeValue, false};
constexpr SQMNeighbours kTypeWord{kBeforePrefix, kBeforeValue, false};
constexpr std::uint8_t kAfterConstant = kSeparator | kClose | kInfix;
// Without the bit of the opening parenthesis, on purpose: "(true)" is not read.
constexpr SQMNeighbours kTruth{kSeparator | kPrefix | kInfix, kAfterConstant};
constexpr SQMNeighbours kConstant{kBeforePrefix, kAfterConstant};

// ---- tables ----

constexpr SQMOpRow kStandardOperators[] = {
#define QM_FUNCTION(token, name, id, fix, operands, precedence, associates, context, ...) \
  {token, id, EQMFix::fix, operands, Precedence::precedence, EQMAssociation::associates, context},
#define QM_OPERATOR QM_FUNCTION
#include "base/operators.inc"
};

constexpr SQMOpRow kLocalOperators[] = {
#define QM_LOCAL_OPERATOR(token, name, id, fix, operands, precedence, associates, context, ...) \
  {token, id, EQMFix::fix, operands, Precedence::precedence, EQMAssociation::associates, context},
#include "base/operators.inc"
};

constexpr std::span<SQMOpRow const> kTables[] = {kStandardOperators, kLocalOperators};

consteval bool IdsAreUnique() {
  for (auto const table : kTables) {
    for (SQMOpRow const& row : table) {
      int count = 0;
      for (auto const other : kTables) {
        for (SQMOpRow const& candidate : other) count += candidate.id == row.id ? 1 : 0;
      }
      if (count != 1) return false;
    }
  }
  return true;
}

consteval bool RowsAreSane() {
  for (auto const table : kTables) {
    for (SQMOpRow const& row : table) {
      auto const [least, most] = row.operands;
      bool const takesOperands = row.fix == Prefix || row.fix == Infix || row.fix == Postfix;
      bool const countsFit =
          least >= 0 && least <= most && (takesOperands ? least > 0 : row.fix == BlockKeyword || most == 0);
      std::string_view const token = row.token;
      if (!countsFit || token.empty() || token.size() > kLongestToken) return false;
      if (row.precedence <= Precedence::Flat || row.id <= 0 || row.id > OpId::LastStandard) return false;
    }
  }
  return true;
}

static_assert(IdsAreUnique());
static_assert(RowsAreSane());

}  // namespace

std::span<SQMOpRow const> StandardOperators() { return kStandardOperators; }

std::span<SQMOpRow const> LocalOperators() { return kLocalOperators; }

}  // namespace qumel
