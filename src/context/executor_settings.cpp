// The setters of a context, and the polar form of its results.
#include <cmath>
#include <numbers>

#include "context/executor.h"

namespace qumel {

// ---- setters ----

using namespace SettingRule;

// The converter takes the fixed settings over when the context is initialised, so that they cannot change
// later.
#define QM_SETTING(group, member, name, exported, Type, initial, accepted, copied, effect) \
  void CQMExecutor::Set##name(Type value) {                                                \
    if (EQMSettingGroup::group == EQMSettingGroup::Fixed && m_initialized) return;         \
    if (StoreAccepted(m_settings.member, accepted, value)) Follow##effect();               \
  }
#define QM_CONTEXT_SETTING(member, name, Type, initial) \
  void CQMExecutor::Set##name(Type value) {             \
    if (!m_initialized) m_settings.member = value;      \
  }
#include "context/settings.inc"

void CQMExecutor::FollowAngleUnit() { m_angle = AngleFactorsOf(m_settings.angleUnit); }

void CQMExecutor::FollowAllowedComplex() { m_settings.forceComplexResults = false; }

void CQMExecutor::FollowForcedComplex() {
  if (m_settings.forceComplexResults) m_settings.allowComplexResults = false;
}

// ---- polar form ----

double CQMExecutor::GetRadiusOrdinate(double real, double imaginary) const {
  return std::sqrt(real * real + imaginary * imaginary);
}

double CQMExecutor::GetThetaOrdinate(double real, double imaginary) const {
  // Quadrants and the sign of a purely imaginary number are not told apart: this is documented, and hosts may
  // depend on it.
  double const angle = real == 0.0 ? std::numbers::pi / 2.0 : std::atan(imaginary / real);
  return angle * m_angle.fromRadians;
}

}  // namespace qumel
