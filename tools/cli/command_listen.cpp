#include <unistd.h>

#include <atomic>
#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/stop_signals.h"
#include "tools/listen/listen_watch.h"
#include "tools/listen/notification_json.h"
#include "tools/listen/notification_server.h"
#include "tools/listen/notification_text.h"
#include "tools/listen/table_facts.h"
#include "tools/text/terminal.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

/** A table's 256 sections of 4096 bytes, and what records take in memory beside them. */
constexpr size_t kLargestTable = size_t{32} * 1024 * 1024;

struct ListenOptions {
  EndpointOptions endpoint;
  std::string colour = "auto";
  bool all = false;
  bool utc = false;
  bool json = false;
  std::optional<int> count;
  std::optional<int> seconds;
  std::optional<int> timeout;
};

bool isStandardOutput(const Console& console) {
  return &console.out == &std::cout;
}

/** Whether to colour what nobody said should be or not. */
bool isColourTerminal(const Console& console) {
  const std::string terminal = environmentVariable("TERM");
  return isStandardOutput(console) && isatty(STDOUT_FILENO) != 0 && !terminal.empty() &&
         terminal != "dumb" && environmentVariable("NO_COLOR").empty();
}

NotificationTextOptions textOptions(const ListenOptions& options, const Console& console) {
  NotificationTextOptions text;
  text.inColour =
      options.colour == "always" || (options.colour == "auto" && isColourTerminal(console));
  text.all = options.all;
  text.zone = options.utc ? Zone::kUtc : Zone::kLocal;
  return text;
}

/** A write to a pipe that nobody reads fails instead of ending the process. */
class BrokenPipeIgnored {
 public:
  BrokenPipeIgnored() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
  ~BrokenPipeIgnored() { std::signal(SIGPIPE, before_); }
  BrokenPipeIgnored(const BrokenPipeIgnored&) = delete;
  BrokenPipeIgnored& operator=(const BrokenPipeIgnored&) = delete;

 private:
  void (*before_)(int);
};

std::optional<std::chrono::seconds> secondsOf(std::optional<int> count) {
  return count ? std::make_optional(std::chrono::seconds(*count)) : std::nullopt;
}

/** One run of the command. Everything but stop() happens on the server's thread. */
class Listener {
 public:
  Listener(const ListenOptions& options, const Console& console)
      : options_(options), console_(console), text_(textOptions(options, console)) {}

  int run() {
    const int port = options_.endpoint.resolvedPort(kFirstNotificationPort);
    server_ = std::make_unique<NotificationServer>(
        options_.endpoint.host, port,
        [this](const Notification& notification) { take(notification); },
        [this](int bound) { start(bound); });
    server_->serve();
    watch_.reset();
    signals_.reset();
    if (isSilent_) {
      throw ToolError("no notification for " + std::to_string(*options_.timeout) +
                      " s: is the daemon of this set running, and is it fed?");
    }
    return kExitDone;
  }

 private:
  void start(int port) {
    signals_ = std::make_unique<StopSignals>([this] { server_->stop(); });
    ListenWatch::Limits limits;
    limits.silence = secondsOf(options_.timeout);
    limits.time = secondsOf(options_.seconds);
    limits.output = isStandardOutput(console_) ? STDOUT_FILENO : -1;
    watch_ =
        std::make_unique<ListenWatch>(limits, [this](ListenWatch::Reason reason) { stop(reason); });
    console_.err << "listening on " << options_.endpoint.host << ":" << port
                 << " in MainTask's place\n"
                 << std::flush;
  }

  void stop(ListenWatch::Reason reason) {
    isSilent_ = reason == ListenWatch::Reason::kSilence;
    server_->stop();
  }

  void take(const Notification& notification) {
    if (isDone()) {
      return;  // came behind the last one in the same connection
    }
    watch_->touch();
    ++taken_;
    TableNews news;
    if (const auto* notified = std::get_if<NotifiedTable>(&notification.content)) {
      if (memoryOf(notified->table) > kLargestTable) {
        console_.err << namesOf(notified->kind).brief
                     << " ignored: larger than any transport stream can carry\n"
                     << std::flush;
        return;
      }
      news = history_.add(*notified);
    }
    print(notification, news);
    if (isDone()) {
      server_->stop();
    }
  }

  void print(const Notification& notification, const TableNews& news) const {
    if (options_.json) {
      console_.out << notificationJson(notification, news, text_.zone) << "\n";
    } else {
      console_.out << notificationText(notification, news, text_);
    }
    console_.out << std::flush;
  }

  [[nodiscard]] bool isDone() const {
    return !console_.out || (options_.count && taken_ >= *options_.count);
  }

  const ListenOptions& options_;
  const Console& console_;
  const NotificationTextOptions text_;
  TableHistory history_;
  int taken_ = 0;
  std::atomic<bool> isSilent_{false};
  BrokenPipeIgnored brokenPipeIgnored_;
  std::unique_ptr<NotificationServer> server_;
  // Both stop the server and end before it; the thread of the second starts with the signals of
  // the first blocked.
  std::unique_ptr<StopSignals> signals_;
  std::unique_ptr<ListenWatch> watch_;
};

void addPrintOptions(Command& command, ListenOptions& options) {
  command
      .option("--color", options.colour,
              "Colour the text: auto does on a terminal, unless NO_COLOR is set")
      .oneOf({"auto", "always", "never"});
  command.flag("--all", options.all, "Print every difference, however many there are");
  command.flag("--utc", options.utc, "Print times in UTC, not in the machine's zone");
  command.flag("--json", options.json, "Print one JSON object a line");
}

void addEndOptions(Command& command, ListenOptions& options) {
  command.option("--count", options.count, "End after so many notifications")
      .range(1, 1'000'000'000);
  command.option("--seconds", options.seconds, "End after so many seconds").range(1, 1'000'000);
  command
      .option("--timeout", options.timeout,
              "End with an error when nothing is notified for so many seconds (default: wait for "
              "ever)")
      .range(1, 3600);
}

}  // namespace

void addListenCommand(CommandLine& line) {
  const auto options = std::make_shared<ListenOptions>();
  Command command = line.command(
      "listen",
      "Stand in for MainTask: print the daemon's notifications, and what each table changes, "
      "until interrupted");
  addPrintOptions(command, *options);
  addEndOptions(command, *options);
  addEndpointOptions(command, options->endpoint, kFirstNotificationPort);
  command.action([options](const Console& console) { return Listener(*options, console).run(); });
}

}  // namespace tevra::tools
