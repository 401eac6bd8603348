#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/** tornelctl listen in MainTask's place, and a daemon that notifies it. */
class TornelctlListen : public testing::Test {
 protected:
  void start(std::vector<std::string> options = {}) {
    std::vector<std::string> command = {tornelctlPath(), "listen"};
    command.insert(command.end(), options.begin(), options.end());
    listener_ = std::make_unique<ChildProcess>(ChildProcess::Setup{command});
    ASSERT_TRUE(eventually([] { return isListening(kFirstNotificationPort); }));
    daemon_ = std::make_unique<Daemon>(root_.path());
  }

  [[nodiscard]] bool printed(const std::string& text) const {
    return eventually([&] { return listener_->standardOutput().find(text) != std::string::npos; });
  }

  /** Everything that has been printed when the listener has been told to end. */
  std::string printedInAll() {
    ::kill(listener_->pid(), SIGTERM);
    const auto end = listener_->waitForEnd();
    EXPECT_TRUE(end);
    EXPECT_EQ(end->exitStatus, 0);
    return listener_->standardOutput();
  }

  TemporaryDirectory root_;
  std::unique_ptr<ChildProcess> listener_;
  std::unique_ptr<Daemon> daemon_;
};

/** The objects of a kind, in their order. */
std::vector<json> objectsOf(const std::string& lines, const std::string& kind) {
  std::vector<json> objects;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const json object = json::parse(line);
    if (object.at("kind") == kind) {
      objects.push_back(object);
    }
  }
  return objects;
}

/** The television service without its English audio, and with another PCR. */
PMT changedTelevisionPmt() {
  PMT pmt = televisionPmt();
  pmt.version += 1;
  pmt.pcrPid = kSpanishPid;
  pmt.esList.erase(pmt.esList.begin() + 1);
  return pmt;
}

/** Its television is scrambled and not running, its radio is gone. */
SDT changedSdt() {
  SDT sdt = multiplexSdt();
  sdt.version += 1;
  sdt.services.pop_back();
  sdt.services[0].runningStatus = 1;
  sdt.services[0].freeCA = true;
  return sdt;
}

TEST_F(TornelctlListen, PrintsTheSamplesTablesUntilTerminated) {
  start();
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  EXPECT_TRUE(printed("  configuration requested\n"));
  EXPECT_TRUE(printed("  PAT           transport stream 1101, version 3, 5 programmes\n"));
  EXPECT_TRUE(printed("  EIT schedule  service 104, table 0x50"));
  // What happens to service 102 on the way.
  EXPECT_TRUE(printed("  PMT           service 102, version 31 -> 0, 3 streams"));
  EXPECT_TRUE(printed(" (MPEG-2 audio): eng\n"));
  EXPECT_TRUE(
      printed("~ event 10201 \"Le phare éteint\": running status not running -> running\n"));
  EXPECT_THAT(printedInAll(), Not(HasSubstr("\x1b")));
}

TEST_F(TornelctlListen, PrintsWhatAChangedStreamChanges) {
  start();
  ControlClient client;
  giveMultiplex(client);
  client->setPAT(multiplexPat());
  client->setPMT(changedTelevisionPmt());
  client->setSDT(changedSdt());
  CAT withoutCa = multiplexCat();
  withoutCa.descriptors.clear();
  client->setCAT(withoutCa);
  EXPECT_TRUE(printed("CAT           version 1, 0 descriptors, changed with the same version\n"));
  const std::string text = printedInAll();
  EXPECT_THAT(text,
              HasSubstr("PAT           transport stream 1, version 3, 3 programmes, unchanged\n"));
  EXPECT_THAT(text, HasSubstr("~ PCR PID " + std::to_string(kOutVideo)));
  EXPECT_THAT(text, HasSubstr("- stream PID " + std::to_string(kOutEnglish)));
  EXPECT_THAT(text, Not(HasSubstr("stream PID " + std::to_string(kOutSubtitles))));
  EXPECT_THAT(text, HasSubstr("SDT           transport stream 1, version 4 -> 5, 1 service\n"));
  EXPECT_THAT(text, HasSubstr("- service 200 \"Radio Dos\": digital radio, running\n"));
  EXPECT_THAT(text, HasSubstr("~ service 100 \"Uno\": running status running -> not running, "
                              "not scrambled -> scrambled\n"));
  EXPECT_THAT(text, HasSubstr("- CA system 0x0500: CA PID " + std::to_string(kOutEmm)));
}

TEST_F(TornelctlListen, PrintsTheSameAsJson) {
  start({"--json"});
  ControlClient client;
  giveMultiplex(client);
  client->setPMT(changedTelevisionPmt());
  client->setSDT(changedSdt());
  EXPECT_TRUE(printed("\"service.freeCA\""));
  const std::string lines = printedInAll();
  const auto sdts = objectsOf(lines, "SDT");
  ASSERT_EQ(sdts.size(), 2U);
  EXPECT_EQ(sdts[0].at("state"), "first");
  EXPECT_EQ(sdts[1].at("state"), "changed");
  EXPECT_EQ(sdts[1].at("version"), 5);
  EXPECT_EQ(sdts[1].at("table").at("services").size(), 1U);
  EXPECT_THAT(sdts[1].at("changes"), Contains(json({{"what", "service.freeCA"},
                                                    {"id", 100},
                                                    {"change", "changed"},
                                                    {"from", false},
                                                    {"to", true}})));
  std::vector<json> removed;
  for (const json& object : objectsOf(lines, "PMT")) {
    for (const json& change : object.at("changes")) {
      if (change.at("change") == "removed") {
        removed.push_back(change);
      }
    }
  }
  ASSERT_EQ(removed.size(), 1U);
  EXPECT_EQ(removed[0].at("what"), "stream");
  EXPECT_EQ(removed[0].at("id"), kOutEnglish);
}

TEST_F(TornelctlListen, TellsOfASteppedClockInALineForEachSchedule) {
  start();
  const std::time_t now = std::time(nullptr);
  ControlClient client;
  client->setTOT(totAt(now));
  EIT schedule = eit(kTelevision, 0x50, now + 3600);
  for (int i = 1; i < 100; ++i) {
    EITEvent event = schedule.events[0];
    event.eventId += i;
    event.startTime = dvbTime(now + 3600 * (i + 1));
    schedule.events.push_back(event);
  }
  client->setEITSchedule(eitMap({schedule}));
  client->setTOT(totAt(now - 7200));
  // The daemon counts in whole seconds, and one may pass between the calls.
  EXPECT_TRUE(printed("~ all 100 events moved by +02:00:0"));
  EXPECT_TRUE(printed(" UTC (-02:00:00), system clock +02:00:0"));
}

TEST_F(TornelctlListen, SeesTheFrenchRecordingsSchedulesMoveAtOnce) {
  const std::string path = capturePath("french-dtt-si-only.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  start();
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  EXPECT_TRUE(printed("SDT           transport stream 4, version 16, 5 services, unchanged\n"));
  EXPECT_TRUE(printed("EIT schedule  service 1045, table 0x50, version 1 -> 2, 88 events"));
}

}  // namespace
}  // namespace tevra::test
