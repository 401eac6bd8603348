#include "tools/text/text_table.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(TextTable, AlignsColumnsByCharactersAndLeavesNoBlanksAtLineEnds) {
  TextTable table({"id", "name", ""});
  EXPECT_TRUE(table.empty());
  table.addRow({"1", "Télé", "x"});
  table.addRow({"1000", "T"});
  EXPECT_FALSE(table.empty());
  std::ostringstream out;
  table.print(out, 2);
  EXPECT_EQ("  id    name\n  1     Télé  x\n  1000  T\n", out.str());
}

TEST(TextTable, StandsInParagraphsWhereItsColumnsDoNotFit) {
  TextTable table({"id", "name", "notes"});
  table.addRow({"1", "Télé", ""});
  table.addRow({"1000", "T", "of three words"});
  const auto printed = [&](size_t width) {
    std::ostringstream out;
    table.print(out, 2, width);
    return out.str();
  };
  EXPECT_EQ("  id    name  notes\n  1     Télé\n  1000  T     of three words\n", printed(28));
  EXPECT_EQ("  id 1  name Télé\n  id 1000  name T\n    notes of three words\n", printed(27));
  EXPECT_EQ("  id 1  name Télé\n  id 1000  name T\n    notes of three\n      words\n", printed(18));
  EXPECT_EQ(
      "  id 1\n    name Télé\n  id 1000\n    name T\n    notes of\n      three\n      words\n",
      printed(13));
}

}  // namespace
}  // namespace tevra::tools
