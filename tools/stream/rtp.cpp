#include "tools/stream/rtp.h"

#include <algorithm>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {
namespace {

constexpr size_t kFixedSize = 12;
constexpr size_t kWord = 4;

/** Numbers that are skipped at most, and by which one may come late (RFC 3550, A.1). */
constexpr uint16_t kMostMissing = 3000;
constexpr uint16_t kLatest = 100;

uint32_t bigEndian(const uint8_t* bytes, size_t size) {
  uint32_t value = 0;
  for (size_t i = 0; i < size; ++i) {
    value = value << 8 | bytes[i];
  }
  return value;
}

/** Whole ones alone, as RFC 2250 (2) has it. */
bool holdsPackets(const uint8_t* payload, size_t size) {
  size_t at = 0;
  while (at < size && payload[at] == kTsSyncByte) {
    at += kTsPacketSize;
  }
  return at == size;
}

}  // namespace

std::optional<RtpHeader> rtpHeader(const uint8_t* datagram, size_t size) {
  if (size < kFixedSize || datagram[0] == kTsSyncByte || (datagram[0] >> 6) != 2) {
    return std::nullopt;
  }
  RtpHeader header;
  header.size = kFixedSize + kWord * (datagram[0] & 0x0F);
  const bool extended = (datagram[0] & 0x10) != 0;
  if (extended && header.size + kWord <= size) {
    header.size += kWord + kWord * bigEndian(datagram + header.size + 2, 2);
  }
  const bool isPadded = (datagram[0] & 0x20) != 0;
  header.padding = isPadded ? datagram[size - 1] : 0;
  const size_t end = size - std::min(size, header.padding);
  if (header.size > end || !holdsPackets(datagram + header.size, end - header.size)) {
    return std::nullopt;
  }
  header.sequenceNumber = static_cast<uint16_t>(bigEndian(datagram + 2, 2));
  header.sender = bigEndian(datagram + 8, 4);
  return header;
}

uint64_t RtpSequence::missingBefore(const RtpHeader& header) {
  const auto missing = static_cast<uint16_t>(header.sequenceNumber - next_);
  const auto late = static_cast<uint16_t>(next_ - header.sequenceNumber);
  const bool isSame = sender_ == header.sender;
  if (isSame && late != 0 && late <= kLatest) {
    return 0;
  }
  sender_ = header.sender;
  next_ = static_cast<uint16_t>(header.sequenceNumber + 1);
  return isSame && missing <= kMostMissing ? missing : 0;
}

}  // namespace tevra::tools
