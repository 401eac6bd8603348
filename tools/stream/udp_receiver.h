#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/stream/udp_address.h"

namespace tevra::tools {

/** A socket that receives at an address: a multicast group, which it joins, or the machine's own.
 */
class UdpReceiver {
 public:
  /** Raises ToolError when the machine does not let it. */
  explicit UdpReceiver(const UdpAddress& address);
  ~UdpReceiver();
  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;

  /** The next datagram's size; 0 for an empty one, and soon when none comes. */
  [[nodiscard]] size_t receive(uint8_t* buffer, size_t size);

  /** Datagrams that the kernel had no room for. For use from any thread. */
  [[nodiscard]] uint64_t dropped() const;

 private:
  int socket_;
};

}  // namespace tevra::tools
