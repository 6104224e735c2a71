// The three resolver loops.
#include <cmath>

#include "base/conversions.h"
#include "engine/resolver.h"

namespace qumel {

namespace {

/** Statuses up to this one, NeedsComplex aside, do not end a complex run. */
constexpr long kLastIgnoredStatus = 999;

}  // namespace

long CQMRealBaselineResolver::Resolve(CQMOperator** operators, CQMDatum***, CQMDatum**, long count,
                                      long& position) {
  while (position < count) {
    if (long const status = operators[position]->DoOperation(position); status != Status::Done) return status;
  }
  return Status::Done;
}

long CQMComplexBaselineResolver::Resolve(CQMOperator** operators, CQMDatum***, CQMDatum**, long count,
                                         long& position) {
  long status = Status::Done;
  while (position < count) {
    status = operators[position]->DoComplexOperation(position);
    if (status == Status::NeedsComplex) status = Status::Done;
    if (status > kLastIgnoredStatus) return status;
  }
  return status;
}

long CQMRealOptimizedResolver::Resolve(CQMOperator** operators, CQMDatum*** operands, CQMDatum** results,
                                       long count, long& position) {
  double const toRadians = m_context.GetAngleFactorToRadians();
  long step = position;  // a copy that can live in a register between calls
  while (step < count) {
    CQMDatum* const* const operand = operands[step];
    auto const first = [operand] { return operand[0]->Real(); };
    auto const second = [operand] { return operand[1]->Real(); };
    auto const store = [&](double value) {
      results[step]->SetReal(value);
      ++step;
    };
    auto const refuse = [&](long status) {
      results[step]->SetReal(0.0);
      position = step;
      return status;
    };
    switch (operators[step]->GetFastOperation()) {
      case EQMFastOperation::Add: store(first() + second()); break;
      case EQMFastOperation::Subtract: store(first() - second()); break;
      case EQMFastOperation::Multiply: store(first() * second()); break;
      case EQMFastOperation::Divide:
        if (second() == 0.0) return refuse(Error::DivisionByZero);
        store(first() / second());
        break;
      case EQMFastOperation::Modulo: {
        double remainder = 0.0;
        if (!IntegerRemainder(first(), second(), remainder)) return refuse(Error::DivisionByZero);
        store(remainder);
        break;
      }
      case EQMFastOperation::Power:
        // whole exponents included: every negative base is finished by the complex resolver
        if (first() < 0.0 && !std::isnan(second())) return refuse(Status::NeedsComplex);
        store(std::pow(first(), second()));
        break;
      case EQMFastOperation::Negate: store(first() == 0.0 ? 0.0 : -first()); break;
      case EQMFastOperation::Sine: store(std::sin(toRadians * first())); break;
      case EQMFastOperation::Cosine: store(std::cos(toRadians * first())); break;
      case EQMFastOperation::Tangent: store(std::tan(toRadians * first())); break;
      case EQMFastOperation::SquareRoot:
        if (first() < 0.0) return refuse(Status::NeedsComplex);
        store(std::sqrt(first()));
        break;
      case EQMFastOperation::AbsoluteValue: store(std::fabs(first())); break;
      case EQMFastOperation::Square: store(first() * first()); break;
      case EQMFastOperation::None: {
        position = step;
        long const status = operators[step]->DoOperation(position);
        if (status != Status::Done) return status;
        step = position;
        break;
      }
    }
  }
  position = step;
  return Status::Done;
}

}  // namespace qumel
