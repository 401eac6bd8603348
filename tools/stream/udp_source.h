#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "tools/stream/byte_source.h"
#include "tools/stream/udp_address.h"

namespace tevra::tools {

/**
 * The payload of the datagrams that arrive at an address, a multicast group (which is joined) or
 * one of the machine's own; behind the RTP header (RFC 3550, 5.1) where there is one.
 *
 * Reading raises ToolError when nothing arrives for the time-out, unless silence is told of.
 */
class UdpSource : public ByteSource {
 public:
  /** Begins to receive; raises ToolError when the machine does not let it. */
  UdpSource(const UdpAddress& address, LiveOptions live);
  ~UdpSource() override;
  UdpSource(const UdpSource&) = delete;
  UdpSource& operator=(const UdpSource&) = delete;

  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override;
  [[nodiscard]] std::string explainNothing(const std::string& name,
                                           uint64_t packets) const override;

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] bool waitForDatagram();
  void failWhenDead(std::chrono::milliseconds silence) const;
  void receive();

  static constexpr size_t kLargestDatagram = 65536;

  std::string name_;
  LiveOptions live_;
  int socket_ = -1;
  std::array<uint8_t, kLargestDatagram> datagram_{};
  size_t position_ = 0;
  size_t end_ = 0;
  uint64_t payload_ = 0;  // bytes in all
  Clock::time_point opened_ = Clock::now();
};

/**
 * Where the payload of a datagram starts: behind its RTP header, CSRCs and extension included; 0
 * for one that is no RTP or whose header is longer than itself.
 */
[[nodiscard]] size_t rtpPayloadOffset(const uint8_t* datagram, size_t size);

}  // namespace tevra::tools
