#include "platform/host/system_time.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "platform/module_utils.h"
#include "tests/platform/scoped_environment.h"
#include "tests/platform/system_clock.h"

namespace {

using tevra::host::dvbTimeFromUnix;
using tevra::test::ScopedEnvironment;
using tevra::test::StoppedClock;

constexpr int64_t kDay = 86400;
constexpr int64_t kModifiedJulianDateZero = -40587 * kDay;

TEST(DvbTime, IsThatOfTheStandardsOwnExample) {
  // EN 300 468, start_time: 93/10/13 12:45:00.
  EXPECT_EQ(dvbTimeFromUnix(750516300), 0xC079124500U);
}

TEST(DvbTime, OfTheEpochIsMidnightOfDay40587) {
  EXPECT_EQ(dvbTimeFromUnix(0), 0x9E8B000000U);
}

TEST(DvbTime, BeforeTheEpochCountsBackwards) {
  EXPECT_EQ(dvbTimeFromUnix(-1), 0x9E8A235959U);
  EXPECT_EQ(dvbTimeFromUnix(-kDay), 0x9E8A000000U);
  EXPECT_EQ(dvbTimeFromUnix(-kDay - 1), 0x9E89235959U);
}

TEST(DvbTime, PassesMidnight) {
  EXPECT_EQ(dvbTimeFromUnix(kDay - 1), 0x9E8B235959U);
  EXPECT_EQ(dvbTimeFromUnix(kDay), 0x9E8C000000U);
}

TEST(DvbTime, PassesTheEndOf32BitSeconds) {
  EXPECT_EQ(dvbTimeFromUnix(2147483647), 0xFFA2031407U);
  EXPECT_EQ(dvbTimeFromUnix(2147483648), 0xFFA2031408U);
}

TEST(DvbTime, PassesTheEndOf16BitDays) {
  EXPECT_EQ(dvbTimeFromUnix((65536 - 40587) * kDay - 1), 0xFFFF235959U);
  EXPECT_EQ(dvbTimeFromUnix((65536 - 40587) * kDay), 0x10000000000U);
}

TEST(DvbTime, BeforeDayZeroIsZero) {
  EXPECT_EQ(dvbTimeFromUnix(kModifiedJulianDateZero + 1), 0x000001U);
  EXPECT_EQ(dvbTimeFromUnix(kModifiedJulianDateZero), 0U);
  EXPECT_EQ(dvbTimeFromUnix(kModifiedJulianDateZero - 1), 0U);
  EXPECT_EQ(dvbTimeFromUnix(std::numeric_limits<int64_t>::min()), 0U);
}

TEST(DvbTime, NowIsThatOfTheSystemClock) {
  const uint64_t before = dvbTimeFromUnix(std::time(nullptr));
  const uint64_t now = GetUTCTime();
  const uint64_t after = dvbTimeFromUnix(std::time(nullptr));
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(DvbTime, NowFollowsTheSystemClockBeyond2038AndBeyondUnsigned32BitSeconds) {
  const std::map<int64_t, uint64_t> times = {{2147483647, 0xFFA2031407U},
                                             {2147483648, 0xFFA2031408U},
                                             {4294967295, 0x160B9062815U},
                                             {4294967296, 0x160B9062816U}};
  for (const auto& [clock, time] : times) {
    const StoppedClock stopped(clock);
    EXPECT_EQ(GetUTCTime(), time) << clock;
  }
}

TEST(SystemTime, IsSetUnlessTheVariableIsZeroAtTheTime) {
  const std::vector<std::pair<const char*, int>> results = {
      {nullptr, 0}, {"1", 0}, {"0", 1}, {"no", 0}, {"0", 1}};
  for (const auto& [value, result] : results) {
    const ScopedEnvironment environment("TEVRA_SYSTEM_TIME_SET", value);
    EXPECT_EQ(IsSystemTimeSet(), result);
  }
}

}  // namespace
