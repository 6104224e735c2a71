// What new contexts copy of the settings, and the factors of the angle units.
#include "context/settings.h"

#include "context/executor.h"

namespace qumel {

void CopySettings(SQMSettings const& from, EQMContextKind kind, CQMExecutor& to) {
  constexpr unsigned kPrivate = static_cast<unsigned>(EQMContextKind::Private);
  constexpr unsigned kNotPublic = static_cast<unsigned>(EQMContextKind::Primary) | kPrivate;
  constexpr unsigned kAll = static_cast<unsigned>(EQMContextKind::Public) | kNotPublic;
#define QM_SETTING(group, member, name, exported, Type, initial, accepted, copied, effect) \
  if ((copied & static_cast<unsigned>(kind)) != 0) to.Set##name(from.member);
#include "context/settings.inc"
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
