#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

#include "tests/live/stamp.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/stream/ts_packet.h"

namespace tevra::test {

/**
 * A multiplex of eight services, packet after packet for as long as one likes, which changes while
 * it runs. Its streams are stamped packets, a PCR every 40 ms among them; the first PCRs are the
 * last before their wrap-around. PAT and PMTs come every 80 ms, the SDT every 500 ms, each for the
 * first time as late as whoever begins to receive may have to wait.
 */
class LiveMultiplex {
 public:
  static constexpr int kFirstService = 101;
  static constexpr int kService = 103;  ///< the one that changes, and of which sent() tells

  explicit LiveMultiplex(int megabits);

  /** The next packet; `sentAt` is for its stamp. */
  [[nodiscard]] tools::TsPacket next(int64_t sentAt);

  /** The service gets another audio stream, which is announced at once and begins 200 ms later. */
  void addStream();
  /** Another transport stream comes in this one's place: the same services, but every PID, version
   * and PCR is another, and none has been added. */
  void changeTransportStream();

  /** Packets given. */
  [[nodiscard]] uint64_t packets() const { return packets_; }
  [[nodiscard]] double packetsPerSecond() const { return packetsPerSecond_; }
  /** How many packets of each of the service's streams have been given. */
  [[nodiscard]] const std::map<StreamId, uint64_t>& sent() const { return sent_; }
  /** Number of the first packet of each transport stream. */
  [[nodiscard]] const std::vector<uint64_t>& eras() const { return eras_; }

 private:
  struct Source {
    StreamId id;
    bool isOfService;
    bool hasPcr;
    double period;  // packets of the multiplex
    double next;    // number of the packet that is its next
    double nextPcr;
    uint64_t sequence;
    uint64_t previous;
  };

  struct Table {
    int pid;
    tools::test::Bytes section;
    double period;
    double next;
  };

  void begin();
  void addService(int service);
  void addSource(int service, int number, double share);
  [[nodiscard]] int pidOf(int service, int number) const;
  [[nodiscard]] tools::test::Bytes pmtOf(int service) const;
  [[nodiscard]] tools::test::Bytes sdt() const;
  void addTable(int pid, const tools::test::Bytes& section, double seconds);
  void queueTables();
  [[nodiscard]] Source* dueSource();
  [[nodiscard]] tools::TsPacket streamPacket(Source& source, int64_t sentAt);
  [[nodiscard]] int64_t pcr() const;

  int megabits_;
  double packetsPerSecond_;
  tools::test::PacketWriter writer_;
  std::vector<Table> tables_;
  std::vector<Source> sources_;
  std::deque<tools::TsPacket> queue_;  // of tables
  std::map<StreamId, uint64_t> sent_;
  std::vector<uint64_t> eras_;
  uint64_t packets_ = 0;
  int pmtVersion_ = 0;
  int audioStreams_ = 2;
};

}  // namespace tevra::test
