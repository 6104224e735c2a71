// Words of long texts.
#include "tables/text_hash.h"

namespace qumel::text_word {

std::uint64_t HashLong(std::string_view text) {
  constexpr int kTurn = 7;
  char const* next = text.data();
  char const* const last = next + text.size() - sizeof(std::uint64_t);
  std::uint64_t hash = text.size();
  for (; next < last; next += sizeof hash) hash = std::rotl(Mix(hash ^ Load<std::uint64_t>(next, 0)), kTurn);
  return Mix(hash ^ Load<std::uint64_t>(last, 0)) | kHashed;
}

}  // namespace qumel::text_word
