#include "store/kept_packets.h"

#include <gtest/gtest.h>

namespace tevra::test {
namespace {

TEST(KeptPacketsTest, AreThoseOfTheirVersionFlagAndPidAlone) {
  const KeptPackets kept({"one", "two"}, 5, true, 0x100);
  EXPECT_TRUE(kept.areOf(5, true, 0x100));
  EXPECT_FALSE(kept.areOf(6, true, 0x100));
  EXPECT_FALSE(kept.areOf(5, false, 0x100));
  EXPECT_FALSE(kept.areOf(5, true, 0x101));
  EXPECT_EQ(kept.packets().size(), 2U);
}

TEST(KeptPacketsTest, AreNoneBeforeAnyWereMade) {
  EXPECT_FALSE(KeptPackets().areOf(0, false, 0));
}

}  // namespace
}  // namespace tevra::test
