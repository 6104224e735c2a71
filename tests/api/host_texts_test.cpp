// Texts in memory of the host, and results of expressions that run again.
#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "api/interface_test.h"

namespace qumel::testing {

namespace {

class HostTexts : public InterfaceTest {};

TEST_F(HostTexts, TextsOfTheHostAreNeverOverrun) {
  struct {
    char text[8];
    char behind[8];
  } memory;
  struct Change {
    char const* before;
    char const* expression;
    char const* after;
    long error = kNone;
  };
  constexpr Change kChanges[] = {
      {"abc", "t $+= \"defg\"", "abcdefg"},
      {"abc", "t $+= \"defgh\"", "abc", 3100},
      {"abcd", "t $+= t", "abcd", 3100},
      {"abc", "insert(t, \"12345\", 1)", "abc", 3100},
      {"abc", "insert(t, t, 1)", "aabcbc"},
      {"abcdefg", "replace(t, \"12345678\", 5)", "abcde12"},
      {"abc", "s = \"a text much longer\"; s <=> t", "a text "},
      {"abcdefgh", "t $+= \"\"", "abcdefgh", 3100},  // without an end
      {"abcdefgh", "replace(t, \"x\", 0)", "abcdefgh", 3100},
      {"abcdefgh", "t = right(t, 2)", "gh"},
  };
  ASSERT_TRUE(qmLinkStrVar('G', "t", memory.text, sizeof memory.text));
  for (Change const& change : kChanges) {
    SCOPED_TRACE(change.expression);
    std::memset(&memory, '#', sizeof memory);
    std::memcpy(memory.text, change.before, std::min(std::strlen(change.before) + 1, sizeof memory.text));
    qmEvalExpStr(change.expression);
    EXPECT_EQ(qmGetLastErrorID(), change.error);
    EXPECT_EQ(std::string(memory.text, strnlen(memory.text, sizeof memory.text)), change.after);
    EXPECT_EQ(std::string(memory.behind, sizeof memory.behind), "########");
  }
}

TEST_F(HostTexts, ALaterRunLeavesNoTailOfAnEarlierOne) {
  Handle const variable = qmCreateNumVar('G', "n", 0.0);
  struct Run {
    double count;
    char const* left;
    char const* joined;
    long error = kNone;
  };
  constexpr Run kRuns[] = {
      {3, "abc", "xyzabc"}, {1, "a", "xyza"}, {0, "", "xyz"}, {-1, "", "", 3100}, {2, "ab", "xyzab"}};
  Handle const left = qmParseExp("left(\"abcdef\", n)");
  Handle const joined = qmParseExp("\"xyz\" $+ left(\"abcdef\", n)");
  for (Run const& run : kRuns) {
    SCOPED_TRACE(run.count);
    qmSetNumVar('G', "n", run.count);
    for (auto const& [handle, text] : {std::pair(left, run.left), std::pair(joined, run.joined)}) {
      std::string const result = qmEvalExpHndlToStr(handle);
      EXPECT_EQ(qmGetLastErrorID(), run.error);
      EXPECT_TRUE(run.error != kNone || result == text) << result;
    }
  }
  qmDeleteExp(left);
  qmDeleteExp(joined);
  EXPECT_TRUE(qmReleaseVarHandle(variable));
}

}  // namespace

}  // namespace qumel::testing
