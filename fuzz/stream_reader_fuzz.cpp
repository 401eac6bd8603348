// A transport stream of any content through the tool's reader: packets, sections, tables, the
// overview for people, and the output stream of one service.

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/null_daemon.h"
#include "fuzz/section_packets.h"
#include "fuzz/target.h"
#include "tools/extract/spts_writer.h"
#include "tools/feed/stream_inventory.h"
#include "tools/feed/table_feeder.h"
#include "tools/si/table_demux.h"
#include "tools/stream/ts_packet_reader.h"
#include "tools/tables/table_printer.h"
#include "tools/text/tool_error.h"

namespace tevra::fuzz {
namespace {

using tools::TsPacket;
using Bytes = std::vector<uint8_t>;

/** The packets that the reader finds in `stream`, given to it in pieces of `piece` bytes. */
std::vector<TsPacket> readPackets(const Bytes& stream, size_t piece) {
  size_t position = 0;
  tools::TsPacketReader reader([&](uint8_t* buffer, size_t size) {
    const size_t count = std::min({size, piece, stream.size() - position});
    std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(position), count, buffer);
    position += count;
    return count;
  });
  std::vector<TsPacket> packets;
  TsPacket packet;
  while (reader.next(packet)) {
    packets.push_back(packet);
  }
  TORNEL_FUZZ_CHECK(reader.packets() == packets.size());
  TORNEL_FUZZ_CHECK(packets.size() * tools::kTsPacketSize + reader.skippedBytes() <= stream.size());
  return packets;
}

/** Feeds a daemon that does nothing, and prints what people and programs would see. */
tools::StreamInventory takeTables(const std::vector<TsPacket>& packets) {
  NullDaemon daemon;
  tools::TableFeeder feeder(daemon);
  tools::StreamInventory inventory;
  std::ostringstream tables;
  tools::TablePrinter people(tables, /*json=*/false);
  tools::TablePrinter programs(tables, /*json=*/true);
  tools::TableDemux demux([&](const tools::SiTable& table, size_t sections) {
    feeder.feed(table, sections);
    inventory.add(table);
    people.print(table);
    programs.print(table);
  });
  for (const TsPacket& packet : packets) {
    demux.push(packet);
  }
  programs.finish();
  TORNEL_FUZZ_CHECK(people.printed() == feeder.sent() && programs.printed() == feeder.sent());
  std::ostringstream text;
  feeder.print(text);
  inventory.print(text);
  text << inventory.servicesWithPmt() << demux.incompleteTables().size();
  TORNEL_FUZZ_CHECK(feeder.sent() == daemon.calls());
  return inventory;
}

/** An output of the first PIDs that the stream has. */
SPTSConfiguration makeConfiguration(const std::vector<TsPacket>& packets) {
  SPTSConfiguration configuration;
  for (size_t index = 0; index < std::min<size_t>(packets.size(), 8); ++index) {
    PIDItem& item = configuration.pidItems.emplace_back();
    item.inputPid = packets[index].pid();
    item.outputPid = static_cast<int32_t>(100 + index / 2);
    item.attributes = static_cast<int32_t>(2U << (index % 5));
  }
  const std::string packet(reinterpret_cast<const char*>(packets[0].data()), tools::kTsPacketSize);
  configuration.outputTables.patPackets = {packet};
  configuration.outputTables.sdtPackets = {packet};
  configuration.outputTables.pmtPackets = {packet, packet};
  return configuration;
}

/** The answer changes half-way. */
void writeOutput(const std::vector<TsPacket>& packets, tools::SptsWriter::Timing timing) {
  size_t written = 0;
  const auto count = [&](const TsPacket& packet) {
    TORNEL_FUZZ_CHECK(packet.data()[0] == tools::kTsSyncByte);
    ++written;
  };
  tools::SptsWriter writer(makeConfiguration(packets), count, timing);
  int64_t time = 0;
  for (size_t index = 0; index < packets.size(); ++index) {
    if (index == packets.size() / 2) {
      writer.configure(
          makeConfiguration({packets.begin() + static_cast<std::ptrdiff_t>(index), packets.end()}));
    }
    writer.push(packets[index]);
    const int64_t now = writer.duration().value_or(time);
    TORNEL_FUZZ_CHECK(now >= time);
    time = now;
  }
  writer.finish();
  TORNEL_FUZZ_CHECK(written == writer.streamPackets() + writer.tablePackets());
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  ByteSource source(bytes, std::min<size_t>(size, 1));
  const uint8_t kind = source.byte();
  const uint8_t* rest = bytes + std::min<size_t>(size, 1);
  // A random section almost never has a right CRC_32, so half of the inputs are sections.
  const Bytes stream =
      (kind & 1) != 0 ? packetsOfSections(rest, size - 1) : Bytes(rest, bytes + size);
  const auto packets = readPackets(stream, kind < 128 ? 7 : 64 * 1024);
  (void)takeTables(packets);
  if (!packets.empty()) {
    for (const auto timing :
         {tevra::tools::SptsWriter::Timing::kExact, tevra::tools::SptsWriter::Timing::kAtOnce}) {
      try {
        writeOutput(packets, timing);
      } catch (const tevra::tools::ToolError&) {
        // The configuration was refused.
      }
    }
  }
  return 0;
}
