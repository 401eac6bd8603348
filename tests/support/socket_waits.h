#pragma once

#include <chrono>
#include <vector>

/** Watches how long this program's sockets would wait, so that no test needs a clock for it. */
namespace tevra::test {

/** The time-outs with which sockets have connected and sent since the last clearSocketWaits. */
struct SocketWaits {
  std::vector<std::chrono::milliseconds> connecting;
  std::vector<std::chrono::milliseconds> sending;
};

/**
 * In order, of those sockets that have a time-out for sending, which is one for connecting too. The
 * kernel rounds it up to its tick, 10 ms at the longest. Safe from any thread.
 */
[[nodiscard]] SocketWaits socketWaits();

void clearSocketWaits();

}  // namespace tevra::test
