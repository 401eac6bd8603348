#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/stream/ts_packet.h"

/** Sections and packets made by hand, bit by bit from the standards, to test against. */
namespace tevra::tools::test {

using Bytes = std::vector<uint8_t>;

/** The parts one after the other. */
[[nodiscard]] Bytes joined(const std::vector<Bytes>& parts);
[[nodiscard]] Bytes bytesOf(const std::string& text);
/** Big-endian. */
[[nodiscard]] Bytes be16(int value);

struct SectionHeader {
  int tableId = 0;
  int extension = 0;
  int version = 0;
  int number = 0;
  int lastNumber = 0;
  bool isCurrent = true;
};

/** A whole section with a long header and its CRC_32. */
[[nodiscard]] Bytes makeSection(const SectionHeader& header, const Bytes& payload);
/** A TOT: short header, but a CRC_32. */
[[nodiscard]] Bytes makeTot(int64_t utcTime, const Bytes& descriptors = {});

[[nodiscard]] Bytes descriptor(int tag, const Bytes& payload);
/** A 12-bit length behind four bits `high`, and the loop. */
[[nodiscard]] Bytes loop(int high, const Bytes& content);

using Programs = std::vector<std::pair<int, int>>;  // programme number and PID
[[nodiscard]] Bytes makePat(int transportStreamId, int version, const Programs& programs,
                            int number = 0, int lastNumber = 0);

struct Stream {
  int type;
  int pid;
  Bytes descriptors;
};
[[nodiscard]] Bytes makePmt(int programNumber, int version, int pcrPid,
                            const std::vector<Stream>& streams);

/** One service with a service descriptor. */
[[nodiscard]] Bytes makeSdt(int transportStreamId, int version, int serviceId,
                            const std::string& name, int number = 0, int lastNumber = 0);

/** One event per id, each an hour long and without descriptors. */
[[nodiscard]] Bytes makeEit(const SectionHeader& header, int segmentLastSection,
                            const std::vector<int>& eventIds);

/** Cuts sections into packets and keeps the continuity counters. */
class PacketWriter {
 public:
  /** The section in packets of its own. */
  [[nodiscard]] std::vector<TsPacket> section(int pid, const Bytes& section);
  /** Any bytes as payload; the first packet has the unit start flag and a pointer_field of 0. */
  [[nodiscard]] std::vector<TsPacket> sections(int pid, const Bytes& bytes);
  /** A packet of a stream, filled with `fill`, with a PCR if one is given. */
  [[nodiscard]] TsPacket stream(int pid, uint8_t fill, std::optional<int64_t> pcr = std::nullopt);
  /** Leaves out a number of the PID's packets. */
  void lose(int pid, int packets) { counters_[pid] += packets; }

 private:
  [[nodiscard]] TsPacket next(int pid);

  std::map<int, int> counters_;
};

/** Packets of several PIDs in the order in which they are added. */
class StreamBuilder {
 public:
  /** A section in packets of its own. */
  void add(int pid, const Bytes& section);
  /** A packet of a stream, with a PCR if one is given. */
  void add(int pid, std::optional<int64_t> pcr = std::nullopt);
  [[nodiscard]] const std::vector<TsPacket>& packets() const { return packets_; }

 private:
  PacketWriter writer_;
  std::vector<TsPacket> packets_;
};

}  // namespace tevra::tools::test
