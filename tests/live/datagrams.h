#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

/** Datagrams to ports of 127.0.0.1. */
namespace tevra::test {

/** Whether a socket receives there. */
[[nodiscard]] bool isReceiving(int port);

/** Receives datagrams, and knows how many it has missed. */
class DatagramReceiver {
 public:
  explicit DatagramReceiver(int port);
  ~DatagramReceiver();
  DatagramReceiver(const DatagramReceiver&) = delete;
  DatagramReceiver& operator=(const DatagramReceiver&) = delete;

  /** The size of the next one, which is in data() then; 0 when none comes within `time`. */
  [[nodiscard]] size_t receive(std::chrono::milliseconds time);
  [[nodiscard]] const uint8_t* data() const { return buffer_.data(); }
  /** Datagrams that came before the last one and had no room in the socket's buffer. */
  [[nodiscard]] uint32_t missed() const { return missed_; }

 private:
  int socket_;
  std::array<uint8_t, 65536> buffer_{};
  uint32_t missed_ = 0;
};

}  // namespace tevra::test
