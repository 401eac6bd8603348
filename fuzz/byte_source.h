#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tevra::fuzz {

/**
 * Turns a fuzzer's input into decisions. Once the bytes are used up every answer is the first
 * choice, so that any input has an end and its start means the same whatever follows.
 */
class ByteSource {
 public:
  ByteSource(const uint8_t* bytes, size_t size) : next_(bytes), end_(bytes + size) {}

  [[nodiscard]] bool empty() const { return next_ == end_; }

  uint8_t byte() { return empty() ? uint8_t{0} : *next_++; }
  bool flag() { return (byte() & 1) != 0; }

  /** 0 to `count` - 1; `count` is 1 to 65,536. */
  size_t choice(size_t count) { return bytes(count > 256 ? 2 : 1) % count; }

  /** Any 32-bit number: mostly small, of 13 or 16 bits as ids are, now and then anything. */
  int32_t number();

  /** A 64-bit number, mostly a DVB time. */
  int64_t time();

  /** Up to `maximum` bytes, as many as the next decision says and there are. */
  std::string text(size_t maximum);

 private:
  /** Big-endian. */
  uint32_t bytes(int count);

  const uint8_t* next_;
  const uint8_t* end_;
};

}  // namespace tevra::fuzz
