#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::Pair;

using VersionFile = thrift::in_module::EITTableVersionStoreFile;

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

TEST_F(DaemonEit, BeforeAnyTotIsOnlyStored) {
  EXPECT_THAT(daemon_.linesOf([&] {
    client_->setEITPresentFollowing(eitMap({eit(kTelevision, kPresentFollowing, kEventStart)}));
  }),
              ElementsAre("7 setEITPresentFollowing", "7 Guardo EIT pf en DB local!",
                          "7 setInputEITpf: SID [0x0064] tid [0x4e] v[17] nevents [1]"));
  EXPECT_THAT(daemon_.linesOf(
                  [&] { client_->setEITSchedule(eitMap({eit(kRadio, kSchedule, kEventStart)})); }),
              ElementsAre("7 setEITSchedule", "7 Guardo EIT sch en DB local!",
                          "7 setInputEITsch: SID [0x00c8] tid [0x50] v[17] nevents [1]"));
  client_->setSDT(multiplexSdt());
  ASSERT_TRUE(mainTask_.waitFor(2));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifySDT"));
}

TEST_F(DaemonEit, TheFirstTotRestampsWhatIsStored) {
  client_->setEITPresentFollowing(eitMap({eit(kTelevision, kPresentFollowing, kEventStart)}));
  client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));
  EXPECT_THAT(daemon_.linesOf([&] { client_->setTOT(totAt(now())); }),
              ElementsAre("7 Guardo TOT en DB local!",  //
                          "7 Guardo TOT en DB local!",
                          "7 [getConflictFreeEITpf] Ready to apply offset [yes] [0]",
                          "7 No previous EIT restamped [0x0064/0x4e] version 0 selected",
                          "7 restampEIT: SID [0x0064] tid [0x4e] v[17] nevents [1]",
                          "7 MainTask notified from SI (new EIT pf)!!!",
                          "7 [getConflictFreeEITsch] Ready to apply offset [yes] [0]",
                          "7 No previous EIT restamped [0x0064/0x50] version 0 selected",
                          "7 restampEIT: SID [0x0064] tid [0x50] v[17] nevents [1]",
                          "7 MainTask notified from SI (new EITsch)!!!",
                          "7 [MPTS0] has to save the new tables in a file",
                          "7 MainTask notified from SI (new TOT)!!!"));
  ASSERT_TRUE(mainTask_.waitFor(4));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyEITPresentFollowing",
                                               "notifyEITSchedule", "notifyTOT"));
}

TEST_F(DaemonEit, ATotWithoutEitsIsOnlyNotified) {
  const TOT tot = totAt(now());
  EXPECT_THAT(daemon_.linesOf([&] { client_->setTOT(tot); }),
              ElementsAre("7 Guardo TOT en DB local!", "7 Guardo TOT en DB local!",
                          "7 MainTask notified from SI (new TOT)!!!"));
  ASSERT_TRUE(mainTask_.waitFor(2));
  EXPECT_EQ(mainTask_.received()[1].tot, tot);
  EXPECT_FALSE(std::filesystem::exists(root_ / eitVersionFile(0)));
}

TEST_F(DaemonEit, AfterATotIsRestampedNotifiedAndSaved) {
  client_->setTOT(totAt(now()));
  EXPECT_THAT(daemon_.linesOf([&] {
    client_->setEITPresentFollowing(eitMap({eit(kTelevision, kPresentFollowing, kEventStart)}));
  }),
              ElementsAre("7 setEITPresentFollowing", "7 Guardo EIT pf en DB local!",
                          "7 setInputEITpf: SID [0x0064] tid [0x4e] v[17] nevents [1]",
                          "7 [getConflictFreeEITpf] Ready to apply offset [yes] [0]",
                          "7 No previous EIT restamped [0x0064/0x4e] version 0 selected",
                          "7 restampEIT: SID [0x0064] tid [0x4e] v[17] nevents [1]",
                          "7 MainTask notified from SI (new EIT pf)!!!",
                          "7 [MPTS0] has to save the new tables in a file"));
  EIT expected = eit(kTelevision, kPresentFollowing, kEventStart);
  expected.version = 1;
  EXPECT_THAT(notifiedEits(3), ElementsAre(expected));
  const auto file = readRecord<VersionFile>(root_ / eitVersionFile(0));
  ASSERT_EQ(file.versionStores.size(), 1U);
  EXPECT_EQ(file.versionStores.at(kTelevision).restartCounter, 0);
  EXPECT_THAT(file.versionStores.at(kTelevision).versions, ElementsAre(Pair(kPresentFollowing, 1)));
}

TEST_F(DaemonEit, IsNotifiedInOrderOfServiceAndTable) {
  client_->setTOT(totAt(now()));
  client_->setEITSchedule(eitMap({eit(300, 0x51, 0), eit(100, 0x5F, 0), eit(300, 0x50, 0),
                                  eit(200, 0x50, 0), eit(100, 0x50, 0)}));
  std::vector<std::pair<int32_t, int32_t>> order;
  for (const EIT& table : notifiedEits(7)) {
    order.emplace_back(table.serviceId, table.tableId);
  }
  EXPECT_THAT(order, ElementsAre(Pair(100, 0x50), Pair(100, 0x5F), Pair(200, 0x50), Pair(300, 0x50),
                                 Pair(300, 0x51)));
}

TEST_F(DaemonEit, VersionsRunFrom1To31AndOnFrom0) {
  client_->setTOT(totAt(now()));
  for (int call = 0; call < 34; ++call) {
    client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, 0)}));
  }
  const std::vector<EIT> eits = notifiedEits(36);
  ASSERT_EQ(eits.size(), 34U);
  for (size_t call = 0; call < eits.size(); ++call) {
    EXPECT_EQ(eits[call].version, static_cast<int32_t>((call + 1) % 32));
  }
}

TEST_F(DaemonEit, EventsMoveByTheOffsetThatIsTold) {
  client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));
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

TEST_F(DaemonEit, AnOffsetThatIsSteadyRestampsNothing) {
  client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));
  client_->setTOT(totAt(now() + kHour));
  EXPECT_THAT(daemon_.linesOf([&] { client_->setTOT(totAt(now() + kHour + 30)); }),
              ElementsAre("7 Guardo TOT en DB local!", "7 Guardo TOT en DB local!",
                          "7 MainTask notified from SI (new TOT)!!!"));
}

TEST_F(DaemonEit, AResetWaitsForTheNextTotAndKeepsTheVersions) {
  client_->setTOT(totAt(now() + kHour));
  client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));
  EXPECT_TRUE(client_->sendCmd(0));
  client_->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));  // only stored
  const Lines lines = daemon_.linesOf([&] { client_->setTOT(totAt(now())); });
  EXPECT_EQ(timesIn(lines, "7 [getConflictFreeEITsch] Ready to apply offset [yes] [0]"), 1);
  EXPECT_THAT(upToLevel(lines, '4'), IsEmpty());  // the offset was 0 already
  const std::vector<EIT> eits = notifiedEits(5);
  ASSERT_EQ(eits.size(), 2U);
  EXPECT_EQ(eits[0].version, 1);
  EXPECT_EQ(eits[1].version, 2);
  EXPECT_EQ(eits[1].events[0].startTime, dvbTime(kEventStart));
}

TEST_F(DaemonEit, WithAnUnsetClockIsNeverRestamped) {
  DaemonSetup setup;
  setup.environment = {{"TEVRA_SYSTEM_TIME_SET", "0"}};
  daemon_.restart(setup);
  ControlClient client;
  client->setEITSchedule(eitMap({eit(kTelevision, kSchedule, kEventStart)}));
  EXPECT_THAT(daemon_.linesOf([&] { client->setTOT(totAt(now() + kHour)); }),
              ElementsAre("7 Guardo TOT en DB local!", "7 Guardo TOT en DB local!",
                          "4 System time not set. Time offset not calculated!",
                          "7 MainTask notified from SI (new TOT)!!!"));
  EXPECT_THAT(daemon_.linesOf([&] {
    client->setEITPresentFollowing(eitMap({eit(kTelevision, kPresentFollowing, 0)}));
  }),
              ElementsAre("7 setEITPresentFollowing", "7 Guardo EIT pf en DB local!",
                          "7 setInputEITpf: SID [0x0064] tid [0x4e] v[17] nevents [1]"));
  EXPECT_THAT(notifiedEits(3), IsEmpty());
}

TEST_F(DaemonEit, ThatNoLongerComesIsRestampedAllTheSame) {
  client_->setTOT(totAt(now()));
  client_->setEITSchedule(eitMap({eit(100, 0x50, kEventStart)}));
  client_->setEITSchedule(eitMap({eit(200, 0x50, kEventStart)}));
  client_->setTOT(totAt(now() + kHour));
  const std::vector<EIT> eits = notifiedEits(7);
  ASSERT_EQ(eits.size(), 4U);
  EXPECT_EQ(eits[2].serviceId, 100);
  EXPECT_EQ(eits[3].serviceId, 200);
}

}  // namespace
}  // namespace tevra::test
