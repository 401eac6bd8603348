#pragma once

#include <netinet/in.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/stream/packet_sink.h"

namespace tevra::tools {

/**
 * Sends packets to a machine or a multicast group, seven in a datagram; a group's go as far as the
 * next router, as is the kernel's default.
 *
 * What nobody listens to is sent all the same. A datagram that the machine cannot send within 200
 * ms is lost and counted.
 */
class UdpSink : public PacketSink {
 public:
  /** Raises ToolError for no address to send to, or one that the machine knows no way to. */
  explicit UdpSink(const std::string& name);
  ~UdpSink() override;
  UdpSink(const UdpSink&) = delete;
  UdpSink& operator=(const UdpSink&) = delete;

  void write(const TsPacket& packet) override;
  void flush() override;
  void close() override { flush(); }
  [[nodiscard]] std::vector<std::string> faults() const override;

 private:
  void send();

  static constexpr size_t kPackets = 7;  // as many as an Ethernet frame takes

  sockaddr_in address_;
  int socket_;
  std::array<uint8_t, kPackets * kTsPacketSize> datagram_{};
  size_t size_ = 0;  // of it
  uint64_t lost_ = 0;
  int error_ = 0;  // of the last that was lost
};

}  // namespace tevra::tools
