// Making complex numbers and taking them apart.
#pragma once

#include <cmath>

#include "engine/call.h"
#include "engine/operator.h"
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
  SQMWays GetWays() const override { return kWays<&Do, &DoInComplex>; }
  static long Do(CQMCall& call) {
    if (!call.Result().IsComplex()) return DoInComplex(call);
    call.StoreReal(0.0);
    return Status::NeedsComplex;
  }
  static long DoInComplex(CQMCall& call) {
    call.StoreReal(part(call.Operand(0)));
    return Status::Done;
  }
};

// ---- operators of complex evaluation only ----

/** Refused at compilation where complex results are not allowed, whatever the operands. */
template <long needed, WorkFunction inComplex>
class CQMComplexOnlyOperator final : public CQMOperator {
 public:
  long GetOperandsNeeded() override { return needed; }
  SQMWays GetWays() const override { return kWays<&Do, inComplex>; }
  long VerifyOperands() override {
    long const code = CQMOperator::VerifyOperands();
    return code == Error::None ? static_cast<long>(Error::ResultIsComplex) : code;
  }

 private:
  static long Do(CQMCall& call) {
    call.StoreReal(0.0);
    return Status::NeedsComplex;
  }
};

inline long Conjugate(CQMCall& call) {
  call.StoreComplex(call.Real(0), call.Operand(0).IsComplex() ? -call.Imaginary(0) : 0.0);
  return Status::Done;
}
using CQMComplexConjugateOperator = CQMComplexOnlyOperator<1, &Conjugate>;

/** In radians, whatever the angle unit. */
inline long TakeArgument(CQMCall& call) {
  call.StoreReal(ComplexArg(call.Real(0), call.Imaginary(0)));
  return Status::Done;
}
using CQMComplexArgumentOperator = CQMComplexOnlyOperator<1, &TakeArgument>;

/** z + w i; both may be complex. */
inline long MakeRectangular(CQMCall& call) {
  call.StoreComplex(call.Real(0) - call.Imaginary(1), call.Imaginary(0) + call.Real(1));
  return Status::Done;
}
using CQMRectangularComplexOperator = CQMComplexOnlyOperator<2, &MakeRectangular>;

/** Of radius and angle, the angle in the unit of the context. Imaginary parts are left out. */
inline long MakePolar(CQMCall& call) {
  double const radius = call.Real(0);
  double const angle = call.Real(1) * call.Context().GetAngleFactorToRadians();
  call.StoreComplex(radius * std::cos(angle), radius * std::sin(angle));
  return Status::Done;
}
using CQMPolarComplexOperator = CQMComplexOnlyOperator<2, &MakePolar>;

}  // namespace qumel
