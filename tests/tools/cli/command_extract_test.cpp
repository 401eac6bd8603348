#include <sys/stat.h>
#include <cerrno>
#include <chrono>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/failing_send.h"
#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tests/tools/support/udp_receiver.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::Result;
using test::run;
using test::TemporaryFile;
using testing::AllOf;
using testing::HasSubstr;

using ExtractCommand = test::WithFakeDaemon;

/** The sample's service 101 as service 1201, which sampleAnswer describes. */
std::map<int32_t, SPTSConfiguration> answerForSample() {
  auto answer = test::sampleAnswer();
  auto& items = answer.at(1201).pidItems;
  items.resize(2);
  items[0].inputPid = 0x100;
  items[1].inputPid = 0x101;
  return answer;
}

TEST_F(ExtractCommand, WritesTheStream) {
  server_.daemon().answer = answerForSample();
  const TemporaryFile file("out");
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, AllOf(HasSubstr("10013 packets, 24 tables\n"), HasSubstr("Canal Uno"),
                                HasSubstr("output " + file.path() + ": 1546 packets of streams"),
                                HasSubstr("9.41 s")));
  std::map<int, int> counts;
  for (const TsPacket& packet : file.readPackets()) {
    ++counts[packet.pid()];
  }
  EXPECT_EQ(4U, counts.size());
  EXPECT_EQ(1546, counts[502]);
  EXPECT_GE(counts[0], 95);
  EXPECT_EQ(counts[0], counts[501]);
  EXPECT_GE(counts[0x11], 9);
}

TEST_F(ExtractCommand, NeedsNoDaemonAndLeavesOneAloneUnlessItIsAskedFor) {
  const TemporaryFile file("out");
  const std::vector<std::string> arguments = {"extract", test::sample(), "--service",
                                              "101",     "-o",           file.path()};
  const Result result = run(arguments);
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, HasSubstr("output " + file.path() + ": "));
  EXPECT_GT(file.readPackets().size(), 3000U);
  EXPECT_TRUE(server_.daemon().calls.empty());
  for (const char* option : {"--daemon", "--host=127.0.0.1", "--set=0"}) {
    std::vector<std::string> more = arguments;
    more.emplace_back(option);
    EXPECT_THAT(run(more).err, HasSubstr("no daemon answers at 127.0.0.1:9224")) << option;
  }
}

class SendingExtractCommand : public testing::Test {
 protected:
  /** A service with a PCR every 20 ms, 0.3 s long. */
  SendingExtractCommand() {
    test::StreamBuilder stream;
    stream.add(0, test::makePat(1, 1, {{101, 0x100}}));
    stream.add(0x100, test::makePmt(101, 1, 0x101, {{2, 0x101, {}}}));
    for (int i = 0; i <= 15; ++i) {
      stream.add(0x101, i * kSystemClock / 50);
    }
    input_.write(stream.packets());
  }

  const TemporaryFile input_{"in"};
};

TEST_F(SendingExtractCommand, SendsWhatAFileWouldHoldInTheTimeThatItWasMade) {
  const TemporaryFile file("out");
  EXPECT_EQ(kExitDone, run({"extract", input_.path(), "-o", file.path()}).status);
  const test::UdpReceiver receiver(21101);
  const auto start = std::chrono::steady_clock::now();
  const Result result = run({"extract", input_.path(), "-o", "udp://127.0.0.1:21{gsid}"});
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, HasSubstr("output udp://127.0.0.1:21101: 16 packets of streams, "));
  std::string sent;
  while (receiver.hasMore()) {
    sent += receiver.receive();
  }
  EXPECT_TRUE(sent == file.read());
}

TEST_F(SendingExtractCommand, WarnsOfDatagramsThatWereNotSent) {
  const test::FailingSend none(ENOBUFS);
  const Result result = run({"extract", input_.path(), "-o", "udp://127.0.0.1:21101"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.err, HasSubstr("tornelctl: udp://127.0.0.1:21101: "));
  EXPECT_THAT(result.err, HasSubstr(" could not be sent: No buffer space available\n"));
}

TEST_F(SendingExtractCommand, SaysThatAnAddressIsNoneBeforeTheStreamIsRead) {
  const Result result = run({"extract", "/dev/null/absent", "-o", "udp://nowhere:5000"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("'udp://nowhere:5000' is not udp://ADDRESS:PORT"));
}

TEST_F(ExtractCommand, WaitsForNoDaemonThatItIsNotToldToFeed) {
  const TemporaryFile file("out");
  const Result result = run({"extract", test::sample(), "-o", file.path(), "--timeout", "5"});
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_THAT(result.err, HasSubstr("--timeout is for a daemon: add --daemon"));
  EXPECT_FALSE(std::filesystem::exists(file.path()));
}

TEST_F(ExtractCommand, TakesAStateDirectoryOrADaemonNotBoth) {
  const std::string directory = testing::TempDir() + "ExtractCommand-none/state";
  const std::vector<std::string> arguments = {"extract", test::sample(), "-o",
                                              "x.ts",    "--state",      directory};
  const Result alone = run(arguments);
  EXPECT_EQ(kExitFailed, alone.status);
  EXPECT_EQ("tornelctl: cannot keep state in " + directory + ": No such file or directory\n",
            alone.err);
  const Result both = runWithDaemon(arguments);
  EXPECT_EQ(kExitUsage, both.status);
  EXPECT_THAT(both.err, HasSubstr("--state is not for a daemon, which keeps its own"));
  EXPECT_TRUE(server_.daemon().calls.empty());
}

TEST_F(ExtractCommand, TakesNameAndIdsFromTheStreamUnlessTheyAreGiven) {
  server_.daemon().answer = answerForSample();
  const TemporaryFile file("out");
  const std::vector<std::string> arguments = {
      "extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()};
  EXPECT_EQ(kExitDone, runWithDaemon(arguments).status);
  std::vector<std::string> more = arguments;
  more.insert(more.end(),
              {"--name", "Uno", "--transport-stream-id", "2", "--original-network-id", "3"});
  EXPECT_EQ(kExitDone, runWithDaemon(more).status);
  const auto& requests = server_.daemon().requests;
  EXPECT_EQ("Canal Uno", requests.at(0).outputs.at(1201).serviceName);
  EXPECT_EQ(1101, requests.at(0).outputs.at(1201).transportStreamId);
  EXPECT_EQ(0xFF01, requests.at(0).outputs.at(1201).originalNetworkId);
  EXPECT_EQ("Uno", requests.at(1).outputs.at(1201).serviceName);
  EXPECT_EQ(2, requests.at(1).outputs.at(1201).transportStreamId);
  EXPECT_EQ(3, requests.at(1).outputs.at(1201).originalNetworkId);
}

TEST_F(ExtractCommand, TakesTheFirstServiceUnlessOneIsGiven) {
  const TemporaryFile file("out");
  (void)runWithDaemon({"extract", test::sample(), "-o", file.path()});
  ASSERT_EQ(1U, server_.daemon().requests.size());
  EXPECT_EQ(101, server_.daemon().requests[0].inputSID);
  EXPECT_EQ("Canal Uno", server_.daemon().requests[0].outputs.at(101).serviceName);
}

TEST_F(ExtractCommand, ListsTheServicesWhenTheOneAskedForIsNotThere) {
  server_.daemon().answer = answerForSample();  // left from another stream
  const TemporaryFile file("out");
  const Result result =
      runWithDaemon({"extract", test::sample(), "--service", "999", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ(replacing(test::sample()) +
                "tornelctl: service 999 has no PMT in this stream; services that have: 101 \"Canal "
                "Uno\", "
                "102 \"Télé Deux\", 103 \"Kanal Süd\", 104 \"Radio Cuatro\"\n",
            result.err);
  EXPECT_FALSE(std::filesystem::exists(file.path()));
}

TEST_F(ExtractCommand, FailsWhenTheDaemonGivesNoOutput) {
  const TemporaryFile file("out");
  const Result result =
      runWithDaemon({"extract", test::sample(), "--service", "101", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("there is no output for service 101"));
}

TEST_F(ExtractCommand, WarnsOfPidsThatItCannotCarryAndFailsWithoutAny) {
  server_.daemon().answer = answerForSample();
  server_.daemon().answer.at(1201).pidItems.at(1).inputPid = 65535;
  const TemporaryFile file("out");
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, AllOf(HasSubstr("output PID 502 (PCR, ES) is left out"),
                                HasSubstr("holds tables alone")));
}

TEST_F(ExtractCommand, FailsWhenTheOutputCannotBeWritten) {
  server_.daemon().answer = answerForSample();
  for (const std::string path : {"/no/such/folder/out.ts", "/dev/full"}) {
    const Result result = runWithDaemon(
        {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", path});
    EXPECT_EQ(kExitFailed, result.status) << path;
    EXPECT_THAT(result.err, HasSubstr(path));
  }
}

TEST_F(ExtractCommand, FeedsNothingWhenAnOutputCanBeToldNotToBeWritable) {
  for (const std::string name :
       {"/no/such/folder/out.ts", "/no/such/folder/{gsid}.ts", "/no/such/folder/{name}.ts"}) {
    const Result result =
        runWithDaemon({"extract", test::sample(), "--service", "101", "-o", name});
    EXPECT_EQ(kExitFailed, result.status) << name;
    EXPECT_THAT(result.err, HasSubstr("there is no directory /no/such/folder; make it first"));
  }
  EXPECT_THAT(server_.daemon().calls, testing::IsEmpty());
}

TEST_F(ExtractCommand, WithoutAServiceNeedsAStreamWithAPmt) {
  test::PacketWriter writer;
  const TemporaryFile file("ts");
  file.write(writer.section(0x11, test::makeSdt(1, 4, 101, "One")));
  const Result result = run({"extract", file.path(), "-o", file.path() + ".out"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: no service of this stream has a PMT\n", result.err);
}

/** Every output with the streams of the sample's service 101. */
std::map<int32_t, SPTSConfiguration> answerEach(const SrvOutputRequest& request) {
  std::map<int32_t, SPTSConfiguration> answer;
  for (const auto& output : request.outputs) {
    answer[output.first] = answerForSample().at(1201);
  }
  return answer;
}

/** The sample's service 101 without an SDT, its video and a stream that is not carried. */
std::vector<TsPacket> streamWithoutSdt() {
  test::StreamBuilder stream;
  stream.add(0, test::makePat(1, 1, {{101, 0x100}}));
  stream.add(0x100, test::makePmt(101, 1, 0x101, {{2, 0x101, {}}, {0x86, 0x102, {}}}));
  for (const int64_t pcr : {0, 1'000'000}) {
    stream.add(0x101, pcr);
  }
  return stream.packets();
}

TEST_F(ExtractCommand, EntersAServiceThatTheStreamDoesNotDescribeAndSaysSo) {
  server_.daemon().answerTo = answerEach;
  const TemporaryFile input("in");
  input.write(streamWithoutSdt());
  const TemporaryFile file("out");
  const Result result =
      runWithDaemon({"extract", input.path(), "--audio", "none", "-o", file.path()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.err, HasSubstr("there is no SDT to describe service 101: it goes out as "
                                    "digital television (type 0x01), by its streams\n"));
  EXPECT_EQ((std::vector<std::string>{"setPAT PAT 1 v1", "setPMT PMT 101 v1", "setSDT SDT 1 v0",
                                      "getSrvOutputData"}),
            server_.daemon().calls);
}

TEST_F(ExtractCommand, FailsForAWarningOnlyWhenItIsStrict) {
  server_.daemon().answerTo = answerEach;
  const TemporaryFile input("in");
  input.write(streamWithoutSdt());
  const TemporaryFile file("out");
  std::vector<std::string> arguments = {"extract", input.path(), "-o", file.path()};
  const Result lenient = runWithDaemon(arguments);
  EXPECT_EQ(kExitDone, lenient.status);
  const std::string warning = "tornelctl: " + file.path() +
                              ": left out for a type that is not carried: input PID 258 "
                              "(SCTE 35 splice information)\n";
  EXPECT_THAT(lenient.err, HasSubstr(warning));
  arguments.emplace_back("--strict");
  const Result strict = runWithDaemon(arguments);
  EXPECT_EQ(kExitFailed, strict.status);
  EXPECT_THAT(strict.err,
              HasSubstr(warning + "tornelctl: 1 warning, which --strict does not let pass\n"));
  EXPECT_FALSE(file.readPackets().empty()) << "is written all the same";
}

TEST_F(ExtractCommand, AsksForLanguagesAsTheStreamWritesThem) {
  server_.daemon().answerTo = answerEach;
  test::StreamBuilder stream;
  stream.add(0, test::makePat(1, 1, {{101, 0x100}}));
  stream.add(0x100, test::makePmt(
                        101, 1, 0x101,
                        {{2, 0x101, {}}, {4, 0x102, test::descriptor(0x0A, {'D', 'e', 'U', 0})}}));
  stream.add(0x101, 0);
  const TemporaryFile input("in");
  input.write(stream.packets());
  const TemporaryFile file("out");
  (void)runWithDaemon({"extract", input.path(), "--audio", "ger", "-o", file.path()});
  std::vector<std::string> asked;
  for (const AudioLanguage& language :
       server_.daemon().requests.at(0).lastNodeSettings.at(101).at(0).audioLanguages) {
    asked.push_back(language.language);
  }
  EXPECT_EQ((std::vector<std::string>{"ger", "deu", "DeU"}), asked);
}

/** A pattern for files with these global service ids, which are removed at the end. */
class OutputFiles {
 public:
  explicit OutputFiles(const std::vector<int>& globalSids) {
    for (const int globalSid : globalSids) {
      files_.push_back(std::make_unique<TemporaryFile>(std::to_string(globalSid)));
    }
    const std::string& first = files_.at(0)->path();
    pattern_ = first.substr(0, first.rfind('.') + 1) + "{gsid}";
  }

  [[nodiscard]] const std::string& pattern() const { return pattern_; }
  [[nodiscard]] const TemporaryFile& at(size_t index) const { return *files_.at(index); }

 private:
  std::vector<std::unique_ptr<TemporaryFile>> files_;
  std::string pattern_;
};

TEST_F(ExtractCommand, WritesAFileForEachOutput) {
  server_.daemon().answerTo = answerEach;
  const OutputFiles files({1, 2});
  const Result result = runWithDaemon({"extract", test::sample(), "--service", "101", "--out",
                                       "gsid=1,name=A", "--out", "gsid=2", "-o", files.pattern()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  ASSERT_EQ(1U, server_.daemon().requests.size());
  EXPECT_EQ("A", server_.daemon().requests[0].outputs.at(1).serviceName);
  EXPECT_EQ("Canal Uno", server_.daemon().requests[0].outputs.at(2).serviceName);
  for (size_t index : {0U, 1U}) {
    EXPECT_GT(files.at(index).readPackets().size(), 1546U);
    EXPECT_THAT(result.out, HasSubstr("output " + files.at(index).path() + ": 1546 packets of"));
  }
}

TEST_F(ExtractCommand, PrintsWhatItWroteAsJson) {
  server_.daemon().answerTo = [](const SrvOutputRequest& request) {
    auto answer = answerEach(request);
    answer.at(2).pidItems.push_back(answer.at(2).pidItems.at(1));
    answer.at(2).pidItems.back().inputPid = 65535;
    return answer;
  };
  const OutputFiles files({1, 2});
  const Result result = runWithDaemon({"extract", test::sample(), "--out", "gsid=1", "--out",
                                       "gsid=2", "-o", files.pattern(), "--json"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ(replacing(test::sample()), result.err);
  const json printed = json::parse(result.out);
  EXPECT_EQ(test::sample(), printed.at("source"));
  EXPECT_EQ(10013, printed.at("packets"));
  EXPECT_EQ(24, printed.at("tablesSent"));
  ASSERT_EQ(2U, printed.at("outputs").size());
  const json& first = printed.at("outputs").at(0);
  EXPECT_EQ(1, first.at("globalSID"));
  EXPECT_EQ(101, first.at("inputSID"));
  EXPECT_EQ(101, first.at("outputSID"));
  EXPECT_EQ("Canal Uno", first.at("serviceName"));
  EXPECT_EQ(files.at(0).path(), first.at("file"));
  EXPECT_EQ(1546, first.at("streamPackets"));
  EXPECT_NEAR(9.41, first.at("seconds").get<double>(), 0.01);
  EXPECT_EQ(502, first.at("pidItems").at(1).at("outputPid"));
  EXPECT_EQ((json{{"pid", 502}, {"packets", 1546}, {"gaps", 0}}), first.at("pids").at(3));
  EXPECT_EQ(json::array(), first.at("warnings"));
  EXPECT_EQ(1U, printed.at("outputs").at(1).at("warnings").size());
}

TEST_F(ExtractCommand, NamesEveryFileThatHoldsTablesAlone) {
  server_.daemon().answerTo = [](const SrvOutputRequest& request) {
    auto answer = answerEach(request);
    answer.at(1).pidItems.at(1).inputPid = 65535;
    answer.at(3).pidItems.at(1).inputPid = 65535;
    return answer;
  };
  const OutputFiles files({1, 2, 3});
  const Result result = runWithDaemon({"extract", test::sample(), "--out", "gsid=1", "--out",
                                       "gsid=2", "--out", "gsid=3", "-o", files.pattern()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("tornelctl: " + files.at(0).path() + ", " + files.at(2).path() +
                                    " hold tables alone"));
  EXPECT_THAT(result.err, HasSubstr("tornelctl: " + files.at(0).path() + ": output PID 502"));
  EXPECT_THAT(result.out, HasSubstr("output " + files.at(1).path()));
  EXPECT_FALSE(files.at(2).readPackets().empty()) << "tables are written";
}

TEST_F(ExtractCommand, WritesNothingWhenOneOutputIsNotAnswered) {
  server_.daemon().answerTo = [](const SrvOutputRequest& request) {
    auto answer = answerEach(request);
    answer.erase(2);
    return answer;
  };
  const OutputFiles files({1, 2});
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--out", "gsid=1", "--out", "gsid=2", "-o", files.pattern()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("no output for service 101 (global service id 2)"));
  EXPECT_FALSE(std::filesystem::exists(files.at(0).path()));
}

TEST_F(ExtractCommand, RefusesOneFileForTwoOutputsOnceTheStreamHasNamedThem) {
  server_.daemon().answerTo = answerEach;
  const std::string pattern = testing::TempDir() + "ExtractCommand-{name}.ts";
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--out", "gsid=1", "--out", "gsid=2", "-o", pattern});
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_EQ(replacing(test::sample()) + "tornelctl: -o " + pattern + ": two outputs would go to " +
                testing::TempDir() + "ExtractCommand-Canal_Uno.ts; {gsid} keeps them apart\n",
            result.err);
  EXPECT_FALSE(std::filesystem::exists(testing::TempDir() + "ExtractCommand-Canal_Uno.ts"));
  EXPECT_TRUE(server_.daemon().requests.empty());
}

TEST_F(ExtractCommand, RefusesOneGlobalServiceIdForTwoOutputsOnceTheStreamHasGivenTheService) {
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--out", "gsid=101", "--out", "name=B", "-o", "x{gsid}.ts"});
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_THAT(result.err, HasSubstr("global service id 101 is taken by --out 'gsid=101'"));
}

TEST(ExtractCommandLine, SaysWhatIsWrongWithTheFilesBeforeTheStreamIsRead) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"-o", "x.ts", "--out", "gsid=1", "--out", "gsid=2"},
       "-o x.ts is one file for 2 outputs: name one each with {gsid}, {sid} or {name}, as in -o "
       "out-{gsid}.ts"},
      {{"-o", "-", "--out", "gsid=1", "--out", "gsid=2"},
       "-o - is one file for 2 outputs: name one each with {gsid}, {sid} or {name}, as in -o "
       "out-{gsid}.ts"},
      {{"-o", "-", "--json"}, "--json and -o - both want standard output: write to a file"},
      {{"-o", "x{sid}.ts", "--service", "101", "--out", "gsid=1", "--out", "gsid=2"},
       "-o x{sid}.ts: two outputs would go to x101.ts; {gsid} keeps them apart"},
      {{"-o", "x{name}", "--service", "101", "--out", "gsid=1,name=a b", "--out",
        "gsid=2,name=a_b"},
       "-o x{name}: two outputs would go to xa_b; {gsid} keeps them apart"},
      {{"-o", "x{foo}.ts"},
       "-o x{foo}.ts: '{foo}' is not {service}, {gsid}, {sid} or {name}; {{ stands for a brace"},
      {{"-o", "udp://127.0.0.1:5{sid}", "--service", "101", "--out", "gsid=1", "--out", "gsid=2"},
       "-o udp://127.0.0.1:5{sid}: two outputs would go to udp://127.0.0.1:5101; {gsid} keeps them "
       "apart"},
      {{"-o", test::sample()}, "output and input are the same file, " + test::sample()},
      {{"-o", "x{gsid}", "--out", "name=a", "--out", "name=b"},
       "--out 'name=b': the global service id of the same service is taken by --out 'name=a': give "
       "each output its own with gsid=N"},
  };
  for (const auto& [arguments, error] : wrong) {
    std::vector<std::string> all = {"extract", test::sample()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Result result = run(all);
    EXPECT_EQ(kExitUsage, result.status) << error;
    EXPECT_EQ("tornelctl: " + error + "\n", result.err);
  }
}

/** Extracts service 101 of the sample, which comes through a pipe. */
Result runOnAPipe(const TemporaryFile& pipe, const std::vector<std::string>& more) {
  EXPECT_EQ(0, mkfifo(pipe.path().c_str(), 0600));
  std::thread writer([&] { pipe.write(test::contentOf(test::sample())); });
  std::vector<std::string> arguments = {"extract", pipe.path(), "--service", "101"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  Result result = run(arguments);
  writer.join();
  return result;
}

TEST_F(ExtractCommand, TakesAPipeWhichItReadsOnce) {
  const TemporaryFile pipe("pipe");
  const TemporaryFile file("out");
  const Result result = runOnAPipe(pipe, {"-o", file.path()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("output with global service id 101"), HasSubstr("Canal Uno"),
                    HasSubstr("input " + pipe.path() + ": 10013 packets, 24 tables\n"),
                    HasSubstr("output " + file.path() + ": ")));
  EXPECT_GT(file.readPackets().size(), 3000U);
}

TEST_F(ExtractCommand, LeavesTheDaemonAloneWhereALiveSourceIsNone) {
  const TemporaryFile file("out");
  const Result result = runWithDaemon({"extract", "udp://127.0.0.1", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, testing::StartsWith("tornelctl: 'udp://127.0.0.1' is not udp://"));
}

TEST_F(ExtractCommand, PrintsTheAccountOfALiveSourceAsJsonAlone) {
  const TemporaryFile pipe("pipe");
  const TemporaryFile file("out");
  const json account = json::parse(runOnAPipe(pipe, {"-o", file.path(), "--json"}).out);
  EXPECT_EQ(10013, account.at("packets"));
  EXPECT_EQ(file.path(), account.at("outputs").at(0).at("file"));
}

}  // namespace
}  // namespace tevra::tools
