#include "tools/si/section.h"

namespace tevra::tools {
namespace {

constexpr size_t kLongHeader = 8;
constexpr size_t kShortHeader = 3;
constexpr size_t kCrc = 4;
/** section_length of every table but the EIT is at most 1021, the EIT's 4093 (EN 300 468, 5.2). */
constexpr size_t kLongestSection = 1024;
constexpr size_t kLongestEitSection = 4096;

/** Walks over bytes; once a length goes beyond the end, `ok` is false for good. */
class Walker {
 public:
  Walker(const uint8_t* begin, const uint8_t* end) : position_(begin), end_(end) {}

  [[nodiscard]] bool ok() const { return ok_; }
  [[nodiscard]] bool atEnd() const { return position_ == end_; }
  [[nodiscard]] size_t left() const { return static_cast<size_t>(end_ - position_); }
  [[nodiscard]] const uint8_t* position() const { return position_; }

  /** Goes `size` bytes on and returns where they start. */
  const uint8_t* take(size_t size) {
    const uint8_t* start = position_;
    ok_ = ok_ && size <= left();
    position_ = ok_ ? position_ + size : end_;
    return start;
  }

  /** Goes over a descriptor loop of `size` bytes, which its descriptors fill exactly. */
  void descriptors(size_t size) {
    Walker loop(position_, position_);
    if (take(size); !ok_) {
      return;
    }
    loop.end_ = position_;
    while (loop.ok_ && !loop.atEnd()) {
      const uint8_t* header = loop.take(2);
      if (loop.ok_) {
        loop.take(header[1]);
      }
    }
    ok_ = loop.ok_;
  }

  /** Goes over a 16-bit field with a 12-bit loop length and over the descriptor loop behind it. */
  void lengthAndDescriptors() {
    const uint8_t* length = take(2);
    if (ok_) {
      descriptors(read12(length));
    }
  }

  /**
   * Goes over entries up to the end, each `header` bytes that end in the length of a descriptor
   * loop.
   */
  void entries(size_t header) {
    while (ok_ && !atEnd()) {
      take(header - 2);
      lengthAndDescriptors();
    }
  }

 private:
  const uint8_t* position_;
  const uint8_t* end_;
  bool ok_ = true;
};

bool networkAddsUp(Walker walker) {
  walker.lengthAndDescriptors();
  const uint8_t* length = walker.take(2);
  if (!walker.ok() || read12(length) > walker.left()) {
    return false;
  }
  Walker streams(walker.position(), walker.position() + read12(length));
  streams.entries(6);
  return streams.ok();
}

bool addsUp(int tableId, Walker walker) {
  switch (tableId) {
    case kTablePat:
      return walker.left() % 4 == 0;
    case kTableCat:
      walker.descriptors(walker.left());
      return walker.ok();
    case kTablePmt:
      walker.take(2);
      walker.lengthAndDescriptors();
      walker.entries(5);
      return walker.ok();
    case kTableSdtActual:
      walker.take(3);
      walker.entries(5);
      return walker.ok();
    case kTableNitActual:
    case kTableBat:
      return networkAddsUp(walker);
    case kTableTot:
      walker.take(5);
      walker.lengthAndDescriptors();
      return walker.ok();
    default:  // an EIT
      walker.take(6);
      walker.entries(12);
      return walker.ok();
  }
}

}  // namespace

bool Section::isHandled(int tableId) {
  switch (tableId) {
    case kTablePat:
    case kTableCat:
    case kTablePmt:
    case kTableNitActual:
    case kTableSdtActual:
    case kTableBat:
    case kTableTot:
      return true;
    default:
      return isEit(tableId);
  }
}

std::optional<Section> Section::parse(const uint8_t* bytes, size_t size) {
  if (size < kShortHeader + kCrc || !isHandled(bytes[0])) {
    return std::nullopt;
  }
  const int tableId = bytes[0];
  const bool isLong = (bytes[1] & 0x80) != 0;
  const size_t header = isLong ? kLongHeader : kShortHeader;
  const size_t longest = isEit(tableId) ? kLongestEitSection : kLongestSection;
  // A TOT's section_syntax_indicator is 0 by the standard; nothing else may have a short header.
  if (isLong == (tableId == kTableTot) || size < header + kCrc || size > longest ||
      size != 3 + read12(bytes + 1)) {
    return std::nullopt;
  }
  if (!addsUp(tableId, Walker(bytes + header, bytes + size - kCrc))) {
    return std::nullopt;
  }
  return Section(bytes, size);
}

}  // namespace tevra::tools
