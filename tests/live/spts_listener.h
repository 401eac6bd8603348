#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "tests/live/datagrams.h"
#include "tests/live/spts_checker.h"

namespace tevra::test {

/** Receives a stream at a port of 127.0.0.1, on a thread of its own, and has it checked. */
class SptsListener {
 public:
  explicit SptsListener(int port) : receiver_(port), thread_([this] { listen(); }) {}
  ~SptsListener() { stop(); }
  SptsListener(const SptsListener&) = delete;
  SptsListener& operator=(const SptsListener&) = delete;

  /** Waits until nothing has come for half a second. */
  void waitForSilence() const;
  /** Listens no longer, when all is taken that has come. From then on the rest may be called. */
  void stop();

  /** What has been found. */
  [[nodiscard]] const SptsChecker& checker() const { return checker_; }
  /** Datagrams that the listener has missed itself. */
  [[nodiscard]] uint32_t missed() const { return receiver_.missed(); }

 private:
  void listen();

  DatagramReceiver receiver_;
  SptsChecker checker_;
  std::atomic<bool> isToStop_{false};
  std::atomic<int64_t> lastTime_{0};
  std::thread thread_;
};

}  // namespace tevra::test
