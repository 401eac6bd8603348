#include "tests/system/spts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>

#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using testing::ElementsAre;
using testing::Key;
using testing::SizeIs;

// The pool of MPTS 0 of the default module.
constexpr int kFirstPid = 101;
constexpr int kLastPid = 299;

/** Stream types that an output carries. */
bool isCarried(int streamType) {
  constexpr std::array kCarried = {1, 2, 3, 4, 6, 15, 16, 17, 27, 36};
  return std::find(kCarried.begin(), kCarried.end(), streamType) != kCarried.end();
}

/** The longest time, in seconds by the PCRs, that passes without a section on the PID. */
double longestGap(const Spts& spts, int pid) {
  const auto timeOf = [&](size_t packet) { return spts.stream.timeOf(packet, spts.pmt.pcrPid); };
  double last = 0;  // the first PCR
  double longest = 0;
  for (const CarriedSection& section : spts.stream.sections(pid)) {
    const double time = timeOf(section.packet).value_or(last);
    longest = std::max(longest, time - last);
    last = time;
  }
  return std::max(longest, spts.stream.duration(spts.pmt.pcrPid) - last);
}

}  // namespace

void expectOneProgramme(const Spts& spts, int serviceId, const std::string& name) {
  EXPECT_THAT(spts.pat.programs, ElementsAre(testing::Pair(serviceId, spts.pmtPid)));
  EXPECT_EQ(spts.pmt.programNumber, serviceId);
  ASSERT_THAT(spts.sdt.services, ElementsAre(Key(serviceId)));
  EXPECT_EQ(spts.sdt.services.at(serviceId).name, name);
  EXPECT_EQ(spts.sdt.services.at(serviceId).provider, "TEVRA SA");
  EXPECT_EQ(spts.sdt.transportStreamId, spts.pat.transportStreamId);
  std::set<int> named = {kPatPid, kSdtPid, spts.pmtPid, spts.pmt.pcrPid};
  for (const ParsedStream& stream : spts.pmt.streams) {
    named.insert(stream.pid);
  }
  for (const auto& [pid, packets] : spts.stream.pids()) {
    EXPECT_EQ(named.count(pid), 1U) << "stray PID " << pid;
  }
  named.erase(kPatPid);
  named.erase(kSdtPid);
  EXPECT_GE(*named.begin(), kFirstPid);
  EXPECT_LE(*named.rbegin(), kLastPid);
}

void expectSteadyTables(const Spts& spts) {
  for (const int pid : {kPatPid, kSdtPid, spts.pmtPid}) {
    EXPECT_EQ(spts.stream.continuityErrors(pid), 0) << "PID " << pid;
    const auto sections = spts.stream.sections(pid);
    ASSERT_FALSE(sections.empty());
    for (const CarriedSection& section : sections) {
      EXPECT_EQ(section.bytes, sections[0].bytes) << "PID " << pid;
    }
  }
}

void expectTablesOftenEnough(const Spts& spts) {
  EXPECT_GT(spts.stream.duration(spts.pmt.pcrPid), 1.0);
  EXPECT_EQ(spts.stream.sections(kPatPid).at(0).packet, 0U);
  EXPECT_LE(longestGap(spts, kPatPid), 0.1);
  EXPECT_LE(longestGap(spts, spts.pmtPid), 0.1);
  EXPECT_LE(longestGap(spts, kSdtPid), 1.0);
}

std::vector<ParsedStream> carriedStreams(const ParsedPmt& pmt) {
  std::vector<ParsedStream> carried;
  std::copy_if(pmt.streams.begin(), pmt.streams.end(), std::back_inserter(carried),
               [](const ParsedStream& stream) { return isCarried(stream.type); });
  return carried;
}

void expectStreamsOf(const Spts& spts, const TransportStream& input,
                     const std::vector<ParsedStream>& expected) {
  ASSERT_THAT(spts.pmt.streams, SizeIs(expected.size()));
  for (size_t index = 0; index < expected.size(); ++index) {
    const ParsedStream& source = expected[index];
    const ParsedStream& copy = spts.pmt.streams[index];
    EXPECT_EQ(copy.type, source.type);
    std::map<int, std::string> descriptors = source.descriptors;
    descriptors.erase(0x09);  // no conditional access in an output
    EXPECT_EQ(copy.descriptors, descriptors);
    EXPECT_TRUE(spts.stream.packetsOf(copy.pid) == input.packetsOf(source.pid))
        << "PID " << source.pid << " as " << copy.pid;
    EXPECT_EQ(spts.stream.continuityErrors(copy.pid), input.continuityErrors(source.pid));
  }
}

nlohmann::json probe(const std::string& path) {
  if (ffprobePath().empty()) {
    return nullptr;
  }
  const Outcome outcome =
      runToEnd({ffprobePath(), "-v", "error", "-show_programs", "-of", "json", path});
  EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
  return nlohmann::json::parse(outcome.out);
}

std::multiset<std::string> probedKinds(const nlohmann::json& probed, int serviceId,
                                       const std::string& name) {
  std::multiset<std::string> kinds;
  EXPECT_THAT(probed["programs"], SizeIs(1));
  for (const auto& program : probed["programs"]) {
    EXPECT_EQ(program["program_id"], serviceId);
    EXPECT_EQ(program["tags"]["service_name"], name);
    for (const auto& stream : program["streams"]) {
      kinds.insert(stream.value("codec_type", "unknown"));
    }
  }
  return kinds;
}

}  // namespace tevra::test
