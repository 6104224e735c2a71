// How a name that was met for the first time becomes a variable.
#pragma once

#include "engine/operator.h"

namespace qumel {

/** Gives the name behind a pending operand of op its type and places it in a symbol table. An element stands
 * for its array. Returns 0 or the error of the table. */
long DeclareName(CQMOperator const& op, CQMDatum& operand, EQMDataType type);

/** The type of a variable that takes values of type: Number, Complex, String or Boolean; Undefined for what
 * no variable holds. */
constexpr EQMDataType VariableTypeFor(EQMDataType type) {
  switch (type) {
    case EQMDataType::Number:
    case EQMDataType::Real: return EQMDataType::Number;
    case EQMDataType::String:
    case EQMDataType::Text: return EQMDataType::String;
    case EQMDataType::Complex:
    case EQMDataType::Boolean: return type;
    default: return EQMDataType::Undefined;
  }
}

}  // namespace qumel
