#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/control/handler_eit_fixture.h"

namespace tevra::test {
namespace {

using fake::logged;
using fake::Notification;
using fake::timesLogged;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kSaving = "[MPTS0] has to save the new tables in a file";

TEST_F(HandlerEIT, PresentFollowingBeforeAnyTOTIsOnlyStored) {
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 9, {0})}));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "setEITPresentFollowing"), Pair(7, "Guardo EIT pf en DB local!"),
                          Pair(7,
                               "setInputEITpf: SID [0x0001] tid [0x4e] v[9] nevents "
                               "[1]")));
  EXPECT_FALSE(std::filesystem::exists(eitVersionPath()));
}

TEST_F(HandlerEIT, ScheduleBeforeAnyTOTIsOnlyStored) {
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 9, {0})}));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "setEITSchedule"), Pair(7, "Guardo EIT sch en DB local!"),
                          Pair(7,
                               "setInputEITsch: SID [0x0001] tid [0x50] v[9] nevents "
                               "[1]")));
  EXPECT_FALSE(std::filesystem::exists(eitVersionPath()));
}

TEST_F(HandlerEIT, PresentFollowingAfterATOTIsRestampedNotifiedAndSaved) {
  setSteadyTOT();
  fake::clearLog();
  handler_->setEITPresentFollowing(mapOf({makeEit(0x1234, 0x4E, 9, {0, 1})}));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "setEITPresentFollowing"), Pair(7, "Guardo EIT pf en DB local!"),
                          Pair(7, "setInputEITpf: SID [0x1234] tid [0x4e] v[9] nevents [2]"),
                          Pair(7, "[getConflictFreeEITpf] Ready to apply offset [yes] [0]"),
                          Pair(7, "No previous EIT restamped [0x1234/0x4e] version 0 selected"),
                          Pair(7, "restampEIT: SID [0x1234] tid [0x4e] v[9] nevents [2]"),
                          Pair(3, kRefused), Pair(7, kSaving)));
  EXPECT_EQ(1, savedVersion(0x1234, 0x4E));
}

TEST_F(HandlerEIT, ScheduleAfterATOTIsRestampedNotifiedAndSaved) {
  setSteadyTOT();
  fake::clearLog();
  handler_->setEITSchedule(mapOf({makeEit(1, 0x5F, 9, {})}));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "setEITSchedule"), Pair(7, "Guardo EIT sch en DB local!"),
                          Pair(7, "setInputEITsch: SID [0x0001] tid [0x5f] v[9] nevents [0]"),
                          Pair(7, "[getConflictFreeEITsch] Ready to apply offset [yes] [0]"),
                          Pair(7, "No previous EIT restamped [0x0001/0x5f] version 0 selected"),
                          Pair(7, "restampEIT: SID [0x0001] tid [0x5f] v[9] nevents [0]"),
                          Pair(3, kRefused), Pair(7, kSaving)));
}

TEST_F(NotifiedEIT, TOTRestampsPresentFollowingThenScheduleThenSavesThenNotifiesItself) {
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 7, {})}));
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 8, {})}));
  fake::clearLog();
  setTOT(12, 0, 0);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo TOT en DB local!"), Pair(7, "Guardo TOT en DB local!"),
                          Pair(4, "DVB to System Time offset set to [60] secs"),
                          Pair(7, "[getConflictFreeEITpf] Ready to apply offset [yes] [60]"),
                          Pair(7, "No previous EIT restamped [0x0001/0x4e] version 0 selected"),
                          Pair(7, "restampEIT: SID [0x0001] tid [0x4e] v[8] nevents [0]"),
                          Pair(7, "MainTask notified from SI (new EIT pf)!!!"),
                          Pair(7, "[getConflictFreeEITsch] Ready to apply offset [yes] [60]"),
                          Pair(7, "No previous EIT restamped [0x0001/0x50] version 0 selected"),
                          Pair(7, "restampEIT: SID [0x0001] tid [0x50] v[7] nevents [0]"),
                          Pair(7, "MainTask notified from SI (new EITsch)!!!"), Pair(7, kSaving),
                          Pair(7, "MainTask notified from SI (new TOT)!!!")));
  ASSERT_TRUE(mainTask_.waitFor(3));
  EXPECT_THAT(mainTask_.methods(),
              ElementsAre("notifyEITPresentFollowing", "notifyEITSchedule", "notifyTOT"));
  EXPECT_EQ(1, savedVersion(1, 0x4E));
  EXPECT_EQ(1, savedVersion(1, 0x50));
}

TEST_F(HandlerEIT, TOTWithOnlyOneKindStoredRestampsThatKind) {
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 7, {})}));
  setSteadyTOT();
  EXPECT_TRUE(logged(7, "[getConflictFreeEITsch] Ready to apply offset [yes] [0]"));
  EXPECT_FALSE(logged(7, "[getConflictFreeEITpf] Ready to apply offset [yes] [0]"));
  EXPECT_EQ(1, timesLogged(7, kSaving));
}

TEST_F(NotifiedEIT, EventsMoveByTheOffsetAndKeepEverythingElse) {
  setTOT(12, 0, 0);
  const EIT in = makeEit(1, 0x50, 9, {dvbTime(kMjd, 12, 30, 0), dvbTime(kMjd, 0, 0, 30)});
  handler_->setEITSchedule(mapOf({in}));
  const EIT expected =
      makeEit(1, 0x50, 1, {dvbTime(kMjd, 12, 29, 0), dvbTime(kMjd - 1, 23, 59, 30)});
  const std::vector<Notification> all = notified(2);
  EXPECT_EQ("notifyEITSchedule", all[1].method);
  EXPECT_EQ(expected, all[1].eit);
}

TEST_F(NotifiedEIT, ATOTMovesTheEventsAsReceivedAndNotTheMovedOnes) {
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {dvbTime(kMjd, 12, 30, 0)})}));
  setTOT(12, 0, 0);
  setTOT(12, 1, 0);
  const std::vector<Notification> all = notified(4);
  EXPECT_EQ(makeEit(1, 0x4E, 1, {dvbTime(kMjd, 12, 29, 0)}), all[0].eit);
  EXPECT_EQ(makeEit(1, 0x4E, 2, {dvbTime(kMjd, 12, 28, 0)}), all[2].eit);
}

TEST_F(NotifiedEIT, OneNotificationPerEITInAscendingServiceThenTable) {
  setSteadyTOT();
  handler_->setEITSchedule(
      mapOf({makeEit(300, 0x50, 0, {}), makeEit(2, 0x5F, 0, {}), makeEit(2, 0x50, 0, {}),
             makeEit(65535, 0x51, 0, {}), makeEit(2, 0x51, 0, {})}));
  std::vector<std::pair<int32_t, int32_t>> order;
  for (const Notification& notification : notified(6)) {
    if (notification.method == "notifyEITSchedule") {
      order.emplace_back(notification.eit.serviceId, notification.eit.tableId);
    }
  }
  EXPECT_THAT(order, ElementsAre(Pair(2, 0x50), Pair(2, 0x51), Pair(2, 0x5F), Pair(300, 0x50),
                                 Pair(65535, 0x51)));
  EXPECT_EQ(1, timesLogged(7, kSaving));
}

TEST_F(NotifiedEIT, SetterRestampsOnlyWhatItBrings) {
  setSteadyTOT();
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 0, {}), makeEit(2, 0x50, 0, {})}));
  handler_->setEITSchedule(mapOf({makeEit(2, 0x50, 0, {})}));
  const std::vector<Notification> all = notified(4);
  EXPECT_EQ(4U, all.size());
  EXPECT_EQ(2, all[3].eit.serviceId);
  EXPECT_EQ(2, all[3].eit.version);
  EXPECT_EQ(1, savedVersion(1, 0x50));
}

TEST_F(NotifiedEIT, TOTRestampsEverythingEverStored) {
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 1, {}), makeEit(1, 0x51, 1, {})}));
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 2, {0})}));
  setSteadyTOT();
  const std::vector<Notification> all = notified(3);
  EXPECT_THAT(mainTask_.methods(),
              ElementsAre("notifyEITSchedule", "notifyEITSchedule", "notifyTOT"));
  EXPECT_EQ(1U, all[0].eit.events.size());  // the newer 0x50
  EXPECT_EQ(0x51, all[1].eit.tableId);
}

TEST_F(NotifiedEIT, KeysOfTheMapAndNotTheIdsInsideChooseTheVersion) {
  setSteadyTOT();
  EITMap eits;
  eits[10][0x60] = makeEit(1, 0x50, 0, {});
  handler_->setEITSchedule(eits);
  const Notification last = notified(2)[1];
  EXPECT_EQ(1, last.eit.serviceId);
  EXPECT_EQ(0x50, last.eit.tableId);
  EXPECT_EQ(1, savedVersion(10, 0x60));
  EXPECT_EQ(0U, savedEITVersions().count(1));
  EXPECT_TRUE(logged(7, "No previous EIT restamped [0x000a/0x60] version 0 selected"));
  EXPECT_TRUE(logged(7, "restampEIT: SID [0x0001] tid [0x50] v[0] nevents [0]"));
}

TEST_F(NotifiedEIT, EmptyMapIsSavedAndNotifiesNothing) {
  setSteadyTOT();
  fake::clearLog();
  handler_->setEITPresentFollowing({});
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "setEITPresentFollowing"), Pair(7, "Guardo EIT pf en DB local!"),
                          Pair(7, "[getConflictFreeEITpf] Ready to apply offset [yes] [0]"),
                          Pair(7, kSaving)));
  EXPECT_THAT(savedEITVersions(), IsEmpty());
}

TEST_F(HandlerEIT, TOTWithNothingStoredSavesNothing) {
  setTOT(12, 0, 0);
  EXPECT_FALSE(logged(7, kSaving));
  EXPECT_FALSE(std::filesystem::exists(eitVersionPath()));
}

TEST_F(HandlerEIT, VersionsContinueInEveryProcessInWhichTheServiceIsBroadcast) {
  for (int start = 1; start <= 7; ++start) {
    restart();
    setSteadyTOT();
    handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
    EXPECT_EQ(start, savedVersion(1, 0x4E));
    EXPECT_EQ(start == 1, logged(7, "No previous EIT restamped [0x0001/0x4e] version 0 selected"));
  }
}

TEST_F(HandlerEIT, VersionsSurviveAReset) {
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  EXPECT_TRUE(handler_->sendCmd(0));
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  EXPECT_EQ(2, savedVersion(1, 0x4E));
}

// When a TOT restamps: tests/cfdb/time_offset_test.cpp.

/** With an EIT that came before the first TOT. */
class StoredEIT : public HandlerEIT {
 protected:
  StoredEIT() { handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})})); }

  /** How often stored EITs have been restamped since the last clearLog. */
  static int restamps() {
    int count = 0;
    for (const auto& [level, text] : lines()) {
      count += level == 7 && text.rfind("restampEIT: ", 0) == 0 ? 1 : 0;
    }
    return count;
  }
};

TEST_F(StoredEIT, SteadyTOTsRestampItOnlyOnce) {
  for (int i = 0; i < 5; ++i) {
    setTOT(11, 59, i * 10);
  }
  EXPECT_EQ(1, restamps());
  EXPECT_EQ(1, timesLogged(7, kSaving));
}

TEST_F(StoredEIT, AResetForgetsIt) {
  EXPECT_TRUE(handler_->sendCmd(0));
  setTOT(12, 0, 0);
  EXPECT_EQ(0, restamps());
  EXPECT_FALSE(logged(7, kSaving));
}

TEST_F(StoredEIT, AfterAResetTheNextTOTRestampsWhatCameInBetween) {
  setTOT(12, 0, 0);
  EXPECT_TRUE(handler_->sendCmd(0));
  handler_->setEITSchedule(mapOf({makeEit(2, 0x50, 0, {})}));
  fake::clearLog();
  setSteadyTOT();
  EXPECT_EQ(1, restamps());
  EXPECT_TRUE(logged(7, "restampEIT: SID [0x0002] tid [0x50] v[0] nevents [0]"));
  EXPECT_THAT(fake::logLines(4), ElementsAre(fake::LogLine{3, "", kRefused},
                                             fake::LogLine{3, "", kRefused}));  // no new offset
}

TEST_F(StoredEIT, OtherCommandsKeepTheOffset) {
  setTOT(12, 0, 0);
  EXPECT_TRUE(handler_->sendCmd(3));
  EXPECT_TRUE(handler_->sendCmd(7));
  handler_->setEITSchedule({});
  EXPECT_TRUE(logged(7, "[getConflictFreeEITsch] Ready to apply offset [yes] [60]"));
}

TEST_F(HandlerEIT, PendingRestampIsSpentEvenWithNothingToRestamp) {
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  fake::clearLog();
  setSteadyTOT();
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "Guardo TOT en DB local!"),
                                   Pair(7, "Guardo TOT en DB local!"), Pair(3, kRefused)));
}

}  // namespace
}  // namespace tevra::test
