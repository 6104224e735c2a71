// The choices of the generator: a small random number generator that gives the same numbers everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

namespace qumel::compare {

/** SplitMix64. Equal keys give equal choices, so that a program is found again by its number. */
class Random {
 public:
  Random(std::uint64_t seed, std::uint64_t stream) : m_state(seed * 0x2545F4914F6CDD1DULL) {
    m_state = Next() ^ (stream * 0x9E3779B97F4A7C15ULL);
    Next();
  }

  std::uint64_t Next() {
    std::uint64_t mixed = (m_state += 0x9E3779B97F4A7C15ULL);
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
    return mixed ^ (mixed >> 31);
  }
  /** From 0 to count - 1. */
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  int Between(int least, int most) {
    return least + static_cast<int>(Below(static_cast<std::size_t>(most - least + 1)));
  }
  bool Chance(int percent) { return Between(1, 100) <= percent; }

  template <class T>
  T Pick(std::initializer_list<T> choices) {
    return choices.begin()[Below(choices.size())];
  }
  template <class Container>
  auto const& PickFrom(Container const& choices) {
    return choices[Below(std::size(choices))];
  }

 private:
  std::uint64_t m_state;
};

}  // namespace qumel::compare
