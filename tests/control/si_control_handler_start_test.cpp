#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>

#include "tests/control/handler_fixture.h"
#include "tests/fakes/fake_main_task.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::logged;
using testing::ElementsAre;
using testing::Pair;

/** A stored entry whose output service differs from its key, as on an air that renames services. */
TableStore storeEntry(int32_t restartCounter, int32_t outputSID) {
  TableStore entry;
  entry.restartCounter = restartCounter;
  entry.pat.version = 9;
  entry.sdt.version = 10;
  entry.pmt.version = 11;
  entry.pmt.programNumber = outputSID;
  return entry;
}

EITTableVersionStore versionEntry(int32_t restartCounter, int32_t version) {
  EITTableVersionStore entry;
  entry.restartCounter = restartCounter;
  entry.versions[0x4E] = version;
  return entry;
}

class HandlerStart : public HandlerTest {
 protected:
  static void writeTableStores(const std::map<int32_t, TableStore>& entries) {
    TableStoreFile file;
    file.tableStores = entries;
    writeFile(tableStorePath(), file);
  }
  static void writeEITVersions(const std::map<int32_t, EITTableVersionStore>& entries) {
    EITTableVersionStoreFile file;
    file.versionStores = entries;
    writeFile(eitVersionPath(), file);
  }
};

TEST_F(HandlerStart, WithoutFilesAndMainTaskItLogsInThisOrder) {
  const SIControlSrvHandler handler(0);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(4, "[MPTS0] notifying to port [9256]"),
                          Pair(4, "IN mod slot [3] PID poll [100/299]"),
                          Pair(3, "[MPTS0] Error reading file: " + tableStorePath()),
                          Pair(7, "[MPTS0] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS0] Error reading tables from file"),
                          Pair(3, "[MPTS0] Error reading file: " + eitVersionPath()),
                          Pair(7, "[MPTS0] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS0] Error reading tables from file"), Pair(3, kRefused)));
}

TEST_F(HandlerStart, WithFilesAndMainTaskItLogsInThisOrder) {
  writeTableStores({{100, storeEntry(4, 1201)}, {200, storeEntry(0, 1202)}});
  writeEITVersions({{300, versionEntry(0, 1)}, {400, versionEntry(4, 2)}});
  FakeMainTask mainTask;
  const SIControlSrvHandler handler(0);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(4, "[MPTS0] notifying to port [9256]"),
                          Pair(4, "IN mod slot [3] PID poll [100/299]"),
                          Pair(7, "[MPTS0] Recovering saved DVB tables"),
                          Pair(5, "[MPTS0] 1201 is erased from the table store struct"),
                          Pair(7, "[MPTS0] Recovering saved EIT table versions"),
                          Pair(5, "[MPTS0] 400 is erased from the EIT table version store struct"),
                          Pair(7, "I need Configuration!!!")));
}

TEST_F(HandlerStart, MainTaskIsAskedForTheConfigurationOnce) {
  FakeMainTask mainTask;
  const SIControlSrvHandler handler(0);
  ASSERT_TRUE(mainTask.waitFor(1));
  EXPECT_THAT(mainTask.methods(), ElementsAre("requestConfiguration"));
}

TEST_F(HandlerStart, EveryMptsHasItsOwnPortPoolAndFiles) {
  FakeMainTask mainTask(3);
  const SIControlSrvHandler handler(3);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(4, "[MPTS3] notifying to port [9259]"),
                          Pair(4, "IN mod slot [3] PID poll [700/899]"),
                          Pair(3, "[MPTS3] Error reading file: " + tableStorePath(3)),
                          Pair(7, "[MPTS3] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS3] Error reading tables from file"),
                          Pair(3, "[MPTS3] Error reading file: " + eitVersionPath(3)),
                          Pair(7, "[MPTS3] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS3] Error reading tables from file"),
                          Pair(7, "I need Configuration!!!")));
  ASSERT_TRUE(mainTask.waitFor(1));
}

TEST_F(HandlerStart, MiddleMptsNotifyToTheirPorts) {
  const SIControlSrvHandler first(1);
  EXPECT_TRUE(logged(4, "[MPTS1] notifying to port [9257]"));
  const SIControlSrvHandler second(2);
  EXPECT_TRUE(logged(4, "[MPTS2] notifying to port [9258]"));
}

TEST_F(HandlerStart, MptsAboveThreeIsLoggedAndGetsNoPort) {
  const SIControlSrvHandler handler(4);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(3, "[SIControlSrvHandler] MPTSId not supported [4]"),
                          Pair(4, "[MPTS4] notifying to port [0]"),
                          Pair(4, "Zero notification port!"), Pair(4, "Zero notification port!"),
                          Pair(4, "IN mod slot [3] PID poll [900/1099]"),
                          Pair(3, "[MPTS4] Error reading file: " + tableStorePath(4)),
                          Pair(7, "[MPTS4] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS4] Error reading tables from file"),
                          Pair(3, "[MPTS4] Error reading file: " + eitVersionPath(4)),
                          Pair(7, "[MPTS4] Reason: cannot open: No such file or directory"),
                          Pair(3, "[MPTS4] Error reading tables from file"),
                          Pair(4, "Notification Port not set.")));
}

TEST_F(HandlerStart, NegativeMptsIsLoggedAndGetsNoPort) {
  const SIControlSrvHandler handler(-1);
  EXPECT_TRUE(logged(3, "[SIControlSrvHandler] MPTSId not supported [-1]"));
  EXPECT_TRUE(logged(4, "[MPTS-1] notifying to port [0]"));
  EXPECT_EQ(2, fake::timesLogged(4, "Zero notification port!"));
  EXPECT_EQ(1, fake::timesLogged(4, "Notification Port not set."));
}

TEST_F(HandlerStart, WithoutPortEveryNotificationIsALineAndNoConnection) {
  SIControlSrvHandler handler(4);
  fake::clearLog();
  handler.setSDT(sdtOf(1));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo SDT en DB local!"), Pair(7, "Guardo SDT en DB local!"),
                          Pair(4, "Notification Port not set.")));
}

TEST_F(HandlerStart, AgeingAloneWritesNoFile) {
  writeTableStores({{100, storeEntry(4, 1201)}});
  writeEITVersions({{300, versionEntry(4, 17)}});
  const SIControlSrvHandler handler(0);
  EXPECT_EQ(4, savedTableStores().at(100).restartCounter);
  EXPECT_EQ(4, savedEITVersions().at(300).restartCounter);
}

}  // namespace
}  // namespace tevra::test
