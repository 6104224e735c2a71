// A word for each text, by which it is found.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace qumel {

namespace text_word {

constexpr std::size_t kLongestExact = 7;
constexpr std::uint64_t kHashed = std::uint64_t{1} << 63;
constexpr unsigned kBitsPerByte = 8;

constexpr std::uint64_t Mix(std::uint64_t value) {
  constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
  value *= kOdd;
  return value ^ value >> 32;
}

template <class Part>
std::uint64_t Load(char const* bytes, std::size_t place) {
  Part part;
  std::memcpy(&part, bytes + place, sizeof part);
  return std::uint64_t{part} << kBitsPerByte * place;
}

std::uint64_t HashLong(std::string_view text);

}  // namespace text_word

/** A text of at most seven characters that are no NULs is its word; of longer ones the word is a hash, and no
 * short text has the same. */
inline std::uint64_t WordOf(std::string_view text) {
  using namespace text_word;
  char const* const bytes = text.data();
  std::size_t const size = text.size();
  if (size > kLongestExact) [[unlikely]]
    return HashLong(text);
  // Bytes are read twice where that is quicker.
  if (size >= sizeof(std::uint32_t))
    return Load<std::uint32_t>(bytes, 0) | Load<std::uint32_t>(bytes, size - sizeof(std::uint32_t));
  if (size == 0) return 0;
  return Load<std::uint8_t>(bytes, 0) | Load<std::uint8_t>(bytes, size / 2) |
         Load<std::uint8_t>(bytes, size - 1);
}

/** Whether texts with this word are the same. */
constexpr bool IsExact(std::uint64_t word) { return (word & text_word::kHashed) == 0; }

/** A text to look for in several places, hashed once. */
struct SQMHashedText {
  std::string_view text;
  std::uint64_t word;
  SQMHashedText(std::string_view from) : text(from), word(WordOf(from)) {}
  SQMHashedText(char const* from) : SQMHashedText(std::string_view(from)) {}
  SQMHashedText(std::string const& from) : SQMHashedText(std::string_view(from)) {}
};

}  // namespace qumel
