#include "tools/stream/ts_packet.h"

#include <algorithm>

namespace tevra::tools {
namespace {

constexpr size_t kAdaptationLength = 4;
constexpr size_t kAdaptationFlags = 5;
constexpr size_t kPcrField = 6;
constexpr size_t kPcrFieldSize = 6;
constexpr uint8_t kDiscontinuityFlag = 0x80;
constexpr uint8_t kPcrFlag = 0x10;
constexpr uint8_t kStuffing = 0xFF;
constexpr int64_t kLongestPcrInterval = 5 * kSystemClock;

}  // namespace

int64_t pcrInterval(int64_t from, int64_t to) {
  const int64_t interval = (to - from + kPcrModulus) % kPcrModulus;
  return interval <= kLongestPcrInterval ? interval : 0;
}

TsPacket::TsPacket(const uint8_t* bytes) {
  std::copy_n(bytes, kTsPacketSize, bytes_.begin());
}

void TsPacket::setPid(int pid) {
  bytes_[1] = static_cast<uint8_t>((bytes_[1] & 0xE0) | ((pid >> 8) & 0x1F));
  bytes_[2] = static_cast<uint8_t>(pid & 0xFF);
}

void TsPacket::setContinuityCounter(int counter) {
  bytes_[3] = static_cast<uint8_t>((bytes_[3] & 0xF0) | (counter & 0x0F));
}

size_t TsPacket::payloadOffset() const {
  if (!hasPayload()) {
    return kTsPacketSize;
  }
  const size_t start = hasAdaptationField() ? kAdaptationFlags + bytes_[kAdaptationLength] : 4;
  return std::min(start, kTsPacketSize);
}

std::optional<int64_t> TsPacket::pcr() const {
  const bool present = !transportError() && hasAdaptationField() &&
                       bytes_[kAdaptationLength] >= 1 + kPcrFieldSize &&
                       bytes_[kAdaptationLength] <= kTsPacketSize - kAdaptationFlags &&
                       (bytes_[kAdaptationFlags] & kPcrFlag) != 0;
  if (!present) {
    return std::nullopt;
  }
  const uint8_t* field = bytes_.data() + kPcrField;
  const int64_t base = (int64_t{field[0]} << 25) | (int64_t{field[1]} << 17) |
                       (int64_t{field[2]} << 9) | (int64_t{field[3]} << 1) | (field[4] >> 7);
  const int64_t extension = ((field[4] & 0x01) << 8) | field[5];
  return (base * 300 + extension) % kPcrModulus;
}

bool TsPacket::discontinuity() const {
  return hasAdaptationField() && bytes_[kAdaptationLength] > 0 &&
         (bytes_[kAdaptationFlags] & kDiscontinuityFlag) != 0;
}

TsPacket TsPacket::withoutPayload() const {
  TsPacket packet = *this;
  const size_t end = kAdaptationFlags + packet.bytes_[kAdaptationLength];
  std::fill(packet.bytes_.begin() + static_cast<std::ptrdiff_t>(end), packet.bytes_.end(),
            kStuffing);
  packet.bytes_[kAdaptationLength] = static_cast<uint8_t>(kTsPacketSize - kAdaptationFlags);
  packet.bytes_[1] = static_cast<uint8_t>(packet.bytes_[1] & ~0x40);
  packet.bytes_[3] = static_cast<uint8_t>(packet.bytes_[3] & ~0x10);
  return packet;
}

}  // namespace tevra::tools
