// Modulus, sign, rounding, roots and logarithms.
#include "operators/numeric_function.h"
#include "operators/operator_tables.h"
#include "rules/elementary.h"

namespace qumel {

namespace {

using CQMAbsoluteValueOperator = CQMUnaryFunction<SQMAbsoluteValueRule>;
using CQMSignOperator = CQMUnaryFunction<SQMSignRule>;
using CQMNearestIntegerOperator = CQMUnaryFunction<SQMNearestIntegerRule>;
using CQMIntegerOperator = CQMUnaryFunction<SQMIntegerRule>;
using CQMFractionOperator = CQMUnaryFunction<SQMFractionRule>;
using CQMFloorOperator = CQMUnaryFunction<SQMFloorRule>;
using CQMCeilingOperator = CQMUnaryFunction<SQMCeilingRule>;
using CQMSquareRootOperator = CQMUnaryFunction<SQMSquareRootRule>;
using CQMCubeRootOperator = CQMUnaryFunction<SQMCubeRootRule>;
using CQMNaturalLogOperator = CQMUnaryFunction<SQMNaturalLogRule>;
using CQMLogOperator = CQMUnaryFunction<SQMCommonLogRule>;

class CQMRootOperator final : public CQMBinaryFunction<SQMRootRule> {
 public:
  long DoOperation(long& position) override {
    if (!HasComplexOperand()) return CQMBinaryFunction<SQMRootRule>::DoOperation(position);
    StoreReal(0.0);
    return Status::NeedsComplex;
  }
};

constexpr SQMMakerRow kElementaryOperators[] = {
    {OpId::AbsoluteValue, &MakeOperator<CQMAbsoluteValueOperator>},
    {OpId::Sign, &MakeOperator<CQMSignOperator>},
    {OpId::NearestInteger, &MakeOperator<CQMNearestIntegerOperator>},
    {OpId::IntegerPart, &MakeOperator<CQMIntegerOperator>},
    {OpId::Fraction, &MakeOperator<CQMFractionOperator>},
    {OpId::Floor, &MakeOperator<CQMFloorOperator>},
    {OpId::Ceiling, &MakeOperator<CQMCeilingOperator>},
    {OpId::SquareRoot, &MakeOperator<CQMSquareRootOperator>},
    {OpId::CubeRoot, &MakeOperator<CQMCubeRootOperator>},
    {OpId::Root, &MakeOperator<CQMRootOperator>},
    {OpId::NaturalLog, &MakeOperator<CQMNaturalLogOperator>},
    {OpId::CommonLog, &MakeOperator<CQMLogOperator>},
};

}  // namespace

MakerTable ElementaryOperators() { return kElementaryOperators; }

}  // namespace qumel
