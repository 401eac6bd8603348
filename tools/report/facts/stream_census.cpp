#include "tools/report/facts/stream_census.h"

#include <cstdlib>

#include "tools/si/section.h"
#include "tools/si/section_reader.h"

namespace tevra::tools::report {
namespace {

constexpr size_t kUtcSize = 5;

/** Ticks from one PCR to the next, less than 0 where that lies behind. */
int64_t pcrStep(int64_t from, int64_t to) {
  const int64_t forwards = (to - from + kPcrModulus) % kPcrModulus;
  return forwards > kPcrModulus / 2 ? forwards - kPcrModulus : forwards;
}

bool isJump(int64_t step) {
  return step < 0 || step > kPcrLimit;
}

/** A jump is worse than what is none, else the wider of two. */
bool isWorse(int64_t step, int64_t other) {
  return isJump(step) == isJump(other) ? std::abs(step) > std::abs(other) : isJump(step);
}

}  // namespace

StreamCensus::StreamCensus() : pids_(kPidCount) {}

void StreamCensus::push(const TsPacket& packet) {
  Pid& pid = pids_[static_cast<size_t>(packet.pid())];
  ++pid.count.packets;
  pid.count.transportErrors += packet.transportError() ? 1 : 0;
  if (packet.pid() == kNullPid) {
    return;  // counters and flags of stuffing mean nothing (ISO/IEC 13818-1, 2.4.3.3)
  }
  pid.count.continuityErrors += pid.continuity.breaksAt(packet) ? 1 : 0;
  if (packet.transportError()) {
    return;  // nothing else in it can be believed
  }
  pid.count.scrambled += packet.scrambled() ? 1 : 0;
  notePcr(packet, pid);
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
  if (pid.lastPcr && !packet.discontinuity()) {
    const int64_t step = pcrStep(*pid.lastPcr, *pcr);
    pid.count.pcrJumps += isJump(step) ? 1 : 0;
    if (!pid.widestStep || isWorse(step, *pid.widestStep)) {
      pid.widestStep = step;
    }
  }
  pid.lastPcr = pcr;
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
    const Pid& entry = pids_[static_cast<size_t>(pid)];
    if (entry.count.packets != 0) {
      PidCount& count = counts.emplace(pid, entry.count).first->second;
      if (entry.widestStep) {
        count.widestPcrStep = ticksToSeconds(*entry.widestStep);
      }
    }
  }
  return counts;
}

}  // namespace tevra::tools::report
