#include "tools/changes/matching.h"

#include <string>

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

/** An element by its name, and where it stands. */
using Element = std::pair<char, size_t>;

std::vector<Element> elementsOf(const std::string& names) {
  std::vector<Element> elements;
  for (const char name : names) {
    elements.emplace_back(name, elements.size());
  }
  return elements;
}

char nameOf(const Element& element) {
  return element.first;
}

/** "-0 -2 1=0 +1": gone, in both, new, by their places; "!" behind it where they are reordered. */
template <class... KeyOf>
std::string matched(const std::string& from, const std::string& to, KeyOf... keyOf) {
  const std::vector<Element> before = elementsOf(from);
  const std::vector<Element> after = elementsOf(to);
  const Matching<Element> matching = match(before, after, keyOf...);
  std::string text;
  for (const Element* element : matching.removed) {
    text += "-" + std::to_string(element->second) + " ";
  }
  for (const auto& [was, is] : matching.elements) {
    text += (was == nullptr ? "+" : std::to_string(was->second) + "=") +
            std::to_string(is->second) + " ";
  }
  return text + (matching.isReordered ? "!" : "");
}

TEST(Matching, SaysWhatIsInOneListAlone) {
  EXPECT_EQ("", matched("", "", nameOf));
  EXPECT_EQ("-0 -2 1=0 +1 ", matched("abc", "bd", nameOf));
}

TEST(Matching, NoticesAnotherOrder) {
  EXPECT_EQ("1=0 2=1 0=2 !", matched("abc", "bca", nameOf));
  EXPECT_EQ("+0 0=1 1=2 +3 2=4 ", matched("abc", "xabyc", nameOf));
}

TEST(Matching, PairsEqualElementsInTheirOrder) {
  EXPECT_EQ("-2 0=0 1=1 +2 ", matched("aab", "aaa", nameOf));
}

TEST(Matching, ALaterPassPairsWhatIsLeft) {
  const auto any = [](const Element&) { return 0; };
  EXPECT_EQ("0=0 1=1 ", matched("ax", "ay", nameOf, any));
}

}  // namespace
}  // namespace tevra::tools
