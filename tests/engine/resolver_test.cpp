// The three resolvers on lists of operators made by hand: what each computes itself, and how statuses and
// positions steer it.
#include "engine/resolver.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "base/letters.h"
#include "program_runner.h"

namespace qumel::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallest = -2147483648.0;
constexpr double kUntouched = -99.0;
constexpr long kGoesOn = -1;  // in place of a target

/** What one operator does when it is called, and how often it was. */
struct SQMScript {
  long status = Status::Done;
  long target = kGoesOn;
  bool advances = true;
};

class CQMScriptedOperator final : public CQMOperator {
 public:
  CQMScriptedOperator(SQMScript real, SQMScript complex) : m_real(real), m_complex(complex) {}
  long GetOperandsNeeded() override { return 0; }
  long DoOperation(long& position) override { return ++realCalls, Play(m_real, position); }
  long DoComplexOperation(long& position) override { return ++complexCalls, Play(m_complex, position); }

  int realCalls = 0;
  int complexCalls = 0;

 private:
  static long Play(SQMScript const& script, long& position) {
    if (script.target != kGoesOn) {
      position = script.target;
    } else if (script.advances) {
      ++position;
    }
    return script.status;
  }

  SQMScript m_real;
  SQMScript m_complex;
};

/** The lists that a compiled expression hands to its resolver. */
class CQMSteps {
 public:
  CQMScriptedOperator& Add(SQMScript real, SQMScript complex = {}) {
    auto& made = *m_operators.emplace_back(std::make_unique<CQMScriptedOperator>(real, complex));
    made.CreateOperandList(0);
    made.SetResultOperand(nullptr);
    return made;
  }
  /** An operator that the optimised resolver must compute itself: calling it ends the run. */
  void AddInlined(long id, std::initializer_list<double> values) {
    CQMScriptedOperator& made = Add({Error::DiagnosticMarker1});
    made.SetId(id);
    made.CreateOperandList(static_cast<long>(values.size()));
    for (auto value = std::rbegin(values); value != std::rend(values); ++value) {
      m_values.push_back(std::make_unique<CQMDatum>(EQMDataType::Number, nullptr));
      m_values.back()->SetReal(*value);
      made.AssignOperand(m_values.back().get());
    }
    made.GetResultOperand()->SetReal(kUntouched);
  }
  long Run(CQMResolver& resolver, long start = 0) {
    std::vector<CQMOperator*> operators;
    std::vector<CQMDatum**> operands;
    std::vector<CQMDatum*> results;
    for (auto const& op : m_operators) {
      operators.push_back(op.get());
      operands.push_back(op->GetOperandList());
      results.push_back(op->GetResultOperand());
    }
    position = start;
    return resolver.Resolve(operators.data(), operands.data(), results.data(),
                            static_cast<long>(operators.size()), position);
  }
  double Result(std::size_t index) const { return m_operators[index]->GetResultOperand()->Real(); }

  long position = 0;

 private:
  std::vector<std::unique_ptr<CQMScriptedOperator>> m_operators;
  std::vector<std::unique_ptr<CQMDatum>> m_values;
};

bool IsSame(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

TEST(OptimizedResolver, ComputesTheCommonOperationsItself) {
  struct SQMCase {
    long id;
    std::vector<double> operands;
    double result;
    long status = Status::Done;
  };
  constexpr long kComplex = Status::NeedsComplex, kDivision = Error::DivisionByZero;
  SQMCase const kCases[] = {
      {OpId::Addition, {2.5, 3.0}, 5.5},
      {OpId::Subtraction, {2.5, 3.0}, -0.5},
      {OpId::Multiplication, {2.5, 3.0}, 7.5},
      {OpId::Division, {3.0, 4.0}, 0.75},
      {OpId::Division, {5.0, 0.0}, 0.0, kDivision},
      {OpId::Division, {5.0, -0.0}, 0.0, kDivision},
      {OpId::Division, {5.0, kNaN}, kNaN},
      {OpId::Modulo, {7.9, -3.9}, 1.0},
      {OpId::Modulo, {-7.0, 3.0}, -1.0},
      {OpId::Modulo, {7.0, 0.9}, 0.0, kDivision},
      {OpId::Modulo, {kSmallest, -1.0}, 0.0, kDivision},
      {OpId::Modulo, {kInfinity, 7.0}, -2.0},  // the smallest integer stands for what is no integer
      {OpId::Power, {2.0, 10.0}, 1024.0},
      {OpId::PowerStars, {4.0, -0.5}, 0.5},
      {OpId::Power, {0.0, 0.0}, 1.0},
      {OpId::Power, {-2.0, 2.0}, 0.0, kComplex},
      {OpId::PowerStars, {-2.0, 0.5}, 0.0, kComplex},
      {OpId::Power, {-2.0, kInfinity}, 0.0, kComplex},
      {OpId::Power, {-kInfinity, 1.0}, 0.0, kComplex},
      {OpId::Power, {kNaN, 2.0}, kNaN},
      {OpId::Power, {-2.0, kNaN}, kNaN},
      {OpId::LooseMinus, {0.0}, 0.0},
      {OpId::TightMinus, {-0.0}, 0.0},
      {OpId::TightMinus, {3.0}, -3.0},
      {OpId::SquareRoot, {6.25}, 2.5},
      {OpId::SquareRoot, {-4.0}, 0.0, kComplex},
      {OpId::SquareRoot, {-0.0}, -0.0},
      {OpId::SquareRoot, {kNaN}, kNaN},
      {OpId::AbsoluteValue, {-3.5}, 3.5},
      {OpId::Square, {-3.0, 2.0}, 9.0},
  };
  CQMTestContext context;
  CQMRealOptimizedResolver resolver(context);
  for (SQMCase const& test : kCases) {
    SCOPED_TRACE(::testing::Message() << test.id << " of " << ::testing::PrintToString(test.operands));
    CQMSteps steps;
    steps.AddInlined(OpId::Addition, {1.0, 1.0});
    if (test.operands.size() == 1) steps.AddInlined(test.id, {test.operands[0]});
    else steps.AddInlined(test.id, {test.operands[0], test.operands[1]});
    EXPECT_EQ(steps.Run(resolver), test.status);
    EXPECT_EQ(steps.position, test.status == Status::Done ? 2 : 1);
    EXPECT_TRUE(IsSame(steps.Result(1), test.result)) << steps.Result(1);
  }
}

TEST(OptimizedResolver, ReadsTheAngleFactorOnceARun) {
  CQMTestContext context;
  CQMRealOptimizedResolver resolver(context);
  CQMSteps steps;
  for (long const id : {OpId::Sine, OpId::Cosine, OpId::Tangent, OpId::Sine}) steps.AddInlined(id, {0.75});
  for (int run = 1; run <= 2; ++run) {
    context.toRadians = run * 0.5;
    EXPECT_EQ(steps.Run(resolver), Status::Done);
    EXPECT_EQ(context.angleReadings, run);
    double const angle = context.toRadians * 0.75;
    EXPECT_EQ(steps.Result(0), std::sin(angle));
    EXPECT_EQ(steps.Result(1), std::cos(angle));
    EXPECT_EQ(steps.Result(2), std::tan(angle));
    EXPECT_EQ(steps.Result(3), std::sin(angle));
  }
}

TEST(Resolvers, FollowPositionsAndStartAnywhere) {
  CQMTestContext context;
  CQMRealOptimizedResolver optimized(context);
  CQMRealBaselineResolver baseline;
  CQMComplexBaselineResolver complex;
  for (CQMResolver* const resolver :
       {static_cast<CQMResolver*>(&optimized), static_cast<CQMResolver*>(&baseline),
        static_cast<CQMResolver*>(&complex)}) {
    CQMSteps steps;
    SQMScript const jump{Status::Done, 2}, plain;
    CQMScriptedOperator const& first = steps.Add(jump, jump);
    CQMScriptedOperator const& skipped = steps.Add(plain, plain);
    CQMScriptedOperator const& last = steps.Add(plain, plain);
    auto const calls = [resolver, &complex](CQMScriptedOperator const& op) {
      return resolver == &complex ? op.complexCalls : op.realCalls;
    };
    EXPECT_EQ(steps.Run(*resolver), Status::Done);
    EXPECT_EQ(steps.position, 3);
    EXPECT_EQ(calls(first), 1);
    EXPECT_EQ(calls(skipped), 0);
    EXPECT_EQ(calls(last), 1);
    EXPECT_EQ(steps.Run(*resolver, 1), Status::Done);
    EXPECT_EQ(calls(first), 1);
    EXPECT_EQ(calls(skipped), 1);
    for (long const beyond : {3L, 4L}) {
      EXPECT_EQ(steps.Run(*resolver, beyond), Status::Done);
      EXPECT_EQ(steps.position, beyond);
    }
    EXPECT_EQ(calls(last), 2);
  }
}

TEST(Resolvers, EndAtDifferentStatuses) {
  struct SQMCase {
    long status;
    bool endsReal;
    bool endsComplex;
    long complexAnswer;  // when the operator is the last one
  };
  constexpr SQMCase kCases[] = {
      {Status::Done, false, false, Status::Done},
      {Status::NeedsComplex, true, false, Status::Done},
      {1, true, false, 1},
      {999, true, false, 999},
      {-5, true, false, -5},
      {Status::Stop, true, true, Status::Stop},
      {Error::DivisionByZero, true, true, Error::DivisionByZero},
      {12345, true, true, 12345},
  };
  CQMTestContext context;
  CQMRealOptimizedResolver optimized(context);
  CQMRealBaselineResolver baseline;
  CQMComplexBaselineResolver complex;
  for (SQMCase const& test : kCases) {
    SCOPED_TRACE(test.status);
    SQMScript const ends{test.status, kGoesOn, false}, goesOn{test.status};
    for (CQMResolver* const real :
         {static_cast<CQMResolver*>(&optimized), static_cast<CQMResolver*>(&baseline)}) {
      CQMSteps steps;
      steps.Add({});
      steps.Add(test.endsReal ? ends : goesOn);
      CQMScriptedOperator const& behind = steps.Add({});
      EXPECT_EQ(steps.Run(*real), test.status);
      EXPECT_EQ(steps.position, test.endsReal ? 1 : 3);
      EXPECT_EQ(behind.realCalls, test.endsReal ? 0 : 1);
      EXPECT_EQ(behind.complexCalls, 0);
    }
    for (bool const isLast : {false, true}) {
      CQMSteps steps;
      steps.Add({}, {});
      steps.Add({}, test.endsComplex ? ends : goesOn);
      if (!isLast) steps.Add({}, {});
      bool const answers = isLast || test.endsComplex;
      EXPECT_EQ(steps.Run(complex), answers ? test.complexAnswer : Status::Done);
      EXPECT_EQ(steps.position, test.endsComplex ? 1 : isLast ? 2 : 3);
    }
  }
}

}  // namespace
}  // namespace qumel::test
