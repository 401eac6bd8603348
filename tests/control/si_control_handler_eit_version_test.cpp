#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <vector>

#include "tests/control/handler_eit_fixture.h"

namespace tevra::test {
namespace {

using fake::Notification;
using fake::timesLogged;
using testing::ElementsAre;

using EITVersion = NotifiedEIT;

TEST_F(EITVersion, GoesFromOneToThirtyOneThenToZero) {
  setSteadyTOT();
  std::vector<int32_t> expected;
  for (int i = 1; i <= 34; ++i) {
    handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 20, {})}));
    expected.push_back(i % 32);
  }
  std::vector<int32_t> versions;
  for (const Notification& notification : notified(35)) {
    if (notification.method == "notifyEITPresentFollowing") {
      versions.push_back(notification.eit.version);
    }
  }
  EXPECT_EQ(expected, versions);
  EXPECT_EQ(1, timesLogged(7, "No previous EIT restamped [0x0001/0x4e] version 0 selected"));
}

TEST_F(EITVersion, IsCountedPerServiceAndTable) {
  setSteadyTOT();
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 0, {})}));
  handler_->setEITSchedule(
      mapOf({makeEit(1, 0x50, 0, {}), makeEit(1, 0x51, 0, {}), makeEit(2, 0x50, 0, {})}));
  EXPECT_EQ(2, savedVersion(1, 0x50));
  EXPECT_EQ(1, savedVersion(1, 0x51));
  EXPECT_EQ(1, savedVersion(2, 0x50));
}

TEST_F(EITVersion, ContinuesInTheNextProcess) {
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  restart();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  setSteadyTOT();
  EXPECT_EQ(3, savedVersion(1, 0x4E));
  EXPECT_EQ(0, timesLogged(7, "No previous EIT restamped [0x0001/0x4e] version 0 selected"));
}

TEST_F(EITVersion, SurvivesAReset) {
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  EXPECT_TRUE(handler_->sendCmd(0));
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  EXPECT_EQ(2, savedVersion(1, 0x4E));
}

TEST_F(EITVersion, FromADamagedFileGoesOnByRemainder) {
  EITTableVersionStoreFile file;
  file.versionStores[1].versions = {{0x50, INT_MAX}, {0x51, 31}, {0x52, -5}, {0x53, INT_MIN}};
  writeFile(eitVersionPath(), file);
  restart();
  setSteadyTOT();
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 0, {}), makeEit(1, 0x51, 0, {}),
                                  makeEit(1, 0x52, 0, {}), makeEit(1, 0x53, 0, {})}));
  EXPECT_EQ(0, savedVersion(1, 0x50));
  EXPECT_EQ(0, savedVersion(1, 0x51));
  EXPECT_EQ(-4, savedVersion(1, 0x52));
  EXPECT_EQ(-31, savedVersion(1, 0x53));
}

TEST_F(EITVersion, RestartCounterStartsAnewForWhatIsStillBroadcast) {
  EITTableVersionStoreFile file;
  file.versionStores[1].restartCounter = 3;
  file.versionStores[2].restartCounter = 3;
  writeFile(eitVersionPath(), file);
  restart();
  setSteadyTOT();
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  EXPECT_EQ(0, savedEITVersions().at(1).restartCounter);
  EXPECT_EQ(4, savedEITVersions().at(2).restartCounter);
}

TEST_F(EITVersion, RestartCounterOfAServiceWithoutTablesStartsAnewToo) {
  EITTableVersionStoreFile file;
  file.versionStores[1].restartCounter = 3;
  file.versionStores[1].versions[0x50] = 6;
  writeFile(eitVersionPath(), file);
  restart();
  setSteadyTOT();
  EITMap eits;
  eits[1];
  eits[2];
  handler_->setEITSchedule(eits);
  EXPECT_EQ(0, savedEITVersions().at(1).restartCounter);
  EXPECT_EQ(6, savedVersion(1, 0x50));
  EXPECT_EQ(1U, savedEITVersions().count(2));
  ASSERT_TRUE(mainTask_.waitFor(2));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyTOT"));
}

TEST_F(EITVersion, BroadcastServiceNeverAgesOut) {
  for (int start = 0; start < 7; ++start) {
    restart();
    setSteadyTOT();
    handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  }
  EXPECT_EQ(7, savedVersion(1, 0x4E));
}

}  // namespace
}  // namespace tevra::test
