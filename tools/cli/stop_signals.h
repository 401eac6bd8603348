#pragma once

#include <csignal>

#include <atomic>
#include <functional>
#include <thread>

namespace tevra::tools {

/**
 * While it lives SIGINT and SIGTERM run `action`, once, on a thread of its own instead of ending
 * the process. Threads that are there before, other than the one that constructs it, would still
 * be ended by them.
 */
class StopSignals {
 public:
  /** `action` may be called from now on. */
  explicit StopSignals(std::function<void()> action);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  sigset_t signals_{};
  sigset_t before_{};
  std::atomic<bool> ending_{false};
  std::thread waiter_;
};

}  // namespace tevra::tools
