#include <memory>

#include "tools/cli.h"
#include "tools/command.h"
#include "tools/notification_printer.h"
#include "tools/notification_server.h"
#include "tools/stop_signals.h"

namespace tevra::tools {
namespace {

int listen(const EndpointOptions& options, const Streams& streams) {
  const int port = options.resolvedPort(kFirstNotificationPort);
  std::unique_ptr<NotificationServer> server;
  std::unique_ptr<StopSignals> signals;  // ends before the server that it stops
  const auto onListening = [&](int boundPort) {
    signals = std::make_unique<StopSignals>([&server] { server->stop(); });
    streams.err << "listening on " << options.host << ":" << boundPort << " in MainTask's place\n"
                << std::flush;
  };
  server = std::make_unique<NotificationServer>(
      options.host, port, std::make_shared<NotificationPrinter>(streams.out), onListening);
  server->serve();
  return kExitDone;
}

}  // namespace

void addListenCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<EndpointOptions>();
  CLI::App* command = app.add_subcommand(
      "listen",
      "Stand in for MainTask: print the daemon's notifications, one line each, until "
      "interrupted");
  addEndpointOptions(*command, *options, kFirstNotificationPort);
  command->callback([&action, options] {
    action = [options](const Streams& streams) { return listen(*options, streams); };
  });
}

}  // namespace tevra::tools
