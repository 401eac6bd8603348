#include "tools/cli.h"
#include "tools/command.h"
#include "tools/stream_feed.h"
#include "tools/text_table.h"

namespace tevra::tools {
namespace {

struct FeedOptions {
  EndpointOptions endpoint;
  std::string file;
};

int feed(const FeedOptions& options, const Streams& streams) {
  int status = kExitDone;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    const StreamFeed stream(options.file, daemon);
    streams.out << options.file << ": " << counted(stream.packets(), "packet") << ", "
                << counted(stream.tables().sent(), "table") << " sent\n";
    stream.tables().print(streams.out);
    streams.out << "services\n";
    stream.inventory().print(streams.out);
    stream.printFaults(streams.err);
    status = stream.tables().refused() == 0 ? kExitDone : kExitFailed;
  });
  return status;
}

}  // namespace

void addFeedCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<FeedOptions>();
  CLI::App* command = app.add_subcommand(
      "feed", "Hand the tables of a transport stream to the daemon, each when it is complete");
  command->add_option("FILE", options->file, "Transport stream; - is standard input")->required();
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    action = [options](const Streams& streams) { return feed(*options, streams); };
  });
}

}  // namespace tevra::tools
