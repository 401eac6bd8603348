#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/system/child_process.h"

namespace tevra::test {

using Lines = std::vector<std::string>;

/** Where the daemon that is tested lies. */
[[nodiscard]] std::string daemonPath();

/** Runs the daemon with `arguments` in the configuration root `root` and waits for nothing. */
[[nodiscard]] std::unique_ptr<ChildProcess> runDaemon(const std::string& root,
                                                      const std::vector<std::string>& arguments,
                                                      Environment environment = {});

/** Stands in what ThreadSanitizer writes of a race. */
inline constexpr const char* kRaceReport = "WARNING: ThreadSanitizer";

/** How a daemon of a test is started. */
struct DaemonSetup {
  int32_t set = 0;
  int32_t level = 7;             ///< 4 or more: level 3 would keep back the line that tells
                                 ///< of the start
  Environment environment = {};  ///< besides TEVRA_CONF_ROOT
  std::vector<std::string> arguments = {};    ///< after --set, --console and --level
  std::optional<uint64_t> addressSpace = {};  ///< bytes, as for setrlimit
  std::optional<uid_t> user = {};             ///< who runs it
};

/**
 * The daemon, logging to standard error, from construction to destruction. Needs the fixed ports.
 * What a sanitizer finds in it fails the test: a race whenever it was, a leak when the object ends
 * and the daemon still runs.
 */
class Daemon {
 public:
  /** Returns when the daemon has written "Tornel N started ..."; raises std::runtime_error, with
   * what it wrote instead, when it ends or is silent. */
  explicit Daemon(std::string root, DaemonSetup setup = {});
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  /** kill -9, then a start in the same root; the log begins anew. */
  void restart();
  void restart(DaemonSetup setup);

  void kill() { process_->kill(); }
  [[nodiscard]] pid_t pid() const { return process_->pid(); }
  [[nodiscard]] bool running() { return process_->running(); }
  [[nodiscard]] std::optional<ProcessEnd> waitForEnd() { return process_->waitForEnd(); }

  /** Everything logged since the start, a line each, as it stands on standard error. Complete up to
   * the last answer that a client has got. */
  [[nodiscard]] Lines logLines() const;

  /** What `call` makes the daemon log. */
  [[nodiscard]] Lines linesOf(const std::function<void()>& call) const;

  /** Waits until such a line has been logged; false after kPatience. */
  [[nodiscard]] bool waitForLine(const std::string& line) const;

 private:
  void start();
  void expectNoRace() const;

  const std::string root_;
  DaemonSetup setup_;
  std::unique_ptr<ChildProcess> process_;
};

/** Lines of the level that `digit` names, and more severe ones. */
[[nodiscard]] Lines upToLevel(const Lines& lines, char digit);

/** How often `line` stands in `lines`. */
[[nodiscard]] int64_t timesIn(const Lines& lines, const std::string& line);

}  // namespace tevra::test
