#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "tools/stream/byte_source.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Finds the transport stream packets in a stream of bytes.
 *
 * Packets may lie 188 bytes apart, 192 (each behind a 4-byte time stamp) or 204 (each before 16
 * bytes of Reed-Solomon parity); the distance is found out. Junk before the first packet and
 * between packets is skipped and counted. Memory is constant whatever the source yields. Not safe
 * for use from two threads.
 */
class TsPacketReader {
 public:
  /** Fills `buffer` with up to `size` bytes and returns how many; 0 at the end. May throw. */
  using Source = std::function<size_t(uint8_t* buffer, size_t size)>;

  /** Nothing is read before the first next(), which passes on what `source` raises. */
  explicit TsPacketReader(Source source);
  /** The same of a source that outlives it. */
  explicit TsPacketReader(ByteSource& source);

  /** Reads the next packet. False at the end of the source, with `packet` untouched. */
  [[nodiscard]] bool next(TsPacket& packet);

  /** What comes next is the front of a source, not what follows the packets before. */
  void restart();

  /** How many packets next() has given. */
  [[nodiscard]] uint64_t packets() const { return packets_; }
  /** How often a packet was expected and its sync byte was not there. */
  [[nodiscard]] uint64_t syncLosses() const { return syncLosses_; }
  /** How often the sync byte of the one behind it was not there either. */
  [[nodiscard]] uint64_t doubleSyncLosses() const { return doubleSyncLosses_; }
  /** Bytes that belong to no packet, and those of a last one that the source had no more of. */
  [[nodiscard]] uint64_t skippedBytes() const { return skippedBytes_; }

 private:
  [[nodiscard]] size_t available() const { return end_ - position_; }
  /** Reads until `size` bytes are available or the source ends. */
  void fill(size_t size);
  /** Moves to the next place where packets start; false when there is none. */
  [[nodiscard]] bool synchronise();
  /** The distance of the packets that start at the current position; 0 when none do. */
  [[nodiscard]] size_t distanceHere() const;
  [[nodiscard]] bool packetsLieApart(size_t distance) const;
  void countLoss();
  void skip(size_t bytes);

  Source source_;
  std::function<bool()> isStopped_ = [] { return false; };
  std::vector<uint8_t> buffer_;
  size_t position_ = 0;
  size_t end_ = 0;
  bool sourceEnded_ = false;

  bool synchronised_ = false;
  size_t distance_ = 0;  // of the packets; none yet
  size_t gap_ = 0;       // bytes between the last packet and the next one's sync byte

  uint64_t packets_ = 0;
  uint64_t packetsBefore_ = 0;  // the front of the source
  uint64_t syncLosses_ = 0;
  uint64_t doubleSyncLosses_ = 0;
  uint64_t skippedBytes_ = 0;
};

}  // namespace tevra::tools
