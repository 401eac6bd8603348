#include "tools/stream/ts_packet_reader.h"

#include <algorithm>
#include <random>
#include <utility>

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::PacketWriter;

/** Yields `bytes` at most `piece` at a time. */
TsPacketReader::Source sourceOf(Bytes bytes, size_t piece = 1000) {
  return [bytes = std::move(bytes), piece, position = size_t{0}](uint8_t* buffer,
                                                                 size_t size) mutable {
    const size_t count = std::min({size, piece, bytes.size() - position});
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), count, buffer);
    position += count;
    return count;
  };
}

/** Packets on PID 100 whose payload is their number, 0x47 excepted. */
TsPacket numbered(int number) {
  return PacketWriter().stream(100, static_cast<uint8_t>(number % 0x40));
}

Bytes packetBytes(int first, int count, size_t before = 0, size_t behind = 0) {
  Bytes bytes;
  for (int number = first; number < first + count; ++number) {
    const TsPacket packet = numbered(number);
    bytes.insert(bytes.end(), before, 0x11);
    bytes.insert(bytes.end(), packet.data(), packet.data() + kTsPacketSize);
    bytes.insert(bytes.end(), behind, 0x22);
  }
  return bytes;
}

/** The numbers of the packets that the reader finds. */
std::vector<int> numbersOf(TsPacketReader& reader) {
  std::vector<int> numbers;
  TsPacket packet;
  while (reader.next(packet)) {
    numbers.push_back(packet.data()[100]);
  }
  return numbers;
}

std::vector<int> range(int first, int count) {
  std::vector<int> numbers;
  for (int i = first; i < first + count; ++i) {
    numbers.push_back(i);
  }
  return numbers;
}

TEST(TsPacketReader, FindsNothingInAnEmptySource) {
  TsPacketReader reader(sourceOf({}));
  TsPacket packet;
  EXPECT_FALSE(reader.next(packet));
  EXPECT_FALSE(reader.next(packet)) << "the end stays the end";
  EXPECT_EQ(0U, reader.packets());
}

TEST(TsPacketReader, FindsNothingInLessThanAPacket) {
  Bytes bytes = packetBytes(0, 1);
  bytes.pop_back();
  TsPacketReader reader(sourceOf(bytes));
  EXPECT_TRUE(numbersOf(reader).empty());
  EXPECT_EQ(187U, reader.skippedBytes());
}

TEST(TsPacketReader, TakesASinglePacket) {
  TsPacketReader reader(sourceOf(packetBytes(5, 1)));
  EXPECT_EQ(range(5, 1), numbersOf(reader));
}

TEST(TsPacketReader, TakesPackets188BytesApartInPiecesOfAnySize) {
  for (const size_t piece : {size_t{1}, size_t{187}, size_t{188}, size_t{100'000}}) {
    TsPacketReader reader(sourceOf(packetBytes(0, 60), piece));
    EXPECT_EQ(range(0, 60), numbersOf(reader)) << "pieces of " << piece;
    EXPECT_EQ(60U, reader.packets());
    EXPECT_EQ(0U, reader.skippedBytes());
    EXPECT_EQ(0U, reader.syncLosses());
  }
}

TEST(TsPacketReader, TakesPacketsWithReedSolomonParity) {
  TsPacketReader reader(sourceOf(packetBytes(0, 30, 0, 16)));
  EXPECT_EQ(range(0, 30), numbersOf(reader));
  EXPECT_EQ(0U, reader.skippedBytes());
}

TEST(TsPacketReader, TakesPacketsBehindTimeStamps) {
  TsPacketReader reader(sourceOf(packetBytes(0, 30, 4, 0)));
  EXPECT_EQ(range(0, 30), numbersOf(reader));
  EXPECT_EQ(0U, reader.skippedBytes());
  EXPECT_EQ(0U, reader.syncLosses());
}

TEST(TsPacketReader, HandsOnAPacketAsSoonAsItHasCome) {
  for (const auto& [before, behind] : {std::pair(size_t{0}, size_t{0}), {4, 0}, {0, 16}}) {
    const Bytes bytes = packetBytes(0, 10, before, behind);
    size_t read = 0;
    TsPacketReader reader([&](uint8_t* buffer, size_t /*size*/) {
      *buffer = bytes.at(read);
      return ++read, size_t{1};
    });
    const size_t distance = before + kTsPacketSize + behind;
    TsPacket packet;
    for (size_t end = before + kTsPacketSize; end <= bytes.size(); end += distance) {
      ASSERT_TRUE(reader.next(packet));
      EXPECT_TRUE(read == end || end < 5 * distance) << distance << ": " << read << " for " << end;
    }
    EXPECT_EQ(10U, reader.packets());
  }
}

TEST(TsPacketReader, SkipsJunkBeforeTheFirstPacket) {
  Bytes bytes;
  for (int i = 0; i < 1001; ++i) {
    bytes.push_back(i % 7 == 0 ? kTsSyncByte : 0x12);
  }
  const Bytes packets = packetBytes(0, 20);
  bytes.insert(bytes.end(), packets.begin(), packets.end());
  TsPacketReader reader(sourceOf(bytes));
  EXPECT_EQ(range(0, 20), numbersOf(reader));
  EXPECT_EQ(1001U, reader.skippedBytes());
  EXPECT_EQ(0U, reader.syncLosses());
}

TEST(TsPacketReader, FindsThePacketsAgainBehindJunk) {
  const Bytes junk(77, 0x12);
  TsPacketReader reader(sourceOf(test::joined({packetBytes(0, 10), junk, packetBytes(10, 10)})));
  EXPECT_EQ(range(0, 20), numbersOf(reader));
  EXPECT_EQ(1U, reader.syncLosses());
  EXPECT_EQ(77U, reader.skippedBytes());
}

TEST(TsPacketReader, LosesOnePacketWhoseSyncByteIsWrong) {
  Bytes bytes = packetBytes(0, 20);
  bytes[10 * kTsPacketSize] = 0x00;
  TsPacketReader reader(sourceOf(bytes));
  std::vector<int> expected = range(0, 20);
  expected.erase(expected.begin() + 10);
  EXPECT_EQ(expected, numbersOf(reader));
  EXPECT_EQ(1U, reader.syncLosses());
  EXPECT_EQ(188U, reader.skippedBytes());
}

TEST(TsPacketReader, TellsALossFromAnErrorOfOneSyncByte) {
  for (const size_t parity : {size_t{0}, size_t{16}}) {
    Bytes bytes = packetBytes(0, 20, 0, parity);
    const size_t distance = kTsPacketSize + parity;
    bytes[10 * distance] = 0x00;
    TsPacketReader once(sourceOf(bytes, 100));
    (void)numbersOf(once);
    EXPECT_EQ(0U, once.doubleSyncLosses());
    bytes[11 * distance] = 0x00;
    TsPacketReader twice(sourceOf(bytes, 100));
    (void)numbersOf(twice);
    EXPECT_EQ(1U, twice.doubleSyncLosses());
    EXPECT_EQ(1U, twice.syncLosses());
  }
}

TEST(TsPacketReader, FindsThePacketsAgainWhenTheirDistanceChanges) {
  TsPacketReader reader(sourceOf(test::joined({packetBytes(0, 10), packetBytes(10, 10, 0, 16)})));
  EXPECT_EQ(range(0, 20), numbersOf(reader));
}

TEST(TsPacketReader, CountsATruncatedLastPacketAsSkipped) {
  Bytes bytes = packetBytes(0, 10);
  bytes.resize(bytes.size() - 100);
  TsPacketReader reader(sourceOf(bytes));
  EXPECT_EQ(range(0, 9), numbersOf(reader));
  EXPECT_EQ(88U, reader.skippedBytes());
}

TEST(TsPacketReader, FindsNothingInTextAndComesToItsEnd) {
  Bytes bytes;
  for (int i = 0; i < 20'000; ++i) {
    bytes.push_back(static_cast<uint8_t>("This is no transport stream. G\n"[i % 31]));
  }
  TsPacketReader reader(sourceOf(bytes));
  EXPECT_TRUE(numbersOf(reader).empty());
  EXPECT_EQ(bytes.size(), reader.skippedBytes());
}

TEST(TsPacketReader, AccountsForEveryByteOfRandomInput) {
  std::mt19937 random(1);
  for (int round = 0; round < 50; ++round) {
    Bytes bytes = packetBytes(0, 40);
    for (int i = 0; i < 10; ++i) {
      const size_t at = random() % bytes.size();
      const Bytes junk(random() % 300, static_cast<uint8_t>(random()));
      bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), junk.begin(), junk.end());
    }
    TsPacketReader reader(sourceOf(bytes, 1 + random() % 5000));
    TsPacket packet;
    while (reader.next(packet)) {
      ASSERT_EQ(kTsSyncByte, packet.data()[0]);
    }
    // Gaps of 4 or 16 bytes between packets belong to the packets.
    const uint64_t accounted = reader.packets() * kTsPacketSize + reader.skippedBytes();
    EXPECT_LE(accounted, bytes.size());
    EXPECT_GE(accounted + reader.packets() * 16, bytes.size());
  }
}

TEST(TsPacketReader, BegunAgainLosesNeitherPacketsNorSynchronisation) {
  // Time-stamped packets, the last one cut within its gap: what is left is no part of the next.
  for (const size_t gap : {size_t{0}, size_t{4}}) {
    Bytes bytes = packetBytes(0, 6, gap);
    bytes.insert(bytes.end(), gap, 0x11);
    size_t position = 0;
    TsPacketReader reader([&](uint8_t* buffer, size_t size) {
      const size_t count = std::min(size, bytes.size() - position);
      std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), count, buffer);
      position += count;
      return count;
    });
    const std::vector<int> first = numbersOf(reader);
    EXPECT_EQ(6U, first.size());
    position = 0;
    reader.restart();
    EXPECT_EQ(first, numbersOf(reader));
    EXPECT_EQ(12U, reader.packets());
    EXPECT_EQ(0U, reader.syncLosses());
    EXPECT_EQ(0U, reader.skippedBytes()) << gap;
  }
}

}  // namespace
}  // namespace tevra::tools
