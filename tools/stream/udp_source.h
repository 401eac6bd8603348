#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "tools/stream/byte_source.h"
#include "tools/stream/datagram_buffer.h"
#include "tools/stream/udp_address.h"
#include "tools/stream/udp_receiver.h"

namespace tevra::tools {

/** Datagrams that were lost, by where. */
struct UdpLosses {
  uint64_t inKernel = 0;  ///< its receive buffer was full
  uint64_t untaken = 0;   ///< the source's own buffer was, since its reader is slow
  uint64_t missing = 0;   ///< before they came here, or too late; RTP alone tells
};

/** For people: a line for each kind of loss. */
[[nodiscard]] std::vector<std::string> lossLines(const UdpLosses& losses);

/**
 * The payload of the datagrams that arrive at an address, a multicast group (which is joined) or
 * one of the machine's own; behind the RTP header (RFC 3550, 5.1) where there is one.
 *
 * A thread of its own receives, so that a reader that is busy for a while loses nothing; signals
 * that are to go elsewhere are blocked before the source is made.
 */
class UdpSource : public ByteSource {
 public:
  /** Bytes kept for the reader: more than a second of a full multiplex. */
  static constexpr size_t kCapacity = size_t{8} * 1024 * 1024;

  /** Begins to receive; raises ToolError when the machine does not let it. */
  explicit UdpSource(const UdpAddress& address, LiveOptions live = {}, size_t capacity = kCapacity);
  ~UdpSource() override;
  UdpSource(const UdpSource&) = delete;
  UdpSource& operator=(const UdpSource&) = delete;

  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override;
  [[nodiscard]] std::string explainNothing(const std::string& name,
                                           uint64_t packets) const override;
  [[nodiscard]] std::vector<std::string> faults() const override;
  [[nodiscard]] bool isStopped() const override { return live_.stopped(); }

 private:
  using Clock = std::chrono::steady_clock;

  /** What the thread does, until `ending_`. */
  void receive();

  static constexpr size_t kLargestDatagram = 65536;

  LiveOptions live_;
  uint64_t payload_ = 0;  // bytes read in all
  Clock::time_point opened_ = Clock::now();

  UdpReceiver receiver_;
  DatagramBuffer buffer_;
  std::array<uint8_t, kLargestDatagram> datagram_{};  // the thread's
  std::atomic<uint64_t> untaken_{0};
  std::atomic<uint64_t> missing_{0};
  std::atomic<bool> ending_{false};
  std::thread thread_;
};

}  // namespace tevra::tools
