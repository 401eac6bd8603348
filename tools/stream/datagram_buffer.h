#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace tevra::tools {

/**
 * Bytes on their way from a thread that must not wait to one that may be slow.
 *
 * One thread pushes and another pops. Datagrams are kept whole or not at all, so that what is read
 * breaks off between packets.
 */
class DatagramBuffer {
 public:
  /** Holds so many bytes at most. */
  explicit DatagramBuffer(size_t capacity) : ring_(capacity) {}

  /** Keeps a datagram; false, and nothing of it is kept, where it does not fit. */
  [[nodiscard]] bool push(const uint8_t* bytes, size_t size);

  /**
   * Takes up to `size` bytes, of however many datagrams, and waits for the first of them if there
   * are none, `most` at most. How many it has taken.
   */
  [[nodiscard]] size_t pop(uint8_t* buffer, size_t size, std::chrono::milliseconds most);

 private:
  std::mutex mutex_;
  std::condition_variable filled_;
  std::vector<uint8_t> ring_;
  size_t first_ = 0;  // of those held
  size_t held_ = 0;
};

}  // namespace tevra::tools
