// The operators that compute with a variable and store in it: += -= *= /= %=. One template; a rule for each.
#include "base/complex_arithmetic.h"
#include "base/conversions.h"
#include "engine/assignment.h"
#include "engine/numeric_steps.h"
#include "engine/structural_tables.h"

namespace qumel {

namespace {

// A rule computes target = target op value for reals and for complex numbers, and returns 0 or an error code.
struct SQMAddRule {
  static constexpr bool kJoinsTexts = true;
  static long Apply(double& target, double value) { return target += value, Error::None; }
  static long Apply(Complex& target, Complex value) { return target += value, Error::None; }
};

struct SQMSubtractRule {
  static constexpr bool kJoinsTexts = false;
  static long Apply(double& target, double value) { return target -= value, Error::None; }
  static long Apply(Complex& target, Complex value) { return target -= value, Error::None; }
};

struct SQMMultiplyRule {
  static constexpr bool kJoinsTexts = false;
  static long Apply(double& target, double value) { return target *= value, Error::None; }
  static long Apply(Complex& target, Complex value) {
    target = ProductOf(target, value);
    return Error::None;
  }
};

struct SQMDivideRule {
  static constexpr bool kJoinsTexts = false;
  static long Apply(double& target, double value) {
    if (value == 0.0) return Error::DivisionByZero;
    return target /= value, Error::None;
  }
  static long Apply(Complex& target, Complex value) {
    return DivideComplex(target, value, target) ? Error::None : Error::DivisionByZero;
  }
};

struct SQMModuloRule {
  static constexpr bool kJoinsTexts = false;
  static long Apply(double& target, double value) {
    return IntegerRemainder(target, value, target) ? Error::None : Error::DivisionByZero;
  }
  static long Apply(Complex& target, Complex value) {
    double remainder = target.real();
    long const code = Apply(remainder, value.real());
    target = remainder;
    return code;
  }
};

template <class Rule>
class CQMCompoundAssignment final : public CQMTargetOperator {
 public:
  long VerifyOperands() override {
    if (long const code = CheckTarget(); code != Error::None) return code;
    if (long const code = CheckOperands(); code != Error::None) return code;
    if (Value().GetType() == EQMDataType::Undefined) return Error::VerifyAgain;
    if (!IsNumeric(Value())) {
      return Rule::kJoinsTexts && IsText(Value().GetType()) ? SubstituteBy(OpId::Append) : Error::NotANumber;
    }
    if (!IsNumeric(Target())) return Error::NotANumber;
    if (long const code = CheckTargetType(); code != Error::None) return code;
    return GiveResultType();
  }

  long DoOperation(long& position) override {
    double target = Target().Real();
    if (long const code = Rule::Apply(target, Value().Real()); code != Error::None) return Refuse(code);
    StoreRealInBoth(target);
    return Advance(position);
  }

  long DoComplexOperation(long& position) override {
    if (!IsComplexOperation()) return DoOperation(position);
    Complex target = Parts(Target());
    if (long const code = Rule::Apply(target, Parts(Value())); code != Error::None) return Refuse(code);
    StoreComplexInBoth(target.real(), target.imag());
    return Advance(position);
  }

  bool MakeStep(CQMStepMaker& maker, SQMStep& step) override {
    struct SQMWork {
      static RealOutcome Of(double target, double value) {
        long const code = Rule::Apply(target, value);
        if (code != Error::None) return SQMFailure{code};
        return target;
      }
    };
    return MakeAssignmentStep<SQMWork>(maker, *this, step);
  }

 private:
  static bool IsNumeric(CQMDatum const& datum) {
    EQMDataType const type = VariableTypeFor(datum.GetType());
    return type == EQMDataType::Number || type == EQMDataType::Complex;
  }
  static Complex Parts(CQMDatum const& datum) { return {datum.Real(), datum.Imaginary()}; }
  long Refuse(long code) {
    StoreReal(0.0);
    return code;
  }
};

using CQMAddAssignOperator = CQMCompoundAssignment<SQMAddRule>;
using CQMSubAssignOperator = CQMCompoundAssignment<SQMSubtractRule>;
using CQMMultAssignOperator = CQMCompoundAssignment<SQMMultiplyRule>;
using CQMDivAssignOperator = CQMCompoundAssignment<SQMDivideRule>;
using CQMModAssignOperator = CQMCompoundAssignment<SQMModuloRule>;

constexpr SQMMakerRow kCompoundAssignments[] = {
    {OpId::AddAssign, &MakeOperator<CQMAddAssignOperator>},
    {OpId::SubtractAssign, &MakeOperator<CQMSubAssignOperator>},
    {OpId::MultiplyAssign, &MakeOperator<CQMMultAssignOperator>},
    {OpId::DivideAssign, &MakeOperator<CQMDivAssignOperator>},
    {OpId::ModuloAssign, &MakeOperator<CQMModAssignOperator>},
};

}  // namespace

MakerTable CompoundAssignmentOperators() { return kCompoundAssignments; }

}  // namespace qumel
