#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tevra::tools {

/** What the header of an RTP datagram says (RFC 3550, 5.1). */
struct RtpHeader {
  size_t size = 0;              ///< with CSRCs and extension; the payload is behind it
  size_t padding = 0;           ///< bytes behind the payload that are none of it
  uint16_t sequenceNumber = 0;  ///< one more with every datagram
  uint32_t sender = 0;          ///< its SSRC
};

/**
 * Nothing for a datagram that is no RTP: whose header is longer than itself, or in front of
 * anything but whole packets. One that begins in the middle of a packet may look like a header.
 */
[[nodiscard]] std::optional<RtpHeader> rtpHeader(const uint8_t* datagram, size_t size);

/** Finds what is missing in a sequence of RTP datagrams. */
class RtpSequence {
 public:
  /**
   * How many datagrams should have come between this one and those before. One that comes late has
   * been missed already. Another sender and a jump (RFC 3550, A.1) begin a sequence anew.
   */
  [[nodiscard]] uint64_t missingBefore(const RtpHeader& header);

 private:
  std::optional<uint32_t> sender_;
  uint16_t next_ = 0;
};

}  // namespace tevra::tools
