// Accepted values and angle factors.
#include "context/settings.h"

namespace qumel {

bool StoreAccepted(char& setting, std::string_view accepted, char value) {
  if (accepted.find(value) == std::string_view::npos) return false;
  setting = value;
  return true;
}

SQMAngleFactors AngleFactorsOf(char unit) {
  switch (unit) {
    case AngleUnit::kDegrees: return {0.0174532925199, 57.2957795131};
    case AngleUnit::kGrads: return {0.015707963268, 63.6619772368};
    case AngleUnit::kMillicles: return {0.006283185307179587, 159.15494309189535};
    default: return {1.0, 1.0};
  }
}

}  // namespace qumel
