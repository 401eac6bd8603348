#include "tools/feed/stream_feed.h"

#include "tools/si/stream_faults.h"
#include "tools/stream/files.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {

StreamFeed::StreamFeed(ByteSource& source, const std::string& name,
                       thrift::in_module::im_SIControlSrvIf& daemon, const OnPacket& onPacket,
                       const OnTable& onTable)
    : feeder_(daemon) {
  read(source, name, onPacket, onTable);
}

StreamFeed::StreamFeed(const std::string& path, thrift::in_module::im_SIControlSrvIf& daemon)
    : feeder_(daemon) {
  InputFile file(path);
  read(
      file, path, [](const TsPacket& /*packet*/, size_t /*tablesSent*/) { return true; },
      [](const SiTable& /*table*/, size_t /*sections*/) {});
}

void StreamFeed::read(ByteSource& source, const std::string& name, const OnPacket& onPacket,
                      const OnTable& onTable) {
  TsPacketReader reader([&](uint8_t* buffer, size_t size) { return source.read(buffer, size); });
  TableDemux demux([&](const SiTable& table, size_t sections) {
    feeder_.feed(table, sections);
    inventory_.add(table);
    onTable(table, sections);
  });
  TsPacket packet;
  while (reader.next(packet) && onPacket(packet, feeder_.sent())) {
    demux.push(packet);
  }
  packets_ = reader.packets();
  faultsByPid_ = demux.faults();
  if (feeder_.sent() == 0) {
    throw ToolError(source.explainNothing(name, packets_));
  }
  faults_ = streamFaults(reader, demux, "not sent");
  if (feeder_.refused() != 0) {
    faults_.push_back(counted(feeder_.refused(), "table") + " refused by the daemon");
  }
}

void StreamFeed::printFaults(std::ostream& out) const {
  for (const std::string& fault : faults_) {
    out << fault << "\n";
  }
}

}  // namespace tevra::tools
