#include "tests/system/transport_stream.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tevra::test {
namespace {

constexpr size_t kSectionHeader = 3;
constexpr double kTicksPerSecond = 27e6;

size_t sectionLength(const std::string& bytes) {
  return kSectionHeader + (static_cast<size_t>(static_cast<uint8_t>(bytes[1]) & 0x0F) << 8 |
                           static_cast<uint8_t>(bytes[2]));
}

/** Puts the payloads of one PID together to sections. */
class SectionCollector {
 public:
  void start(const std::string& payload, size_t packet) {
    const size_t pointer = static_cast<uint8_t>(payload[0]);
    if (pointer + 1 > payload.size()) {
      begun_ = false;
      return;
    }
    add(payload.substr(1, pointer), packet);
    pending_ = payload.substr(1 + pointer);
    begun_ = true;
    packet_ = packet;
    take();
  }

  void add(const std::string& payload, size_t packet) {
    if (begun_) {
      pending_ += payload;
      take();
      packet_ = packet;
    }
  }

  std::vector<CarriedSection> sections;

 private:
  void take() {
    while (pending_.size() >= kSectionHeader && static_cast<uint8_t>(pending_[0]) != 0xFF &&
           pending_.size() >= sectionLength(pending_)) {
      const std::string section = pending_.substr(0, sectionLength(pending_));
      pending_.erase(0, section.size());
      const bool hasCrc = (static_cast<uint8_t>(section[1]) & 0x80) != 0;
      if (hasCrc && crc32Of(section) == 0) {
        sections.push_back({section, packet_});
      }
    }
    begun_ = !pending_.empty() && static_cast<uint8_t>(pending_[0]) != 0xFF;
  }

  std::string pending_;
  size_t packet_ = 0;
  bool begun_ = false;
};

}  // namespace

TransportStream::TransportStream(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  bytes_.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  if (bytes_.empty() || bytes_.size() % kPacketSize != 0) {
    throw std::runtime_error(path + " is no transport stream");
  }
  for (size_t packet = 0; packet < packetCount(); ++packet) {
    if (byte(packet, 0) != 0x47) {
      throw std::runtime_error(path + ": packet " + std::to_string(packet) + " has no sync byte");
    }
  }
}

std::vector<std::string> TransportStream::packetsOf(int pid) const {
  std::vector<std::string> packets;
  for (size_t packet = 0; packet < packetCount(); ++packet) {
    if (pidOf(packet) == pid) {
      packets.push_back(bytes_.substr(packet * kPacketSize, kPacketSize));
      packets.back()[1] = static_cast<char>(byte(packet, 1) & 0xE0);
      packets.back()[2] = 0;
    }
  }
  return packets;
}

std::map<int, size_t> TransportStream::pids() const {
  std::map<int, size_t> counts;
  for (size_t packet = 0; packet < packetCount(); ++packet) {
    ++counts[pidOf(packet)];
  }
  return counts;
}

std::vector<CarriedSection> TransportStream::sections(int pid) const {
  SectionCollector collector;
  for (size_t packet = 0; packet < packetCount(); ++packet) {
    const size_t offset = payloadOffset(packet);
    if (pidOf(packet) != pid || offset >= kPacketSize) {
      continue;
    }
    const std::string payload = bytes_.substr(packet * kPacketSize + offset, kPacketSize - offset);
    const bool unitStarts = (byte(packet, 1) & 0x40) != 0;
    unitStarts ? collector.start(payload, packet) : collector.add(payload, packet);
  }
  return collector.sections;
}

int TransportStream::continuityErrors(int pid) const {
  std::optional<size_t> last;
  int errors = 0;
  for (size_t packet = 0; packet < packetCount(); ++packet) {
    if (pidOf(packet) != pid) {
      continue;
    }
    const int counter = byte(packet, 3) & 0x0F;
    if (last && !isDiscontinuity(packet)) {
      const int before = byte(*last, 3) & 0x0F;
      const bool counts = (byte(packet, 3) & 0x10) != 0;
      const bool repeated = counts && packetsAreEqual(*last, packet);
      const int expected = counts && !repeated ? (before + 1) & 0x0F : before;
      errors += counter == expected ? 0 : 1;
    }
    last = packet;
  }
  return errors;
}

bool TransportStream::packetsAreEqual(size_t a, size_t b) const {
  return bytes_.compare(a * kPacketSize, kPacketSize, bytes_, b * kPacketSize, kPacketSize) == 0;
}

std::optional<double> TransportStream::timeOf(size_t packet, int pcrPid) const {
  const auto& pcrs = clock(pcrPid);
  const auto after = pcrs.lower_bound(packet);
  if (after == pcrs.end() || (after == pcrs.begin() && after->first != packet)) {
    return std::nullopt;
  }
  if (after->first == packet) {
    return static_cast<double>(after->second) / kTicksPerSecond;
  }
  const auto before = std::prev(after);
  const double share = static_cast<double>(packet - before->first) /
                       static_cast<double>(after->first - before->first);
  const auto span = static_cast<double>(after->second - before->second);
  return (static_cast<double>(before->second) + share * span) / kTicksPerSecond;
}

double TransportStream::duration(int pcrPid) const {
  const auto& pcrs = clock(pcrPid);
  return pcrs.empty() ? 0 : static_cast<double>(pcrs.rbegin()->second) / kTicksPerSecond;
}

const std::map<size_t, int64_t>& TransportStream::clock(int pcrPid) const {
  constexpr int64_t kModulus = (int64_t{1} << 33) * 300;
  const auto [entry, isNew] = clocks_.try_emplace(pcrPid);
  auto& pcrs = entry->second;
  int64_t lastPcr = 0;
  for (size_t packet = 0; isNew && packet < packetCount(); ++packet) {
    const std::optional<int64_t> pcr = pidOf(packet) == pcrPid ? pcrOf(packet) : std::nullopt;
    if (pcr) {
      const int64_t step = pcrs.empty() ? 0 : (*pcr - lastPcr + kModulus) % kModulus;
      pcrs[packet] = (pcrs.empty() ? 0 : pcrs.rbegin()->second) + step;
      lastPcr = *pcr;
    }
  }
  return pcrs;
}

size_t TransportStream::payloadOffset(size_t packet) const {
  const int control = byte(packet, 3) >> 4 & 3;
  switch (control) {
    case 1:
      return 4;
    case 3:
      return size_t{5} + byte(packet, 4);
    default:
      return kPacketSize;  // no payload
  }
}

bool TransportStream::isDiscontinuity(size_t packet) const {
  const bool hasField = (byte(packet, 3) & 0x20) != 0 && byte(packet, 4) > 0;
  return hasField && (byte(packet, 5) & 0x80) != 0;
}

std::optional<int64_t> TransportStream::pcrOf(size_t packet) const {
  const bool hasField = (byte(packet, 3) & 0x20) != 0 && byte(packet, 4) >= 7;
  if (!hasField || (byte(packet, 5) & 0x10) == 0) {
    return std::nullopt;
  }
  int64_t base = 0;
  for (size_t offset = 6; offset < 10; ++offset) {
    base = base << 8 | byte(packet, offset);
  }
  base = base << 1 | byte(packet, 10) >> 7;
  return base * 300 + ((byte(packet, 10) & 1) << 8 | byte(packet, 11));
}

}  // namespace tevra::test
