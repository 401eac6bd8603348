#include <chrono>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/round_trips.h"
#include "tools/text/json_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kMostCalls = 1'000'000;

struct PingOptions {
  EndpointOptions endpoint;
  int count = 10;
  bool json = false;
};

RoundTrips measure(const PingOptions& options) {
  using Clock = std::chrono::steady_clock;
  RoundTrips times;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    thrift::in_module::SIService answer;
    for (int call = 0; call < options.count; ++call) {
      const auto start = Clock::now();
      daemon.getSIData(answer);
      times.push_back(Clock::now() - start);
    }
  });
  return times;
}

void printJson(std::ostream& out, size_t calls, const RoundTripSummary& summary) {
  const auto milliseconds = [](std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
  };
  Json json;
  json["calls"] = calls;
  json["minMs"] = milliseconds(summary.shortest);
  json["medianMs"] = milliseconds(summary.median);
  json["maxMs"] = milliseconds(summary.longest);
  out << jsonLine(json) << "\n";
}

int ping(const PingOptions& options, const Streams& streams) {
  const RoundTrips times = measure(options);
  const RoundTripSummary summary = summarise(times);
  if (options.json) {
    printJson(streams.out, times.size(), summary);
  } else {
    streams.out << counted(times.size(), "call") << " of getSIData: min "
                << millisecondsText(summary.shortest) << " ms, median "
                << millisecondsText(summary.median) << " ms, max "
                << millisecondsText(summary.longest) << " ms\n";
  }
  return kExitDone;
}

}  // namespace

void addPingCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<PingOptions>();
  CLI::App* command =
      app.add_subcommand("ping", "Measure how long the daemon takes to answer a call");
  command->add_option("--count", options->count, "Calls to make, one after the other")
      ->check(CLI::Range(1, kMostCalls).description("1..1000000"))
      ->capture_default_str();
  command->add_flag("--json", options->json, "Print the figures as JSON");
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    action = [options](const Streams& streams) { return ping(*options, streams); };
  });
}

}  // namespace tevra::tools
