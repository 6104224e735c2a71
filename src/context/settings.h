// The settings of a context and of a thread record, and the rules of the values that they accept.
#pragma once

#include <atomic>
#include <string_view>

#include "base/letters.h"

namespace qumel {

/** A value that other threads may copy while the thread that is in the context changes it. */
template <class Value>
class CQMSetting {
 public:
  constexpr CQMSetting(Value value) : m_value(value) {}
  CQMSetting(CQMSetting const& other) : CQMSetting(static_cast<Value>(other)) {}
  CQMSetting& operator=(CQMSetting const& other) { return *this = static_cast<Value>(other); }
  CQMSetting& operator=(Value value) {
    m_value.store(value, std::memory_order_relaxed);
    return *this;
  }
  operator Value() const { return m_value.load(std::memory_order_relaxed); }

 private:
  std::atomic<Value> m_value;
};

/** Each member starts with its default. */
struct SQMSettings {
  CQMSetting<bool> allowImpliedMultiplication = true;
  CQMSetting<char> radixMark = RadixMark::kPoint;
  CQMSetting<char> quoteMark = QuoteMark::kDouble;
  CQMSetting<char> booleanTrue = BooleanTrue::kOne;
  CQMSetting<bool> invertArrayIndices = false;
  CQMSetting<char> numberBase = NumberBase::kDecimal;
  CQMSetting<char> angleUnit = AngleUnit::kDegrees;
  CQMSetting<bool> allowComplexResults = false;
  CQMSetting<bool> forceComplexResults = false;
  CQMSetting<char> coordinateFormat = CoordinateFormat::kRectangular;
  CQMSetting<char> defaultVariableScope = Scope::kLocal;
  CQMSetting<int> precisionLimit = 12;
};

/** Kinds of contexts; each takes a part of its creator's settings over. */
enum class EQMContextKind : unsigned { Primary = 1, Public = 2, Private = 4 };

class CQMExecutor;
/** Gives a context that is not yet initialised those settings that its kind copies. */
void CopySettings(SQMSettings const& from, EQMContextKind kind, CQMExecutor& to);

/** Stores value when it is one of accepted; returns whether it did. */
bool StoreAccepted(CQMSetting<char>& setting, std::string_view accepted, char value);

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
