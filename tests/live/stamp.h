#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "tools/stream/ts_packet.h"

namespace tevra::test {

/** An elementary stream: how often the transport stream had changed, and its PID there. */
using StreamId = std::pair<uint32_t, uint32_t>;

/**
 * What the payload of a stream packet says of it, so that whoever receives it can tell which it
 * was, what should stand in it and what should have come before it.
 */
struct Stamp {
  uint32_t era = 0;       ///< how often the transport stream had changed
  uint32_t pid = 0;       ///< as it was sent
  uint64_t sequence = 0;  ///< number of the packet in its stream
  uint64_t position = 0;  ///< number of the packet in the multiplex
  uint64_t previous = 0;  ///< position of the packet before it in its stream
  int64_t pcr = 0;        ///< that the packet has; -1 when it has none
  int64_t sentAt = 0;     ///< nanoseconds of any clock

  [[nodiscard]] StreamId stream() const { return {era, pid}; }
};

/** Fills the payload, which has room for it: the stamp, and noise that depends on it. */
void writeStamp(tools::TsPacket& packet, const Stamp& stamp);

/** The stamp of a packet whose payload and PCR are as they were written; nothing of any other. */
[[nodiscard]] std::optional<Stamp> readStamp(const tools::TsPacket& packet);

}  // namespace tevra::test
