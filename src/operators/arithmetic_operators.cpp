// Sums, products, powers, remainders, factorials and signs.
#include <cmath>
#include <limits>

#include "base/conversions.h"
#include "operators/numeric_function.h"
#include "operators/numeric_utilities.h"
#include "operators/operator_tables.h"

namespace qumel {

namespace {

struct SQMSumRule {
  static double Real(double x, double y) { return x + y; }
  static Complex OfComplex(Complex z, Complex w) { return z + w; }
};

struct SQMDifferenceRule {
  static double Real(double x, double y) { return x - y; }
  static Complex OfComplex(Complex z, Complex w) { return z - w; }
};

struct SQMProductRule {
  static double Real(double x, double y) { return x * y; }
  static Complex OfComplex(Complex z, Complex w) { return ProductOf(z, w); }
};

struct SQMQuotientRule {
  static RealOutcome Real(double x, double y) {
    if (y == 0.0) return SQMFailure{Error::DivisionByZero};
    return x / y;
  }
  static ComplexOutcome OfComplex(Complex z, Complex w) {
    Complex quotient;
    if (!DivideComplex(z, w, quotient)) return SQMFailure{Error::DivisionByZero};
    return quotient;
  }
};

/** Of the integer parts; complex operands have no other meaning here than their real parts. */
struct SQMRemainderRule {
  static RealOutcome Real(double x, double y) {
    double remainder = 0.0;
    if (!IntegerRemainder(x, y, remainder)) return SQMFailure{Error::DivisionByZero};
    return remainder;
  }
  static RealOutcome OfComplex(Complex z, Complex w) { return Real(z.real(), w.real()); }
};

struct SQMPowerRule {
  /** Every negative base goes to complex evaluation, whatever the exponent; on purpose. */
  static RealOutcome Real(double x, double y) {
    if (x < 0.0) return SQMFailure{Status::NeedsComplex};
    return std::pow(x, y);
  }
  static ComplexOutcome OfComplex(Complex z, Complex w) {
    if (z == 0.0) return OfZero(w);
    double const logarithm = ComplexLogAbs(z.real(), z.imag());
    double const angle = ComplexArg(z.real(), z.imag());
    double const modulus = std::exp(logarithm * w.real() - angle * w.imag());
    double const turn = angle * w.real() + logarithm * w.imag();
    return Complex(modulus * std::cos(turn), modulus * std::sin(turn));
  }
  /** Of a base that has no logarithm for the formula. */
  static ComplexOutcome OfZero(Complex w) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    if (std::isnan(w.real()) || std::isnan(w.imag())) return Complex(kNaN, kNaN);
    if (w == 0.0) return Complex(1.0, 0.0);
    if (w.real() > 0.0) return Complex();
    return SQMFailure{Error::DivisionByZero};
  }
};

// Powers by a literal 2 or 3. They keep the operands of the power and use the first.
struct SQMSquareRule {
  static double Real(double x, double) { return x * x; }
  static Complex OfComplex(Complex z, Complex) {
    return {z.real() * z.real() - z.imag() * z.imag(), 2.0 * z.real() * z.imag()};
  }
};

struct SQMCubeRule {
  static double Real(double x, double) { return x * x * x; }
  static Complex OfComplex(Complex z, Complex) { return ProductOf(ProductOf(z, z), z); }
};

struct SQMFactorialRule : SQMOnRealPart<SQMFactorialRule> {
  static RealOutcome Real(double x) {
    constexpr std::int32_t kFirstOverflow = 171;
    std::int32_t const n = TruncateToInt32(x);
    if (n >= kFirstOverflow) return SQMFailure{Error::Overflow};
    if (n < 0) return SQMFailure{Error::ResultNotDefined};
    return Factorial(n);
  }
};

struct SQMNegationRule {
  /** Never a negative zero. */
  static double Real(double x) { return x == 0.0 ? 0.0 : -x; }
  static Complex OfComplex(Complex z) { return {Real(z.real()), Real(z.imag())}; }
};

struct SQMPositiveRule {
  static double Real(double x) { return x; }
  static Complex OfComplex(Complex z) { return z; }
};

using CQMSubtractionOperator = CQMBinaryFunction<SQMDifferenceRule>;
using CQMMultiplicationOperator = CQMBinaryFunction<SQMProductRule>;
using CQMDivisionOperator = CQMBinaryFunction<SQMQuotientRule>;
using CQMModuloOperator = CQMBinaryFunction<SQMRemainderRule>;
using CQMSquareOperator = CQMBinaryFunction<SQMSquareRule>;
using CQMCubeOperator = CQMBinaryFunction<SQMCubeRule>;
using CQMFactorialOperator = CQMUnaryFunction<SQMFactorialRule>;
using CQMNegationOperator = CQMUnaryFunction<SQMNegationRule>;
using CQMPositiveOperator = CQMUnaryFunction<SQMPositiveRule>;

/** Whether the value of operand is known before any run. */
bool IsKnownNumber(CQMDatum const& operand) {
  return operand.IsLiteral() && operand.GetType() == EQMDataType::Number;
}

class CQMAdditionOperator final : public CQMBinaryFunction<SQMSumRule> {
 public:
  /** Texts are joined. */
  long VerifyOperands() override {
    if (long const code = CheckOperands(); code != Error::None) return code;
    for (long i = 0; i < GetOperandCount(); ++i) {
      EQMTypeClass const given = GetTypeClass(Operand(i).GetType());
      if (given == EQMTypeClass::String) return SubstituteBy(OpId::Concatenation);
      if (given != EQMTypeClass::Numeric) return Error::NotANumber;
    }
    return ComplexStatus();
  }

  long Optimize() override {
    if (!IsKnownNumber(Operand(0)) || !IsKnownNumber(Operand(1))) return Error::None;
    StoreReal(SQMSumRule::Real(Real(0), Real(1)));
    return SubstituteBy(OpId::NumericConstant);
  }
};

class CQMExponentOperator final : public CQMBinaryFunction<SQMPowerRule> {
 public:
  long Optimize() override {
    if (!IsKnownNumber(Operand(1))) return Error::None;
    constexpr double kSquared = 2.0;
    constexpr double kCubed = 3.0;
    double const exponent = Real(1);
    if (exponent == 0.0) {
      StoreReal(1.0);
      return SubstituteBy(OpId::NumericConstant);
    }
    if (exponent == kSquared) return SubstituteBy(OpId::Square);
    return exponent == kCubed ? SubstituteBy(OpId::Cube) : static_cast<long>(Error::None);
  }
};

enum class EQMGives { NewValue, OldValue };

/** Changes the real part of a variable by step; an imaginary part stays as it is, and out of the result. */
template <int step, EQMGives gives>
class CQMStepOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 1; }

  long VerifyOperands() override {
    if (long const code = CheckOperands(); code != Error::None) return code;
    CQMDatum const& variable = Operand(0);
    if (!HoldsDouble(variable.GetType())) return Error::NotANumber;
    // variables and their elements have names, the results of operators have none
    if (variable.IsLiteral() || variable.Name().empty()) return Error::TargetIsConstant;
    return ComplexStatus();
  }

  long DoOperation(long& position) override {
    double const old = Real(0);
    Operand(0).SetReal(old + step);
    StoreReal(gives == EQMGives::OldValue ? old : Real(0));
    return Advance(position);
  }

 private:
  static bool HoldsDouble(EQMDataType type) {
    return IsBetween(type, EQMDataType::Number, EQMDataType::Real);
  }
};

using CQMPreIncrementOperator = CQMStepOperator<1, EQMGives::NewValue>;
using CQMPreDecrementOperator = CQMStepOperator<-1, EQMGives::NewValue>;
using CQMPostIncrementOperator = CQMStepOperator<1, EQMGives::OldValue>;
using CQMPostDecrementOperator = CQMStepOperator<-1, EQMGives::OldValue>;

constexpr SQMMakerRow kArithmeticOperators[] = {
    {OpId::Addition, &MakeOperator<CQMAdditionOperator>},
    {OpId::Subtraction, &MakeOperator<CQMSubtractionOperator>},
    {OpId::Multiplication, &MakeOperator<CQMMultiplicationOperator>},
    {OpId::ImpliedMultiplication, &MakeOperator<CQMMultiplicationOperator>},
    {OpId::Division, &MakeOperator<CQMDivisionOperator>},
    {OpId::Modulo, &MakeOperator<CQMModuloOperator>},
    {OpId::Factorial, &MakeOperator<CQMFactorialOperator>},
    {OpId::Power, &MakeOperator<CQMExponentOperator>},
    {OpId::PowerStars, &MakeOperator<CQMExponentOperator>},
    {OpId::Square, &MakeOperator<CQMSquareOperator>},
    {OpId::Cube, &MakeOperator<CQMCubeOperator>},
    {OpId::LooseMinus, &MakeOperator<CQMNegationOperator>},
    {OpId::TightMinus, &MakeOperator<CQMNegationOperator>},
    {OpId::LoosePlus, &MakeOperator<CQMPositiveOperator>},
    {OpId::TightPlus, &MakeOperator<CQMPositiveOperator>},
    {OpId::PreIncrement, &MakeOperator<CQMPreIncrementOperator>},
    {OpId::PostIncrement, &MakeOperator<CQMPostIncrementOperator>},
    {OpId::PreDecrement, &MakeOperator<CQMPreDecrementOperator>},
    {OpId::PostDecrement, &MakeOperator<CQMPostDecrementOperator>},
};

}  // namespace

MakerTable ArithmeticOperators() { return kArithmeticOperators; }

}  // namespace qumel
