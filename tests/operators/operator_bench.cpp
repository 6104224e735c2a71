// Operands, runs and comparisons of the bench.
#include "operator_bench.h"

#include <algorithm>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "support/postfix.h"

namespace qumel::test {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

std::string Describe(double number) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", number);
  return text;
}

/** Agree to within tolerance times size, which is at least 1. */
bool Agree(double actual, double expected, double tolerance, double size) {
  if (std::isnan(actual) || std::isnan(expected)) return std::isnan(actual) && std::isnan(expected);
  if (tolerance == 0.0) return actual == expected && std::signbit(actual) == std::signbit(expected);
  return actual == expected || std::fabs(actual - expected) <= tolerance * std::max(1.0, size);
}

void StoreValue(CQMDatum& datum, Value const& value) {
  std::visit(Overloaded{[&](double number) {
                          datum.SetDatumType(EQMDataType::Number);
                          datum.SetReal(number);
                        },
                        [&](Complex z) {
                          datum.SetDatumType(EQMDataType::Complex);
                          datum.SetComplex(z.real(), z.imag());
                        },
                        [&](bool truth) {
                          datum.SetDatumType(EQMDataType::Boolean);
                          datum.SetBoolean(truth);
                        },
                        [&](std::string const& text) {
                          datum.SetDatumType(EQMDataType::String);
                          datum.SetText(text);
                        },
                        [](Fails) {}},
             value);
}

/** A number counts as the complex number without an imaginary part. */
bool AgreeNumerically(Value const& actual, Value const& expected, double tolerance) {
  auto const widen = [](Value const& value) {
    double const* const number = std::get_if<double>(&value);
    return number != nullptr ? Value(Complex(*number, 0.0)) : value;
  };
  return Agree(widen(actual), widen(expected), tolerance);
}

}  // namespace

std::unique_ptr<CQMDatum> MakeDatum(Operand const& operand) {
  auto made = std::make_unique<CQMDatum>();
  std::visit(Overloaded{[&](Variable const& variable) {
                          StoreValue(*made, variable.value);
                          made->SetDatumName("x");
                        },
                        [&](Literal const& literal) {
                          StoreValue(*made, literal.value);
                          made->SetLiteral(true);
                        },
                        [&](Unknown) { made->SetPending(true); },
                        [&](Untyped) { made->SetDatumType(EQMDataType::Untyped); },
                        [&](Missing) { made.reset(); }, [&](auto const& value) { StoreValue(*made, value); }},
             operand);
  return made;
}

Value ValueOf(CQMDatum const* datum) {
  if (datum == nullptr) return Fails{0};
  if (datum->IsString()) return std::string(datum->GetText());
  if (datum->IsBoolean()) return datum->BooleanByte() != 0;
  if (datum->IsComplex()) return Complex(datum->Real(), datum->Imaginary());
  return datum->Real();
}

std::string Describe(Value const& value) {
  return std::visit(
      Overloaded{[](double number) { return Describe(number); },
                 [](Complex z) { return "(" + Describe(z.real()) + ", " + Describe(z.imag()) + ")"; },
                 [](bool truth) { return std::string(truth ? "true" : "false"); },
                 [](std::string const& text) { return "'" + text + "'"; },
                 [](Fails failure) { return "status " + std::to_string(failure.status); }},
      value);
}

bool Agree(Value const& actual, Value const& expected, double tolerance) {
  if (actual.index() != expected.index()) return false;
  if (double const* const number = std::get_if<double>(&expected); number != nullptr) {
    return Agree(std::get<double>(actual), *number, tolerance, std::fabs(*number));
  }
  if (Complex const* const z = std::get_if<Complex>(&expected); z != nullptr) {
    Complex const w = std::get<Complex>(actual);
    double const size = std::abs(*z);
    return Agree(w.real(), z->real(), tolerance, size) && Agree(w.imag(), z->imag(), tolerance, size);
  }
  return Describe(actual) == Describe(expected);
}

// ---- context ----

CQMBenchContext::CQMBenchContext() { m_factory.Initialize(this); }

CQMResolver* CQMBenchContext::GetResolver(EQMResolverClass kind) {
  if (kind == EQMResolverClass::Complex) return &m_complex;
  return &m_real;
}

std::unique_ptr<CQMExpression> CQMBenchContext::Compile(std::string_view postfix, bool optimize) {
  auto expression = std::make_unique<CQMExpression>(*this);
  expression->SetParsedExpression(ReadPostfix(postfix), optimize);
  return expression;
}

Value CQMBenchContext::Run(CQMExpression& expression) {
  if (expression.GetErrorState() != Error::None) return Fails{expression.GetErrorState()};
  long const status = expression.Resolve();
  return status == Error::None ? ValueOf(expression.GetResultDatum()) : Fails{status};
}

// ---- one operator ----

namespace {

CQMBenchContext& SharedContext() {
  static CQMBenchContext context;
  return context;
}

}  // namespace

CQMBench::CQMBench(long id, Operands const& operands, CQMBenchContext* context)
    : m_context(context != nullptr ? *context : SharedContext()) {
  m_expression = std::make_unique<CQMExpression>(m_context);
  CQMOperator& op = *m_operators.emplace_back(m_context.GetOperatorFactory()->GetOperator(id, m_arena));
  op.SetExpression(m_expression.get());
  op.CreateOperandList(m_arena, static_cast<long>(operands.size()));
  for (auto operand = operands.rbegin(); operand != operands.rend(); ++operand) {
    m_operands.insert(m_operands.begin(), MakeDatum(*operand));
    if (m_operands.front() != nullptr) op.AssignOperand(m_operands.front().get());
  }
  op.SetResultOperand(m_arena);
}

Value CQMBench::Run(EQMWay way) {
  CQMProgram program;
  program.Make(m_operators, *m_expression, way);
  long position = 0;
  long const status = program.Run(position);
  Value const result = ValueOf(Op().GetResultOperand());
  if (status == Error::None) return position == 1 ? result : Value("position not moved by one");
  if (position != 0) return "position moved by a failure";
  bool const isZero = AgreeNumerically(result, 0.0, 0.0);
  return isZero ? Value(Fails{status}) : Value("a failure left " + Describe(result));
}

// ---- tables ----

void ExpectOperations(std::vector<SQMOperation> const& operations, double tolerance) {
  for (std::size_t row = 0; row < operations.size(); ++row) {
    SQMOperation const& operation = operations[row];
    SCOPED_TRACE("row " + std::to_string(row) + ", operator " + std::to_string(operation.id));
    for (EQMWay const way : {EQMWay::StepByStep, EQMWay::Joined}) {
      Value const real = CQMBench(operation.id, operation.operands).Run(way);
      EXPECT_TRUE(Agree(real, operation.inReal, tolerance))
          << "real: " << Describe(real) << " instead of " << Describe(operation.inReal);
    }

    CQMBench bench(operation.id, operation.operands);
    Value const complex = bench.Run(EQMWay::Complex);
    EXPECT_TRUE(Agree(complex, operation.inComplex, tolerance))
        << "complex: " << Describe(complex) << " instead of " << Describe(operation.inComplex);

    if (bench.Op().GetReturnType() != EQMDataType::Number) continue;
    CQMBench stale(operation.id, operation.operands);
    stale.Op().GetResultOperand()->SetComplex(7.0, 9.0);
    Value const again = stale.Run(EQMWay::Complex);
    EXPECT_TRUE(AgreeNumerically(again, operation.inComplex, tolerance))
        << "after a complex result: " << Describe(again) << " instead of " << Describe(operation.inComplex);
  }
}

void ExpectVerifications(std::vector<SQMVerification> const& verifications) {
  for (std::size_t row = 0; row < verifications.size(); ++row) {
    SQMVerification const& verification = verifications[row];
    EXPECT_EQ(CQMBench(verification.id, verification.operands).Verify(), verification.code)
        << "row " << row << ", operator " << verification.id;
  }
}

}  // namespace qumel::test
