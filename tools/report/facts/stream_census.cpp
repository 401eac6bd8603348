#include "tools/report/facts/stream_census.h"

#include <algorithm>

#include "tools/si/section.h"
#include "tools/si/section_reader.h"

namespace tevra::tools::report {
namespace {

constexpr size_t kUtcSize = 5;

}  // namespace

StreamCensus::StreamCensus() : pids_(kPidCount) {}

void StreamCensus::push(const TsPacket& packet) {
  Pid& pid = pids_[static_cast<size_t>(packet.pid())];
  ++pid.count.packets;
  if (packet.transportError()) {
    ++pid.count.transportErrors;
    return;  // nothing else in it can be believed
  }
  if (packet.pid() == kNullPid) {
    return;  // counters and flags of stuffing mean nothing (ISO/IEC 13818-1, 2.4.3.3)
  }
  pid.count.scrambled += packet.scrambled() ? 1 : 0;
  notePcr(packet, pid);
  checkContinuity(packet, pid);
  if (packet.pid() == kTotPid && packet.unitStart() && !packet.scrambled()) {
    readClock(packet);
  }
}

void StreamCensus::notePcr(const TsPacket& packet, Pid& pid) {
  const std::optional<int64_t> pcr = packet.pcr();
  if (!pcr) {
    return;
  }
  ++pid.count.pcrs;
  if (pid.lastPcr && !packet.discontinuity() && pcrInterval(*pid.lastPcr, *pcr) > 0) {
    ++pid.pcrIntervals;
  }
  pid.lastPcr = pcr;
}

/** ISO/IEC 13818-1, 2.4.3.3: only payload moves the counter, and a packet may come twice. */
void StreamCensus::checkContinuity(const TsPacket& packet, Pid& pid) {
  const int counter = packet.continuityCounter();
  const int last = pid.lastCounter;
  pid.lastCounter = counter;
  if (last < 0 || packet.discontinuity()) {
    pid.repeatable = packet.hasPayload();
    return;
  }
  if (!packet.hasPayload()) {
    pid.count.continuityErrors += counter == last ? 0 : 1;
    return;
  }
  const bool isNext = counter == ((last + 1) & 0x0F);
  const bool repeats = !isNext && counter == last && pid.repeatable;
  pid.count.continuityErrors += isNext || repeats ? 0 : 1;
  pid.repeatable = !repeats;
}

void StreamCensus::noteClock(StreamTime time) {
  firstClock_ = firstClock_.value_or(time);
  lastClock_ = time;
}

/** Looks for TDTs, which have no CRC_32 (EN 300 468, 5.2.5), among the sections in the packet. */
void StreamCensus::readClock(const TsPacket& packet) {
  SectionReader reader(packet.data() + packet.payloadOffset(), packet.data() + kTsPacketSize);
  reader.skip(static_cast<size_t>(reader.byte()));  // behind the pointer_field
  while (!reader.atEnd()) {
    const int tableId = reader.byte();
    const size_t length = reader.length();
    if (tableId != kTableTdt || length != kUtcSize) {
      reader.skip(length);
    } else if (const auto time = streamTime(reader.number(kUtcSize)); time && reader.ok()) {
      noteClock(*time);
    }
  }
}

std::map<int, PidCount> StreamCensus::pids() const {
  std::map<int, PidCount> counts;
  for (int pid = 0; pid < kPidCount; ++pid) {
    const PidCount& count = pids_[static_cast<size_t>(pid)].count;
    if (count.packets != 0) {
      counts.emplace(pid, count);
    }
  }
  return counts;
}

int StreamCensus::clockPid() const {
  const auto best = std::max_element(pids_.begin(), pids_.end(), [](const Pid& a, const Pid& b) {
    return a.pcrIntervals < b.pcrIntervals;
  });
  return best->pcrIntervals == 0 ? kNullPid : static_cast<int>(best - pids_.begin());
}

}  // namespace tevra::tools::report
