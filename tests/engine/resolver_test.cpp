// The three resolvers on lists of operators made by hand: how statuses and positions steer them.
#include "engine/resolver.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "program_runner.h"

namespace qumel::test {
namespace {

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
    auto made = std::make_unique<CQMScriptedOperator>(real, complex);
    CQMScriptedOperator& op = *made;
    op.CreateOperandList(0);
    op.SetResultOperand(nullptr);
    m_operators.push_back(std::move(made));
    return op;
  }
  long Run(CQMResolver& resolver, long start = 0) {
    CQMProgram program;
    program.Make(m_operators, m_context, resolver.GetJoining());
    position = start;
    return resolver.Resolve(program, position);
  }

  long position = 0;

 private:
  CQMTestContext m_context;
  std::vector<std::unique_ptr<CQMOperator>> m_operators;
};

TEST(Resolvers, FollowPositionsAndStartAnywhere) {
  CQMRealOptimizedResolver optimized;
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
    EXPECT_EQ(steps.Run(*resolver, 3), Status::Done);
    EXPECT_EQ(steps.position, 3);
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
  CQMRealOptimizedResolver optimized;
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
