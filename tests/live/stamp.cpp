#include "tests/live/stamp.h"

#include <array>
#include <cstring>
#include <random>
#include <type_traits>
#include <vector>

namespace tevra::test {
namespace {

using tools::kTsPacketSize;
using tools::TsPacket;

static_assert(std::has_unique_object_representations_v<Stamp>, "it is sent as it lies");
constexpr size_t kStampSize = sizeof(Stamp) + sizeof(uint64_t);  // and a sum over it
constexpr size_t kNoise = 1 << 16;

/** Never 0, as the sum over an empty payload would be. */
uint64_t sumOf(const Stamp& stamp) {
  std::array<uint64_t, sizeof stamp / sizeof(uint64_t)> words{};
  std::memcpy(words.data(), &stamp, sizeof stamp);
  uint64_t sum = 1;
  for (const uint64_t word : words) {
    sum = (sum ^ word) * 0x9E3779B97F4A7C15U;
    sum ^= sum >> 29;
  }
  return sum | 1;
}

/** The noise of a packet: bytes enough for one, from somewhere among many. */
const uint8_t* noiseOf(uint64_t sum) {
  static const std::vector<uint8_t> kBytes = [] {
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(kNoise + kTsPacketSize);
    for (uint8_t& byte : bytes) {
      byte = static_cast<uint8_t>(random());
    }
    return bytes;
  }();
  return kBytes.data() + (sum >> 8) % kNoise;
}

}  // namespace

void writeStamp(TsPacket& packet, const Stamp& stamp) {
  const uint64_t sum = sumOf(stamp);
  uint8_t* payload = packet.data() + packet.payloadOffset();
  std::memcpy(payload, &sum, sizeof sum);
  std::memcpy(payload + sizeof sum, &stamp, sizeof stamp);
  std::memcpy(payload + kStampSize, noiseOf(sum),
              kTsPacketSize - packet.payloadOffset() - kStampSize);
}

std::optional<Stamp> readStamp(const TsPacket& packet) {
  const size_t offset = packet.payloadOffset();
  if (offset + kStampSize > kTsPacketSize) {
    return std::nullopt;
  }
  Stamp stamp;
  uint64_t sum = 0;
  const uint8_t* payload = packet.data() + offset;
  std::memcpy(&sum, payload, sizeof sum);
  std::memcpy(&stamp, payload + sizeof sum, sizeof stamp);
  const bool isWhole = sum == sumOf(stamp) && std::memcmp(payload + kStampSize, noiseOf(sum),
                                                          kTsPacketSize - offset - kStampSize) == 0;
  if (!isWhole || packet.pcr().value_or(-1) != stamp.pcr) {
    return std::nullopt;
  }
  return stamp;
}

}  // namespace tevra::test
