#include "tools/extract/spts_writer.h"

#include <algorithm>
#include <utility>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

// Tables are inserted where a packet lies, and a receiver takes them for as much as a PCR interval
// (at most 40 ms, ETSI TR 101 154) earlier, since it spreads the packets between two PCRs evenly:
// less than what is allowed by that.
constexpr int64_t kPatAndPmtInterval = kSystemClock * 6 / 100;
constexpr int64_t kSdtInterval = kSystemClock * 9 / 10;

std::vector<TsPacket> packetsOf(const std::vector<std::string>& list, const std::string& table) {
  const bool areGood =
      !list.empty() && std::all_of(list.begin(), list.end(), [](const std::string& packet) {
        return packet.size() == kTsPacketSize &&
               static_cast<uint8_t>(packet.front()) == kTsSyncByte;
      });
  if (!areGood) {
    throw ToolError("the daemon's answer holds no usable " + table +
                    " packets; its log may say why it could not make them");
  }
  std::vector<TsPacket> packets;
  packets.reserve(list.size());
  for (const std::string& packet : list) {
    packets.emplace_back(reinterpret_cast<const uint8_t*>(packet.data()));
  }
  return packets;
}

/** Whether waiting until `horizon` would be too long. */
bool isDue(const std::optional<int64_t>& last, int64_t interval, int64_t horizon) {
  return !last || horizon - *last >= interval;
}

}  // namespace

SptsWriter::SptsWriter(const SPTSConfiguration& configuration, Sink sink)
    : pat_(packetsOf(configuration.outputTables.patPackets, "PAT")),
      sdt_(packetsOf(configuration.outputTables.sdtPackets, "SDT")),
      pmt_(packetsOf(configuration.outputTables.pmtPackets, "PMT")),
      routes_(configuration.pidItems, pmt_.front().pid()),
      sink_(std::move(sink)),
      clock_(routes_.pcrPid(), [this](const TsPacket& packet, int64_t time,
                                      int64_t horizon) { take(packet, time, horizon); }),
      counters_(kPidCount, 0) {}

void SptsWriter::take(const TsPacket& packet, int64_t time, int64_t horizon) {
  insertTables(time, horizon);
  duration_ = time;
  if (const std::optional<PidRoute>& route = routes_.of(packet.pid())) {
    carry(packet, *route);
  }
}

void SptsWriter::insertTables(int64_t time, int64_t horizon) {
  if (isDue(patAndPmtTime_, kPatAndPmtInterval, horizon)) {
    insert(pat_);
    insert(pmt_);
    patAndPmtTime_ = time;
  }
  if (isDue(sdtTime_, kSdtInterval, horizon)) {
    insert(sdt_);
    sdtTime_ = time;
  }
}

void SptsWriter::insert(const Packets& table) {
  for (TsPacket packet : table) {
    packet.setContinuityCounter(nextCounter(packet.pid()));
    sink_(packet);
    ++tablePackets_;
  }
}

void SptsWriter::carry(const TsPacket& packet, const PidRoute& route) {
  if (route.pcrOnly && !packet.pcr()) {
    return;
  }
  TsPacket copy = route.pcrOnly ? packet.withoutPayload() : packet;
  copy.setPid(route.outputPid);
  if (route.pcrOnly || route.renumbers) {
    // A packet without payload repeats the counter of the one before (ISO/IEC 13818-1, 2.4.3.3).
    const int last = counters_[static_cast<size_t>(route.outputPid)] - 1;
    copy.setContinuityCounter(copy.hasPayload() ? nextCounter(route.outputPid) : last);
  }
  sink_(copy);
  ++streamPackets_;
}

int SptsWriter::nextCounter(int pid) {
  uint8_t& counter = counters_[static_cast<size_t>(pid)];
  const int current = counter;
  counter = static_cast<uint8_t>((counter + 1) & 0x0F);
  return current;
}

}  // namespace tevra::tools
