#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace tevra::test {

/**
 * MainTask as a bare listening socket on a port of the kernel's choice, to see the bytes and to
 * behave badly. Waiting calls give up after 20 s and fail the test.
 */
class RawMainTask {
 public:
  /** `backlog` as for listen(2); its receive buffers are small. */
  explicit RawMainTask(int backlog = 5);
  ~RawMainTask();
  RawMainTask(const RawMainTask&) = delete;
  RawMainTask& operator=(const RawMainTask&) = delete;

  [[nodiscard]] uint16_t port() const { return port_; }

  /** Takes the next connection. */
  void accept();

  /** Whether a connection is waiting to be accepted, or comes within 50 ms. */
  [[nodiscard]] bool connectionWaits();

  /** Reads what is left of the connection, which must end in order and not be reset. */
  std::string readToEnd();

  /** The same with a pause of `pauseMs` before every 16 KiB; it may change meanwhile. */
  std::string readToEnd(const std::atomic<int>& pauseMs);

  /** Closes the connection so that the peer is reset. */
  void reset();

 private:
  int listener_ = -1;
  int connection_ = -1;
  uint16_t port_ = 0;
};

/** A port of 127.0.0.1 on which nobody listens, as long as this lives. */
class RefusingPort {
 public:
  RefusingPort();
  ~RefusingPort();
  RefusingPort(const RefusingPort&) = delete;
  RefusingPort& operator=(const RefusingPort&) = delete;

  [[nodiscard]] uint16_t port() const { return port_; }

 private:
  int socket_ = -1;
  uint16_t port_ = 0;
};

}  // namespace tevra::test
