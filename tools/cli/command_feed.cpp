#include <unistd.h>

#include <iostream>
#include <memory>
#include <optional>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/progress.h"
#include "tools/cli/source_options.h"
#include "tools/feed/feed_json.h"
#include "tools/feed/stream_feed.h"
#include "tools/stream/byte_source.h"
#include "tools/stream/pacer.h"
#include "tools/text/standard_streams.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

struct FeedOptions {
  EndpointOptions endpoint;
  SourceOptions source;
  bool loop = false;
  std::optional<std::string> rate;
  bool json = false;
};

Progress makeProgress(const ByteSource& source, const FeedOptions& options,
                      const Console& console) {
  Progress::Options result;
  result.terminal = &console.err == &std::cerr && isatty(STDERR_FILENO) != 0;
  result.totalBytes = options.loop ? std::nullopt : source.size();
  return {console.err, result};
}

void report(const FeedOptions& options, const StreamFeed& stream, const Console& console) {
  if (options.json) {
    console.out << feedJson(options.source.name, stream) << "\n";
  } else {
    console.out << sourceName(options.source.name) << ": " << counted(stream.packets(), "packet")
                << ", " << counted(stream.tables().sent(), "table") << " sent, "
                << counted(stream.statistics().discontinuities, "discontinuity", "discontinuities")
                << ", " << counted(stream.statistics().crcErrors, "CRC error") << "\n";
    stream.tables().print(console.out);
    console.out << "services\n";
    stream.inventory().print(console.out);
  }
  stream.printFaults(console.err);
}

/** Feeds until the end of the stream, or until stopped. */
StreamFeed feedStream(const FeedOptions& options, ByteSource& source,
                      thrift::in_module::im_SIControlSrvIf& daemon, const Console& console) {
  LoopedSource looped(source);
  Progress progress = makeProgress(source, options, console);
  Pacer pacer;
  uint64_t bytes = 0;
  const auto onPacket = [&](const TsPacket& packet, size_t tablesSent) {
    bytes += kTsPacketSize;
    progress.update(bytes, tablesSent);
    if (options.rate == "realtime") {
      pacer.pace(packet);
    }
    return true;
  };
  ByteSource& input = options.loop ? looped : source;
  StreamFeed stream = StreamFeed::feed(input, options.source.name, daemon, onPacket);
  progress.finish();
  return stream;
}

int feed(const FeedOptions& options, const Console& console) {
  if (options.loop && isReadOnce(options.source.name)) {
    throw ArgumentError("--loop needs a file: " + sourceName(options.source.name) +
                        " cannot begin again");
  }
  int status = kExitDone;
  const auto read = [&](ByteSource& source) {
    withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
      const StreamFeed stream = feedStream(options, source, daemon, console);
      report(options, stream, console);
      status = stream.tables().refused() == 0 ? kExitDone : kExitFailed;
    });
  };
  withSource(options.source, options.endpoint.timeoutSeconds, read);
  return status;
}

}  // namespace

void addFeedCommand(CommandLine& line) {
  const auto options = std::make_shared<FeedOptions>();
  Command command = line.command(
      "feed", "Hand the tables of a transport stream to the daemon, each when it is complete");
  addSource(command, options->source);
  command.flag("--loop", options->loop, "Begin again at the end, until interrupted");
  command
      .option("--rate", options->rate,
              "realtime: as fast as the stream was made, by its PCRs; max: as fast as it is read "
              "(default: max)")
      .oneOf({"realtime", "max"});
  command.flag("--json", options->json, "Print what was sent as JSON");
  addDaemonOptions(command, options->endpoint);
  command.action([options](const Console& console) { return feed(*options, console); });
}

}  // namespace tevra::tools
