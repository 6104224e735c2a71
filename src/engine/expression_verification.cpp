// Verification, optimisation and finalising of compiled expressions.
#include <algorithm>

#include "engine/expression.h"
#include "engine/operator_factory.h"

namespace qumel {

namespace {

/** Changes whenever the type or the state of an operand changes. */
std::size_t OperandSignature(CQMOperator const& op) {
  constexpr std::size_t kStep = 131;
  std::size_t signature = 1;
  for (long i = 0; i < op.GetOperandCount(); ++i) {
    CQMDatum const* const operand = op.GetOperandByIndex(i);
    std::size_t const state =
        operand == nullptr
            ? 0
            : static_cast<std::size_t>(Code(operand->GetType()) * 2 + (operand->IsPending() ? 1 : 0) + 1);
    signature = signature * kStep + state;
  }
  return signature;
}

bool HasOperand(CQMOperator const& op, bool (*test)(CQMDatum const&)) {
  for (long i = 0; i < op.GetOperandCount(); ++i) {
    CQMDatum const* const operand = op.GetOperandByIndex(i);
    if (operand != nullptr && test(*operand)) return true;
  }
  return false;
}

}  // namespace

// Verifies the operators from position first on that are not verified yet, producers before consumers. Passes
// repeat while an operator asks for one, which is as long as types still spread, and end with a final pass
// that decides.
long CQMExpression::Verify(long first) {
  auto& [unverified, work, signatures] = m_compilation->verification;
  if (unverified.empty()) return Error::None;
  if (first == 0) {
    work.swap(unverified);
    unverified.clear();
  } else {
    auto const begin = std::lower_bound(unverified.begin(), unverified.end(), first);
    work.assign(begin, unverified.end());
    unverified.erase(begin, unverified.end());
  }
  signatures.assign(work.size(), 0);
  std::span<CQMOperator* const> const operators = m_compilation->operators;
  bool const declares = std::any_of(work.begin(), work.end(), [this](long index) {
    return GetOperatorByIndex(index)->VerifiesImmediately();
  });
  // the types of an operator's own operands change by its own doing alone where it is the only one
  bool const mayChangeOthers = declares || work.size() > 1;
  for (bool finalPass = false;;) {
    bool askAgain = false;
    bool progress = false;
    for (std::size_t i = 0; i < work.size(); ++i) {
      auto const position = static_cast<std::size_t>(work[i]);
      bool const isSettled = operators[position]->IsVerified() &&
                             (!mayChangeOthers || signatures[i] == OperandSignature(*operators[position]));
      if (isSettled) continue;
      if (long const code = VerifyOperator(work[i], finalPass, askAgain, progress); code != Error::None) {
        return Fail(code);
      }
      // an operator may type its own operand, as an assignment does its target
      if (mayChangeOthers) signatures[i] = OperandSignature(*operators[position]);
    }
    for (std::size_t i = 0; declares && !askAgain && i < work.size(); ++i) {
      askAgain = signatures[i] != OperandSignature(*operators[static_cast<std::size_t>(work[i])]);
    }
    if (!askAgain || finalPass) return Error::None;
    finalPass = !progress;
  }
}

long CQMExpression::VerifyOperator(long index, bool finalPass, bool& askAgain, bool& progress) {
  CQMOperator*& op = m_compilation->operators[static_cast<std::size_t>(index)];
  long code = op->VerifyOperands();
  for (int substitutions = 0; code == Error::UseSubstitute; ++substitutions) {
    constexpr int kMostSubstitutions = 8;
    if (substitutions == kMostSubstitutions) return Error::TooManySubstitutions;
    if (long const failure = Substitute(index); failure != Error::None) return failure;
    code = op->VerifyOperands();
  }
  bool const waits = code == Error::TypeMismatch || code == Error::VerifyAgain ||
                     // an element of an array that is still to be declared
                     (code == Error::NotDefined &&
                      HasOperand(*op, [](CQMDatum const& d) { return d.IsProxy() && d.IsPending(); }));
  if (waits && !finalPass) {
    askAgain = true;
    return Error::None;
  }
  switch (code) {
    case Error::None: break;
    case Error::VerifyAgain:
      return HasOperand(*op, [](CQMDatum const& d) { return d.IsPending(); }) ? Error::NotDefined
                                                                              : Error::TooManySubstitutions;
    default:
      if (!AsksForComplex(code)) return code;
      m_complexMode = true;
  }
  if (!op->IsVerified()) progress = true;
  op->SetVerified(true);
  return Error::None;
}

// Whoever is compiled once more has the permission that was there the first time.
bool CQMExpression::AsksForComplex(long code) const {
  bool const isPermitted = m_original != nullptr || m_detached != nullptr || m_context.MayBecomeComplex();
  return code == Error::ComplexOperandFound || (code == Error::ResultIsComplex && isPermitted);
}

// The new operator takes over operands and result; whoever holds the result datum need not know.
long CQMExpression::Substitute(long index) {
  CQMOperator*& place = m_compilation->operators[static_cast<std::size_t>(index)];
  CQMArena& arena = m_compilation->arena;
  CQMOperator* const made = m_context.GetOperatorFactory()->GetOperator(place->GetSubstituteId(), arena);
  if (made == nullptr) return Error::UnimplementedOperator;
  made->SetExpression(this);
  made->CreateOperandList(arena, place->GetOperandCount());
  for (long i = place->GetOperandCount() - 1; i >= 0; --i) {
    made->AssignOperand(place->GetOperandByIndex(i));
    if (place->IsOnlyReader(i)) made->SetOnlyReader(i);
  }
  made->SetResultOperand(arena, place->GetResultOperand());
  made->SetEndsStatement(place->EndsStatement());
  place = made;
  return Error::None;
}

long CQMExpression::Optimize() {
  long const mostPasses = GetOperatorCount() + 1;
  for (long pass = 0;; ++pass) {
    if (pass > mostPasses) return Fail(Error::TooManySubstitutions);
    bool askAgain = false;
    for (long index = 0; index < GetOperatorCount(); ++index) {
      CQMOperator*& op = m_compilation->operators[static_cast<std::size_t>(index)];
      if (op->IsFinalized()) continue;
      long const code = op->Optimize();
      if (code == Error::None) {
        op->SetFinalized(true);
      } else if (code == Error::OptimizeAgain) {
        askAgain = true;
      } else if (code == Error::UseSubstitute) {
        if (long const failure = Substitute(index); failure != Error::None) return Fail(failure);
        askAgain = true;
      } else {
        return Fail(code);
      }
    }
    if (!askAgain) return Error::None;
  }
}

long CQMExpression::Finalize() {
  for (CQMOperator* const op : m_compilation->operators) {
    if (long const code = op->Finalize(); code != Error::None) return Fail(code);
    if (CQMExpression* const body = op->GetBody(); body != nullptr) m_compilation->bodies.push_back(body);
  }
  return Error::None;
}

}  // namespace qumel
