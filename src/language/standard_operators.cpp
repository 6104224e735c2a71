// The operators of the language: a row an operator, in loading order. Every later stage asks the row.
#include "language/standard_operators.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "base/operator_ids.h"
#include "language/operator_list.h"

namespace qumel {

namespace {

using namespace ContextBit;

constexpr EQMFix Prefix = EQMFix::Prefix, Infix = EQMFix::Infix, Postfix = EQMFix::Postfix,
                 Nofix = EQMFix::Nofix, Statement = EQMFix::StatementKeyword, Block = EQMFix::BlockKeyword;

enum EQMAssociation : bool { Left, Right };

struct SQMOperandCount {
  std::int32_t least, most;
  constexpr SQMOperandCount(std::int32_t count) : least(count), most(count) {}
  constexpr SQMOperandCount(std::int32_t least, std::int32_t most) : least(least), most(most) {}
};

constexpr std::int32_t kMostArguments = 32;
constexpr SQMOperandCount kList{1, kMostArguments};

/** Masks and enclosing that differ from what the fix type gives. */
struct SQMContext {
  std::uint8_t left, right;
  bool encloses = true;  // as the letter rule has it; false: never
};

constexpr std::uint8_t kBeforePrefix = kSeparator | kOpen | kPrefix | kInfix;
constexpr std::uint8_t kBeforeValue = kOperand | kOpen | kPrefix | kInfix | kPostfix;

// The signs next to an operand bind tighter than those before a parenthesis or another operator.
constexpr SQMContext kNextToOperand{kBeforePrefix, kOperand};
constexpr SQMContext kBeforeOther{kBeforePrefix, kOpen | kAnyOperator};
constexpr SQMContext kAssigns{kOperand | kClose, kBeforeValue};
constexpr SQMContext kWord{kAnywhere, kBeforeValue};
constexpr SQMContext kOpenWord{kAnywhere, kBeforeValue, false};
constexpr SQMContext kTypeWord{kBeforePrefix, kBeforeValue, false};
constexpr std::uint8_t kAfterConstant = kSeparator | kClose | kInfix;
// Without the bit of the opening parenthesis, on purpose: "(true)" is not read.
constexpr SQMContext kTruth{kSeparator | kPrefix | kInfix, kAfterConstant};
constexpr SQMContext kConstant{kBeforePrefix, kAfterConstant};

struct SQMOpRow {
  char const* token;
  long id;
  EQMFix fix;
  SQMOperandCount operands;
  Precedence::EQMPrecedence precedence;
  EQMAssociation associates = Left;
  std::optional<SQMContext> context = std::nullopt;
};

constexpr SQMOpRow kStandardOperators[] = {
    {"true", OpId::True, Nofix, 0, Precedence::Constant, Left, kTruth},
    {"false", OpId::False, Nofix, 0, Precedence::Constant, Left, kTruth},
    {"[", OpId::ArrayIndex, Infix, {2, 6}, Precedence::Access},
    {".", OpId::Member, Infix, 2, Precedence::Access},
    {"++", OpId::PreIncrement, Prefix, 1, Precedence::Increment, Right},
    {"++", OpId::PostIncrement, Postfix, 1, Precedence::Increment},
    {"--", OpId::PreDecrement, Prefix, 1, Precedence::Increment, Right},
    {"--", OpId::PostDecrement, Postfix, 1, Precedence::Increment},
    {"-", OpId::TightMinus, Prefix, 1, Precedence::TightSign, Right, kNextToOperand},
    {"+", OpId::TightPlus, Prefix, 1, Precedence::TightSign, Right, kNextToOperand},
    {"!", OpId::TightNotSign, Prefix, 1, Precedence::TightSign, Right, kNextToOperand},
    {"not", OpId::TightNotWord, Prefix, 1, Precedence::TightSign, Right, kNextToOperand},
    {"~", OpId::TightComplement, Prefix, 1, Precedence::TightSign, Right, kNextToOperand},
    {"comb", OpId::Combinations, Prefix, 2, Precedence::Selection},
    {"perm", OpId::Permutations, Prefix, 2, Precedence::Selection},
    {"sqrt", OpId::SquareRoot, Prefix, 1, Precedence::Function},
    {"cbrt", OpId::CubeRoot, Prefix, 1, Precedence::Function},
    {"abs", OpId::AbsoluteValue, Prefix, 1, Precedence::Function},
    {"ceil", OpId::Ceiling, Prefix, 1, Precedence::Function},
    {"floor", OpId::Floor, Prefix, 1, Precedence::Function},
    {"int", OpId::IntegerPart, Prefix, 1, Precedence::Function},
    {"frac", OpId::Fraction, Prefix, 1, Precedence::Function},
    {"min", OpId::Minimum, Prefix, kList, Precedence::Function},
    {"max", OpId::Maximum, Prefix, kList, Precedence::Function},
    {"nint", OpId::NearestInteger, Prefix, 1, Precedence::Function},
    {"rand", OpId::Random, Prefix, 1, Precedence::Function},
    {"randrange", OpId::RandomRange, Prefix, 2, Precedence::Function},
    {"sign", OpId::Sign, Prefix, 1, Precedence::Function},
    {"root", OpId::Root, Prefix, 2, Precedence::Function},
    {"randseed", OpId::RandomSeed, Prefix, 1, Precedence::Function},
    {"average", OpId::Average, Prefix, kList, Precedence::Function},
    {"sum", OpId::Sum, Prefix, kList, Precedence::Function},
    {"stddev", OpId::StandardDeviation, Prefix, kList, Precedence::Function},
    {"variance", OpId::Variance, Prefix, kList, Precedence::Function},
    {"range", OpId::Range, Prefix, kList, Precedence::Function},
    {"gmean", OpId::GeometricMean, Prefix, kList, Precedence::Function},
    {"hmean", OpId::HarmonicMean, Prefix, kList, Precedence::Function},
    {"amean", OpId::ArithmeticMean, Prefix, kList, Precedence::Function},
    {"rms", OpId::RootMeanSquare, Prefix, kList, Precedence::Function},
    {"roll", OpId::DiceRoll, Prefix, {1, 2}, Precedence::Function},
    {"sin", OpId::Sine, Prefix, 1, Precedence::Trigonometric, Right},
    {"cos", OpId::Cosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"tan", OpId::Tangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"cot", OpId::Cotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"sec", OpId::Secant, Prefix, 1, Precedence::Trigonometric, Right},
    {"csc", OpId::Cosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"arcsin", OpId::Arcsine, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccos", OpId::Arccosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"arctan", OpId::Arctangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccot", OpId::Arccotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"arcsec", OpId::Arcsecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccsc", OpId::Arccosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"sinh", OpId::Hypersine, Prefix, 1, Precedence::Trigonometric, Right},
    {"cosh", OpId::Hypercosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"tanh", OpId::Hypertangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"coth", OpId::Hypercotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"sech", OpId::Hypersecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"csch", OpId::Hypercosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"arcsinh", OpId::Archypersine, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccosh", OpId::Archypercosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"arctanh", OpId::Archypertangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccoth", OpId::Archypercotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"arcsech", OpId::Archypersecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"arccsch", OpId::Archypercosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"asin", OpId::ShortArcsine, Prefix, 1, Precedence::Trigonometric, Right},
    {"acos", OpId::ShortArccosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"atan", OpId::ShortArctangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"acot", OpId::ShortArccotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"asec", OpId::ShortArcsecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"acsc", OpId::ShortArccosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"asinh", OpId::ShortArchypersine, Prefix, 1, Precedence::Trigonometric, Right},
    {"acosh", OpId::ShortArchypercosine, Prefix, 1, Precedence::Trigonometric, Right},
    {"atanh", OpId::ShortArchypertangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"acoth", OpId::ShortArchypercotangent, Prefix, 1, Precedence::Trigonometric, Right},
    {"asech", OpId::ShortArchypersecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"acsch", OpId::ShortArchypercosecant, Prefix, 1, Precedence::Trigonometric, Right},
    {"log", OpId::CommonLog, Prefix, 1, Precedence::Trigonometric},
    {"ln", OpId::NaturalLog, Prefix, 1, Precedence::Trigonometric},
    {"length", OpId::Length, Prefix, 1, Precedence::Trigonometric},
    {"insert", OpId::Insert, Prefix, 3, Precedence::Splice},
    {"replace", OpId::Replace, Prefix, {3, 4}, Precedence::Splice},
    {"arg", OpId::Argument, Prefix, 1, Precedence::ComplexPart},
    {"conj", OpId::Conjugate, Prefix, 1, Precedence::ComplexPart},
    {"real", OpId::RealPart, Prefix, 1, Precedence::ComplexPart},
    {"imag", OpId::ImaginaryPart, Prefix, 1, Precedence::ComplexPart},
    {"-", OpId::LooseMinus, Prefix, 1, Precedence::LooseSign, Right, kBeforeOther},
    {"+", OpId::LoosePlus, Prefix, 1, Precedence::LooseSign, Right, kBeforeOther},
    {"!", OpId::LooseNotSign, Prefix, 1, Precedence::LooseSign, Right, kBeforeOther},
    {"not", OpId::LooseNotWord, Prefix, 1, Precedence::LooseSign, Right, kBeforeOther},
    {"~", OpId::LooseComplement, Prefix, 1, Precedence::LooseSign, Right, kBeforeOther},
    {"^", OpId::Power, Infix, 2, Precedence::Power, Right},
    {"**", OpId::PowerStars, Infix, 2, Precedence::Power, Right},
    {"*", OpId::Multiplication, Infix, 2, Precedence::Multiplicative},
    {"/", OpId::Division, Infix, 2, Precedence::Multiplicative},
    {"%", OpId::Modulo, Infix, 2, Precedence::Multiplicative},
    {"!", OpId::Factorial, Postfix, 1, Precedence::Multiplicative},
    {"left", OpId::Left, Prefix, 2, Precedence::Substring},
    {"right", OpId::Right, Prefix, 2, Precedence::Substring},
    {"mid", OpId::Mid, Prefix, 3, Precedence::Substring},
    {"+", OpId::Addition, Infix, 2, Precedence::Additive},
    {"-", OpId::Subtraction, Infix, 2, Precedence::Additive},
    {"$+", OpId::Concatenation, Infix, 2, Precedence::Additive},
    {"<", OpId::LessThan, Infix, 2, Precedence::Relation},
    {">", OpId::GreaterThan, Infix, 2, Precedence::Relation},
    {"<=", OpId::LessOrEqual, Infix, 2, Precedence::Relation},
    {">=", OpId::GreaterOrEqual, Infix, 2, Precedence::Relation},
    {"==", OpId::Equal, Infix, 2, Precedence::Equality},
    {"!=", OpId::NotEqual, Infix, 2, Precedence::Equality},
    {"<>", OpId::Unequal, Infix, 2, Precedence::Equality},
    {"&", OpId::BitwiseAnd, Infix, 2, Precedence::BitwiseAnd},
    {"\\", OpId::BitwiseExclusiveOr, Infix, 2, Precedence::BitwiseExclusiveOr},
    {"|", OpId::BitwiseOr, Infix, 2, Precedence::BitwiseOr},
    {"->", OpId::Implication, Infix, 2, Precedence::Implied},
    {"<->", OpId::Equivalence, Infix, 2, Precedence::Implied},
    {"&&", OpId::AndSign, Infix, 2, Precedence::LogicalAnd},
    {"and", OpId::AndWord, Infix, 2, Precedence::LogicalAnd},
    {"\\\\", OpId::ExclusiveOrSign, Infix, 2, Precedence::LogicalExclusiveOr},
    {"xor", OpId::ExclusiveOrWord, Infix, 2, Precedence::LogicalExclusiveOr},
    {"||", OpId::OrSign, Infix, 2, Precedence::LogicalOr},
    {"or", OpId::OrWord, Infix, 2, Precedence::LogicalOr},
    {"=", OpId::Assign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"+=", OpId::AddAssign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"-=", OpId::SubtractAssign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"*=", OpId::MultiplyAssign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"/=", OpId::DivideAssign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"%=", OpId::ModuloAssign, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"$+=", OpId::Append, Infix, 2, Precedence::Assignment, Right},
    {"<=>", OpId::Exchange, Infix, 2, Precedence::Assignment, Right, kAssigns},
    {"|_", OpId::RectangularComplex, Infix, 2, Precedence::ComplexPair},
    {"|/", OpId::PolarComplex, Infix, 2, Precedence::ComplexPair},
};

constexpr SQMOpRow kStandardKeywords[] = {
    {"cosmic", OpId::CosmicScope, Statement, 0, Precedence::ScopeWord},
    {"global", OpId::GlobalScope, Statement, 0, Precedence::ScopeWord},
    {"local", OpId::LocalScope, Statement, 0, Precedence::ScopeWord},
    {"complex", OpId::ComplexWord, Statement, 0, Precedence::ScopeWord},
    {"number", OpId::NumberWord, Prefix, 1, Precedence::Increment, Left, kTypeWord},
    {"string", OpId::StringWord, Prefix, 1, Precedence::Increment, Left, kTypeWord},
    {"boolean", OpId::BooleanWord, Prefix, 1, Precedence::Increment, Left, kTypeWord},
    {"precision", OpId::Precision, Prefix, 1, Precedence::Relation, Right, kOpenWord},
    {"if", OpId::If, Prefix, 1, Precedence::ControlWord, Left, kOpenWord},
    {"unless", OpId::Unless, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"then", OpId::Then, Block, 0, Precedence::ControlWord},
    {"else", OpId::Else, Block, 0, Precedence::ControlWord},
    {"while", OpId::While, Block, 0, Precedence::ControlWord},
    {"until", OpId::Until, Block, 0, Precedence::ControlWord},
    {"always", OpId::Always, Block, 0, Precedence::ControlWord},
    {"do", OpId::Do, Block, 1, Precedence::ControlWord, Right},
    {"end", OpId::End, Block, 0, Precedence::ControlWord},
    {"next", OpId::Next, Block, 0, Precedence::ControlWord},
    {"goto", OpId::Goto, Prefix, 1, Precedence::Jump, Left, kWord},
    {"label", OpId::LabelMark, Prefix, 1, Precedence::Jump, Left, kWord},
    {"select", OpId::Select, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"case", OpId::Case, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"default", OpId::Default, Statement, 0, Precedence::ControlWord},
    {"when", OpId::When, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"is", OpId::Is, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"otherwise", OpId::Otherwise, Statement, 0, Precedence::ControlWord},
    {"break", OpId::Break, Statement, 0, Precedence::ControlWord},
    {"continue", OpId::Continue, Statement, 0, Precedence::ControlWord},
    {"return", OpId::Return, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"exit", OpId::Exit, Statement, 0, Precedence::ControlWord},
    {"seterror", OpId::SetError, Prefix, 1, Precedence::ControlWord, Left, kWord},
    {"clearerror", OpId::ClearError, Statement, 0, Precedence::ControlWord},
    {"radians", OpId::Radians, Statement, 0, Precedence::ModeWord},
    {"degrees", OpId::Degrees, Statement, 0, Precedence::ModeWord},
    {"grads", OpId::Grads, Statement, 0, Precedence::ModeWord},
    {"millicles", OpId::Millicles, Statement, 0, Precedence::ModeWord},
    {"polar", OpId::Polar, Statement, 0, Precedence::ModeWord},
    {"rect", OpId::Rect, Statement, 0, Precedence::ModeWord},
    {"hex", OpId::Hex, Statement, 0, Precedence::ModeWord},
    {"duodec", OpId::Duodec, Statement, 0, Precedence::ModeWord},
    {"decimal", OpId::Decimal, Statement, 0, Precedence::ModeWord},
    {"octal", OpId::Octal, Statement, 0, Precedence::ModeWord},
    {"binary", OpId::Binary, Statement, 0, Precedence::ModeWord},
    {"realonly", OpId::RealOnly, Statement, 0, Precedence::ModeWord},
    {"allowcomplex", OpId::AllowComplex, Statement, 0, Precedence::ModeWord},
    {"forcecomplex", OpId::ForceComplex, Statement, 0, Precedence::ModeWord},
};

constexpr SQMOpRow kLocalOperators[] = {
    {"last", OpId::LastResult, Nofix, 0, Precedence::LastResult, Left, kConstant},
    {"euler", OpId::Euler, Nofix, 0, Precedence::Constant, Left, kConstant},
    {"phi", OpId::Phi, Nofix, 0, Precedence::Constant, Left, kConstant},
    {"pi", OpId::Pi, Nofix, 0, Precedence::Constant, Left, kConstant},
    {"_*", OpId::ImpliedMultiplication, Infix, 2, Precedence::Multiplicative},
};

constexpr std::span<SQMOpRow const> kTables[] = {kStandardOperators, kStandardKeywords, kLocalOperators};

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
          least >= 0 && least <= most && (takesOperands ? least > 0 : row.fix == Block || most == 0);
      std::string_view const token = row.token;
      if (!countsFit || token.empty() || token.size() > CQMOpInfo::kLongestToken) return false;
      if (row.precedence <= Precedence::Flat || row.id <= 0 || row.id > OpId::LastStandard) return false;
    }
  }
  return true;
}

static_assert(IdsAreUnique());
static_assert(RowsAreSane());

void LoadRow(CQMOperatorList& list, SQMOpRow const& row, bool impliedMultiplication) {
  auto info = std::make_unique<CQMOpInfo>(row.token);
  info->id = row.id;
  info->fix = row.fix;
  info->minOperands = row.operands.least;
  info->maxOperands = row.operands.most;
  info->precedence = row.precedence;
  info->rightAssociative = row.associates == Right;
  list.Load(std::move(info), impliedMultiplication);
  if (!row.context) return;
  list.SetContext(row.id, row.context->left, row.context->right);
  if (!row.context->encloses) list.SetEnclose(row.id, false);
}

}  // namespace

void LoadStandardDialect(CQMOperatorList& shared, bool impliedMultiplication) {
  for (SQMOpRow const& row : kStandardOperators) LoadRow(shared, row, impliedMultiplication);
  for (SQMOpRow const& row : kStandardKeywords) LoadRow(shared, row, impliedMultiplication);
  shared.Freeze();
}

void LoadLocalDialect(CQMOperatorList& own, bool impliedMultiplication) {
  for (SQMOpRow const& row : kLocalOperators) {
    if (row.id == OpId::ImpliedMultiplication && !impliedMultiplication) continue;
    LoadRow(own, row, impliedMultiplication);
    if (row.fix == Nofix && impliedMultiplication) own.AddContext(row.id, 0, kOperand);
  }
  own.Freeze();
}

}  // namespace qumel
