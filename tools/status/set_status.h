#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/status/kept_files.h"

namespace tevra::tools {

/** What came of asking a daemon. */
struct DaemonStatus {
  std::string address;                  ///< "127.0.0.1:9224"
  std::optional<double> answerSeconds;  ///< from connecting to the answer; nothing without one
  std::string problem;                  ///< why there was none, and what to do
  std::optional<bool> listens;          ///< nothing where that is not known
};

/** All that can be known of one multiplex without changing anything. */
struct SetStatus {
  int set = 0;                          ///< MPTS index
  DaemonStatus daemon;                  ///< the one that serves it
  std::string mainTaskAddress;          ///< where it is told of tables
  std::optional<bool> mainTaskListens;  ///< nothing where that is not known
  std::string root;                     ///< configuration root; empty: it is another machine's
  KeptState kept;                       ///< without files for another machine
};

/** "answers"; "silent": it listens, but is busy or hangs; "absent"; "unreachable": one of these. */
[[nodiscard]] std::string stateOf(const DaemonStatus& daemon);

/** "read", "absent", "unreadable" or "damaged". */
[[nodiscard]] std::string stateOf(const KeptFile& file);

/** What is wrong, and what to do about it; empty when nothing is. A file that there is not yet, is
 * nothing wrong. */
[[nodiscard]] std::vector<std::string> problemsOf(const SetStatus& status);

/** The PIDs of the pool that can be handed out. */
[[nodiscard]] inline int64_t sizeOf(const PidPool& pool) {
  return pool.last - pool.first;
}

}  // namespace tevra::tools
