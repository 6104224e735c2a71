// Records as the runner writes them: lines of a label and fields "key=value", parted by tabs.
#pragma once

#include <cstddef>
#include <string_view>

namespace qumel::compare {

inline std::string_view LineAt(std::string_view record, std::size_t begin) {
  return record.substr(begin, record.find('\n', begin) - begin);
}

/** Takes the first field off the front of line. */
inline std::string_view TakeField(std::string_view& line) {
  std::size_t const end = line.find('\t');
  std::string_view const field = line.substr(0, end);
  line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
  return field;
}

inline std::string_view LabelOf(std::string_view line) { return TakeField(line); }

/** The value of a field; empty when the line has none of that name. */
inline std::string_view FieldOf(std::string_view line, std::string_view key) {
  while (!line.empty()) {
    std::string_view const field = TakeField(line);
    if (field.starts_with(key) && field.substr(key.size()).starts_with('='))
      return field.substr(key.size() + 1);
  }
  return {};
}

}  // namespace qumel::compare
