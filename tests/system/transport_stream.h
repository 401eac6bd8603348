#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/crc32.h"

namespace tevra::test {

/** A section as it was carried (ISO/IEC 13818-1, 2.4.4). */
struct CarriedSection {
  std::string bytes;
  size_t packet;  ///< number of the packet in which it begins
};

/**
 * A transport stream in a file, read with nothing of what is tested: what tools make of a stream is
 * compared with what stands in it.
 */
class TransportStream {
 public:
  /** Raises std::runtime_error when the file is not all 188-byte packets with a sync byte. */
  explicit TransportStream(const std::string& path);

  [[nodiscard]] size_t packetCount() const { return bytes_.size() / kPacketSize; }

  /** The packets on a PID, each as its bytes with the PID blanked out. */
  [[nodiscard]] std::vector<std::string> packetsOf(int pid) const;

  /** PIDs that occur, and how many packets each has. */
  [[nodiscard]] std::map<int, size_t> pids() const;

  /** The sections on a PID whose CRC is right, in order. */
  [[nodiscard]] std::vector<CarriedSection> sections(int pid) const;

  /** How often a packet on the PID does not follow the one before: lost packets, in effect. */
  [[nodiscard]] int continuityErrors(int pid) const;

  /** Seconds since the first PCR on `pcrPid` at which packet number `packet` passes, by the PCRs
   * around it; nothing before the first and after the last. */
  [[nodiscard]] std::optional<double> timeOf(size_t packet, int pcrPid) const;

  /** Seconds from the first PCR on `pcrPid` to the last; 0 without any. */
  [[nodiscard]] double duration(int pcrPid) const;

 private:
  static constexpr size_t kPacketSize = 188;

  [[nodiscard]] uint8_t byte(size_t packet, size_t offset) const {
    return static_cast<uint8_t>(bytes_[packet * kPacketSize + offset]);
  }
  [[nodiscard]] int pidOf(size_t packet) const {
    return (byte(packet, 1) & 0x1F) << 8 | byte(packet, 2);
  }
  [[nodiscard]] size_t payloadOffset(size_t packet) const;
  [[nodiscard]] bool packetsAreEqual(size_t a, size_t b) const;
  [[nodiscard]] bool isDiscontinuity(size_t packet) const;
  [[nodiscard]] std::optional<int64_t> pcrOf(size_t packet) const;

  /** Packet number to PCR in 27 MHz ticks since the first, wrap-around undone. */
  [[nodiscard]] const std::map<size_t, int64_t>& clock(int pcrPid) const;

  std::string bytes_;
  mutable std::map<int, std::map<size_t, int64_t>> clocks_;
};

}  // namespace tevra::test
