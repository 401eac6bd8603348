#pragma once

#include <chrono>
#include <functional>

namespace tevra::tools {

/** Given how long nothing has come. */
using OnSilence = std::function<void(std::chrono::milliseconds silence)>;

/** How a source is waited for that has nothing to give for a while. */
struct LiveOptions {
  /** Asked several times a second; true ends the source. */
  std::function<bool()> stopped = [] { return false; };
  /** Told several times a second how long nothing has come, if nothing does; may raise. */
  OnSilence onSilence = nullptr;
};

/**
 * Waits until there is something to read: calls `comes`, which waits for the given time at most,
 * until it is true. False when the source has been stopped; the rest of `live` is asked each time
 * that nothing came. Passes on what onSilence raises.
 */
[[nodiscard]] bool waitFor(const LiveOptions& live,
                           const std::function<bool(std::chrono::milliseconds most)>& comes);

}  // namespace tevra::tools
