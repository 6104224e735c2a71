// What characters are to the language, whatever the host's locale: bytes above 127 belong to no class.
#pragma once

#include <string_view>

namespace qumel {

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool IsNameStart(char c) { return IsLetter(c) || c == '_'; }
constexpr bool IsNamePart(char c) { return IsNameStart(c) || IsDigit(c); }
constexpr bool IsPunctuation(char c) { return c > ' ' && c < '\x7f' && !IsLetter(c) && !IsDigit(c); }

/** text without white space at either end. */
constexpr std::string_view TrimSpace(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace qumel
