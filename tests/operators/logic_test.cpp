// Operators on bits, booleans and comparisons.
#include <gtest/gtest.h>

#include <limits>

#include "operator_bench.h"

namespace qumel::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
Complex const z(6.9, 1.0);

TEST(Bitwise, CombinesTruncatedIntegers) {
  ExpectOperations({
      {OpId::BitwiseAnd, {6.9, 3.0}, 2.0, 2.0},
      {OpId::BitwiseAnd, {z, 3.0}, 2.0, 2.0},
      {OpId::BitwiseOr, {-1.5, 0.0}, -1.0, -1.0},
      {OpId::BitwiseExclusiveOr, {12.0, 10.0}, 6.0, 6.0},
      {OpId::Implication, {5.0, 3.0}, -5.0, -5.0},
      {OpId::Equivalence, {12.0, 10.0}, -7.0, -7.0},
      {OpId::TightComplement, {0.0}, -1.0, -1.0},
      {OpId::LooseComplement, {-8.5}, 7.0, 7.0},
      // beyond 32 bits, and no number at all
      {OpId::BitwiseOr, {4294967296.0, 0.0}, -2147483648.0, -2147483648.0},
      {OpId::TightComplement, {kNaN}, 2147483647.0, 2147483647.0},
  });
}

TEST(Bitwise, VerifiesNumbersAndAllButOneAskForComplexEvaluation) {
  ExpectVerifications({
      {OpId::BitwiseAnd, {1.0, z}, Error::ComplexOperandFound},
      {OpId::TightComplement, {z}, Error::ComplexOperandFound},
      {OpId::BitwiseExclusiveOr, {1.0, z}, Error::None},
      {OpId::BitwiseExclusiveOr, {1.0, true}, Error::TypeMismatch},
      {OpId::BitwiseExclusiveOr, {1.0}, Error::NotEnoughOperands},
      {OpId::TightComplement, {"a"}, Error::TypeMismatch},
      {OpId::BitwiseOr, {true, Unknown{}}, Error::NotDefined},
  });
}

/** Bytes of booleans in a host's memory, and what each operator makes of them. */
struct SQMBytes {
  std::uint8_t x, y;
  bool both, either, one, notX;
};

TEST(Logical, LooksAtBytesAsTheyStand) {
  for (SQMBytes const& row :
       {SQMBytes{0, 0, false, false, false, true}, SQMBytes{0, 1, false, true, true, true},
        SQMBytes{1, 0, false, true, true, false}, SQMBytes{1, 1, true, true, false, false},
        SQMBytes{2, 1, false, true, false, false}, SQMBytes{1, 255, false, true, false, false},
        SQMBytes{2, 0, false, false, false, false}, SQMBytes{3, 3, false, false, false, false}}) {
    SCOPED_TRACE(std::to_string(row.x) + ", " + std::to_string(row.y));
    auto const run = [&row](long id, std::size_t count) {
      CQMBench bench(id, Operands(count, false));
      std::uint8_t const bytes[] = {row.x, row.y};
      for (std::size_t i = 0; i < count; ++i) bench.Given(i).SetValue(&bytes[i]);
      return Describe(bench.Run(EQMWay::StepByStep));
    };
    EXPECT_EQ(run(OpId::AndSign, 2), Describe(row.both));
    EXPECT_EQ(run(OpId::AndWord, 2), Describe(row.both));
    EXPECT_EQ(run(OpId::OrSign, 2), Describe(row.either));
    EXPECT_EQ(run(OpId::OrWord, 2), Describe(row.either));
    EXPECT_EQ(run(OpId::ExclusiveOrSign, 2), Describe(row.one));
    EXPECT_EQ(run(OpId::ExclusiveOrWord, 2), Describe(row.one));
    for (long const id : {OpId::TightNotSign, OpId::TightNotWord, OpId::LooseNotSign, OpId::LooseNotWord}) {
      EXPECT_EQ(run(id, 1), Describe(row.notX));
    }
  }
}

TEST(Relational, GoesByTheSignOfTheComparison) {
  struct SQMComparison {
    Operand x, y;
    int order;
  };
  SQMComparison const comparisons[] = {
      {1.0, 2.0, -1},
      {2.0, 1.0, 1},
      {2.0, 2.0, 0},
      {-0.0, 0.0, 0},
      {kNaN, 1.0, 0},
      {"abc", "abd", -1},
      {"b", "abcdef", 1},
      {"", "a", -1},
      {"same", "same", 0},
      {false, true, -1},
      {true, true, 0},
      {Complex(3.0, 4.0), 5.0, 0},
      {Complex(-3.0, 4.0), 1.0, -1},
      {1.0, Complex(0.0, 2.0), -1},
      {Complex(0.0, 2.0), Complex(1.0, 0.0), 1},
  };
  struct SQMRelation {
    long id;
    bool less, equal, greater;
  };
  SQMRelation const relations[] = {
      {OpId::LessThan, true, false, false},   {OpId::GreaterThan, false, false, true},
      {OpId::LessOrEqual, true, true, false}, {OpId::GreaterOrEqual, false, true, true},
      {OpId::Equal, false, true, false},      {OpId::NotEqual, true, false, true},
      {OpId::Unequal, true, false, true},
  };
  for (SQMRelation const& relation : relations) {
    for (std::size_t row = 0; row < std::size(comparisons); ++row) {
      SQMComparison const& c = comparisons[row];
      Value const expected = c.order < 0 ? relation.less : c.order > 0 ? relation.greater : relation.equal;
      CQMBench bench(relation.id, {c.x, c.y});
      EXPECT_EQ(bench.Verify(), Error::None);
      EXPECT_EQ(Describe(bench.Run(EQMWay::StepByStep)), Describe(expected))
          << relation.id << ", row " << row;
      EXPECT_EQ(Describe(bench.Run(EQMWay::Complex)), Describe(expected)) << relation.id << ", row " << row;
    }
  }
}

TEST(Relational, VerifiesThatBothSidesAreOfOneKind) {
  ExpectVerifications({
      {OpId::LessThan, {"abc", 1.0}, Error::TypeMismatch},
      {OpId::Equal, {true, 1.0}, Error::TypeMismatch},
      {OpId::Equal, {1.0, z}, Error::None},
      {OpId::Equal, {1.0}, Error::NotEnoughOperands},
      {OpId::Equal, {1.0, 2.0, 3.0}, Error::TooManyOperands},
      {OpId::NotEqual, {"a", Unknown{}}, Error::NotDefined},
      {OpId::NotEqual, {Untyped{}, 1.0}, Error::NotDefined},
      {OpId::TightNotSign, {"a"}, Error::None},
      {OpId::TightNotSign, {5.0}, Error::None},
      {OpId::TightNotSign, {Unknown{}}, Error::NotDefined},
      {OpId::AndSign, {true, 1.0}, Error::TypeMismatch},
      {OpId::OrWord, {true, false}, Error::None},
      {OpId::ExclusiveOrWord, {true, Unknown{}}, Error::NotDefined},
  });
}

}  // namespace
}  // namespace qumel::test
