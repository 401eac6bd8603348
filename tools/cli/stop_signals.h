#pragma once

#include <csignal>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace tevra::tools {

/**
 * While it lives SIGINT and SIGTERM run `action`, once, on a thread of its own instead of ending
 * the process. One that comes `patience` after the first or later ends it all the same, for what
 * the action is to end may wait for something that never comes. Threads that are there before,
 * other than the one that constructs it, would still be ended by them.
 */
class StopSignals {
 public:
  /** `action` may be called from now on. */
  explicit StopSignals(std::function<void()> action,
                       std::chrono::milliseconds patience = std::chrono::seconds(1));
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  /** What the thread does. */
  void wait(const std::function<void()>& action);

  const std::chrono::milliseconds patience_;
  sigset_t signals_{};
  sigset_t before_{};
  std::atomic<bool> ending_{false};
  std::thread waiter_;
};

}  // namespace tevra::tools
