// Making complex numbers and taking them apart.
#pragma once

#include <cmath>

#include "engine/operator_context.h"
#include "rules/numeric_utilities.h"

namespace qumel {

// ---- parts: real, unless the result has been complex before ----

inline double RealPartOf(CQMDatum const& operand) { return operand.Real(); }
inline double ImaginaryPartOf(CQMDatum const& operand) { return operand.Imaginary(); }

template <double (*part)(CQMDatum const&)>
class CQMPartOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return 1; }
  long DoOperation(long& position) override {
    if (!Result().IsComplex()) return DoComplexOperation(position);
    StoreReal(0.0);
    return Status::NeedsComplex;
  }
  long DoComplexOperation(long& position) override {
    StoreReal(part(Operand(0)));
    return Advance(position);
  }
};

// ---- operators of complex evaluation only ----

/** Refused at compilation where complex results are not allowed, whatever the operands. */
template <long needed>
class CQMComplexOnlyOperator : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return needed; }
  long VerifyOperands() override {
    long const code = CQMOperator::VerifyOperands();
    return code == Error::None ? static_cast<long>(Error::ResultIsComplex) : code;
  }
  long DoOperation(long&) override {
    StoreReal(0.0);
    return Status::NeedsComplex;
  }
};

class CQMComplexConjugateOperator final : public CQMComplexOnlyOperator<1> {
 public:
  long DoComplexOperation(long& position) override {
    StoreComplex(Real(0), Operand(0).IsComplex() ? -Imaginary(0) : 0.0);
    return Advance(position);
  }
};

/** In radians, whatever the angle unit. */
class CQMComplexArgumentOperator final : public CQMComplexOnlyOperator<1> {
 public:
  long DoComplexOperation(long& position) override {
    StoreReal(ComplexArg(Real(0), Imaginary(0)));
    return Advance(position);
  }
};

/** z + w i; both may be complex. */
class CQMRectangularComplexOperator final : public CQMComplexOnlyOperator<2> {
 public:
  long DoComplexOperation(long& position) override {
    StoreComplex(Real(0) - Imaginary(1), Imaginary(0) + Real(1));
    return Advance(position);
  }
};

/** Radius and angle, the angle in the unit of the context. Imaginary parts are left out. */
class CQMPolarComplexOperator final : public CQMComplexOnlyOperator<2> {
 public:
  long DoComplexOperation(long& position) override {
    double const radius = Real(0);
    double const angle = Real(1) * (GetContext() != nullptr ? GetContext()->GetAngleFactorToRadians() : 1.0);
    StoreComplex(radius * std::cos(angle), radius * std::sin(angle));
    return Advance(position);
  }
};

}  // namespace qumel
