// The items of a conversion: their places in the text, their values, and what keeps them.
#include "base/items.h"

#include <gtest/gtest.h>

#include <string>

#include "base/operator_ids.h"
#include "language/dialect.h"
#include "support/postfix.h"

namespace qumel {
namespace {

/** Each item as the text has it, in brackets, and its place where it is not written. */
std::string Places(CQMItemList const& items) {
  std::string places;
  for (SQMItem const& item : items.GetItems()) {
    std::string_view const written = items.Written(item);
    places += '[';
    places += written.empty() ? std::to_string(item.place.start) : std::string(written);
    places += ']';
  }
  return places;
}

TEST(Items, TellWhereTheyStandInTheText) {
  struct SQMCase {
    char const* text;
    char const* places;
  };
  constexpr SQMCase kCases[] = {
      {"  x + 0x1F ;y", "[x][0x1F][+][;][y][13]"},
      {"2x", "[2][x][1][2]"},  // the sign that is not written stands in front of what follows it
      {"\t\"a b\" & \"c\\\"d\"\n", "[\"a b\"][\"c\\\"d\"][&][15]"},
      {"min(1.5E3, x)", "[1.5E3][x][min][13]"},
      {"a[1, 2] = 3 // note", "[a][1][2][[][3][=][19]"},
      {"if (x) then y; end", "[x][if][then][y][;][end][18]"},
  };
  CQMDialect dialect;
  CQMItemList items;
  for (SQMCase const& test : kCases) {
    ASSERT_EQ(dialect.fixer.ConvertExpression(test.text, items), Error::None) << test.text;
    EXPECT_EQ(Places(items), test.places);
  }
}

TEST(Items, HaveTheValuesOfLiterals) {
  CQMDialect dialect;
  CQMItemList items;
  ASSERT_EQ(dialect.fixer.ConvertExpression("0x1f; 2.5; 3; 1.5E1; \"\"; \"a\\tb\"; last", items),
            Error::None);
  auto const item = [&](std::size_t statement) { return items.GetItems()[2 * statement]; };
  double const values[] = {31.0, 2.5, 3.0, 15.0};
  bool const areIntegers[] = {true, false, true, true};
  for (std::size_t i = 0; i < std::size(values); ++i) {
    EXPECT_EQ(item(i).number, values[i]);
    EXPECT_EQ(item(i).isInteger, areIntegers[i]) << values[i];
  }
  EXPECT_EQ(items.Characters(item(4)), "");
  EXPECT_EQ(items.Characters(item(5)), "a\tb");
  EXPECT_EQ(item(6).id, OpId::LastResult);
}

TEST(Items, OutliveTheirTextWhenTheyAreKept) {
  CQMDialect dialect;
  CQMItemList kept;
  std::string postfix, places;
  {
    std::string text = R"( x = "plain" & "tab\t" & name & "quote\"" & 0t1e.8 )";
    CQMItemList items;
    ASSERT_EQ(dialect.fixer.ConvertExpression(text, items), Error::None);
    kept = items.Kept();
    postfix = items.GetPostfix();
    places = Places(items);
    text.assign(text.size(), '!');
    ASSERT_EQ(dialect.fixer.ConvertExpression("1", items), Error::None);
  }
  EXPECT_EQ(kept.GetPostfix(), postfix);
  EXPECT_EQ(Places(kept), places);
  EXPECT_EQ(kept.Kept().GetPostfix(), postfix);
  CQMItemList const moved = std::move(kept);
  EXPECT_EQ(moved.GetPostfix(), postfix);
  EXPECT_EQ(ReadPostfix(postfix).GetPostfix(), postfix);
}

}  // namespace
}  // namespace qumel
