#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/system/daemon.h"
#include "tests/system/record_files.h"
#include "tests/system/spts.h"
#include "tests/system/tornelctl.h"

/** Several outputs asked for with one command. */
namespace tevra::test {
namespace {

using fake::FakeMainTask;
using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kLanguageTag = 0x0A;

class TornelctlOutputs : public testing::Test {
 protected:
  [[nodiscard]] std::string file(const std::string& name) const { return directory_ / name; }

  /** Runs the tool, which must succeed. */
  Outcome succeed(const std::vector<std::string>& arguments) {
    Outcome outcome = tornelctl(arguments);
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.err;
    return outcome;
  }

  TemporaryDirectory directory_;
};

class TornelctlWithDaemon : public TornelctlOutputs {
 protected:
  /** Runs `arguments` with the daemon and with an engine of the tool's own, which has as many
   * starts behind it; returns what each prints. */
  [[nodiscard]] std::pair<std::string, std::string> withBoth(
      const std::vector<std::string>& arguments) {
    std::vector<std::string> daemon = arguments;
    daemon.emplace_back("--daemon");
    std::vector<std::string> own = arguments;
    own.insert(own.end(), {"--state", state_});
    return {succeed(daemon).out, succeed(own).out};
  }

  void expectSameFiles() {
    for (const std::string& name : {pidRemapFile(0), tableStoreFile(0), eitVersionFile(0)}) {
      const std::string saved = readText(root_ / name);
      EXPECT_FALSE(saved.empty()) << name;
      EXPECT_EQ(readText(state_ + "/" + name), saved) << name;
    }
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  const std::string state_ = file("state");
  Daemon daemon_{root_.path()};
};

/** The languages of an output's streams, "" for one that names none. */
std::vector<std::string> languagesOf(const Spts& spts) {
  std::vector<std::string> languages;
  for (const ParsedStream& stream : spts.pmt.streams) {
    const auto descriptor = stream.descriptors.find(kLanguageTag);
    languages.push_back(descriptor == stream.descriptors.end() ? ""
                                                               : descriptor->second.substr(0, 3));
  }
  return languages;
}

/** The continuity counters of a PID's packets run on from 0, with no gap in all of the stream. */
void expectCountersFromZero(const Spts& spts, int pid) {
  const std::vector<std::string> packets = spts.stream.packetsOf(pid);
  ASSERT_FALSE(packets.empty());
  for (size_t index = 0; index < packets.size(); ++index) {
    ASSERT_EQ(packets[index][3] & 0x0F, static_cast<int>(index % 16)) << "PID " << pid;
  }
}

void expectSoundStream(const Spts& spts, int serviceId, const std::string& name) {
  expectOneProgramme(spts, serviceId, name);
  expectSteadyTables(spts);
  expectTablesOftenEnough(spts);
  for (const int pid : {kPatPid, kSdtPid, spts.pmtPid}) {
    expectCountersFromZero(spts, pid);
  }
}

TEST_F(TornelctlWithDaemon, OfOneServiceMakesTwoSoundStreamsFromOneCall) {
  const Lines lines = daemon_.linesOf([&] {
    succeed({"extract", samplePath(), "--service", "101", "--out",
             "gsid=1,sid=1201,name=Uno\\, castellano,audio=spa", "--out",
             "gsid=2,sid=1202,name=Uno EN,audio=eng", "-o", file("{gsid}.ts"), "--daemon"});
  });
  EXPECT_EQ(timesIn(lines, "7 inputSID [000101] Match!!!"), 1);
  const Spts first(file("1.ts"));
  const Spts second(file("2.ts"));
  expectSoundStream(first, 1201, "Uno, castellano");
  expectSoundStream(second, 1202, "Uno EN");
  EXPECT_THAT(languagesOf(first), ElementsAre("", "spa", ""));
  EXPECT_THAT(languagesOf(second), ElementsAre("", "eng", ""));
  EXPECT_FALSE(readText(file("1.ts")) == readText(file("2.ts")));
}

TEST_F(TornelctlOutputs, OfSeveralServicesAreTheStreamsThatEachGivesAlone) {
  succeed({"extract", samplePath(), "--out", "service=101", "--out", "service=102,audio=eng",
           "--out", "service=104,name=Radio", "-o", file("{sid}-{name}.ts")});
  const std::map<std::string, std::vector<std::string>> alone = {
      {"101-Canal_Uno.ts", {"--service", "101"}},
      {"102-Télé_Deux.ts", {"--service", "102", "--audio", "eng"}},
      {"104-Radio.ts", {"--service", "104", "--name", "Radio"}}};
  for (const auto& [name, arguments] : alone) {
    std::vector<std::string> all = {"extract", samplePath(), "-o", file("alone.ts")};
    all.insert(all.end(), arguments.begin(), arguments.end());
    succeed(all);
    EXPECT_TRUE(readText(file(name)) == readText(file("alone.ts"))) << name;
  }
}

TEST_F(TornelctlOutputs, AreAccountedForAsJson) {
  const Outcome outcome = succeed({"extract", samplePath(), "--service", "101", "--audio", "spa",
                                   "--out", "gsid=1,sid=1201,name=Uno\\, \"ES\"", "--out",
                                   "gsid=2,sid=1202,name=Uno EN,audio=eng", "--out",
                                   "gsid=3,service=104", "-o", file("{gsid}.ts"), "--json"});
  EXPECT_THAT(outcome.err, IsEmpty());
  expectSoundStream(Spts(file("1.ts")), 1201, "Uno, \"ES\"");
  expectSoundStream(Spts(file("2.ts")), 1202, "Uno EN");
  expectSoundStream(Spts(file("3.ts")), 104, "Radio Cuatro");
  EXPECT_THAT(languagesOf(Spts(file("2.ts"))), ElementsAre("", "eng", ""));
  const json said = json::parse(outcome.out);
  ASSERT_THAT(said.at("outputs"), SizeIs(3));
  for (const json& output : said.at("outputs")) {
    const Spts spts(output.at("file"));
    EXPECT_EQ(output.at("outputSID"), spts.pat.programs.begin()->first);
    std::map<int, size_t> pids;
    for (const json& pid : output.at("pids")) {
      pids[pid.at("pid")] = pid.at("packets");
    }
    EXPECT_EQ(pids, spts.stream.pids());
    EXPECT_EQ(output.at("streamPackets").get<size_t>() + output.at("tablePackets").get<size_t>(),
              spts.stream.packetCount());
  }
}

TEST_F(TornelctlWithDaemon, NamesTheOutputsThatItDoesNotGiveBesideThoseThatItGives) {
  succeed({"feed", samplePath()});
  const Outcome outcome =
      tornelctl({"output", "--json", "--out", "service=101,gsid=1", "--out", "service=999,gsid=9",
                 "--out", "service=101,gsid=2,last-node=listed,listed-node=5:6:eng"});
  EXPECT_EQ(outcome.exitStatus, 1);
  EXPECT_EQ(outcome.err,
            "tornelctl: the daemon has no PMT of service 999 (global service id 9): feed it a "
            "stream that holds the service first\n");
  const json answer = json::parse(outcome.out);
  EXPECT_THAT(answer, SizeIs(3)) << "the listed node's own, too";
  EXPECT_EQ(answer.at("5").at("outputTables").at("outputParam1"), 6);
}

TEST_F(TornelctlWithDaemon, HasTheAnswersStreamsAndFilesThatItHasWithItsOwnEngine) {
  for (const std::string name : {"Uno", "Uno HD"}) {
    const auto [daemons, own] = withBoth({"output", "--from", samplePath(), "--service", "101",
                                          "--name", name, "--audio", "eng", "--json"});
    EXPECT_EQ(daemons, own) << name;
    expectSameFiles();
    daemon_.restart();
  }
  const std::string recording = capturePath("italian-dtt-mpts.ts");
  const std::string path = std::filesystem::exists(recording) ? recording : samplePath();
  const std::string stream = file("out.ts");
  succeed({"extract", path, "--daemon", "-o", stream});
  const std::string daemons = readText(stream);
  succeed({"extract", path, "--state", state_, "-o", stream});
  EXPECT_TRUE(readText(stream) == daemons);
  expectSameFiles();
}

TEST_F(TornelctlOutputs, OfTheItalianRecordingAreProbedAsOneProgrammeEach) {
  const std::string path = capturePath("italian-dtt-mpts.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  succeed({"extract", path, "--audio", "eng", "--out", "service=3401,name=Uno", "--out",
           "service=3402,name=Due", "--out", "service=3401,gsid=9,sid=9,name=Uno ITA,audio=ita",
           "-o", file("{gsid}.ts")});
  const std::map<int, std::string> names = {{3401, "Uno"}, {3402, "Due"}, {9, "Uno ITA"}};
  for (const auto& [serviceId, name] : names) {
    const std::string output = file(std::to_string(serviceId) + ".ts");
    expectSoundStream(Spts(output), serviceId, name);
    if (const json probed = probe(output); !probed.is_null()) {
      EXPECT_EQ(probedKinds(probed, serviceId, name),
                (std::multiset<std::string>{"video", "audio", "subtitle"}));
    }
  }
}

}  // namespace
}  // namespace tevra::test
