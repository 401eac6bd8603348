#include "tools/si/section_reader.h"

namespace tevra::tools {

int64_t SectionReader::number(size_t bytes) {
  int64_t value = 0;
  for (size_t left = has(bytes) ? bytes : 0; left != 0; --left) {
    value = (value << 8) | *position_++;
  }
  return value;
}

void SectionReader::skip(size_t bytes) {
  position_ += has(bytes) ? bytes : 0;
}

std::vector<Descriptor> SectionReader::descriptors(size_t size) {
  std::vector<Descriptor> descriptors;
  loop(size, [&] {
    Descriptor& descriptor = descriptors.emplace_back();
    descriptor.tag = byte();
    const auto length = static_cast<size_t>(byte());
    if (has(length)) {
      descriptor.data.assign(reinterpret_cast<const char*>(position_), length);
      position_ += length;
    }
  });
  return descriptors;
}

bool SectionReader::has(size_t bytes) {
  if (bytes > left()) {
    ok_ = false;
    position_ = end_;
  }
  return ok_;
}

}  // namespace tevra::tools
