#include "fuzz/byte_source.h"

#include <algorithm>

namespace tevra::fuzz {

uint32_t ByteSource::bytes(int count) {
  uint32_t value = 0;
  for (; count > 0; --count) {
    value = value << 8 | byte();
  }
  return value;
}

int32_t ByteSource::number() {
  const uint8_t kind = byte();
  switch (kind >> 5) {
    case 0:
    case 1:
    case 2:
      return kind & 0x1F;  // few enough to meet again
    case 3:
      return byte();
    case 4:
      return static_cast<int32_t>(bytes(2) & 0x1FFF);
    case 5:
      return static_cast<int32_t>(bytes(2));
    default:
      return static_cast<int32_t>(bytes(4));
  }
}

int64_t ByteSource::time() {
  constexpr int64_t kFirstOf2026 = int64_t{61041} << 24;  // MJD
  const uint8_t kind = byte();
  if (kind < 128) {
    return kFirstOf2026 + (int64_t{kind} << 24) + (bytes(3) & 0x3FFFFF);
  }
  const uint64_t high = bytes(4);
  return static_cast<int64_t>(high << 32 | bytes(4));
}

std::string ByteSource::text(size_t maximum) {
  const size_t wanted = choice(maximum + 1);
  const auto size = std::min(wanted, static_cast<size_t>(end_ - next_));
  std::string result(reinterpret_cast<const char*>(next_), size);
  next_ += size;
  return result;
}

}  // namespace tevra::fuzz
