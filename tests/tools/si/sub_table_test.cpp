#include "tools/si/sub_table.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;

Section parsed(const Bytes& bytes) {
  return Section::parse(bytes.data(), bytes.size()).value();
}

Section pat(int version, int number, int lastNumber, int transportStreamId = 1) {
  return parsed(test::makePat(transportStreamId, version, {}, number, lastNumber));
}

Section eit(int version, int number, int lastNumber, int segmentLast, int tableId = 0x50) {
  return parsed(test::makeEit({tableId, 101, version, number, lastNumber}, segmentLast, {}));
}

std::vector<int> numbersOf(const std::vector<Section>& sections) {
  std::vector<int> numbers;
  for (const Section& section : sections) {
    numbers.push_back(section.number);
  }
  return numbers;
}

TEST(SubTable, IsCompleteOnceItsSectionsAreThereInAnyOrder) {
  SubTable table;
  EXPECT_TRUE(table.add(pat(3, 2, 2)).empty());
  EXPECT_TRUE(table.add(pat(3, 0, 2)).empty());
  EXPECT_EQ(2U, table.pendingSections());
  EXPECT_EQ((std::vector<int>{0, 1, 2}), numbersOf(table.add(pat(3, 1, 2))));
  EXPECT_EQ(0U, table.pendingSections());
}

TEST(SubTable, IgnoresRepetitions) {
  SubTable table;
  EXPECT_EQ(1U, table.add(pat(3, 0, 0)).size());
  EXPECT_TRUE(table.add(pat(3, 0, 0)).empty());
  EXPECT_EQ(1U, table.add(pat(4, 0, 0)).size());
  EXPECT_TRUE(table.add(pat(4, 0, 0)).empty());
  EXPECT_EQ(1U, table.add(pat(3, 0, 0)).size()) << "an old version that returns is new";
}

TEST(SubTable, DoesNotMixVersions) {
  SubTable table;
  EXPECT_TRUE(table.add(pat(3, 0, 1)).empty());
  EXPECT_TRUE(table.add(pat(4, 1, 1)).empty());
  EXPECT_TRUE(table.add(pat(3, 1, 1)).empty());
  EXPECT_EQ((std::vector<int>{0, 1}), numbersOf(table.add(pat(3, 0, 1))));
}

TEST(SubTable, ForgetsAVersionThatDidNotComeToStay) {
  SubTable table;
  EXPECT_EQ(1U, table.add(pat(3, 0, 0)).size());
  EXPECT_TRUE(table.add(pat(4, 0, 1)).empty());
  EXPECT_TRUE(table.add(pat(3, 0, 0)).empty());
  EXPECT_EQ(0U, table.pendingSections());
  EXPECT_TRUE(table.add(pat(4, 1, 1)).empty());
}

TEST(SubTable, StartsAgainWhenTheNumberOfSectionsChanges) {
  SubTable table;
  EXPECT_TRUE(table.add(pat(3, 0, 2)).empty());
  EXPECT_TRUE(table.add(pat(3, 1, 1)).empty());
  EXPECT_EQ((std::vector<int>{0, 1}), numbersOf(table.add(pat(3, 0, 1))));
}

TEST(SubTable, AnotherExtensionIsAnotherVersion) {
  SubTable table;
  EXPECT_EQ(1U, table.add(pat(3, 0, 0, 1)).size());
  EXPECT_EQ(1U, table.add(pat(3, 0, 0, 2)).size());
}

TEST(SubTable, IgnoresASectionBehindTheLast) {
  SubTable table;
  EXPECT_TRUE(table.add(pat(3, 5, 0)).empty());
  EXPECT_EQ(0U, table.pendingSections());
}

TEST(SubTable, ScheduleIsCompleteDespiteGapsBetweenItsSegments) {
  SubTable table;
  EXPECT_TRUE(table.add(eit(1, 24, 24, 24)).empty());
  EXPECT_TRUE(table.add(eit(1, 0, 24, 1)).empty());
  EXPECT_TRUE(table.add(eit(1, 8, 24, 8)).empty());
  EXPECT_TRUE(table.add(eit(1, 16, 24, 17)).empty());
  EXPECT_TRUE(table.add(eit(1, 17, 24, 17)).empty());
  EXPECT_EQ((std::vector<int>{0, 1, 8, 16, 17, 24}), numbersOf(table.add(eit(1, 1, 24, 1))));
  EXPECT_TRUE(table.add(eit(1, 8, 24, 8)).empty()) << "a repetition";
}

TEST(SubTable, ScheduleWaitsForEverySegment) {
  SubTable table;
  EXPECT_TRUE(table.add(eit(1, 0, 17, 0)).empty());
  EXPECT_TRUE(table.add(eit(1, 16, 17, 17)).empty());
  EXPECT_TRUE(table.add(eit(1, 17, 17, 17)).empty()) << "the segment from 8 on is missing";
  EXPECT_EQ(4U, table.add(eit(1, 8, 17, 8)).size());
}

TEST(SubTable, SegmentEndFromOutsideTheSegmentMeansAFullSegment) {
  for (const int announced : {0, 30, 255}) {
    SubTable table;
    std::vector<Section> complete;
    for (int number = 0; number < 16; ++number) {
      EXPECT_TRUE(complete.empty()) << announced << ": before section " << number;
      complete = table.add(eit(1, number, 15, number < 8 ? 7 : announced));
    }
    EXPECT_EQ(16U, complete.size()) << announced;
  }
}

TEST(SubTable, PresentFollowingNeedsBothItsSections) {
  SubTable table;
  EXPECT_TRUE(table.add(eit(1, 1, 1, 1, 0x4E)).empty());
  EXPECT_EQ((std::vector<int>{0, 1}), numbersOf(table.add(eit(1, 0, 1, 1, 0x4E))));
}

TEST(SubTable, HoldsTheLargestTable) {
  SubTable table;
  std::vector<Section> complete;
  for (int number = 0; number < 256; ++number) {
    ASSERT_TRUE(complete.empty());
    complete = table.add(pat(1, 255 - number, 255));
  }
  EXPECT_EQ(256U, complete.size());
}

}  // namespace
}  // namespace tevra::tools
