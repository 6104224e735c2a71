// Postfix text shown one item a line.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "language/dialect.h"
#include "support/postfix.h"

namespace qumel {
namespace {

std::string Annotate(CQMDialect const& dialect, std::string_view postfix) {
  std::string text;
  dialect.fixer.AnnotateExpression(ReadPostfix(postfix), text);
  return text;
}

TEST(Annotation, OneItemALineWithItsTokenBeside) {
  struct SQMCase {
    std::string_view postfix;
    std::string_view annotated;
  };
  static constexpr SQMCase kCases[] = {
      {"", "\n"},
      {";", "\n\n;"},
      {"#d1#d2!1101.2;", "\n\n#d1\t\td1\n#d2\t\td2\n!1101.2\t\t+\n;"},
      {"@x!2001.1;", "\n\n@x\t\tx\n!2001.1\t\tsin\n;"},
      // at most eight characters with the line feed take two tabs
      {"@abcdef@abcdefg;", "\n\n@abcdef\t\tabcdef\n@abcdefg\tabcdefg\n;"},
      {"!1101.10;", "\n\n!1101.10\t+\n;"},
      {"#d1.5E3;", "\n\n#d1.5E3\t\td1.5E3\n;"},
      // a string is passed over by its length, whatever marks it holds
      {"$4:!#;@;", "\n\n$4:!#;@\t\t4:!#;@\n;"},
      {"$7:!1101.2@x;", "\n\n$7:!1101.2\t7:!1101.2\n@x\t\tx\n;"},
      {"$3:a\nb;", "\n\n$3:a\nb\t\t3:a\nb\n;"},
      // an id that no list holds, and marked operators, show the item alone
      {"#d1!9999.1;", "\n\n#d1\t\td1\n!9999.1\n;"},
      {"@x&2501;", "\n\n@x\t\tx\n&2501\n;"},
      {"!1302.2!2701.3;", "\n\n!1302.2\t\t_*\n!2701.3\t\t[\n;"},
  };
  CQMDialect const dialect;
  for (auto const& [postfix, annotated] : kCases) EXPECT_EQ(Annotate(dialect, postfix), annotated) << postfix;
}

TEST(Annotation, OperatorsOfBothListsUntilTheyAreDeleted) {
  CQMDialect dialect;
  dialect.Define(dialect.shared, {"twice", EQMFix::Prefix, 1});
  dialect.Define(dialect.own, {"plus", EQMFix::Infix, 2});
  std::string const postfix = dialect.Convert("twice(x) plus 1");
  EXPECT_EQ(postfix, "@x!10000.1#d1!10001.2;");
  EXPECT_EQ(Annotate(dialect, postfix), "\n\n@x\t\tx\n!10000.1\ttwice\n#d1\t\td1\n!10001.2\tplus\n;");
  ASSERT_EQ(dialect.own.DeleteDefined("plus"), Error::None);
  EXPECT_EQ(Annotate(dialect, postfix), "\n\n@x\t\tx\n!10000.1\ttwice\n#d1\t\td1\n!10001.2\n;");
}

}  // namespace
}  // namespace qumel
