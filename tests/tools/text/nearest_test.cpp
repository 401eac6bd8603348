#include "tools/text/nearest.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

const std::vector<std::string> kWords = {"--table", "--service", "--json", "feed", "tables"};

TEST(Nearest, IsTheWordWithOneFaultInThreeLetters) {
  EXPECT_EQ("--table", nearestTo("--tabel", kWords)) << "swapped";
  EXPECT_EQ("--table", nearestTo("--tabble", kWords)) << "too much";
  EXPECT_EQ("--service", nearestTo("--srvice", kWords)) << "missing";
  EXPECT_EQ("--json", nearestTo("--jzom", kWords)) << "wrong, two of six letters";
  EXPECT_EQ("tables", nearestTo("tabel", {"feed", "tables"})) << "two of five letters";
  EXPECT_EQ("feed", nearestTo("fed", kWords));
  EXPECT_EQ("tables", nearestTo("tables", kWords));
}

TEST(Nearest, IsNoneThatIsFarOff) {
  EXPECT_EQ("", nearestTo("fxx", kWords));
  EXPECT_EQ("", nearestTo("--serv", kWords)) << "three letters of six";
  EXPECT_EQ("", nearestTo("", kWords));
  EXPECT_EQ("", nearestTo("feed", {}));
  EXPECT_EQ("", nearestTo(std::string(100'000, 'x'), kWords));
}

TEST(Nearest, IsTheFirstOfSeveralThatAreEquallyNear) {
  EXPECT_EQ("bat", nearestTo("cat", {"bat", "rat"}));
  EXPECT_EQ("cat", nearestTo("cat", {"bat", "cat"}));
}

}  // namespace
}  // namespace tevra::tools
