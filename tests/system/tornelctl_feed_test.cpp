#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/psi_tables.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::Notification;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class TornelctlFeed : public testing::Test {
 protected:
  /** The notifications of a method. */
  std::vector<Notification> notified(const std::string& method) {
    std::vector<Notification> matching;
    for (const Notification& notification : mainTask_.received()) {
      if (notification.method == method) {
        matching.push_back(notification);
      }
    }
    return matching;
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

/** Every notification but the start-up request has a success line. */
bool allNotified(FakeMainTask& mainTask, const Daemon& daemon) {
  const Lines lines = daemon.logLines();
  const auto sent = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.find("MainTask notified from SI") != std::string::npos;
  });
  return mainTask.waitFor(static_cast<size_t>(sent) + 1);
}

TEST_F(TornelctlFeed, GivesTheSamplesTablesOnceEach) {
  const Outcome outcome = tornelctl({"feed", samplePath()});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  EXPECT_THAT(notified("notifyPAT"), SizeIs(1));
  EXPECT_THAT(notified("notifySDT"), SizeIs(1));
  EXPECT_THAT(notified("notifyCAT"), SizeIs(1));
  EXPECT_THAT(notified("notifyPMT"),
              SizeIs(5));  // one service changes its PMT on the way
  EXPECT_THAT(notified("notifyTOT"), SizeIs(Ge(4)));
  const Lines lines = daemon_.logLines();
  EXPECT_EQ(timesIn(lines, "3 setNIT"), 1);
  EXPECT_EQ(timesIn(lines, "3 setBAT"), 1);
  EXPECT_EQ(timesIn(lines, "7 setInputEITpf: SID [0x0066] tid [0x4e] v[14] nevents [2]"), 1);
  EXPECT_EQ(timesIn(lines, "7 setInputEITpf: SID [0x0066] tid [0x4e] v[15] nevents [2]"), 1);
  EXPECT_EQ(timesIn(lines, "7 setInputEITsch: SID [0x0065] tid [0x50] v[4] nevents [14]"), 1);
}

TEST_F(TornelctlFeed, GivesTheSamplesTablesUndistorted) {
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  const TransportStream sample(samplePath());
  const ParsedPat pat = parsePat(firstSection(sample, kPatPid, kPatTableId));
  const PAT notifiedPat = notified("notifyPAT").at(0).pat;
  EXPECT_EQ(notifiedPat.transportStreamId, pat.transportStreamId);
  EXPECT_EQ(notifiedPat.version, pat.version);
  ASSERT_THAT(notifiedPat.programs,
              SizeIs(pat.programs.size() + 1));  // and the network's
  const ParsedSdt sdt = parseSdt(firstSection(sample, kSdtPid, kSdtActualTableId));
  const SDT notifiedSdt = notified("notifySDT").at(0).sdt;
  EXPECT_EQ(notifiedSdt.originalNetworkId, sdt.originalNetworkId);
  EXPECT_EQ(notifiedSdt.version, sdt.version);
  ASSERT_THAT(notifiedSdt.services, SizeIs(sdt.services.size()));
  for (const auto& service : notifiedSdt.services) {
    EXPECT_THAT(service.descriptors.at(0).data, HasSubstr(sdt.services.at(service.serviceId).name));
  }
  std::map<int32_t, std::vector<int32_t>> pmtVersions;
  for (const Notification& notification : notified("notifyPMT")) {
    pmtVersions[notification.pmt.programNumber].push_back(notification.pmt.version);
  }
  EXPECT_THAT(pmtVersions, ElementsAre(Pair(101, ElementsAre(7)), Pair(102, ElementsAre(31, 0)),
                                       Pair(103, ElementsAre(2)), Pair(104, ElementsAre(12))));
}

TEST_F(TornelctlFeed, GivesTheSamplesCaDescriptorsWithPidsOfThePool) {
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  const CAT cat = notified("notifyCAT").at(0).cat;
  ASSERT_THAT(cat.descriptors, SizeIs(2));
  for (const Descriptor& ca : cat.descriptors) {
    ASSERT_GE(ca.data.size(), 4U);
    const int pid =
        (static_cast<uint8_t>(ca.data[2]) & 0x1F) << 8 | static_cast<uint8_t>(ca.data[3]);
    EXPECT_THAT(pid, AllOf(Ge(101), testing::Le(299)));
  }
}

TEST_F(TornelctlFeed, TwiceChangesNoPid) {
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  const auto pats = notified("notifyPAT");
  ASSERT_THAT(pats, SizeIs(2));
  EXPECT_EQ(pats[0].pat, pats[1].pat);
}

TEST_F(TornelctlFeed, ReadsStandardInput) {
  const Outcome outcome =
      runToEnd({"/bin/sh", "-c", "exec \"$0\" feed - < \"$1\"", tornelctlPath(), samplePath()});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  EXPECT_THAT(notified("notifyPMT"), SizeIs(5));
}

TEST_F(TornelctlFeed, OfWhatIsNoStreamFails) {
  for (const std::string& file : {daemonPath(), std::string("/dev/null"), root_ / "absent"}) {
    const Outcome outcome = tornelctl({"feed", file});
    EXPECT_EQ(outcome.exitStatus, 1) << file;
    EXPECT_THAT(outcome.err, testing::StartsWith("tornelctl: ")) << file;
  }
}

TEST_F(TornelctlFeed, IsFollowedByAnAnswerAsJson) {
  const Outcome before = tornelctl({"output", "--service", "101", "--json"});
  EXPECT_EQ(before.exitStatus, 1);  // nothing fed yet
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  const Outcome after = tornelctl({"output", "--service", "101", "--name", "Uno", "--json"});
  EXPECT_EQ(after.exitStatus, 0) << after.err;
  EXPECT_TRUE(nlohmann::json::accept(after.out)) << after.out;
  EXPECT_THAT(after.out, HasSubstr("Uno"));
}

TEST(TornelctlWithoutDaemon, FailsAtOnceAndSaysWhy) {
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"feed", samplePath()}, {"output", "--service", "101"}}) {
    const Outcome outcome = tornelctl(command);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.err, HasSubstr("9224"));
  }
}

/** The recording whose path `path` is, or a skipped test. */
#define SKIP_WITHOUT(path)                     \
  if (!std::filesystem::exists(path)) {        \
    GTEST_SKIP() << (path) << " is not there"; \
  }                                            \
  static_assert(true, "a semicolon follows the macro")

TEST_F(TornelctlFeed, OfTheItalianRecordingGivesEveryPmt) {
  const std::string path = capturePath("italian-dtt-mpts.ts");
  SKIP_WITHOUT(path);
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  const ParsedPat pat = parsePat(firstSection(TransportStream(path), kPatPid, kPatTableId));
  std::vector<int32_t> services;
  for (const Notification& notification : notified("notifyPMT")) {
    services.push_back(notification.pmt.programNumber);
  }
  std::sort(services.begin(), services.end());
  std::vector<int32_t> expected;
  for (const auto& [service, pid] : pat.programs) {
    expected.push_back(service);
  }
  EXPECT_EQ(services, expected);
  EXPECT_THAT(notified("notifyCAT"), IsEmpty());
}

/** The versions of a table in a recording, one after the other. */
std::vector<int32_t> versionsIn(const std::string& path, int pid, int tableId) {
  std::vector<int32_t> versions;
  for (const CarriedSection& section : TransportStream(path).sections(pid)) {
    const bool isTable = static_cast<uint8_t>(section.bytes[0]) == tableId;
    const int32_t version = static_cast<uint8_t>(section.bytes[5]) >> 1 & 0x1F;
    if (isTable && (versions.empty() || versions.back() != version)) {
      versions.push_back(version);
    }
  }
  return versions;
}

TEST_F(TornelctlFeed, OfTheLaboratoryRecordingGivesEachNewVersionOnce) {
  const std::string path = capturePath("two-services-scrambled.ts");
  SKIP_WITHOUT(path);
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  std::vector<int32_t> pats;
  for (const Notification& notification : notified("notifyPAT")) {
    pats.push_back(notification.pat.version);
  }
  EXPECT_EQ(pats, versionsIn(path, kPatPid, kPatTableId));
  EXPECT_THAT(pats, SizeIs(3));
  std::vector<int32_t> sdts;
  for (const Notification& notification : notified("notifySDT")) {
    sdts.push_back(notification.sdt.version);
  }
  EXPECT_EQ(sdts, versionsIn(path, kSdtPid, kSdtActualTableId));
  EXPECT_THAT(sdts, SizeIs(5));
  EXPECT_THAT(notified("notifyCAT"), SizeIs(1));
}

/** The last offset that the daemon has told. */
long long lastOffset(const Daemon& daemon) {
  long long offset = 0;
  for (const std::string& line : daemon.logLines()) {
    (void)std::sscanf(line.c_str(), "4 DVB to System Time offset set to [%lld] secs", &offset);
  }
  return offset;
}

int64_t secondsOf(int64_t dvbTime) {
  const auto digits = [&](int shift) {
    return (dvbTime >> (shift + 4) & 0xF) * 10 + (dvbTime >> shift & 0xF);
  };
  return (dvbTime >> 24) * 86400 + digits(16) * 3600 + digits(8) * 60 + digits(0);
}

/** Every start time that an event of the recording has had. */
std::multimap<int, int64_t> eventsOf(const TransportStream& stream) {
  std::multimap<int, int64_t> events;
  for (const CarriedSection& section : stream.sections(kEitPid)) {
    const auto entries = parseEitEvents(section.bytes);
    events.insert(entries.begin(), entries.end());
  }
  return events;
}

TEST_F(TornelctlFeed, OfTheFrenchRecordingMovesItsEventsToTheSystemsClock) {
  const std::string path = capturePath("french-dtt-si-only.ts");
  SKIP_WITHOUT(path);
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  const long long offset = lastOffset(daemon_);
  EXPECT_LT(offset, -100'000'000);  // recorded in 2019
  const auto events = eventsOf(TransportStream(path));
  std::map<std::pair<int32_t, int32_t>, EIT> last;
  for (const std::string method : {"notifyEITPresentFollowing", "notifyEITSchedule"}) {
    for (const Notification& notification : notified(method)) {
      last[{notification.eit.serviceId, notification.eit.tableId}] = notification.eit;
    }
  }
  ASSERT_THAT(last, SizeIs(10));
  for (const auto& [key, table] : last) {
    for (const EITEvent& event : table.events) {
      const auto [first, end] = events.equal_range(event.eventId);
      EXPECT_TRUE(std::any_of(first, end,
                              [&](const auto& original) {
                                return secondsOf(event.startTime) ==
                                       secondsOf(original.second) - offset;
                              }))
          << "service " << key.first << " event " << event.eventId;
    }
  }
}

}  // namespace
}  // namespace tevra::test
