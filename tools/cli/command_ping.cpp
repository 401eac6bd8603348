#include <chrono>
#include <memory>

#include "im_SIControlSrv.h"
#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/round_trips.h"
#include "tools/text/decimals.h"
#include "tools/text/json_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

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
  out << jsonLine({{"calls", calls},
                   {"minMs", summary.shortest},
                   {"medianMs", summary.median},
                   {"maxMs", summary.longest}})
      << "\n";
}

int ping(const PingOptions& options, const Console& console) {
  const RoundTrips times = measure(options);
  const RoundTripSummary summary = summarise(times);
  if (options.json) {
    printJson(console.out, times.size(), summary);
  } else {
    console.out << counted(times.size(), "call") << " of getSIData: min "
                << fixedText(summary.shortest, 3) << " ms, median " << fixedText(summary.median, 3)
                << " ms, max " << fixedText(summary.longest, 3) << " ms\n";
  }
  return kExitDone;
}

}  // namespace

void addPingCommand(CommandLine& line) {
  const auto options = std::make_shared<PingOptions>();
  Command command = line.command("ping", "Measure how long the daemon takes to answer a call");
  command.option("--count", options->count, "Calls to make, one after the other")
      .range(1, 1'000'000);
  command.flag("--json", options->json, "Print the figures as JSON");
  addDaemonOptions(command, options->endpoint);
  command.action([options](const Console& console) { return ping(*options, console); });
}

}  // namespace tevra::tools
