#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "records/records.h"
#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/system/daemon.h"
#include "tests/system/psi_tables.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::Notification;
using testing::ElementsAre;
using testing::HasSubstr;
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

TEST_F(TornelctlFeed, ReadsStandardInput) {
  const Outcome outcome =
      runToEnd({"/bin/sh", "-c", "exec \"$0\" feed - < \"$1\"", tornelctlPath(), samplePath()});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  ASSERT_TRUE(allNotified(mainTask_, daemon_));
  EXPECT_THAT(notified("notifyPMT"), SizeIs(5));
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
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
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
