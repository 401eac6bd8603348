#pragma once

#include <string>

namespace tevra::tools::test {

/** Receives datagrams at a port of 127.0.0.1. */
class UdpReceiver {
 public:
  explicit UdpReceiver(int port);
  ~UdpReceiver();
  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;

  /** The next datagram, which is waited for; empty when none comes. */
  [[nodiscard]] std::string receive() const;
  /** Whether one is there. */
  [[nodiscard]] bool hasMore() const;

 private:
  int socket_;
};

}  // namespace tevra::tools::test
