// Compilation and running of expressions: reading postfix text, verification, optimisation, names and
// references, the switch to complex evaluation.
#include "engine/expression.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "engine/call.h"
#include "engine/reachable_definitions.h"
#include "program_runner.h"
#include "support/failing_allocation.h"
#include "support/postfix.h"

namespace qumel::test {
namespace {

// ---- an operator that does what a test tells it ----

constexpr long kProbe = 9001, kOtherProbe = 9002, kNoOperator = 9003;

/** Answers of every probe, by their order: the last one is repeated. */
struct SQMProbeScript {
  std::vector<long> verify{Error::None};
  std::vector<long> optimize{Error::None};
  std::function<long(bool isComplex)> run = [](bool) { return Status::Done; };
  long substitute = kNoOperator;
  std::size_t verified = 0;
  std::size_t optimized = 0;
};
SQMProbeScript g_script;

class CQMProbe final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 0; }
  long GetOperandsMaximum() override { return 2; }
  long VerifyOperands() override { return Answer(g_script.verify, g_script.verified); }
  long Optimize() override { return Answer(g_script.optimize, g_script.optimized); }
  SQMWays GetWays() const override { return kWays<&Run<false>, &Run<true>>; }

 private:
  long Answer(std::vector<long> const& answers, std::size_t& index) {
    long const answer = answers[std::min(index, answers.size() - 1)];
    ++index;
    return answer == Error::UseSubstitute ? SubstituteBy(g_script.substitute) : answer;
  }
  template <bool isComplex>
  static long Run(CQMCall&) {
    return g_script.run(isComplex);
  }
};

/** Makes probes besides what the language has. */
class CQMProbeFactory final : public CQMOperatorFactory {
 public:
  CQMOperator* GetOperator(long id, CQMArena& arena, CQMReachableDefinitions* known) override {
    if (id != kProbe && id != kOtherProbe) return CQMOperatorFactory::GetOperator(id, arena, known);
    auto* const made = arena.Make<CQMProbe>();
    made->SetId(id);
    return made;
  }
};

class Expression : public ::testing::Test {
 protected:
  Expression() {
    g_script = {};
    m_context.factory = &m_factory;
  }

  std::unique_ptr<CQMExpression> Make() { return std::make_unique<CQMExpression>(m_context); }
  std::unique_ptr<CQMExpression> CompileText(std::string_view postfix, bool optimize = true) {
    auto made = Make();
    made->SetParsedExpression(ReadPostfix(postfix), optimize);
    return made;
  }
  std::string RunText(std::string_view postfix) { return CQMTestContext::Resolve(*CompileText(postfix)); }

  CQMProbeFactory m_factory;
  CQMTestContext m_context;
};

// ---- reading ----

TEST_F(Expression, ReadsPostfixText) {
  struct SQMCase {
    char const* postfix;
    char const* outcome;
  };
  constexpr SQMCase kCases[] = {
      {"", "none"},
      {";", "none"},
      {"#d7;", "7"},
      {"#hfF", "255"},
      {"#d1#d2", "2"},
      {"$5:!1@;&;", "'!1@;&"},
      {"$0:;", "'"},
      {"$9:short", "'short"},
      {"@unknown;", "none"},
      {"#d1&5003;", "none"},  // leaves its place among the operands empty
      {"#d1#d2!1101.2;", "3"},
      {"#d5!2501;#d1", "error 3190"},  // no count is a count of 0
      {"#d5!2501.1;#d1;", "-5"},       // of the last operator, wherever it stands
      {"!1101.2", "error 3190"},
      {"#d1!1101.2", "error 3190"},
      {"#d1#d2#d3!1101.3", "error 3200"},
      {"#d1!1101.2000000000", "error 3190"},
      {"#d1!9999.1", "error 3450"},
      {"!2702.2", "error 3450"},
      {"!10000.0", "error 3450"},
      {"!-1.0", "error 3450"},
      // operands are for their own statement
      {"#d1;#d2!1101.2", "error 3190"},
      {"#d1#d2!1101.2;!2501.1", "error 3190"},
      {"#d1$1:a;#d3#d4!1101.2", "7"},
  };
  for (SQMCase const& test : kCases) EXPECT_EQ(RunText(test.postfix), test.outcome) << test.postfix;
}

TEST_F(Expression, KeepsOperandsAndMarksOfItsText) {
  auto const expression = CompileText("#h01F#d2.5!2702.2$2:ab@x&5003", false);
  EXPECT_EQ(expression->GetItems().GetPostfix(), "#h01F#d2.5!2702.2$2:ab@x&5003");
  EXPECT_EQ(expression->GetErrorState(), Error::UnimplementedOperator);  // and what was read before it stays
  CQMDatum const* const whole = expression->GetOperandByIndex(0);
  CQMDatum const* const fraction = expression->GetOperandByIndex(1);
  ASSERT_NE(fraction, nullptr);
  EXPECT_TRUE(whole->IsLiteral() && whole->IsTemporary() && whole->GetLiteralAttribute(0));
  EXPECT_FALSE(fraction->GetLiteralAttribute(0) || fraction->GetLiteralAttribute(1));
  EXPECT_EQ(whole->GetOwningExpression(), expression.get());
  EXPECT_EQ(expression->GetOperandByIndex(2), nullptr);

  // compiled again, only the new text counts
  EXPECT_EQ(expression->SetParsedExpression(ReadPostfix("#d4@new"), true), Error::None);
  EXPECT_EQ(expression->GetOperatorCount(), 0);
  EXPECT_EQ(CQMTestContext::Describe(expression->GetOperandByIndex(0)), "4");
  EXPECT_TRUE(expression->GetOperandByIndex(1)->IsPending());
  EXPECT_EQ(expression->GetResultDatum(), expression->GetOperandByIndex(1));
}

// ---- verification and optimisation ----

TEST_F(Expression, ActsOnTheAnswersOfVerification) {
  struct SQMCase {
    std::vector<long> answers;
    bool allowsComplex;
    long code;
    bool isComplex;
    std::size_t asked;
  };
  constexpr long kAgain = Error::VerifyAgain, kMismatch = Error::TypeMismatch,
                 kComplexOperand = Error::ComplexOperandFound;
  SQMCase const kCases[] = {
      {{Error::None}, false, Error::None, false, 1},
      {{kMismatch, Error::None}, false, Error::None, false, 2},
      {{kAgain, Error::None}, false, Error::None, false, 2},
      {{kMismatch}, false, kMismatch, false, 2},
      {{kAgain}, false, Error::TooManySubstitutions, false, 2},
      {{kComplexOperand}, false, Error::None, true, 1},
      {{Error::ResultIsComplex}, true, Error::None, true, 1},
      {{Error::ResultIsComplex}, false, Error::ResultIsComplex, false, 1},
      {{Error::NotAString}, true, Error::NotAString, false, 1},
      {{Error::UseSubstitute, Error::None}, false, Error::None, false, 2},
      {{Error::UseSubstitute, kMismatch, Error::None}, false, Error::None, false, 3},
  };
  for (std::size_t row = 0; row < std::size(kCases); ++row) {
    SCOPED_TRACE(row);
    SQMCase const& test = kCases[row];
    g_script = {};
    g_script.verify = test.answers;
    g_script.substitute = kOtherProbe;
    m_context.allowComplex = test.allowsComplex;
    auto const expression = CompileText("!9001.0");
    EXPECT_EQ(expression->GetErrorState(), test.code);
    EXPECT_EQ(expression->IsInComplexMode(), test.isComplex);
    EXPECT_EQ(g_script.verified, test.asked);
    EXPECT_EQ(g_script.optimized, test.code == Error::None ? 1U : 0U);
    EXPECT_EQ(expression->GetOperatorByIndex(0)->GetId(),
              test.answers[0] == Error::UseSubstitute ? kOtherProbe : kProbe);
    EXPECT_EQ(expression->Resolve(), test.code);
  }
}

TEST_F(Expression, AsksAgainAsLongAsAnOperatorGetsOn) {
  struct SQMCase {
    std::vector<long> answers;  // of three operators, pass by pass
    long code;
    std::size_t asked;
  };
  constexpr long kAgain = Error::VerifyAgain, kMismatch = Error::TypeMismatch, kDone = Error::None;
  SQMCase const kCases[] = {
      {{kAgain, kAgain, kDone, kAgain, kDone, kDone}, kDone, 6},
      {{kMismatch, kAgain, kDone, kMismatch, kDone, kDone}, kDone, 6},
      // one pass more, in which nothing changed, decides
      {{kAgain, kDone, kDone, kAgain, kDone}, kDone, 5},
      {{kAgain, kDone, kDone, kAgain, kAgain}, Error::TooManySubstitutions, 5},
      {{kMismatch, kDone, kDone, kMismatch, kMismatch}, kMismatch, 5},
      {{kAgain, kAgain, kAgain, kDone, kDone, kDone}, kDone, 6},
      {{kAgain, kAgain, kAgain, kDone, kMismatch}, kMismatch, 5},
  };
  for (std::size_t row = 0; row < std::size(kCases); ++row) {
    SCOPED_TRACE(row);
    g_script = {};
    g_script.verify = kCases[row].answers;
    EXPECT_EQ(CompileText("!9001.0!9001.0!9001.0")->GetErrorState(), kCases[row].code);
    EXPECT_EQ(g_script.verified, kCases[row].asked);
  }
}

TEST_F(Expression, EndsSubstitutionsAndOptimisationsThatNeverEnd) {
  struct SQMCase {
    std::vector<long> verify;
    std::vector<long> optimize;
    long substitute;
    long code;
  };
  constexpr long kUse = Error::UseSubstitute;
  SQMCase const kCases[] = {
      {{kUse}, {Error::None}, kOtherProbe, Error::TooManySubstitutions},
      {{kUse}, {Error::None}, kNoOperator, Error::UnimplementedOperator},
      {{Error::None}, {kUse}, kOtherProbe, Error::TooManySubstitutions},
      {{Error::None}, {kUse}, kNoOperator, Error::UnimplementedOperator},
      {{Error::None}, {Error::OptimizeAgain}, kNoOperator, Error::TooManySubstitutions},
      {{Error::None}, {Error::OptimizeAgain, Error::None}, kNoOperator, Error::None},
      {{Error::None}, {Error::Overflow}, kNoOperator, Error::Overflow},
  };
  for (std::size_t row = 0; row < std::size(kCases); ++row) {
    SCOPED_TRACE(row);
    g_script = {};
    g_script.verify = kCases[row].verify;
    g_script.optimize = kCases[row].optimize;
    g_script.substitute = kCases[row].substitute;
    EXPECT_EQ(CompileText("#d1!9001.1")->GetErrorState(), kCases[row].code);
    bool const failsAnyway = kCases[row].verify[0] != Error::None;
    g_script.verified = g_script.optimized = 0;
    EXPECT_EQ(CompileText("#d1!9001.1", false)->GetErrorState(), failsAnyway ? kCases[row].code : 0);
    EXPECT_EQ(g_script.optimized, 0U);
  }
}

TEST_F(Expression, SubstitutesTakeOverOperandsAndTheResult) {
  g_script.optimize = {Error::UseSubstitute, Error::None};
  g_script.substitute = kOtherProbe;
  auto const expression = CompileText("#d1#d2!9001.2!2501.1");
  ASSERT_EQ(expression->GetErrorState(), Error::None);
  CQMOperator* const made = expression->GetOperatorByIndex(0);
  EXPECT_EQ(made->GetId(), kOtherProbe);
  EXPECT_EQ(made->GetExpression(), expression.get());
  for (long i = 0; i < 2; ++i) EXPECT_EQ(made->GetOperandByIndex(i), expression->GetOperandByIndex(i));
  EXPECT_EQ(expression->GetOperatorByIndex(1)->GetOperandByIndex(0), made->GetResultOperand());
}

TEST_F(Expression, TypesSpreadFromProducersToConsumers) {
  static constexpr SQMProgram kPrograms[] = {
      {"'a 'b + 'c 'd + +", "'abcd"},
      {"t 'a 'b + = ; t", "'ab"},
      {"s t 'a 'b + = = ; s return", "'ab"},
      {"x 5 = y x = + ; y return", "5"},
      {"u", "none"},
      {"u neg", "error 3060"},
      {"u 1 +", "error 3060"},
      {"x u =", "error 3060"},
      {"x 1 + ; x 5 =", "error 3060"},
  };
  ExpectOutcomes(kPrograms);
}

// ---- names and references ----

TEST_F(Expression, OneNameMeetsItselfWithinAStatement) {
  for (char const scope : {Scope::kLocal, Scope::kGlobal, Scope::kCosmic}) {
    SCOPED_TRACE(scope);
    CQMTestContext context;
    context.defaultScope = scope;
    {
      auto const expression = context.Compile("x x 5 = 1 + = ; x x +");
      EXPECT_EQ(CQMTestContext::Resolve(*expression), "12");
      CQMDatum* const placed = scope == Scope::kLocal ? expression->GetSymbol("x") : context.Find(scope, "x");
      ASSERT_NE(placed, nullptr);
      EXPECT_EQ(placed->GetScope(), scope);
      EXPECT_FALSE(placed->IsPending() || placed->IsTemporary());
      EXPECT_EQ(placed->GetOwningExpression(), nullptr);
      EXPECT_EQ(placed->GetRefCount() > 0, scope != Scope::kLocal);
    }
    if (scope == Scope::kLocal) continue;
    EXPECT_EQ(context.Find(scope, "x")->GetRefCount(), 0);
    EXPECT_EQ(context.Find(scope, "x")->GetChildCount(), 0);
  }
}

TEST_F(Expression, NamesAreLookedUpFromTheInsideOut) {
  m_context.Run("cosmic x 1 =");
  m_context.Run("cosmic y 2 =");
  auto global = std::make_unique<CQMDatum>(EQMDataType::Number, "x");
  global->SetReal(3.0);
  m_context.AddGlobal(std::move(global));
  EXPECT_EQ(m_context.Run("x y +"), "5");
  EXPECT_EQ(m_context.Run("X"), "none");

  auto definition = std::make_shared<SQMOperatorDefinition>();
  CQMReachableDefinitions::GiveBody(*definition, {ReadPostfix("@x@y!1101.2;@x@x#d7!101.2!1101.2;"), {}});
  definition->parameters = {{"x", EQMDataType::Number}, {"", EQMDataType::Number}};
  CQMDatum parameters[] = {{EQMDataType::Number, "a"}, {EQMDataType::Number, "b"}};
  parameters[0].SetReal(10.0);
  CQMDatum* const given[] = {&parameters[0], &parameters[1]};
  auto const body = Make();
  EXPECT_EQ(body->SetParsedExpression(definition, given, false), Error::None);
  EXPECT_EQ(CQMTestContext::Resolve(*body), "14");
  auto sum = std::make_shared<SQMOperatorDefinition>();
  CQMReachableDefinitions::GiveBody(*sum, {ReadPostfix("@x@y!1101.2;"), {}});
  sum->parameters = definition->parameters;
  EXPECT_EQ(body->SetParsedExpression(sum, given, false), Error::None);
  EXPECT_EQ(CQMTestContext::Resolve(*body), "9");
  EXPECT_EQ(m_context.Run("x"), "3");
  EXPECT_EQ(body->SetParsedExpression(nullptr, given, false), Error::None);
  EXPECT_EQ(body->GetResultDatum(), nullptr);
}

TEST_F(Expression, ReferencesAreGivenBackHoweverItEnds) {
  m_context.AddGlobal(std::make_unique<CQMDatum>(EQMDataType::Number, "x"));
  auto const references = [this] { return m_context.Find(Scope::kGlobal, "x")->GetRefCount(); };
  {
    auto const expression = m_context.Compile("x x + ; x 3 [1 neg");
    EXPECT_EQ(references(), 3);
    EXPECT_EQ(m_context.GetGlobalSymbolTable()->DeleteSymbol("x", true), Error::VariableInUse);
    auto const second = m_context.Compile("x");
    EXPECT_EQ(references(), 4);
    expression->SetParsedExpression(ReadPostfix("#d1"), true);
    EXPECT_EQ(references(), 1);
  }
  EXPECT_EQ(references(), 0);
  long const objects = CQMObject::sm_lQMObjectCount;
  for (char const* program : {"x x + ; u neg", "x 1 = 'a -= ; x", "x 1 [1 5 = x 'a =", "x if", "x goto",
                              "x 3 = =", "global fresh 1 = ; u neg", "cosmic x u ="}) {
    EXPECT_NE(m_context.Compile(program)->GetErrorState(), Error::None) << program;
    EXPECT_EQ(references(), 0) << program;
    EXPECT_EQ(m_context.Find(Scope::kGlobal, "x")->GetChildCount(), 0) << program;
  }
  // what was declared before the fault stays declared
  EXPECT_EQ(m_context.GetGlobalSymbolTable()->DeleteSymbol("fresh", true), Error::None);
  EXPECT_EQ(m_context.GetGlobalSymbolTable()->DeleteSymbol("x", true), Error::None);
  EXPECT_LT(CQMObject::sm_lQMObjectCount, objects);
}

TEST_F(Expression, ExhaustedMemoryLeavesNoReferencesBehind) {
  long spared = 0;
  for (bool isDone = false; !isDone; ++spared) {
    ASSERT_LT(spared, 1000);
    CQMTestContext context;
    context.AddGlobal(std::make_unique<CQMDatum>(EQMDataType::Number, "x"));
    std::string const postfix = PostfixOf("global y x 1 + = ; x y + ; z 5 = ; x 3 [1 x 1 [1 +");
    try {
      CQMExpression expression(context);
      testing::FailingAllocation const failing(spared);
      isDone = expression.SetParsedExpression(ReadPostfix(postfix), true) == Error::None;
    } catch (std::bad_alloc const&) {
    }
    for (char const* name : {"x", "y"}) {
      CQMDatum const* const variable = context.Find(Scope::kGlobal, name);
      if (variable == nullptr) continue;
      EXPECT_EQ(variable->GetRefCount(), 0) << name << " after " << spared;
      EXPECT_EQ(variable->GetChildCount(), 0) << name << " after " << spared;
    }
  }
  EXPECT_GT(spared, 10);
}

// ---- running ----

TEST_F(Expression, SwitchesToComplexEvaluationOnceAndForGood) {
  std::vector<bool> calls;
  g_script.run = [&calls](bool isComplex) { return calls.push_back(isComplex), Status::Done; };
  m_context.AddGlobal(std::make_unique<CQMDatum>(EQMDataType::Number, "x"));
  double& x = m_context.Find(Scope::kGlobal, "x")->Real();
  m_context.allowComplex = false;
  auto const expression = CompileText("!9001.0;@x!2101.1");
  struct SQMRun {
    double operand;
    bool allowsComplex;
    char const* outcome;
    std::vector<bool> calls;
    bool isComplex;
  };
  SQMRun const kRuns[] = {
      {4.0, false, "2", {false}, false},
      {-4.0, false, "error 3140", {false}, false},
      {4.0, true, "2", {false}, false},
      {-4.0, true, "0+2i", {false}, true},  // what ran before the switch does not run again
      {-9.0, false, "0+3i", {true}, true},  // remembered, and no longer asked for permission
  };
  for (SQMRun const& run : kRuns) {
    SCOPED_TRACE(run.outcome);
    x = run.operand;
    m_context.allowComplex = run.allowsComplex;
    calls.clear();
    EXPECT_EQ(CQMTestContext::Resolve(*expression), run.outcome);
    EXPECT_EQ(calls, run.calls);
    EXPECT_EQ(expression->IsInComplexMode(), run.isComplex);
  }
}

TEST_F(Expression, StartsInComplexModeWhereItIsForcedOrNeeded) {
  struct SQMCase {
    char const* postfix;
    bool forces;
    bool isComplex;
  };
  constexpr SQMCase kCases[] = {
      {"!9001.0", false, false},
      {"!9001.0", true, true},
      {"!9001.0;!5204.0@z!5211.1;@z!2501.1", false, true},
  };
  m_context.allowComplex = false;
  for (SQMCase const& test : kCases) {
    bool ranComplex = false;
    g_script.run = [&ranComplex](bool isComplex) { return ranComplex = isComplex, Status::Done; };
    m_context.forceComplex = test.forces;
    auto const expression = CompileText(test.postfix);
    m_context.forceComplex = false;
    EXPECT_EQ(expression->Resolve(), Error::None);
    EXPECT_EQ(ranComplex, test.isComplex) << test.postfix;
  }
}

TEST_F(Expression, StopsWhereAnOperatorEndsIt) {
  long status = Status::Stop;
  g_script.run = [&status](bool) { return status; };
  auto const expression = CompileText("#d1#d2!1101.2;!9001.0;#d3#d4!1101.2");
  CQMDatum const* const stopped = expression->GetOperatorByIndex(1)->GetResultOperand();
  CQMDatum const* const last = expression->GetOperatorByIndex(2)->GetResultOperand();
  EXPECT_EQ(expression->GetResultDatum(), last);
  EXPECT_EQ(expression->Resolve(), Error::None);
  EXPECT_EQ(expression->GetResultDatum(), stopped);
  status = Status::Done;
  EXPECT_EQ(expression->Resolve(), Error::None);
  EXPECT_EQ(expression->GetResultDatum(), last);
  EXPECT_EQ(last->Real(), 7.0);
  status = 4711;
  EXPECT_EQ(expression->Resolve(), 4711);
  EXPECT_EQ(expression->GetResultDatum(), last);
}

TEST_F(Expression, OneShotLettersAreUsedUp) {
  auto const expression = Make();
  expression->SetNextSymbolScope(Scope::kGlobal);
  EXPECT_EQ(expression->UseNextSymbolScope(), Scope::kGlobal);
  EXPECT_EQ(expression->UseNextSymbolScope(), Scope::kDefault);
  EXPECT_EQ(expression->GetNextNumericSymbolDataType(), EQMDataType::Number);
  for (auto const& [letter, type] :
       {std::pair{'S', EQMDataType::Number}, {'C', EQMDataType::Complex}, {'?', EQMDataType::Undefined}}) {
    expression->SetNextSymbolComplexity(letter);
    EXPECT_EQ(expression->GetNextNumericSymbolDataType(), type);
    EXPECT_EQ(expression->UseNextSymbolComplexity(), Complexity::kDefault);
  }
}

}  // namespace
}  // namespace qumel::test
