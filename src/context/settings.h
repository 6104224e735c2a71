// The settings of a context and of a thread record, and the rules of the values that they accept.
#pragma once

#include <string_view>

#include "base/letters.h"

namespace qumel {

/** Each member starts with its default. */
struct SQMSettings {
  bool allowImpliedMultiplication = true;
  char radixMark = RadixMark::kPoint;
  char quoteMark = QuoteMark::kDouble;
  char booleanTrue = BooleanTrue::kOne;
  bool invertArrayIndices = false;
  char numberBase = NumberBase::kDecimal;
  char angleUnit = AngleUnit::kDegrees;
  bool allowComplexResults = false;
  bool forceComplexResults = false;
  char coordinateFormat = CoordinateFormat::kRectangular;
  char defaultVariableScope = Scope::kLocal;
  int precisionLimit = 12;
};

/** Kinds of contexts; each takes a part of its creator's settings over. */
enum class EQMContextKind : unsigned { Primary = 1, Public = 2, Private = 4 };

class CQMExecutor;
/** Gives a context that is not yet initialised those settings that its kind copies. */
void CopySettings(SQMSettings const& from, EQMContextKind kind, CQMExecutor& to);

/** Stores value when it is one of accepted; returns whether it did. */
bool StoreAccepted(char& setting, std::string_view accepted, char value);

namespace Accepted {
inline constexpr std::string_view kRadixMarks = "PC", kQuoteMarks = "12", kBooleanTrues = "CN",
                                  kNumberBases = "BODTH", kAngleUnits = "DGMR", kCoordinateFormats = "RP",
                                  kVariableScopes = "CGL";
}

/** Factors of an angle unit. Degrees and gradians have short decimal forms on purpose. */
struct SQMAngleFactors {
  double toRadians;
  double fromRadians;
};
SQMAngleFactors AngleFactorsOf(char unit);

}  // namespace qumel
