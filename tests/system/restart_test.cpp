#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <map>
#include <string>
#include <thread>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using thrift::in_module::PIDRemap;

class DaemonRestart : public testing::Test {
 protected:
  /** What the television service's output is, with the multiplex given anew. */
  SPTSConfiguration output(const std::string& name = "Uno HD") {
    ControlClient client;
    giveMultiplex(client);
    return onlyOutput(client, televisionRequest(name));
  }

  PIDRemap pidRemap() { return readRecord<PIDRemap>(root_ / pidRemapFile(0)); }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

TEST_F(DaemonRestart, GivesTheSameAnswerToTheSameRequest) {
  const SPTSConfiguration before = output();
  daemon_.restart();
  EXPECT_EQ(output(), before);
}

TEST_F(DaemonRestart, ForgetsTheTablesThemselves) {
  (void)output();
  daemon_.restart();
  ControlClient client;
  std::map<int32_t, SPTSConfiguration> answer;
  client->getSrvOutputData(answer, televisionRequest());
  EXPECT_TRUE(answer.empty());
}

TEST_F(DaemonRestart, RaisesOnlyTheSdtVersionForANewName) {
  const auto before = output("Uno HD").outputTables.dvbTables;
  daemon_.restart();
  const auto after = output("Uno UHD").outputTables.dvbTables;
  EXPECT_EQ(after.sdt.version, before.sdt.version + 1);
  EXPECT_EQ(after.pat, before.pat);
  EXPECT_EQ(after.pmt, before.pmt);
}

TEST_F(DaemonRestart, RaisesOnlyThePmtVersionForAnotherLanguage) {
  const auto before = output().outputTables.dvbTables;
  daemon_.restart();
  ControlClient client;
  giveMultiplex(client);
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings[7] = {lastNode(7, 9, {"spa"})};
  const auto after = onlyOutput(client, request).outputTables.dvbTables;
  EXPECT_EQ(after.pmt.version, before.pmt.version + 1);
  EXPECT_EQ(after.pat, before.pat);
  EXPECT_EQ(after.sdt, before.sdt);
}

TEST_F(DaemonRestart, KeepsThePidsWhateverTheOrderOfTheTables) {
  (void)output();
  const PIDRemap before = pidRemap();
  EXPECT_EQ(before.inputToOutput.at(kVideoPid), kOutVideo);
  EXPECT_EQ(before.outputToInput.at(kOutVideo), kVideoPid);
  EXPECT_EQ(before.moduleSlot, 3);
  EXPECT_EQ(before.transportStreamId, kTransportStreamId);
  daemon_.restart();
  ControlClient client;
  client->setPMT(radioPmt());
  client->setCAT(multiplexCat());
  client->setPMT(televisionPmt());
  client->setPAT(multiplexPat());
  EXPECT_EQ(pidRemap(), before);
}

TEST_F(DaemonRestart, GoesOnCountingPids) {
  (void)output();
  daemon_.restart();
  ControlClient client;
  PMT pmt = radioPmt();
  pmt.esList[0].pid = 0x900;
  client->setPMT(pmt);
  EXPECT_EQ(pidRemap().inputToOutput.at(0x900), kOutRadioAudio + 1);
}

TEST_F(DaemonRestart, KnowsThePidsOfACatOnlyIfATableFollowedIt) {
  {
    ControlClient client;
    client->setPAT(multiplexPat());
    client->setCAT(multiplexCat());
  }
  EXPECT_EQ(pidRemap().inputToOutput.count(kEmmPid), 0U);
  daemon_.restart();
  ControlClient client;
  client->setCAT(multiplexCat());
  client->setPMT(radioPmt());
  EXPECT_EQ(pidRemap().inputToOutput.count(kEmmPid), 1U);
}

TEST_F(DaemonRestart, WithAnotherTransportStreamStartsThePidsAnew) {
  (void)output();
  daemon_.restart();
  ControlClient client;
  client->setPAT(multiplexPat(77));
  const PIDRemap remap = pidRemap();
  EXPECT_EQ(remap.transportStreamId, 77);
  EXPECT_EQ(remap.inputToOutput.size(), 3U);
  EXPECT_EQ(remap.inputToOutput.at(kNitPid), 101);
}

TEST_F(DaemonRestart, InAnotherSlotIgnoresThePidsAndThenReplacesThem) {
  (void)output();
  DaemonSetup otherSlot;
  otherSlot.environment = {{"TEVRA_MODULE_SLOT", "4"}};
  const PIDRemap before = pidRemap();
  daemon_.restart(otherSlot);
  EXPECT_EQ(pidRemap(), before);  // not yet
  ControlClient client;
  client->setPAT(multiplexPat());
  const PIDRemap remap = pidRemap();
  EXPECT_EQ(remap.moduleSlot, 4);
  EXPECT_EQ(remap.inputToOutput.size(), 3U);
  EXPECT_EQ(remap.inputToOutput.at(kNitPid), 901);
}

TEST_F(DaemonRestart, ContinuesTheEitVersions) {
  const auto schedule = eitMap({eit(kTelevision, 0x50, 0)});
  {
    ControlClient client;
    client->setTOT(totAt(std::time(nullptr)));
    client->setEITSchedule(schedule);
    client->setEITSchedule(schedule);
  }
  daemon_.restart();
  ControlClient client;
  client->setTOT(totAt(std::time(nullptr)));
  const Lines lines = daemon_.linesOf([&] { client->setEITSchedule(schedule); });
  EXPECT_EQ(timesIn(lines, "7 No previous EIT restamped [0x0064/0x50] version 0 selected"), 0);
  ASSERT_TRUE(mainTask_.waitFor(7));
  EXPECT_EQ(mainTask_.received()[6].method, "notifyEITSchedule");
  EXPECT_EQ(mainTask_.received()[6].eit.version, 3);
}

TEST_F(DaemonRestart, FindsFilesThatOnlyItsOwnerReads) {
  (void)output();
  ControlClient client;
  client->setTOT(totAt(std::time(nullptr)));
  client->setEITSchedule(eitMap({eit(kTelevision, 0x50, 0)}));
  const auto modeOf = [&](const std::string& path) {
    struct stat status = {};
    return stat((root_ / path).c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  };
  EXPECT_EQ(modeOf(pidRemapFile(0)), 0600U);
  EXPECT_EQ(modeOf(tableStoreFile(0)), 0600U);
  EXPECT_EQ(modeOf(eitVersionFile(0)), 0600U);
  EXPECT_EQ(modeOf("Tornel"), 0755U);
}

/** Gives the multiplex and asks for outputs until the daemon is gone. */
void callUntilTheEnd() {
  try {
    ControlClient client;
    for (int32_t round = 0;; ++round) {
      PMT pmt = televisionPmt();
      pmt.esList[1].pid = 0x1000 + round;
      giveMultiplex(client);
      client->setPMT(pmt);
      (void)onlyOutput(client, televisionRequest("Uno " + std::to_string(round)));
    }
  } catch (const apache::thrift::TException&) {
    // The daemon has been killed in the middle of a call.
  }
}

TEST_F(DaemonRestart, AfterAKillAtAnyMomentServesAgain) {
  for (int round = 0; round < 8; ++round) {
    std::thread caller(callUntilTheEnd);
    std::this_thread::sleep_for(std::chrono::milliseconds(40 + 7 * round));
    daemon_.kill();
    caller.join();
    daemon_.restart();
    EXPECT_EQ(output().outputTables.dvbTables.pmt.esList.size(), 3U);
  }
}

}  // namespace
}  // namespace tevra::test
