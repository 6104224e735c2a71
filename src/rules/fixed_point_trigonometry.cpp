// The rotation and its table.
#include "rules/fixed_point_trigonometry.h"

#include <array>
#include <cstdint>

#include "base/conversions.h"

namespace qumel {

namespace {

constexpr double kOne = 65536.0;
constexpr std::int32_t kGain = 39796;  // 0.6072... in fixed point

// atan(2^-i) in degrees, cut to fixed point
constexpr std::array<std::int32_t, 18> kAngles = {2949120, 1740967, 919879, 466945, 234378, 117303,
                                                  58666,   29334,   14667,  7333,   3666,   1833,
                                                  916,     458,     229,    114,    57,     28};

struct SQMRotation {
  std::int32_t x = kGain;
  std::int32_t y = 0;
};

SQMRotation Rotate(double degrees) {
  SQMRotation at;
  std::int32_t z = 0;
  std::int32_t const target = TruncateToInt32(kOne * degrees);
  for (unsigned i = 0; i < kAngles.size(); ++i) {
    std::int32_t const dx = at.y >> i;
    std::int32_t const dy = at.x >> i;
    if (z < target) {
      at.x -= dx, at.y += dy, z += kAngles[i];
    } else {
      at.x += dx, at.y -= dy, z -= kAngles[i];
    }
  }
  return at;
}

}  // namespace

double FixedPointSine(double degrees) { return Rotate(degrees).y / kOne; }

double FixedPointCosine(double degrees) { return Rotate(degrees).x / kOne; }

double FixedPointTangent(double degrees) {
  SQMRotation const at = Rotate(degrees);
  return at.y == 0 ? 0.0 : static_cast<double>(at.y) / at.x;
}

}  // namespace qumel
