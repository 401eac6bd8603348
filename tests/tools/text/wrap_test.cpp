#include "tools/text/wrap.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(Wrapped, TextIsBrokenBetweenWords) {
  EXPECT_EQ("one two\nthree\nfour\n", wrapped("one two three four\n", 7, 4));
  EXPECT_EQ("one two\nthree four\n", wrapped("one two three four\n", 10, 4));
  EXPECT_EQ("one two three four\n", wrapped("one two three four\n", 18, 4));
}

TEST(Wrapped, LinesThatAreIndentedGoOnIndented) {
  EXPECT_EQ("  --json  Print\n    one array\n\n  -o\n",
            wrapped("  --json  Print one array\n\n  -o\n", 15, 4));
  EXPECT_EQ("  --json\n    Print\n    it\n", wrapped("  --json     Print it\n", 10, 4));
}

TEST(Wrapped, WordsThatAreTooLongStayWhole) {
  EXPECT_EQ("  immeasurable\n    thing\n", wrapped("  immeasurable thing\n", 5, 4));
  EXPECT_EQ("a\nimmeasurable\nb\n", wrapped("a immeasurable b\n", 1, 0));
}

TEST(Wrapped, TextCountsCharactersAndKeepsNoBlanksAtItsLinesEnds) {
  EXPECT_EQ("été été\nété\n", wrapped("été été été\n", 7, 0));
  EXPECT_EQ("one two\nthree\n", wrapped("one two three \n", 7, 0));
  EXPECT_EQ("one two\n", wrapped("one two  \n", 7, 0));
  EXPECT_EQ("one\ntwo\n\n\n", wrapped("one   two  \n\n    \n", 6, 0));
}

TEST(Wrapped, TextWithoutAWidthStaysAsItIs) {
  EXPECT_EQ("one two\n three", wrapped("one two\n three", 0, 4));
}

}  // namespace
}  // namespace tevra::tools
