// Operators on the bits of signed 32-bit integers. Operands are truncated; of complex ones the real parts
// count.
#include <utility>

#include "base/conversions.h"
#include "engine/numeric_steps.h"
#include "operators/operator_tables.h"
#include "rules/logic.h"

namespace qumel {

namespace {

template <class Rule, class Indices>
class CQMBitwiseFunction;

template <class Rule, long... index>
class CQMBitwiseFunction<Rule, std::integer_sequence<long, index...>> : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return sizeof...(index); }
  long DoOperation(long& position) override {
    StoreReal(Rule::Of(TruncateToInt32(Real(index))...));
    return Advance(position);
  }
  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    if constexpr (sizeof...(index) == 1) {
      return MakeUnaryStep<SQMStepWork>(maker, *this, step, nullptr);
    } else {
      return MakeBinaryStep<SQMStepWork>(maker, *this, step);
    }
  }

 private:
  struct SQMStepWork {
    static double Of(double x, std::byte*) { return Rule::Of(TruncateToInt32(x)); }
    static double Of(double x, double y) { return Rule::Of(TruncateToInt32(x), TruncateToInt32(y)); }
  };
};

template <class Rule>
using CQMBitwiseOnOne = CQMBitwiseFunction<Rule, std::make_integer_sequence<long, 1>>;
template <class Rule>
using CQMBitwiseOnTwo = CQMBitwiseFunction<Rule, std::make_integer_sequence<long, 2>>;

using CQMBitwiseAndOperator = CQMBitwiseOnTwo<SQMAndRule>;
using CQMBitwiseOrOperator = CQMBitwiseOnTwo<SQMOrRule>;
using CQMBitwiseImplicationOperator = CQMBitwiseOnTwo<SQMImplicationRule>;
using CQMBitwiseEquivalenceOperator = CQMBitwiseOnTwo<SQMEquivalenceRule>;
using CQMOnesComplementOperator = CQMBitwiseOnOne<SQMComplementRule>;

/** The one of the family that does not ask for complex evaluation; on purpose. */
class CQMBitwiseExOrOperator final : public CQMBitwiseOnTwo<SQMExOrRule> {
 public:
  long VerifyOperands() override {
    long const code = CQMOperator::VerifyOperands();
    return code == Error::ComplexOperandFound ? static_cast<long>(Error::None) : code;
  }
};

constexpr SQMMakerRow kBitwiseOperators[] = {
    {OpId::BitwiseAnd, &MakeOperator<CQMBitwiseAndOperator>},
    {OpId::BitwiseOr, &MakeOperator<CQMBitwiseOrOperator>},
    {OpId::BitwiseExclusiveOr, &MakeOperator<CQMBitwiseExOrOperator>},
    {OpId::Implication, &MakeOperator<CQMBitwiseImplicationOperator>},
    {OpId::Equivalence, &MakeOperator<CQMBitwiseEquivalenceOperator>},
    {OpId::LooseComplement, &MakeOperator<CQMOnesComplementOperator>},
    {OpId::TightComplement, &MakeOperator<CQMOnesComplementOperator>},
};

}  // namespace

MakerTable BitwiseOperators() { return kBitwiseOperators; }

}  // namespace qumel
