// The round trip: whatever text converts to, turned back into infix text, converts to the same again.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "base/operator_ids.h"
#include "language/characters.h"
#include "language/dialect.h"

namespace qumel {
namespace {

#ifdef QUMEL_SANITIZED
constexpr long kExpressions = 5'000;
#else
constexpr long kExpressions = 10'000;
#endif
constexpr long kFirstSeed = 20'240;

/** Set in the environment, for longer searches. */
long Chosen(char const* variable, long otherwise) {
  char const* const text = std::getenv(variable);
  return text != nullptr ? std::atol(text) : otherwise;
}

constexpr SQMHostOperator kSharedHostOperators[] = {
    {"twice", EQMFix::Prefix, 1}, {"mix", EQMFix::Prefix, 3, Precedence::Additive},
    {"sq", EQMFix::Postfix, 1},   {"now", EQMFix::Nofix, 0},
    {"%%", EQMFix::Postfix, 1},
};
constexpr SQMHostOperator kOwnHostOperators[] = {
    {"<<", EQMFix::Infix, 2, Precedence::Additive},
    {"plus", EQMFix::Infix, 2, Precedence::Equality},
    {"@@", EQMFix::Prefix, 2},
    {"over", EQMFix::Infix, 2},
    {"!!", EQMFix::Nofix, 0},
};

/** Texts of two kinds: expressions built from every operator of the lists, and tokens in any order. Many do
 * not convert. */
class CQMTextMaker {
 public:
  CQMTextMaker(CQMDialect const& dialect, SQMReadingRules const& rules, unsigned seed)
      : m_quote(rules.quoteMark), m_radixMark(rules.radixMark), m_random(seed) {
    for (long id = 1; id < OpId::FirstExternal + 100; ++id) {
      for (CQMOperatorList const* list : {&dialect.shared, &dialect.own}) {
        if (CQMOpInfoRef const info = list->FindById(id); info != nullptr) m_rows.push_back(info);
      }
    }
  }

  std::string Next() {
    m_text.clear();
    m_isSigned = false;
    if (Below(3) == 0) {
      for (int count = 1 + Below(9); count > 0; --count) AddAnyToken();
    } else {
      for (int count = 1 + (Below(4) == 0 ? Below(3) : 0); count > 0; --count) {
        AddExpression(Below(5));
        if (count > 1) Add(";");
      }
    }
    return m_text;
  }

 private:
  int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
  std::string_view OneOf(std::initializer_list<std::string_view> choices) {
    return choices.begin()[Below(static_cast<int>(choices.size()))];
  }

  void Add(std::string_view token) {
    bool const runTogether =
        !m_text.empty() && !token.empty() && IsNamePart(m_text.back()) && IsNamePart(token[0]);
    if (runTogether || Below(4) == 0) m_text += OneOf({" ", " ", " ", "  ", "\n", " // note\n"});
    m_text += token;
    m_isSigned = IsSign(token) || (m_isSigned && (token == "++" || token == "--"));
  }

  static bool IsSign(std::string_view token) {
    return token == "-" || token == "+" || token == "!" || token == "~" || token == "not";
  }

  /** A control word behind a signed operand may hold the sign back, which reverted texts do not repeat. */
  void AddToken(CQMOpInfo const& row) {
    bool const isControlWord = IsKeywordOperator(row.id) && row.fix == EQMFix::Prefix;
    if (m_isSigned && isControlWord) Add(",");
    Add(row.token);
  }

  void AddNumber() {
    std::string number(OneOf({"0", "1", "2.5", ".5", "7.", "1.E", "3E", "4X-2", "6E+1", "0x1F", "0b10",
                              "0o17", "0t1E", "0x", "0d9.5", "1E5", "0x1X+2", "012"}));
    for (char& c : number) c = c == '.' ? m_radixMark : c;
    Add(number);
  }

  void AddString() {
    std::string text(1, m_quote);
    for (int count = Below(4); count > 0; --count) {
      text += OneOf({"a", " ", "!1101.2", ";", "{", "\\n", "\\\\", "\\\"", "\\'", "'", "\"", "//", "\xff",
                     "\t", "1:", ")"});
    }
    Add(text + m_quote);
  }

  void AddOperand() {
    bool const isSigned = m_isSigned;
    switch (Below(6)) {
      case 0:
      case 1: AddNumber(); break;
      case 2: AddString(); break;
      default: Add(OneOf({"x", "y", "E5", "b1", "_z", "xF", "O", "t_2"}));
    }
    m_isSigned = isSigned;
  }

  void AddAnyToken() {
    switch (Below(8)) {
      case 0:
      case 1: return AddOperand();
      case 2: return Add(OneOf({"(", ")", "[", "]", "(", ")", ",", ";", ":"}));
      default: AddToken(AnyRow());
    }
  }

  /** Rows of one spelling and family would hide the rest: words and signs that stand differently come often.
   */
  CQMOpInfo const& AnyRow() {
    if (Below(4) == 0) {
      std::string_view const token =
          OneOf({"-",    "!",    "not", "++",    "--",   "global", "complex", "number",    "if",
                 "then", "else", "do",  "while", "end",  "always", "goto",    "return",    "=",
                 "+=",   "$+",   "pi",  "true",  "last", "^",      "degrees", "precision", "_*"});
      for (CQMOpInfoRef const& row : m_rows) {
        if (row->token == token && Below(2) == 0) return *row;
      }
    }
    return *m_rows[static_cast<std::size_t>(Below(static_cast<int>(m_rows.size())))];
  }

  void AddArguments(int count, int depth) {
    for (int i = 0; i < count; ++i) {
      if (i > 0) Add(OneOf({",", ",", ",", ";"}));
      AddExpression(depth);
    }
  }

  int CountFor(CQMOpInfo const& row) {
    if (row.HasVariableOperands()) return Below(5);
    return Below(20) == 0 ? Below(4) : row.minOperands;
  }

  void AddExpression(int depth) {
    if (depth <= 0) return AddOperand();
    switch (Below(8)) {
      case 0: return AddOperand();
      case 1: {
        Add("(");
        AddExpression(depth - 1);
        return Add(")");
      }
      case 2: {  // side by side
        AddExpression(depth - 1);
        return AddExpression(depth - 1);
      }
      default: AddOperation(AnyRow(), depth - 1);
    }
  }

  void AddOperation(CQMOpInfo const& row, int depth) {
    switch (row.fix) {
      case EQMFix::Prefix: {
        AddToken(row);
        int const count = CountFor(row);
        if (count == 1 && Below(2) == 0) return AddExpression(depth);
        Add("(");
        AddArguments(count, depth);
        return Add(")");
      }
      case EQMFix::Infix:
        AddExpression(depth);
        AddToken(row);
        if (row.token != "[") return AddExpression(depth);
        AddArguments(Below(10) == 0 ? 0 : 1 + Below(3), depth);
        return Add("]");
      case EQMFix::Postfix: AddExpression(depth); return Add(row.token);
      case EQMFix::Nofix: return Add(row.token);
      default:
        if (Below(2) == 0) AddExpression(depth);
        Add(row.token);
        if (Below(2) == 0) AddExpression(depth);
    }
  }

  char m_quote, m_radixMark;
  std::mt19937 m_random;
  std::vector<CQMOpInfoRef> m_rows;
  std::string m_text;
  bool m_isSigned = false;  // ends with a sign, or with one and its operand
};

struct SQMDialectCase {
  char const* name;
  SQMReadingRules rules;
  bool firstMultiplies = true;  // the context that loaded the shared list
};

class RoundTrip : public testing::TestWithParam<SQMDialectCase> {};

TEST_P(RoundTrip, KeepsPostfixText) {
  SQMReadingRules const& rules = GetParam().rules;
  auto const seed = static_cast<unsigned>(Chosen("QUMEL_SEED", kFirstSeed));
  long const wanted = Chosen("QUMEL_EXPRESSIONS", kExpressions);
  CQMDialect dialect(rules, GetParam().firstMultiplies);
  for (SQMHostOperator const& op : kSharedHostOperators) dialect.Define(dialect.shared, op);
  for (SQMHostOperator const& op : kOwnHostOperators) dialect.Define(dialect.own, op);
  CQMTextMaker maker(dialect, rules, seed);

  long converted = 0, made = 0, failed = 0;
  for (; converted < wanted && made < 100 * wanted; ++made) {
    std::string const text = maker.Next();
    CQMItemList items;
    if (dialect.fixer.ConvertExpression(text, items) != Error::None) continue;
    ++converted;
    std::string const postfix = items.GetPostfix();
    std::string reverted;
    long const code = dialect.fixer.RevertExpression(items, reverted, rules.quoteMark);
    std::string const again = dialect.Convert(reverted);
    if (code == Error::None && again == postfix) continue;
    long const kShown = Chosen("QUMEL_SHOWN", 10);
    if (++failed > kShown) continue;
    ADD_FAILURE() << text << "\n  converts to " << postfix << "\n  reverts to  " << reverted
                  << "\n  and then    " << again;
  }
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(converted, wanted);
  std::printf("seed %u: %ld of %ld texts converted, %ld did not come back\n", seed, converted, made, failed);
}

SQMDialectCase const kDialects[] = {
    {"Usual", {}},
    {"Flat", {.hierarchical = false}},
    {"NoImpliedMultiplication", {.impliedMultiplication = false}},
    {"NoImpliedMultiplicationAtAll", {.impliedMultiplication = false}, false},
    {"CommaAndSingleQuote",
     {.radixMark = ',', .quoteMark = '\'', .listSeparator = ';', .statementSeparator = ':'}},
};
INSTANTIATE_TEST_SUITE_P(Dialects, RoundTrip, testing::ValuesIn(kDialects),
                         [](auto const& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace qumel
