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

}  // namespace
}  // namespace tevra::tools
