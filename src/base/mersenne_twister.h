// The random-number generator of a context: MT19937 with a multiplicative seeding rule of its own.
#pragma once

#include <array>
#include <cstdint>

namespace qumel {

class CQMRandomGenerator {
 public:
  static constexpr std::uint32_t kInitialSeed = 4357;

  CQMRandomGenerator() { Seed(kInitialSeed); }

  /** state[0] = seed, state[i] = state[i - 1] * 69069; the next number regenerates the state. */
  void Seed(std::uint32_t seed);

  /** Seeds with the low 32 bits of the integer part of |seed|. */
  void SeedFromDouble(double seed);

  /** The next number of [0, 1], both ends included. */
  double Next();

 private:
  static constexpr std::size_t kWords = 624;
  static constexpr std::size_t kMiddle = 397;
  void Regenerate();

  std::array<std::uint32_t, kWords> m_state;
  std::size_t m_index;
};

}  // namespace qumel
