#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

constexpr std::time_t kHour = 3600;
constexpr std::time_t kEventStart = 1700000000;
constexpr int32_t kPresentFollowing = 0x4E;
constexpr int32_t kSchedule = 0x50;

std::time_t now() {
  return std::time(nullptr);
}

class DaemonEit : public testing::Test {
 protected:
  /** The EITs notified so far, of either kind. */
  std::vector<EIT> notifiedEits(size_t notifications) {
    std::vector<EIT> eits;
    EXPECT_TRUE(mainTask_.waitFor(notifications));
    for (const auto& notification : mainTask_.received()) {
      if (notification.method.rfind("notifyEIT", 0) == 0) {
        eits.push_back(notification.eit);
      }
    }
    return eits;
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
  ControlClient client_;
};

/** The offset that the daemon says it has taken; 0 when it says nothing. */
long long offsetIn(const Lines& lines) {
  long long offset = 0;
  for (const std::string& line : lines) {
    (void)std::sscanf(line.c_str(), "4 DVB to System Time offset set to [%lld] secs", &offset);
  }
  return offset;
}

TEST_F(DaemonEit, EventsMoveByTheOffsetThatIsTold) {
  client_->setEITSchedule(mapOf({eit(kTelevision, kSchedule, kEventStart)}));
  const long long ahead = offsetIn(daemon_.linesOf([&] { client_->setTOT(totAt(now() + kHour)); }));
  EXPECT_THAT(ahead, AllOf(Ge(kHour - 10), Le(kHour)));
  const long long behind =
      offsetIn(daemon_.linesOf([&] { client_->setTOT(totAt(now() - 48 * kHour)); }));
  EXPECT_THAT(behind, AllOf(Ge(-48 * kHour - 10), Le(-48 * kHour)));
  const std::vector<EIT> eits = notifiedEits(5);
  ASSERT_EQ(eits.size(), 2U);
  EXPECT_EQ(eits[0].events[0].startTime, dvbTime(kEventStart - ahead));
  EXPECT_EQ(eits[0].events[0].duration, 0x003000);
  EXPECT_EQ(eits[0].version, 1);
  EXPECT_EQ(eits[1].events[0].startTime, dvbTime(kEventStart - behind));
  EXPECT_EQ(eits[1].version, 2);
}

TEST_F(DaemonEit, WithAnUnsetClockIsNeverRestamped) {
  DaemonSetup setup;
  setup.environment = {{"TEVRA_SYSTEM_TIME_SET", "0"}};
  daemon_.restart(setup);
  ControlClient client;
  client->setEITSchedule(mapOf({eit(kTelevision, kSchedule, kEventStart)}));
  EXPECT_THAT(daemon_.linesOf([&] { client->setTOT(totAt(now() + kHour)); }),
              ElementsAre("7 Guardo TOT en DB local!", "7 Guardo TOT en DB local!",
                          "4 System time not set. Time offset not calculated!",
                          "7 MainTask notified from SI (new TOT)!!!"));
  EXPECT_THAT(daemon_.linesOf([&] {
    client->setEITPresentFollowing(mapOf({eit(kTelevision, kPresentFollowing, 0)}));
  }),
              ElementsAre("7 setEITPresentFollowing", "7 Guardo EIT pf en DB local!",
                          "7 setInputEITpf: SID [0x0064] tid [0x4e] v[17] nevents [1]"));
  EXPECT_THAT(notifiedEits(3), IsEmpty());
}

}  // namespace
}  // namespace tevra::test
