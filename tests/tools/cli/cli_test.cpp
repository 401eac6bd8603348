#include "tools/cli/cli.h"

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
  [[nodiscard]] bool needsDaemon() const {
    return calls && name() != "extract" && name() != "report";
  }
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
      {{"status"}, false, false, true},
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

/** The names below "Commands:". */
std::vector<std::string> commandsIn(const std::string& help) {
  std::vector<std::string> names;
  std::istringstream lines(help);
  std::string line;
  while (std::getline(lines, line) && line != "Commands:") {
  }
  while (std::getline(lines, line) && !line.empty()) {
    if (line.size() > 2 && line[2] != ' ') {
      names.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
  }
  return names;
}

TEST(Cli, PrintsItsVersion) {
  const Result version = run({"--version"});
  EXPECT_EQ(kExitDone, version.status);
  EXPECT_THAT(version.out, testing::MatchesRegex("tornelctl [0-9.]+\n"));
}

TEST(Cli, HelpListsTheCommandsAndExplainsEach) {
  Arguments known;
  for (const Command& command : commands()) {
    known.push_back(command.name());
    const Result help = run({"help", command.name()});
    EXPECT_EQ(kExitDone, help.status) << command.name();
    EXPECT_EQ(run({command.name(), "--help"}).out, help.out) << command.name();
  }
  const std::string help = run({"help"}).out;
  EXPECT_THAT(commandsIn(help), UnorderedElementsAreArray(known));
  EXPECT_EQ(run({"--help"}).out, help);
  EXPECT_THAT(help, HasSubstr("\nUsage: tornelctl [OPTIONS] COMMAND\n"));
  EXPECT_THAT(run({"help", "help"}).out,
              HasSubstr("\nUsage: tornelctl help [OPTIONS] [COMMAND]\n"));
}

TEST(Cli, HelpSaysWhichLanguageCodesAreMeant) {
  EXPECT_THAT(run({"output", "--help"}).out, HasSubstr("fra keeps fre and FRE"));
  EXPECT_THAT(run({"output", "--help"}).out, HasSubstr("1; with --from the input stream's"));
}

TEST(Cli, FailsWhereWhatItSaysCannotBeWritten) {
  const std::string sample = test::sample();
  for (const std::vector<const char*>& arguments :
       std::vector<std::vector<const char*>>{{"tornelctl", "tables", sample.c_str()},
                                             {"tornelctl", "report", "--check", sample.c_str()},
                                             {"tornelctl", "--version"}}) {
    std::ostream nowhere(nullptr);
    std::ostringstream err;
    EXPECT_EQ(kExitFailed,
              runTornelctl(static_cast<int>(arguments.size()), arguments.data(), nowhere, err));
    EXPECT_EQ(err.str(), "tornelctl: cannot write to standard output: is its disk full?\n");
  }
}

TEST(Cli, RefusesArgumentsThatMakeNoSense) {
  const std::vector<std::pair<Arguments, std::string>> wrong = {
      {{}, "a command is missing"},
      {{"fed"}, "'fed'"},
      {{"help", "fed"},
       "there is no command 'fed' (did you mean 'feed'?); see tornelctl help --help"},
      {{"reset", "all"}, "all"},
      {{"ping", "--count", "0"}, "--count"},
      {{"feed"}, "FILE"},
      {{"feed", "a.ts", "b.ts"}, "b.ts"},
      {{"feed", "a.ts", "--rate", "fast"}, "--rate"},
      {{"feed", "-", "--loop"}, "--loop needs a file: standard input cannot begin again"},
      {{"feed", "udp://127.0.0.1:5000", "--loop"}, "--loop needs a file: udp://127.0.0.1:5000 "},
      {{"feed", "/dev/null", "--loop"}, "--loop needs a file: /dev/null cannot begin again"},
      {{"output", "--service", "1", "--name", "Caf\xE9"},
       "--name: 'Caf\xEF\xBF\xBD' is not UTF-8: convert it, with iconv for one"},
      {{"output", "--service", "65536"}, "--service: '65536' is no whole number from 0 to 65535"},
      {{"output", "--service", "abc"}, "--service: 'abc' is no whole number from 0 to 65535"},
      {{"output", "--service", "1", "--audio", "english"}, "--audio: 'english' is no "},
      {{"output", "--service", "1", "--last-node", "some"}, "--last-node"},
      {{"output", "--service", "1", "--last-node", "listed", "--listed-node", "x"}, "'x' is not "},
      {{"extract", "a.ts", "--service", "1"}, "--output"},
      {{"extract", "a.ts", "--service", "x", "-o", "x.ts"}, "--service"},
      {{"extract", test::sample(), "-o", "x.ts", "--seconds", "1"},
       "--seconds is for a live source"},
      {{"report"}, "FILE"},
      {{"report", "a.ts"}, "--output"},
      {{"report", "a.ts", "--check", "-o", "x.html"}, "leave --output out"},
      {{"report", "a.ts", "--check", "--title", "x"}, "leave --title out"},
      {{"report", "a.ts", "--check", "--state", "x"}, "leave --state out"},
      {{"report", "a.ts", "--check", "--daemon"}, "--check writes no page and needs no engine: "},
      {{"report", "a.ts", "--check", "--set", "1"}, "leave --daemon, --host, --set and --port out"},
      {{"report", "a.ts", "--check", "--timeout", "5"}, "leave --timeout out"},
      {{"report", "a.ts", "b.ts", "-o", "x.html"}, "b.ts"},
      {{"report", test::sample(), "-o", test::sample()}, "output and input are the same file"},
      {{"tables"}, "FILE"},
      {{"tables", "a.ts", "b.ts"}, "b.ts"},
      {{"tables", "a.ts", "--table", "rst"}, "--table"},
      {{"tables", "a.ts", "--service", "65536"}, "--service"},
      {{"output", "--service", "1", "--seconds", "1"}, "--seconds is for --from"},
      {{"tables", "a.ts", "--seconds", "0"}, "--seconds"},
      {{"feed", ""}, "FILE: a file is missing"},
      {{"tables", ""}, "FILE: a file is missing"},
      {{"extract", "", "-o", "x.ts"}, "FILE: a file is missing"},
      {{"status", "--json", "--metrics"}, "--json and --metrics exclude each other"},
      {{"status", "--type", "4"}, "--type"},
      {{"listen", "--timeout", "0"}, "--timeout"},
      {{"listen", "--count", "0"}, "--count"},
      {{"listen", "--color", "red"}, "--color"},
  };
  for (const auto& [arguments, what] : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Result result = run(arguments);
    expectUsageError(result, what);
    EXPECT_THAT(result.err, HasSubstr("; see tornelctl "));
  }
}

TEST(Cli, FailsOnOneLineWhateverTheArgumentsHold) {
  const Result failed = run({"tables", "/no/such\nfile"});
  EXPECT_EQ(kExitFailed, failed.status);
  EXPECT_EQ("tornelctl: cannot open /no/such file: No such file or directory\n", failed.err);
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
  for (const Command& command : commands()) {
    if (!command.hasJson) {
      continue;
    }
    SCOPED_TRACE(command.name());
    Arguments more = {"--json"};
    if (command.needsDaemon()) {
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
