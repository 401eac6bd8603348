#include "tools/feed/stream_feed.h"

#include "tools/si/stream_faults.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** Pushes all packets, of a source that goes on from the front as often as there are any. */
void pushAll(ByteSource& source, TsPacketReader& reader, TableDemux& demux,
             const std::function<bool(const TsPacket& packet)>& onPacket) {
  TsPacket packet;
  for (uint64_t before = 0;; before = reader.packets()) {
    while (reader.next(packet)) {
      if (!onPacket(packet)) {
        return;
      }
      demux.push(packet);
    }
    if (reader.packets() == before || !source.goesOn()) {
      return;
    }
    reader.restart();
    demux.restart();
  }
}

}  // namespace

StreamFeed StreamFeed::feed(ByteSource& source, const std::string& name,
                            thrift::in_module::im_SIControlSrvIf& daemon, const OnPacket& onPacket,
                            const OnTable& onTable) {
  StreamFeed stream(daemon);
  TableFeeder& feeder = stream.feeder_;
  TsPacketReader reader(source);
  TableDemux demux([&](const SiTable& table, size_t sections) {
    feeder.feed(table, sections);
    stream.inventory_.add(table);
    onTable(table, stream.inventory_);
  });
  pushAll(source, reader, demux,
          [&](const TsPacket& packet) { return onPacket(packet, feeder.sent()); });
  stream.packets_ = reader.packets();
  if (feeder.sent() == 0) {
    throw ToolError(source.explainNothing(name, stream.packets_));
  }
  stream.statistics_ = sumOf(demux.faults());
  stream.faults_ = streamFaults(source, reader, demux, "not sent");
  if (feeder.refused() != 0) {
    stream.faults_.push_back(counted(feeder.refused(), "table") + " refused by the daemon");
  }
  return stream;
}

void StreamFeed::printFaults(std::ostream& out) const {
  for (const std::string& fault : faults_) {
    out << fault << "\n";
  }
}

}  // namespace tevra::tools
