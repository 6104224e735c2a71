// The operations that the optimised resolver computes itself, numbered densely so that it can jump by them.
#pragma once

#include <cstdint>

#include "base/operator_ids.h"

namespace qumel {

enum class EQMFastOperation : std::uint8_t {
  None,  // by the operator's own DoOperation
  Add,
  Subtract,
  Multiply,
  Divide,
  Modulo,
  Power,
  Negate,
  Sine,
  Cosine,
  Tangent,
  SquareRoot,
  AbsoluteValue,
  Square,
};

constexpr EQMFastOperation FastOperationOf(long id) {
  switch (id) {
    case OpId::Addition: return EQMFastOperation::Add;
    case OpId::Subtraction: return EQMFastOperation::Subtract;
    case OpId::Multiplication: return EQMFastOperation::Multiply;
    case OpId::Division: return EQMFastOperation::Divide;
    case OpId::Modulo: return EQMFastOperation::Modulo;
    case OpId::Power:
    case OpId::PowerStars: return EQMFastOperation::Power;
    case OpId::LooseMinus:
    case OpId::TightMinus: return EQMFastOperation::Negate;
    case OpId::Sine: return EQMFastOperation::Sine;
    case OpId::Cosine: return EQMFastOperation::Cosine;
    case OpId::Tangent: return EQMFastOperation::Tangent;
    case OpId::SquareRoot: return EQMFastOperation::SquareRoot;
    case OpId::AbsoluteValue: return EQMFastOperation::AbsoluteValue;
    case OpId::Square: return EQMFastOperation::Square;
    default: return EQMFastOperation::None;
  }
}

}  // namespace qumel
