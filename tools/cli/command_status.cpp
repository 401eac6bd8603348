#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include "im_SIControlSrv.h"
#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/status/listening.h"
#include "tools/status/set_status.h"
#include "tools/status/status_output.h"
#include "tools/stream/files.h"
#include "tools/text/terminal.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr const char* kThisMachine = "127.0.0.1";
constexpr int kSets = 4;

struct StatusOptions {
  std::string host = kThisMachine;
  std::optional<int> set;
  std::optional<int> port;
  int timeoutSeconds = 2;
  std::string root;
  std::optional<std::string> type;
  std::string outputFile = "-";
  bool json = false;
  bool metrics = false;
};

bool isThisMachine(const StatusOptions& options) {
  return options.host == kThisMachine || options.host == "localhost";
}

/** By the options or the environment; empty when neither says it. */
std::string givenRoot(const StatusOptions& options) {
  return options.root.empty() ? environmentVariable("TEVRA_CONF_ROOT") : options.root;
}

std::string rootOf(const StatusOptions& options) {
  const std::string given = givenRoot(options);
  return given.empty() ? usualRoot() : given;
}

KeptState keptStateOf(const StatusOptions& options, int set) {
  return readKeptState(rootOf(options), set,
                       options.type ? std::stoi(*options.type) : moduleTypeHere());
}

/** Calls getSIData, which changes nothing, once. */
DaemonStatus askDaemon(const DaemonAddress& address, bool isHere) {
  using Clock = std::chrono::steady_clock;
  DaemonStatus status;
  status.address = address.host + ":" + std::to_string(address.port);
  if (isHere) {
    status.listens = isListening(address.port);
  }
  try {
    const auto start = Clock::now();
    withDaemon(address, [&](thrift::in_module::im_SIControlSrvIf& daemon) {
      thrift::in_module::SIService answer;
      daemon.getSIData(answer);
      status.answerSeconds = std::chrono::duration<double>(Clock::now() - start).count();
    });
  } catch (const ToolError& error) {
    status.answerSeconds.reset();
    status.problem = error.what();
  }
  return status;
}

/** Of another machine neither files nor sockets can be seen. */
SetStatus look(const StatusOptions& options, int set) {
  SetStatus status;
  status.set = set;
  const bool isHere = isThisMachine(options);
  const int port = kFirstNotificationPort + set;
  status.mainTaskAddress = options.host + ":" + std::to_string(port);
  if (isHere) {
    status.root = rootOf(options);
    status.kept = keptStateOf(options, set);
    status.mainTaskListens = isListening(port);
  }
  status.daemon = askDaemon(
      {options.host, options.port.value_or(kFirstControlPort + set), options.timeoutSeconds},
      isHere);
  return status;
}

/** Without --set those of this machine that there is anything of, or the first. */
std::vector<int> setsOf(const StatusOptions& options) {
  std::vector<int> sets;
  if (options.set || options.port || !isThisMachine(options)) {
    return {options.set.value_or(0)};
  }
  for (int set = 0; set < kSets; ++set) {
    if (isListening(kFirstControlPort + set).value_or(false) || keptStateOf(options, set).any()) {
      sets.push_back(set);
    }
  }
  return sets.empty() ? std::vector<int>{0} : sets;
}

std::string textOf(const StatusOptions& options, const std::vector<SetStatus>& sets, size_t width) {
  if (options.metrics) {
    return statusMetrics(sets);
  }
  return options.json ? statusJson(sets) + "\n"
                      : statusText(sets, std::chrono::system_clock::now(), width);
}

/** Without one of its own the root may be missing: then nothing has been saved yet. */
bool lacksGivenRoot(const StatusOptions& options) {
  std::error_code error;
  return !givenRoot(options).empty() && isThisMachine(options) &&
         !std::filesystem::is_directory(rootOf(options), error) &&
         error != std::errc::permission_denied;  // that is said of its files
}

/** Raises ToolError with all that is wrong. */
void requireNoProblem(const StatusOptions& options, const std::vector<SetStatus>& sets) {
  std::vector<std::string> problems;
  if (lacksGivenRoot(options)) {
    problems.push_back("there is no directory " + rootOf(options) + ": see --conf");
  }
  for (const SetStatus& status : sets) {
    for (const std::string& problem : problemsOf(status)) {
      problems.push_back("MPTS " + std::to_string(status.set) + ": " + problem);
    }
  }
  if (!problems.empty()) {
    throw ToolError(joined(problems, "; "));
  }
}

int status(const StatusOptions& options, const Console& console) {
  if (options.json && options.metrics) {
    throw ArgumentError("--json and --metrics exclude each other");
  }
  std::vector<SetStatus> sets;
  for (const int set : setsOf(options)) {
    sets.push_back(look(options, set));
  }
  if (options.outputFile == "-") {
    console.out << textOf(options, sets, widthOf(console.out));
  } else {
    replaceFile(options.outputFile, textOf(options, sets, 0));
  }
  requireNoProblem(options, sets);
  return kExitDone;
}

void addWhereOptions(Command& command, StatusOptions& options) {
  command.option("--host", options.host,
                 "Address of the machine; of another one only the daemon is asked");
  command
      .option("--set", options.set,
              "Multiplex of the module, 0 to 3 (default: all that run here or have files)")
      .range(0, kSets - 1);
  command.option("--port", options.port, "TCP port (default: 9224 + set)").range(1, 65535);
  command.option("--timeout", options.timeoutSeconds, "Seconds to wait for the daemon's answer")
      .range(1, 3600);
  command
      .option("--conf", options.root,
              "Directory of the daemon's files (default: TEVRA_CONF_ROOT, or the service's "
              "/var/lib/tornel where it exists, or /etc/tevra/conf)")
      .called("DIR");
  command
      .option("--type", options.type,
              "Type of the module, which decides the PID pool (default: this machine's, 5 unless "
              "TEVRA_MODULE_TYPE says otherwise)")
      .oneOf({"0", "5", "6"});
}

}  // namespace

void addStatusCommand(CommandLine& line) {
  const auto options = std::make_shared<StatusOptions>();
  Command command = line.command(
      "status", "Say what goes on, without changing anything: daemon, MainTask and what is saved");
  command.flag("--json", options->json, "Print it as JSON");
  command.flag("--metrics", options->metrics, "Print it as OpenMetrics text, for monitoring");
  command.option("-o,--output", options->outputFile,
                 "File to write, replaced as a whole; - is standard output");
  addWhereOptions(command, *options);
  command.action([options](const Console& console) { return status(*options, console); });
}

}  // namespace tevra::tools
