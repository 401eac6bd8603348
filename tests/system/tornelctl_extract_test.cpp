#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/platform/temporary_directory.h"
#include "tests/system/psi_tables.h"
#include "tests/system/record_files.h"
#include "tests/system/spts.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

constexpr int kLanguageTag = 0x0A;
constexpr int kTeletextTag = 0x56;

class TornelctlExtract : public testing::Test {
 protected:
  /** Extracts a service; what the tool says must be success. */
  void extract(const std::string& input, int service, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(),
                     {"extract", input, "--service", std::to_string(service), "-o", out_});
    const Outcome outcome = tornelctl(arguments);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.err;
  }

  TemporaryDirectory directory_;
  const std::string out_ = directory_ / "out.ts";
  const std::vector<std::string> withState_ = {"--state", directory_ / "state"};
};

TEST_F(TornelctlExtract, OfEveryServiceOfTheSampleIsProbedAsOneProgramme) {
  if (ffprobePath().empty()) {
    GTEST_SKIP() << "ffprobe is not installed";
  }
  const std::map<int, std::multiset<std::string>> expected = {
      {101, {"video", "audio", "audio", "subtitle"}},
      {102, {"video", "audio", "audio"}},
      {103, {"video", "audio", "audio"}},
      {104, {"audio"}}};
  for (const auto& [service, kinds] : expected) {
    const std::string name = "Servicio " + std::to_string(service);
    ASSERT_NO_FATAL_FAILURE(extract(samplePath(), service, {"--name", name}));
    EXPECT_EQ(probedKinds(probe(out_), service, name), kinds) << service;
  }
}

TEST_F(TornelctlExtract, AgainGivesTheSameBytes) {
  ASSERT_NO_FATAL_FAILURE(extract(samplePath(), 101, withState_));
  const std::string first = readText(out_);
  ASSERT_NO_FATAL_FAILURE(extract(samplePath(), 101, withState_));
  EXPECT_TRUE(readText(out_) == first);
}

TEST_F(TornelctlExtract, OfTheItalianRecordingKeepsVideoEnglishAndSubtitles) {
  const std::string path = capturePath("italian-dtt-mpts.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  ASSERT_NO_FATAL_FAILURE(
      extract(path, 3401, {"--output-sid", "1201", "--name", "Uno HD", "--audio", "eng"}));
  const Spts spts(out_);
  expectOneProgramme(spts, 1201, "Uno HD");
  expectSteadyTables(spts);
  expectTablesOftenEnough(spts);
  ASSERT_THAT(spts.pmt.streams, SizeIs(3));
  EXPECT_EQ(spts.pmt.streams[0].type, 2);
  EXPECT_EQ(spts.pmt.streams[1].descriptors.count(kTeletextTag), 1U);
  EXPECT_EQ(spts.pmt.streams[2].type, 4);
  EXPECT_EQ(spts.pmt.streams[2].descriptors.at(kLanguageTag).substr(0, 3), "eng");
  if (const nlohmann::json probed = probe(out_); !probed.is_null()) {
    EXPECT_EQ(probedKinds(probed, 1201, "Uno HD"),
              (std::multiset<std::string>{"video", "audio", "subtitle"}));
    for (const auto& stream : probed["programs"][0]["streams"]) {
      if (stream["codec_type"] == "audio") {
        EXPECT_EQ(stream["tags"]["language"], "eng");
      }
    }
  }
}

/** Recordings with programmes, and the sample. */
class TornelctlExtractAll : public TornelctlExtract,
                            public testing::WithParamInterface<const char*> {};

TEST_P(TornelctlExtractAll, ServicesGivesSoundStreams) {
  const std::string recording = GetParam();
  const std::string path = recording == "sample" ? samplePath() : capturePath(recording + ".ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  const TransportStream input(path);
  const ParsedPat pat = parsePat(firstSection(input, kPatPid, kPatTableId));
  ASSERT_FALSE(pat.programs.empty());
  for (const auto& [service, pmtPid] : pat.programs) {
    SCOPED_TRACE("service " + std::to_string(service));
    const std::string name = "Servicio " + std::to_string(service);
    ASSERT_NO_FATAL_FAILURE(extract(path, service, {"--name", name}));
    const Spts spts(out_);
    expectOneProgramme(spts, service, name);
    expectSteadyTables(spts);
    expectTablesOftenEnough(spts);
    const auto pmts = input.sections(pmtPid);
    const ParsedPmt lastPmt = parsePmt(pmts.back().bytes);
    expectStreamsOf(spts, input, carriedStreams(lastPmt));
    if (const nlohmann::json probed = probe(out_); !probed.is_null()) {
      EXPECT_THAT(probedKinds(probed, service, name), SizeIs(spts.pmt.streams.size()));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, TornelctlExtractAll, testing::Values("sample", "italian-dtt-mpts"),
                         [](const auto& recording) {
                           std::string name = recording.param;
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return name;
                         });

TEST_F(TornelctlExtract, OfServicesWithoutPacketsGivesTheirTablesAndFails) {
  const std::string path = capturePath("two-services-scrambled.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  for (const int service : {1, 2}) {
    const Outcome outcome = tornelctl({"extract", path, "--service", std::to_string(service), "-o",
                                       out_, "--name", "Laboratorio"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.err, HasSubstr("holds tables alone"));
    const Spts spts(out_);
    expectOneProgramme(spts, service, "Laboratorio");
    expectSteadyTables(spts);
  }
}

TEST_F(TornelctlExtract, OfARecordingWithoutPmtsSaysThatThereAreNone) {
  const std::string path = capturePath("french-dtt-si-only.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  const Outcome outcome = tornelctl({"extract", path, "--service", "1025", "-o", out_});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_THAT(outcome.err, HasSubstr("PMT"));
  EXPECT_FALSE(std::filesystem::exists(out_));
}

TEST_F(TornelctlExtract, OfAStreamWithoutAnSdtHasOneOfItsOwnThatIsCurrent) {
  constexpr size_t kPacketSize = 188;
  const std::string sample = readText(samplePath());
  std::string input;
  for (size_t at = 0; at < sample.size(); at += kPacketSize) {
    const int pid = (sample[at + 1] & 0x1F) << 8 | static_cast<unsigned char>(sample[at + 2]);
    input += pid == kSdtPid ? "" : sample.substr(at, kPacketSize);
  }
  const std::string path = directory_ / "in.ts";
  writeText(path, input);
  ASSERT_NO_FATAL_FAILURE(extract(path, 104));
  const std::string sdt = firstSection(TransportStream(out_), kSdtPid, kSdtActualTableId);
  EXPECT_EQ(sdt.at(5) & 0x01, 1) << "current_next_indicator";
  const ParsedService service = parseSdt(sdt).services.at(104);
  EXPECT_EQ(service.type, 2);
  EXPECT_EQ(service.name, "Service 104");
}

}  // namespace
}  // namespace tevra::test
