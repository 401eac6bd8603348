#include "tools/changes/matching.h"

#include <string>

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

MatchingPass byCharacter(const std::string& from, const std::string& to) {
  const auto at = [](const std::string& text) {
    return [&text](size_t place) { return std::string(1, text[place]); };
  };
  return {at(from), at(to)};
}

Matching matchCharacters(const std::string& from, const std::string& to) {
  return match(from.size(), to.size(), {byCharacter(from, to)});
}

TEST(Matching, OfNothingIsNothing) {
  const Matching matching = matchCharacters("", "");
  EXPECT_THAT(matching.pairs, IsEmpty());
  EXPECT_THAT(matching.removed, IsEmpty());
  EXPECT_THAT(matching.added, IsEmpty());
  EXPECT_FALSE(matching.isReordered);
}

TEST(Matching, SaysWhatIsInOneListAlone) {
  const Matching matching = matchCharacters("abc", "bd");
  EXPECT_THAT(matching.pairs, ElementsAre(Pair(1, 0)));
  EXPECT_THAT(matching.removed, ElementsAre(0, 2));
  EXPECT_THAT(matching.added, ElementsAre(1));
  EXPECT_FALSE(matching.isReordered);
}

TEST(Matching, NoticesAnotherOrder) {
  EXPECT_TRUE(matchCharacters("abc", "bca").isReordered);
  EXPECT_FALSE(matchCharacters("abc", "xabyc").isReordered);
}

TEST(Matching, PairsEqualElementsInTheirOrder) {
  const Matching matching = matchCharacters("aab", "aaa");
  EXPECT_THAT(matching.pairs, ElementsAre(Pair(0, 0), Pair(1, 1)));
  EXPECT_THAT(matching.removed, ElementsAre(2));
  EXPECT_THAT(matching.added, ElementsAre(2));
}

TEST(Matching, ALaterPassPairsWhatIsLeft) {
  const std::string from = "ax";
  const std::string to = "ay";
  const auto same = [](size_t) { return std::string("any"); };
  const Matching matching = match(2, 2, {byCharacter(from, to), {same, same}});
  EXPECT_THAT(matching.pairs, ElementsAre(Pair(0, 0), Pair(1, 1)));
}

}  // namespace
}  // namespace tevra::tools
