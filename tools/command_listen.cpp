#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include <pthread.h>

#include "tools/cli.h"
#include "tools/command.h"
#include "tools/notification_printer.h"
#include "tools/notification_server.h"

namespace tevra::tools {
namespace {

/**
 * While it lives SIGINT and SIGTERM run `action`, once, on a thread of its own instead of ending
 * the process. The only other thread is the one that constructs it.
 */
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> action) {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
    waiter_ = std::thread([this, action = std::move(action)] {
      int signal = 0;
      sigwait(&signals_, &signal);
      if (!ending_) {
        action();
      }
    });
  }

  ~StopSignals() {
    ending_ = true;
    pthread_kill(waiter_.native_handle(), SIGINT);  // only that thread gets it
    waiter_.join();
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  sigset_t signals_{};
  sigset_t before_{};
  std::atomic<bool> ending_{false};
  std::thread waiter_;
};

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
