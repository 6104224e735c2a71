// Postfix texts that no conversion writes, for what must take any text.
#pragma once

#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace qumel {

/** Calls check with each of the known ones, and with random ones made of bytes and of items. */
template <class Check>
void ForEachHostilePostfix(Check check) {
  static constexpr std::string_view kTexts[] = {
      "!1101.2;",
      "!1101.-5;",
      "!2116.99999999999999999999;",
      "#d1!2116.2147483647;",
      "!2701.0;",
      "!2701.1;",
      "@a!2701.9;",
      "$999999999999999999999:x",
      "$5:ab",
      "$:",
      "$",
      "#",
      "@",
      "!",
      "&",
      "&1101",
      ";;;;",
      "#d1#d2#d3",
      "@;",
      "#;",
      "!2501.1;",
      "@x!2501.9;",
      "!5201.0!5201.0;",
      "@x!5014.7;",
      "!1302.2;",
      "#.E!2001.0;",
      "@x@y!2501.1!2501.1!2501.1;",
      "$1:\n!2501.1",
      "!-1.1;",
      "!1e9.1;",
      "$999999999999999999999:x;",
      "!.",
      "!1101.",
      "!99999999999999999999.2;",
      "plain",
      ";plain",
      "!-5.2;",
      "\xff\xfe",
      "$-3:abc;",
  };
  for (std::string_view const text : kTexts) check(text);
  static constexpr std::string_view kBytes = "!#$@&;.:0123456789dx\n\t ";
  static constexpr std::string_view kItems[] = {"!2501.1", "!1101.2", "!2116.", "!2701.", "#d1",
                                                "@x",      "$3:a;b",  ";",      "$2:",    "!5014.1",
                                                "!5001.1", "!1302.2", "&2501",  "1",      "7",
                                                "\xff",    ".",       ":"};
  constexpr int kRandomTexts = 2'000;
  std::mt19937 random(11);
  for (int i = 0; i < kRandomTexts; ++i) {
    std::string bytes, items;
    for (unsigned count = random() % 40; count > 0; --count) bytes += kBytes[random() % kBytes.size()];
    for (unsigned count = random() % 12; count > 0; --count) items += kItems[random() % std::size(kItems)];
    check(bytes);
    check(items);
  }
}

}  // namespace qumel
