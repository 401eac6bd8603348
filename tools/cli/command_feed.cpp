#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <optional>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/progress.h"
#include "tools/cli/stop_signals.h"
#include "tools/feed/feed_json.h"
#include "tools/feed/stream_feed.h"
#include "tools/stream/byte_source.h"
#include "tools/stream/pacer.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

struct FeedOptions {
  EndpointOptions endpoint;
  std::string source;
  bool loop = false;
  bool realtime = false;
  std::optional<int> seconds;
  bool json = false;
};

/** Says when to end: interrupted, or after the time that was asked for. */
class Stop {
 public:
  explicit Stop(std::optional<int> seconds) {
    if (seconds) {
      end_ = Clock::now() + std::chrono::seconds(*seconds);
    }
  }

  void interrupt() { interrupted_ = true; }
  [[nodiscard]] bool now() const { return interrupted_ || (end_ && Clock::now() >= *end_); }

 private:
  using Clock = std::chrono::steady_clock;

  std::atomic<bool> interrupted_{false};
  std::optional<Clock::time_point> end_;
};

Progress makeProgress(const ByteSource& source, const FeedOptions& options,
                      const Streams& streams) {
  Progress::Options result;
  result.terminal = &streams.err == &std::cerr && isatty(STDERR_FILENO) != 0;
  result.totalBytes = options.loop ? std::nullopt : source.size();
  return {streams.err, result};
}

void report(const FeedOptions& options, const StreamFeed& stream, const Streams& streams) {
  if (options.json) {
    streams.out << feedJson(options.source, stream) << "\n";
  } else {
    streams.out << options.source << ": " << counted(stream.packets(), "packet") << ", "
                << counted(stream.tables().sent(), "table") << " sent, "
                << counted(stream.statistics().discontinuities, "discontinuity", "discontinuities")
                << ", " << counted(stream.statistics().crcErrors, "CRC error") << "\n";
    stream.tables().print(streams.out);
    streams.out << "services\n";
    stream.inventory().print(streams.out);
  }
  stream.printFaults(streams.err);
}

/** Feeds until the end of the stream, or until stopped. */
StreamFeed feedStream(const FeedOptions& options, thrift::in_module::im_SIControlSrvIf& daemon,
                      const Stop& stop, const Streams& streams) {
  const LiveOptions live = {options.endpoint.timeoutSeconds, [&stop] { return stop.now(); }};
  const auto source = openSource(options.source, live);
  LoopedSource looped(*source);
  Progress progress = makeProgress(*source, options, streams);
  Pacer pacer;
  uint64_t bytes = 0;
  const auto onPacket = [&](const TsPacket& packet, size_t tablesSent) {
    bytes += kTsPacketSize;
    progress.update(bytes, tablesSent);
    if (options.realtime) {
      pacer.pace(packet);
    }
    return !stop.now();
  };
  ByteSource& input = options.loop ? looped : *source;
  StreamFeed stream = StreamFeed::feed(input, options.source, daemon, onPacket);
  progress.finish();
  return stream;
}

int feed(const FeedOptions& options, const Streams& streams) {
  int status = kExitDone;
  Stop stop(options.seconds);
  const StopSignals signals([&stop] { stop.interrupt(); });
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    const StreamFeed stream = feedStream(options, daemon, stop, streams);
    report(options, stream, streams);
    status = stream.tables().refused() == 0 ? kExitDone : kExitFailed;
  });
  return status;
}

}  // namespace

void addFeedCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<FeedOptions>();
  CLI::App* command = app.add_subcommand(
      "feed", "Hand the tables of a transport stream to the daemon, each when it is complete");
  command
      ->add_option("FILE", options->source,
                   "Transport stream: a file, - for standard input, or udp://ADDRESS:PORT for a "
                   "live one, raw or RTP, that arrives there")
      ->required();
  command->add_flag("--loop", options->loop, "Begin again at the end, until interrupted");
  command
      ->add_option_function<std::string>(
          "--rate", [options](const std::string& rate) { options->realtime = rate == "realtime"; },
          "realtime: as fast as the stream was made, by its PCRs; max: as fast as it is read "
          "(default: max)")
      ->check(CLI::IsMember({"realtime", "max"}).description("{realtime,max}"));
  command->add_option("--seconds", options->seconds, "End after so many seconds")
      ->check(CLI::Range(1, 1'000'000).description("1..1000000"));
  command->add_flag("--json", options->json, "Print what was sent as JSON");
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    if (options->loop && (options->source == "-" || isLiveSource(options->source))) {
      throw CLI::ValidationError("--loop needs a file: " + options->source + " cannot begin again");
    }
    action = [options](const Streams& streams) { return feed(*options, streams); };
  });
}

}  // namespace tevra::tools
