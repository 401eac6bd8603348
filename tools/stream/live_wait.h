#pragma once

#include <chrono>
#include <functional>

namespace tevra::tools {

/** How a source is waited for that has nothing to give for a while. */
struct LiveOptions {
  /** Without a packet for so long a live source counts as dead, unless onSilence is set. */
  int timeoutSeconds = 30;
  /** Asked several times a second; true ends the source. */
  std::function<bool()> stopped = [] { return false; };
  /**
   * Told several times a second how long nothing has come, if nothing does. Where it is set the
   * source is waited for without end, unless it raises something.
   */
  std::function<void(std::chrono::milliseconds silence)> onSilence = nullptr;
};

/**
 * Waits until there is something to read: calls `comes`, which waits for the given time at most,
 * until it is true. False when the source has been stopped; the rest of `live` is asked each time
 * that nothing came. Passes on what onSilence raises.
 */
[[nodiscard]] bool waitFor(const LiveOptions& live,
                           const std::function<bool(std::chrono::milliseconds most)>& comes);

}  // namespace tevra::tools
