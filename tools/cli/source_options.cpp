#include "tools/cli/source_options.h"

#include <atomic>
#include <chrono>

#include "tools/cli/stop_signals.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {

void addSource(Command& command, SourceOptions& options, const std::string& name) {
  Option option =
      command
          .option(name, options.name,
                  "Transport stream: a file, a pipe, - for standard input, or udp://ADDRESS:PORT "
                  "or rtp://ADDRESS:PORT for a live one that arrives there")
          .checked([](const std::string& source) {
            return source.empty() ? "a file is missing" : std::string();
          });
  if (name == kFileArgument) {
    option.required();
  } else {
    option.called(kFileArgument);
  }
  command.option("--seconds", options.seconds, "Read for so many seconds, not to the end")
      .range(1, 1'000'000);
}

void tellHowItEnds(const SourceOptions& options, std::ostream& err) {
  if (isLiveSource(options.name) && !options.seconds) {
    err << "tornelctl: reading " << options.name
        << " until interrupted; --seconds ends it by itself\n"
        << std::flush;
  }
}

void withSource(const SourceOptions& options, const Patience& patience,
                const std::function<void(ByteSource& source)>& read) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(options.seconds.value_or(0));
  const auto* longest = std::get_if<int>(&patience);
  std::atomic<bool> isInterrupted{false};
  std::atomic<bool> isSilent{false};
  const StopSignals signals([&] { isInterrupted = true; });
  LiveOptions live;
  live.stopped = [&] {
    return isInterrupted || isSilent || (options.seconds && Clock::now() >= end);
  };
  if (longest == nullptr) {
    live.onSilence = std::get<OnSilence>(patience);
  } else if (isLiveSource(options.name)) {
    live.onSilence = [&](std::chrono::milliseconds silence) {
      isSilent = silence >= std::chrono::seconds(*longest);
    };
  }
  const auto source = openSource(options.name, live);
  read(*source);
  if (isSilent) {
    throw ToolError("nothing more has come from " + options.name + " for " +
                    std::to_string(*longest) + " s: has the stream ended?");
  }
}

}  // namespace tevra::tools
