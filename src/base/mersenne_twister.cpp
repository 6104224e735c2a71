// The recurrence and the tempering of MT19937.
#include "base/mersenne_twister.h"

#include <cmath>

namespace qumel {

void CQMRandomGenerator::Seed(std::uint32_t seed) {
  constexpr std::uint32_t kMultiplier = 69069;
  m_state[0] = seed;
  for (std::size_t i = 1; i < kWords; ++i) m_state[i] = m_state[i - 1] * kMultiplier;
  m_index = kWords;
}

void CQMRandomGenerator::SeedFromDouble(double seed) {
  constexpr double kWordRange = 4294967296.0;
  double const whole = std::trunc(std::fabs(seed));
  // fmod is exact, so this is the low word of a truncation to 64 bits, and defined for every seed
  Seed(std::isfinite(whole) ? static_cast<std::uint32_t>(std::fmod(whole, kWordRange)) : 0);
}

void CQMRandomGenerator::Regenerate() {
  constexpr std::uint32_t kUpperMask = 0x80000000, kLowerMask = 0x7FFFFFFF, kTwist = 0x9908B0DF;
  for (std::size_t i = 0; i < kWords; ++i) {
    std::uint32_t const y = (m_state[i] & kUpperMask) | (m_state[(i + 1) % kWords] & kLowerMask);
    m_state[i] = m_state[(i + kMiddle) % kWords] ^ (y >> 1) ^ ((y & 1) != 0 ? kTwist : 0);
  }
  m_index = 0;
}

double CQMRandomGenerator::Next() {
  constexpr double kLargest = 4294967295.0;
  if (m_index >= kWords) Regenerate();
  std::uint32_t y = m_state[m_index++];
  y ^= y >> 11;
  y ^= (y << 7) & 0x9D2C5680;
  y ^= (y << 15) & 0xEFC60000;
  y ^= y >> 18;
  return y / kLargest;
}

}  // namespace qumel
