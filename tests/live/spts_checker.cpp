#include "tests/live/spts_checker.h"

#include <algorithm>
#include <stdexcept>

namespace tevra::test {
namespace {

using tools::kTsPacketSize;
using tools::TsPacket;

constexpr size_t kPacketsOfDatagram = 7;

std::string pidText(const TsPacket& packet) {
  return "PID " + std::to_string(packet.pid());
}

}  // namespace

void SptsChecker::take(const uint8_t* datagram, size_t size, int64_t now) {
  if (size == 0 || size % kTsPacketSize != 0 || size > kPacketsOfDatagram * kTsPacketSize) {
    faults_.add("a datagram of " + std::to_string(size) + " bytes");
    return;
  }
  shortDatagrams_ += size < kPacketsOfDatagram * kTsPacketSize ? 1 : 0;
  for (size_t offset = 0; offset < size; offset += kTsPacketSize) {
    try {
      takePacket(TsPacket(datagram + offset), now);
    } catch (const std::out_of_range&) {
      faults_.add("a table that is shorter than it says");
    }
    ++packets_;
  }
}

void SptsChecker::forget() {
  continuity_.forget();
  intervals_.forget();
  sureFrom_.reset();
  received_.clear();
}

void SptsChecker::takePacket(const TsPacket& packet, int64_t now) {
  if (packet.data()[0] != tools::kTsSyncByte || packet.transportError()) {
    faults_.add("a packet without sync byte, or with transport error");
  } else if (packet.pid() == kPatPid || packet.pid() == kSdtPid || packet.pid() == pmtPid_) {
    continuity_.take(packet);
    takeTable(packet);
  } else {
    takeStream(packet, now);
    ++streamPackets_;
  }
}

void SptsChecker::takeTable(const TsPacket& packet) {
  const std::string section = sectionIn(packet);
  if (section.empty()) {
    return;
  }
  const bool isNew = isNewVersion(section);
  if (packet.pid() == kPatPid) {
    takePat(section);
    intervals_.table(TableIntervals::kPat, packets_);
  } else if (packet.pid() == kSdtPid) {
    intervals_.table(TableIntervals::kSdt, packets_);
  } else {
    intervals_.table(TableIntervals::kPmt, packets_);
    if (isNew) {
      pmts_.push_back(parsePmt(section));
    }
  }
}

/** Empty where there is none that is whole; tables of one service fit into a packet. */
std::string SptsChecker::sectionIn(const TsPacket& packet) {
  const std::string bytes(packet.data() + packet.payloadOffset(), packet.data() + kTsPacketSize);
  if (bytes.size() > 3 && packet.unitStart() && bytes[0] == 0) {
    const auto length = static_cast<size_t>(static_cast<uint8_t>(bytes[2]) & 0x0F) << 8 |
                        static_cast<uint8_t>(bytes[3]);
    std::string section = bytes.substr(1, 3 + length);
    if (crc32Of(section) == 0) {
      return section;
    }
  }
  faults_.add(pidText(packet) + ": no section in one packet, or a damaged one");
  return "";
}

/** Whether it is another than the one before it of its table; its version must be the next then. */
bool SptsChecker::isNewVersion(const std::string& section) {
  const auto versionOf = [](const std::string& table) {
    return static_cast<uint8_t>(table.at(5)) >> 1 & 0x1F;
  };
  std::string& last = sections_[section[0]];
  if (section == last) {
    return false;
  }
  if (!last.empty() && versionOf(section) != (versionOf(last) + 1) % 32) {
    faults_.add("table " + std::to_string(section[0]) + " goes from version " +
                std::to_string(versionOf(last)) + " to " + std::to_string(versionOf(section)));
  }
  last = section;
  return true;
}

void SptsChecker::takePat(const std::string& section) {
  const ParsedPat pat = parsePat(section);
  if (pat.programs.size() != 1) {
    faults_.add("a PAT of " + std::to_string(pat.programs.size()) + " programmes");
    return;
  }
  pmtPid_ = pat.programs.begin()->second;
}

void SptsChecker::takeStream(const TsPacket& packet, int64_t now) {
  const auto stamp = readStamp(packet);
  if (!stamp) {
    faults_.add(pidText(packet) + ": a packet that is damaged or none of the service's");
    return;
  }
  requireAnnounced(packet);
  continuity_.take(packet);
  follow(*stamp);
  longestWay_ = std::max(longestWay_, now - stamp->sentAt);
  if (const auto pcr = packet.pcr(); pcr && !pmts_.empty() && packet.pid() == pmts_.back().pcrPid) {
    intervals_.pcr(*pcr, packets_);
    firstPicture_ = firstPicture_ == 0 ? now : firstPicture_;
  }
}

void SptsChecker::requireAnnounced(const TsPacket& packet) {
  const bool isAnnounced =
      !pmts_.empty() &&
      std::any_of(pmts_.back().streams.begin(), pmts_.back().streams.end(),
                  [&](const ParsedStream& stream) { return stream.pid == packet.pid(); });
  if (!isAnnounced) {
    faults_.add(pidText(packet) + ": a packet of a stream that the PMT does not name");
  }
}

/** From the first packet of a transport stream on nothing may be missing; a stream of it may begin
 * later. */
void SptsChecker::follow(const Stamp& stamp) {
  beginnings_.try_emplace(stamp.era, stamp.position);
  if (!sureFrom_ || sureFrom_->first != stamp.era) {
    sureFrom_ = {stamp.era, stamp.position};
  }
  const auto stream = received_.find(stamp.stream());
  const bool follows = stream == received_.end()
                           ? stamp.sequence == 0 || stamp.previous < sureFrom_->second
                           : stamp.sequence == stream->second;
  if (!follows) {
    faults_.add("stream " + std::to_string(stamp.pid) + " goes on with packet " +
                std::to_string(stamp.sequence));
  }
  received_[stamp.stream()] = stamp.sequence + 1;
}

}  // namespace tevra::test
