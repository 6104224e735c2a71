// Turns a formula written in C++ into what a library reads, by the little in which its language differs.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace bench {

/** How a language differs from C++. In patterns @1, @2 and @3 stand for operands. */
struct Dialect {
  std::map<std::string, std::string, std::less<>> words;  // names and signs that are spelled otherwise
  std::map<std::string, std::string, std::less<>>
      calls;  // functions that are written otherwise: pow to "@1^@2"
  std::string choice = "@1 ? @2 : @3";
  std::string branch = "@1";  // a branch of a choice that is no choice itself
  std::string formula = "@1";
  std::string formulaOfChoice = "@1";
};

std::string Translate(std::string_view formula, Dialect const& dialect);

/** How many signs, functions and choices a formula holds. */
int CountOperators(std::string_view formula);

/** The formula with digits of the salt behind a number, or with a number added: another text, as hard to
 * read. */
std::string Salt(std::string_view formula, unsigned salt);

/** Whether a name occurs in a text as a word. */
bool Mentions(std::string_view text, std::string_view name);

}  // namespace bench
