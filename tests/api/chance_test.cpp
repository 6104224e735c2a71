// The numbers that the generator of a context gives, and statistics over arrays of the host.
#include <string>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

class Chance : public InterfaceTest {};

// The numbers come from a generator of another make, seeded with state[i] = state[i - 1] * 69069.
TEST_F(Chance, ChanceGivesTheWordsOfItsGenerator) {
  constexpr double kLargestWord = 4294967295.0;
  struct Draw {
    char const* seed;
    int position;
    double word;
  };
  constexpr Draw kDraws[] = {
      {"1", 0, 3796174982.0},          {"7", 623, 1136855950.0},
      {"0-7.9", 624, 3158981172.0},    {"42", 1247, 1453784402.0},
      {"42", 1248, 2957841757.0},      {"5489", 0, 876359936.0},
      {"2147483648", 1, 3424137990.0}, {"4294967295", 624, 2435877226.0},
      {"4294967297", 1, 4182529786.0}, {"0.9", 700, 0.0},
  };
  Handle const handle = qmParseExp("rand 1");
  for (Draw const& draw : kDraws) {
    SCOPED_TRACE(std::string(draw.seed) + " at " + std::to_string(draw.position));
    qmEvalExpStr((std::string("randseed(") + draw.seed + ")").c_str());
    for (int i = 0; i < draw.position; ++i) qmEvalExpHndlToNum(handle);
    EXPECT_EQ(qmEvalExpHndlToNum(handle), draw.word / kLargestWord);
  }
  qmDeleteExp(handle);
}

TEST_F(Chance, AThrowOfExactlyOneStaysInsideTheDie) {
  auto const drawOne = [](char const* expression) {
    qmEvalExpStr("randseed 17886978");  // its 531st word has all bits set
    Handle const handle = qmParseExp("rand 1");
    for (int i = 0; i < 530; ++i) qmEvalExpHndlToNum(handle);
    qmDeleteExp(handle);
    double const drawn = qmEvalExpStrToNum(expression);
    EXPECT_EQ(qmGetLastErrorID(), kNone) << expression;
    return drawn;
  };
  EXPECT_EQ(drawOne("rand 2.5"), 2.5);
  EXPECT_EQ(drawOne("roll 6"), 6.0);
  EXPECT_EQ(drawOne("roll 2.5"), 3.0);
  EXPECT_EQ(drawOne("number f[4]; f[0] = 3; f[3] = 9; return (roll f)"), 9.0);
  EXPECT_EQ(drawOne("randrange(1, 6)"), 7.0) << "a range has no last step to stay at";
}

TEST_F(Chance, ASwitchToComplexEvaluationDrawsNothingAnew) {
  qmSetAllowComplexResults(true);
  qmEvalExpStr("randseed 9; rand 1");
  double const second = qmEvalExpStrToNum("rand 1");
  qmEvalExpStr("randseed 9; rand 1 + sqrt(0-4)");
  EXPECT_EQ(qmEvalExpStrToNum("rand 1"), second);
}

TEST_F(Chance, StatisticsTakeArraysOfTheHostInTheFirstPlaceOnly) {
  struct Row {
    char const* expression;
    double value;
    long error = kNone;
  };
  constexpr Row kRows[] = {
      {"sum numbers", 12.0},
      {"sum(numbers, 100)", 12.0},
      {"sum(100, numbers)", 105.0},
      {"sum(numbers[2], 100)", 104.0},
      {"sum(square, 100)", 101.0},
      {"total numbers", 12.0},
      {"total(numbers[2])", 4.0},
      {"max(numbers, \"x\")", 0.0, 3090},
      {"max(numbers, nothing)", 0.0, kNotDefined},
      {"sum pairs", 9.0},
      {"range pairs", 4.0},
      {"pairs[2] = (7 |_ 1); return (max pairs)", 7.0},
  };
  double numbers[] = {5.0, 3.0, 4.0};
  double square[] = {1.0, 2.0, 3.0, 4.0};
  double pairs[] = {1.0, 20.0, 3.0, 40.0, 5.0, 60.0};
  qmSetAllowComplexResults(true);
  ASSERT_TRUE(qmLinkNumArray('G', "numbers", numbers, 1, 3, -1, -1, -1, -1, -1));
  ASSERT_TRUE(qmLinkNumArray('G', "square", square, 2, 2, 2, -1, -1, -1, -1));
  ASSERT_TRUE(qmLinkComplexArray('G', "pairs", pairs, 1, 3, -1, -1, -1, -1, -1));
  ASSERT_EQ(qmDefineExpOp('G', "total", "prefix", "number", "number a", nullptr, "sum a"), kNone);
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.expression);
    double const value = qmEvalExpStrToNum(row.expression);
    EXPECT_EQ(qmGetLastErrorID(), row.error);
    EXPECT_TRUE(row.error != kNone || value == row.value) << value;
  }
}

}  // namespace

}  // namespace qumel::testing
