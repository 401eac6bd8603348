#include "tools/text/time_stamp.h"

#include <cstdlib>
#include <ctime>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;

/** A time zone, while it lives. */
class LocalZone {
 public:
  explicit LocalZone(const char* name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~LocalZone() {
    unsetenv("TZ");
    tzset();
  }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;
};

system_clock::time_point at(int64_t count) {
  return system_clock::time_point(milliseconds(count));
}

TEST(TimeStamp, HasMillisecondsAndTheZone) {
  const LocalZone zone("XST-1");  // an hour ahead of UTC, as POSIX writes it
  EXPECT_EQ("2026-11-21 20:41:07.123", timeStamp(at(1795290067123), Zone::kLocal));
  EXPECT_EQ("2026-11-21 19:41:07.123", timeStamp(at(1795290067123), Zone::kUtc));
  EXPECT_EQ("2026-11-21T20:41:07.123+01:00", isoTimeStamp(at(1795290067123), Zone::kLocal));
  EXPECT_EQ("2026-11-21T19:41:07.123Z", isoTimeStamp(at(1795290067123), Zone::kUtc));
}

TEST(TimeStamp, HasZonesWestOfGreenwichAndHalfHours) {
  const LocalZone zone("XST3:30");
  EXPECT_EQ("2026-11-21T16:11:07.000-03:30", isoTimeStamp(at(1795290067000), Zone::kLocal));
}

TEST(TimeStamp, FillsUpWithZeros) {
  EXPECT_EQ("1970-01-01 00:00:00.007", timeStamp(at(7), Zone::kUtc));
  EXPECT_EQ("1969-12-31 23:59:59.999", timeStamp(at(-1), Zone::kUtc));
}

}  // namespace
}  // namespace tevra::tools
