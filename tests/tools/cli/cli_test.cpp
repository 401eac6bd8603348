#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tools/cli/cli.h"

/** What holds for all commands alike. */
namespace tevra::tools {
namespace {

using test::FakeDaemonServer;
using test::Result;
using test::run;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;

using Arguments = std::vector<std::string>;

/** A command and arguments with which it does something. */
struct Command {
  Arguments arguments;
  bool calls;     // the daemon
  bool hasJson;   // and ends by itself
  bool isCalled;  // has a host, a set and a port, but of its own

  [[nodiscard]] const std::string& name() const { return arguments.front(); }
  [[nodiscard]] bool hasPort() const { return calls || isCalled; }
  [[nodiscard]] Result runWith(const Arguments& more) const {
    Arguments all = arguments;
    all.insert(all.end(), more.begin(), more.end());
    return run(all);
  }
};

std::string outputFile() {
  return testing::TempDir() + "Commands.out";
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** Every command has a line. */
const std::vector<Command>& commands() {
  static const std::vector<Command> kCommands = {
      {{"feed", test::sample()}, true, true, false},
      {{"output", "--service", "1201"}, true, true, false},
      {{"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", outputFile()},
       true,
       true,
       false},
      {{"report", test::sample(), "-o", outputFile()}, true, true, false},
      {{"tables", test::sample()}, false, true, false},
      {{"listen"}, false, false, true},
      {{"reset"}, true, true, false},
      {{"ping"}, true, true, false},
      {{"help"}, false, false, false},
  };
  return kCommands;
}

/** Wrong usage: status 2, nothing on standard output, and one line that names what is wrong. */
void expectUsageError(const Result& result, const std::string& what) {
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_THAT(result.out, IsEmpty());
  EXPECT_THAT(result.err, AllOf(StartsWith("tornelctl: "), HasSubstr(what)));
  EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
}

int portWithoutDaemon() {
  const FakeDaemonServer server;
  return server.port();
}

TEST(Commands, AreAllLookedAt) {
  std::vector<std::string> listed;
  std::istringstream help(run({"--help"}).out);
  std::string line;
  while (std::getline(help, line) && line != "Subcommands:") {
  }
  while (std::getline(help, line) && !line.empty()) {
    if (line.size() > 2 && line[2] != ' ') {
      listed.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
  }
  std::vector<std::string> known;
  for (const Command& command : commands()) {
    known.push_back(command.name());
  }
  EXPECT_THAT(known, UnorderedElementsAreArray(listed));
}

TEST(Commands, RefuseAnOptionThatThereIsNot) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.name());
    const Result result = command.runWith({"--nonsense"});
    expectUsageError(result, "--nonsense");
    EXPECT_THAT(result.err, HasSubstr("tornelctl " + command.name() + " --help"));
  }
}

TEST(Commands, RefuseASetPortOrTimeoutOutOfRange) {
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {"--set", "4"},      {"--set", "-1"},     {"--set", "x"},       {"--set", ""},
      {"--port", "0"},     {"--port", "65536"}, {"--port", "http"},   {"--timeout", "0"},
      {"--timeout", "-1"}, {"--timeout", "1s"}, {"--timeout", "3601"}};
  for (const Command& command : commands()) {
    for (const auto& [option, value] : wrong) {
      SCOPED_TRACE(command.name() + " " + option + " " + value);
      expectUsageError(command.runWith({option, value}), option);
    }
  }
}

TEST(Commands, ThatCallTheDaemonTakeTheSameOptionsForIt) {
  for (const Command& command : commands()) {
    SCOPED_TRACE(command.name());
    const std::string help = run({command.name(), "--help"}).out;
    for (const char* option : {"  --host ", "  --set ", "  --port "}) {
      EXPECT_EQ(command.hasPort(), help.find(option) != std::string::npos) << option;
    }
    if (!command.isCalled) {
      EXPECT_EQ(command.calls, help.find("  --timeout ") != std::string::npos);
      EXPECT_EQ(command.hasJson, help.find("  --json ") != std::string::npos);
    }
  }
}

TEST(Commands, SayWhereThereIsNoDaemonAndWhatToStart) {
  std::filesystem::remove(outputFile());  // of an earlier run
  const std::string port = std::to_string(portWithoutDaemon());
  for (const Command& command : commands()) {
    if (!command.calls) {
      continue;
    }
    SCOPED_TRACE(command.name());
    const Result result = command.runWith({"--port", port});
    EXPECT_EQ(kExitFailed, result.status);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, AllOf(StartsWith("tornelctl: no daemon answers at 127.0.0.1:" + port),
                                  HasSubstr("start tornel")));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
    EXPECT_FALSE(std::filesystem::exists(outputFile())) << "nothing is written";
  }
}

TEST(Commands, PrintJsonAloneWhenAskedTo) {
  FakeDaemonServer server;
  server.daemon().answer = test::sampleAnswer();
  SPTSConfiguration& output = server.daemon().answer.at(1201);
  output.pidItems.at(1).inputPid = 0x101;
  output.pidItems.at(2).inputPid = 0x102;
  for (const int32_t service : {101, 102, 103, 104}) {
    server.daemon().answer[service] = output;  // the report asks for each as it is
  }
  for (const Command& command : commands()) {
    if (!command.hasJson) {
      continue;
    }
    SCOPED_TRACE(command.name());
    Arguments more = {"--json"};
    if (command.calls) {
      more.insert(more.end(), {"--port", std::to_string(server.port())});
    }
    const Result result = command.runWith(more);
    EXPECT_EQ(kExitDone, result.status);
    EXPECT_EQ("", result.err);
    const std::string json = command.name() == "report" ? contentOf(outputFile()) : result.out;
    EXPECT_TRUE(nlohmann::json::accept(json)) << json;
  }
  std::filesystem::remove(outputFile());
}

}  // namespace
}  // namespace tevra::tools
