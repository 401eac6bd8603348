#include "tools/stream/datagram_buffer.h"

#include <algorithm>

namespace tevra::tools {

bool DatagramBuffer::push(const uint8_t* bytes, size_t size) {
  {
    const std::lock_guard lock(mutex_);
    if (size > ring_.size() - held_) {
      return false;
    }
    const size_t start = (first_ + held_) % ring_.size();
    const size_t straight = std::min(size, ring_.size() - start);
    std::copy_n(bytes, straight, ring_.begin() + static_cast<std::ptrdiff_t>(start));
    std::copy_n(bytes + straight, size - straight, ring_.begin());
    held_ += size;
  }
  filled_.notify_one();
  return true;
}

size_t DatagramBuffer::pop(uint8_t* buffer, size_t size, std::chrono::milliseconds most) {
  std::unique_lock lock(mutex_);
  filled_.wait_for(lock, most, [this] { return held_ != 0; });
  const size_t count = std::min({size, held_, ring_.size() - first_});
  std::copy_n(ring_.begin() + static_cast<std::ptrdiff_t>(first_), count, buffer);
  held_ -= count;
  first_ = held_ == 0 ? 0 : (first_ + count) % ring_.size();  // few pages are touched at ease
  return count;
}

}  // namespace tevra::tools
