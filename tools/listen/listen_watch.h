#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace tevra::tools {

/**
 * Ends waiting for something: when nothing has come for too long, when the time is over, or when
 * nobody reads the output any more. Has a thread of its own while it lives.
 */
class ListenWatch {
 public:
  /** What ended the wait; silence, when it and the time run out together. */
  enum class Reason { kSilence, kTimeIsOver, kNobodyReads };

  /** What ends the wait; without any of them it lasts as long as the watch. */
  struct Limits {
    std::optional<std::chrono::seconds> silence;  ///< since the last touch(), at first the start
    std::optional<std::chrono::seconds> time;     ///< since the start, whatever comes
    int output = -1;  ///< the descriptor of a pipe or socket; of anything else, or -1, no matter
  };

  /**
   * `action` is called once at most, on the watch's thread. Raises ToolError when the system has no
   * descriptor left for it.
   */
  ListenWatch(const Limits& limits, std::function<void(Reason reason)> action);
  /** Waits for `action` if it runs, so not to be called from there. */
  ~ListenWatch();
  ListenWatch(const ListenWatch&) = delete;
  ListenWatch& operator=(const ListenWatch&) = delete;

  /** Something has come. From any thread. */
  void touch() { last_ = Clock::now().time_since_epoch(); }

 private:
  using Clock = std::chrono::steady_clock;

  /** A reason, and when it holds if nothing comes until then. */
  struct Deadline {
    Reason reason;
    Clock::time_point time;
  };

  [[nodiscard]] std::optional<Deadline> nextDeadline() const;
  [[nodiscard]] std::optional<Reason> wait() const;

  const Limits limits_;
  const Clock::time_point start_ = Clock::now();
  std::atomic<Clock::duration> last_{start_.time_since_epoch()};
  int wakeUp_;  // an eventfd, readable when the watch ends
  std::thread thread_;
};

}  // namespace tevra::tools
