#include "tools/report/page/text_fit.h"

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

TEST(TextFit, LeavesTextThatFitsAsItIs) {
  EXPECT_EQ("Uno", fitted("Uno", 100, 12));
  EXPECT_EQ("", fitted("", 0, 12));
}

TEST(TextFit, EndsWhatIsTooLongWithAnEllipsis) {
  const std::string shortened = fitted("A rather long name of a service", 100, 12);
  EXPECT_EQ("A rather long…", shortened);
  EXPECT_LE(textWidth(shortened) * 12, 100);
  EXPECT_EQ("A…", fitted("A bbbbb", 28, 12)) << "no blank before the ellipsis";
}

TEST(TextFit, IsEmptyWhereNothingFits) {
  EXPECT_EQ("", fitted("Uno", 12, 12));
  EXPECT_EQ("", fitted("Uno", -5, 12));
}

TEST(TextFit, NeverCutsACharacterInTwo) {
  const std::string text = "éééééééééé名名名名名";
  for (double width = 0; width < 300; width += 1) {
    const std::string shortened = fitted(text, width, 12);
    const std::string kept = shortened.substr(0, shortened.find("…"));
    EXPECT_EQ(text.substr(0, kept.size()), kept);
    EXPECT_TRUE(kept.size() == text.size() || (text[kept.size()] & 0xC0) != 0x80) << width;
  }
}

TEST(TextFit, CountsWideCharactersAsWide) {
  EXPECT_LT(textWidth("iiii"), textWidth("nnnn"));
  EXPECT_LT(textWidth("nnnn"), textWidth("WWWW"));
  EXPECT_GE(textWidth("名名名名"), 4.0);
}

}  // namespace
}  // namespace tevra::tools::report
