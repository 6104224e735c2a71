// Prints a dictionary for the fuzzers: the tokens of all operators, and other pieces of texts.
#include <cstdio>

int main() {
#define QM_FUNCTION(token, ...) std::puts(#token);
#define QM_OPERATOR QM_FUNCTION
#define QM_LOCAL_OPERATOR QM_FUNCTION
#include "base/operators.inc"
  std::puts(R"words("("
")"
"]"
","
";"
" "
"\x0a"
"//"
"/*"
"*/"
"1.5"
"1e5"
"0b101"
"0h1F"
"\"abc\""
"x"
"a[1]"
"a[1][2]"
"number x"
"string s"
"twice"
"between")words");
}
