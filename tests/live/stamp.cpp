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
using Words = std::array<uint64_t, 6>;

constexpr size_t kStampSize = sizeof(Words) + sizeof(uint64_t);  // and a sum over it
constexpr size_t kNoise = 1 << 16;

Words wordsOf(const Stamp& stamp) {
  return {uint64_t{stamp.stream.first} << 32 | stamp.stream.second,
          stamp.sequence,
          stamp.position,
          stamp.previous,
          static_cast<uint64_t>(stamp.pcr),
          static_cast<uint64_t>(stamp.sentAt)};
}

Stamp stampOf(const Words& words) {
  Stamp stamp;
  stamp.stream = {static_cast<uint32_t>(words[0] >> 32), static_cast<uint32_t>(words[0])};
  stamp.sequence = words[1];
  stamp.position = words[2];
  stamp.previous = words[3];
  stamp.pcr = static_cast<int64_t>(words[4]);
  stamp.sentAt = static_cast<int64_t>(words[5]);
  return stamp;
}

/** Never 0, as the sum over an empty payload would be. */
uint64_t sumOf(const Words& words) {
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
  const Words words = wordsOf(stamp);
  const uint64_t sum = sumOf(words);
  uint8_t* payload = packet.data() + packet.payloadOffset();
  std::memcpy(payload, &sum, sizeof sum);
  std::memcpy(payload + sizeof sum, words.data(), sizeof words);
  std::memcpy(payload + kStampSize, noiseOf(sum),
              kTsPacketSize - packet.payloadOffset() - kStampSize);
}

std::optional<Stamp> readStamp(const TsPacket& packet) {
  const size_t offset = packet.payloadOffset();
  if (offset + kStampSize > kTsPacketSize) {
    return std::nullopt;
  }
  Words words{};
  uint64_t sum = 0;
  const uint8_t* payload = packet.data() + offset;
  std::memcpy(&sum, payload, sizeof sum);
  std::memcpy(words.data(), payload + sizeof sum, sizeof words);
  const bool isWhole = sum == sumOf(words) && std::memcmp(payload + kStampSize, noiseOf(sum),
                                                          kTsPacketSize - offset - kStampSize) == 0;
  const Stamp stamp = stampOf(words);
  if (!isWhole || packet.pcr().value_or(-1) != stamp.pcr) {
    return std::nullopt;
  }
  return stamp;
}

}  // namespace tevra::test
