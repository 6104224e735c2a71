// What characters are to the language, whatever the host's locale: bytes above 127 belong to no class.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qumel {

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool IsNamePart(char c) { return IsLetter(c) || c == '_' || IsDigit(c); }
constexpr bool IsPunctuation(char c) { return c > ' ' && c < '\x7f' && !IsLetter(c) && !IsDigit(c); }

/** What a character begins. Names consist of the first three classes, signs of the underscore and the class
 * Sign. */
enum class EQMCharacter : std::uint8_t {
  Digit,
  Letter,
  Underscore,
  Sign,
  Point,
  Comma,
  Separator,
  OpenParen,
  CloseParen,
  OpenBracket,
  CloseBracket,
  Space,
  Unknown,
};

constexpr EQMCharacter ClassifyCharacter(char c) {
  switch (c) {
    case '_': return EQMCharacter::Underscore;
    case '.': return EQMCharacter::Point;
    case ',': return EQMCharacter::Comma;
    case ';':
    case ':': return EQMCharacter::Separator;
    case '(': return EQMCharacter::OpenParen;
    case ')': return EQMCharacter::CloseParen;
    case '[': return EQMCharacter::OpenBracket;
    case ']': return EQMCharacter::CloseBracket;
    default: break;
  }
  if (IsDigit(c)) return EQMCharacter::Digit;
  if (IsLetter(c)) return EQMCharacter::Letter;
  if (IsPunctuation(c)) return EQMCharacter::Sign;
  return IsSpace(c) ? EQMCharacter::Space : EQMCharacter::Unknown;
}

inline constexpr auto kCharacterClasses = [] {
  std::array<EQMCharacter, 256> classes{};
  for (std::size_t i = 0; i < classes.size(); ++i) classes[i] = ClassifyCharacter(static_cast<char>(i));
  return classes;
}();

constexpr EQMCharacter ClassOf(char c) { return kCharacterClasses[static_cast<unsigned char>(c)]; }

/** text without white space at either end. */
constexpr std::string_view TrimSpace(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace qumel
