#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/records.h"

namespace tevra::tools {

/**
 * Reads what lies in a section from front to end and never beyond. Once a length leads beyond, the
 * reader has failed for good: everything reads as 0 or empty, loops end, and nothing that has been
 * read is of use.
 */
class SectionReader {
 public:
  /** The bytes up to `end` must outlive the reader. */
  SectionReader(const uint8_t* begin, const uint8_t* end) : position_(begin), end_(end) {}

  [[nodiscard]] bool ok() const { return ok_; }                   ///< has not failed
  [[nodiscard]] bool atEnd() const { return position_ == end_; }  ///< of the section or loop

  /** An unsigned big-endian number of so many bytes, seven at most. */
  int64_t number(size_t bytes);
  int byte() { return static_cast<int>(number(1)); }  ///< 8 bits
  int word() { return static_cast<int>(number(2)); }  ///< 16 bits
  int pid() { return word() & 0x1FFF; }               ///< the last 13 of 16 bits
  /** The last 12 of 16 bits, as they stand before every loop. */
  size_t length() { return static_cast<size_t>(word() & 0x0FFF); }
  /** Passes over so many bytes. */
  void skip(size_t bytes);

  /** Calls `readEntry` until it has read `size` bytes; it is shown nothing beyond them. */
  template <class ReadEntry>
  void loop(size_t size, const ReadEntry& readEntry) {
    const uint8_t* const outerEnd = end_;
    if (has(size)) {
      end_ = position_ + size;
    }
    while (!atEnd()) {
      readEntry();
    }
    if (ok_) {
      end_ = outerEnd;
    }
  }
  /** The same with all that is left. */
  template <class ReadEntry>
  void rest(const ReadEntry& readEntry) {
    loop(left(), readEntry);
  }
  /** A loop of descriptors. */
  [[nodiscard]] std::vector<Descriptor> descriptors(size_t size);
  /** A loop of descriptors that is all that is left. */
  [[nodiscard]] std::vector<Descriptor> descriptors() { return descriptors(left()); }

 private:
  [[nodiscard]] size_t left() const { return static_cast<size_t>(end_ - position_); }
  /** Whether so many bytes are left; the reader has failed where they are not. */
  [[nodiscard]] bool has(size_t bytes);

  const uint8_t* position_;
  const uint8_t* end_;
  bool ok_ = true;
};

}  // namespace tevra::tools
