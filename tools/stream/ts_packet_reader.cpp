#include "tools/stream/ts_packet_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tevra::tools {
namespace {

constexpr std::array<size_t, 3> kDistances = {188, 204, 192};
constexpr size_t kTimeStampedDistance = 192;
constexpr size_t kLongestDistance = 204;
/** Sync bytes that must follow one before it is believed. */
constexpr size_t kConfirmations = 4;
constexpr size_t kLookahead = kConfirmations * kLongestDistance + 1;
constexpr size_t kBufferSize = size_t{64} * 1024;

}  // namespace

TsPacketReader::TsPacketReader(Source source) : source_(std::move(source)), buffer_(kBufferSize) {}

TsPacketReader::TsPacketReader(ByteSource& source)
    : TsPacketReader(
          [&source](uint8_t* buffer, size_t size) { return source.read(buffer, size); }) {
  isStopped_ = [&source] { return source.isStopped(); };
}

bool TsPacketReader::next(TsPacket& packet) {
  for (;;) {
    if (!synchronised_ && !synchronise()) {
      return false;
    }
    fill(gap_ + kTsPacketSize);
    if (available() < gap_ + kTsPacketSize) {
      skip(available() > gap_ && !isStopped_() ? available() : 0);
      return false;
    }
    if (buffer_[position_ + gap_] == kTsSyncByte) {
      break;
    }
    countLoss();
    synchronised_ = false;
  }
  packet = TsPacket(buffer_.data() + position_ + gap_);
  position_ += gap_ + kTsPacketSize;
  gap_ = distance_ - kTsPacketSize;
  ++packets_;
  return true;
}

void TsPacketReader::restart() {
  position_ = 0;
  end_ = 0;
  sourceEnded_ = false;
  synchronised_ = false;
  packetsBefore_ = packets_;
}

void TsPacketReader::fill(size_t size) {
  if (available() >= size) {
    return;
  }
  std::memmove(buffer_.data(), buffer_.data() + position_, available());
  end_ -= position_;
  position_ = 0;
  while (!sourceEnded_ && end_ < size) {
    const size_t read = source_(buffer_.data() + end_, buffer_.size() - end_);
    sourceEnded_ = read == 0;
    end_ += std::min(read, buffer_.size() - end_);
  }
}

bool TsPacketReader::synchronise() {
  gap_ = 0;
  for (;;) {
    fill(kLookahead);
    if (available() < kTsPacketSize) {
      skip(available());
      return false;
    }
    const size_t distance = distanceHere();
    if (distance != 0) {
      if (packets_ == packetsBefore_ && distance == kTimeStampedDistance) {
        skippedBytes_ -=
            std::min<uint64_t>(skippedBytes_, distance - kTsPacketSize);  // its time stamp
      }
      distance_ = distance;
      synchronised_ = true;
      return true;
    }
    skip(1);
  }
}

size_t TsPacketReader::distanceHere() const {
  if (buffer_[position_] != kTsSyncByte) {
    return 0;
  }
  if (distance_ != 0 && packetsLieApart(distance_)) {
    return distance_;
  }
  const auto* found = std::find_if(kDistances.begin(), kDistances.end(),
                                   [this](size_t distance) { return packetsLieApart(distance); });
  return found == kDistances.end() ? 0 : *found;
}

bool TsPacketReader::packetsLieApart(size_t distance) const {
  size_t confirmed = 0;
  for (size_t offset = distance; offset < available() && confirmed < kConfirmations;
       offset += distance, ++confirmed) {
    if (buffer_[position_ + offset] != kTsSyncByte) {
      return false;
    }
  }
  // Close to the end fewer packets can follow; a single one is believed if it ends with the source.
  return confirmed > 0 || available() == kTsPacketSize || available() == distance;
}

void TsPacketReader::countLoss() {
  const size_t next = gap_ + distance_;
  fill(next + 1);
  ++syncLosses_;
  doubleSyncLosses_ += available() > next && buffer_[position_ + next] != kTsSyncByte ? 1 : 0;
}

void TsPacketReader::skip(size_t bytes) {
  position_ += bytes;
  skippedBytes_ += bytes;
}

}  // namespace tevra::tools
