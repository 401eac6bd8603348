#include "fuzz/section_packets.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "fuzz/byte_source.h"
#include "tests/support/crc32.h"

namespace tevra::fuzz {
namespace {

constexpr size_t kPacketSize = 188;
constexpr size_t kMaxSections = 64;

// PIDs of tables, and some for a PAT to name.
constexpr std::array<int, 10> kPids = {0, 1, 0x10, 0x11, 0x12, 0x14, 0x20, 0x21, 0x22, 0x100};
constexpr std::array<uint8_t, 10> kTableIds = {0x00, 0x01, 0x02, 0x40, 0x42,
                                               0x4A, 0x4E, 0x50, 0x51, 0x73};

std::string makeSection(ByteSource& source) {
  const uint8_t kind = source.byte();
  const uint8_t tableId = kind < 240 ? kTableIds[kind % kTableIds.size()] : source.byte();
  const uint8_t scale = source.byte();
  const std::string payload = source.text(scale < 200 ? 60 : 1020);
  const size_t length = payload.size() + 4;
  const bool isLong = tableId != 0x73;
  std::string section = {static_cast<char>(tableId),
                         static_cast<char>((isLong ? 0xB0 : 0x70) | length >> 8),
                         static_cast<char>(length & 0xFF)};
  section += payload;
  const uint32_t crc = test::crc32Of(section);
  for (const int shift : {24, 16, 8, 0}) {
    section += static_cast<char>(crc >> shift & 0xFF);
  }
  return section;
}

/** Puts sections into packets, each section into packets of its own. */
class Packetizer {
 public:
  void add(int pid, const std::string& section) {
    const std::string payload = '\0' + section;  // the pointer_field
    for (size_t position = 0; position < payload.size(); position += kPacketSize - 4) {
      addPacket(pid, position == 0, payload.substr(position, kPacketSize - 4));
    }
  }

  [[nodiscard]] std::vector<uint8_t> take() { return std::move(stream_); }

 private:
  void addPacket(int pid, bool unitStart, const std::string& payload) {
    const int counter = counters_[pid]++ & 0x0F;
    stream_.insert(stream_.end(),
                   {0x47, static_cast<uint8_t>((unitStart ? 0x40 : 0) | pid >> 8),
                    static_cast<uint8_t>(pid & 0xFF), static_cast<uint8_t>(0x10 | counter)});
    stream_.insert(stream_.end(), payload.begin(), payload.end());
    stream_.resize((stream_.size() + kPacketSize - 1) / kPacketSize * kPacketSize, 0xFF);
  }

  std::vector<uint8_t> stream_;
  std::map<int, int> counters_;
};

}  // namespace

std::vector<uint8_t> packetsOfSections(const uint8_t* bytes, size_t size) {
  ByteSource source(bytes, size);
  Packetizer packetizer;
  for (size_t sections = 0; sections < kMaxSections && !source.empty(); ++sections) {
    const int pid = kPids[source.choice(kPids.size())];
    packetizer.add(pid, makeSection(source));
  }
  return packetizer.take();
}

}  // namespace tevra::fuzz
