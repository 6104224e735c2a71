// The value types of the library: their numbers, element sizes and type classes.
#pragma once

#include <cstdint>

namespace qumel {

/** Types of values. The numbers are fixed: they are stored, compared and handed to hosts. */
enum class EQMDataType : std::int32_t {
  Byte = 0,  // 0 to 5: six kinds, all read as signed 8-bit
  LastByte = 5,
  Short = 6,  // 6 to 8: read as signed 16-bit
  LastShort = 8,
  Int = 9,  // 9 to 14: read as signed 32-bit
  RowNumber = 12,
  LastInt = 14,
  Single = 15,
  Number = 16,   // double, the type of every numeric result
  Complex = 17,  // two doubles: real part, imaginary part
  Real = 18,     // double, treated like Number
  String = 19,   // NUL-terminated text in a fixed buffer
  Boolean = 20,  // one byte, 0 or 1
  Text = 21,     // accepted wherever a String is
  Date = 22,
  Time = 23,
  TimeStamp = 24,
  Pointer = 25,
  Word = 26,
  Label = 32,
  Untyped = 34,  // declared without a type; "void" as a return type
  Any = 35,      // as a parameter type: accepts every operand
  Undefined = 36,
};

/** Groups of types that may stand in for one another. */
enum class EQMTypeClass : std::int32_t {
  Numeric = 18,
  String = 19,
  Boolean = 20,
  DateTime = 22,
  Pointer = 25,
  Word = 26,
  Undefined = 36,
};

constexpr std::int32_t Code(EQMDataType type) { return static_cast<std::int32_t>(type); }
constexpr bool IsBetween(EQMDataType type, EQMDataType first, EQMDataType last) {
  return Code(type) >= Code(first) && Code(type) <= Code(last);
}
constexpr bool IsText(EQMDataType type) { return type == EQMDataType::String || type == EQMDataType::Text; }

/** The class that operators ask for (CQMOperator::GetTypeClass). */
constexpr EQMTypeClass OperandClassOf(EQMDataType type) {
  switch (type) {
    case EQMDataType::String:
    case EQMDataType::Text: return EQMTypeClass::String;
    case EQMDataType::Boolean: return EQMTypeClass::Boolean;
    case EQMDataType::Date:
    case EQMDataType::Time:
    case EQMDataType::TimeStamp: return EQMTypeClass::DateTime;
    case EQMDataType::Pointer: return EQMTypeClass::Pointer;
    case EQMDataType::Word: return EQMTypeClass::Word;
    default: return EQMTypeClass::Numeric;
  }
}

/** What a datum records when it is given a type. */
struct SQMTypeTraits {
  std::int32_t elementSize;  // bytes; 0 for String means: keep the length, or take kDefaultStringSize
  std::int32_t partSize;     // bytes from the real part to the imaginary part
  EQMTypeClass datumClass;   // differs from OperandClassOf for Text and Undefined
};

constexpr std::int32_t kDefaultStringSize = 256;

constexpr SQMTypeTraits TraitsOf(EQMDataType type) {
  if (IsBetween(type, EQMDataType::Short, EQMDataType::LastShort)) return {2, 2, EQMTypeClass::Numeric};
  if (IsBetween(type, EQMDataType::Int, EQMDataType::Single)) return {4, 4, EQMTypeClass::Numeric};
  switch (type) {
    case EQMDataType::Label: return {4, 4, EQMTypeClass::Numeric};
    case EQMDataType::Number:
    case EQMDataType::Real: return {8, 8, EQMTypeClass::Numeric};
    case EQMDataType::Complex: return {16, 8, EQMTypeClass::Numeric};
    case EQMDataType::String: return {0, 1, EQMTypeClass::String};
    case EQMDataType::Boolean: return {1, 1, EQMTypeClass::Boolean};
    case EQMDataType::Date:
    case EQMDataType::Time: return {6, 6, EQMTypeClass::DateTime};
    case EQMDataType::TimeStamp: return {16, 16, EQMTypeClass::DateTime};
    case EQMDataType::Pointer: return {4, 4, EQMTypeClass::Pointer};
    case EQMDataType::Word: return {4, 4, EQMTypeClass::Word};
    case EQMDataType::Undefined: return {0, 0, EQMTypeClass::Undefined};
    default: return {1, 1, EQMTypeClass::Numeric};
  }
}

/** Three date fields, three time fields, one 32-bit field; the value of a TimeStamp. */
struct SQMTimeStamp {
  std::int16_t date[3];
  std::int16_t time[3];
  std::uint32_t fraction;
};
static_assert(sizeof(SQMTimeStamp) == 16);

}  // namespace qumel
