#include "tools/stream_feed.h"

#include "tools/files.h"
#include "tools/stream_faults.h"
#include "tools/text_table.h"
#include "tools/tool_error.h"

namespace tevra::tools {

StreamFeed::StreamFeed(const std::string& path, thrift::in_module::im_SIControlSrvIf& daemon)
    : feeder_(daemon) {
  InputFile file(path);
  TsPacketReader reader([&](uint8_t* buffer, size_t size) { return file.read(buffer, size); });
  TableDemux demux([this](const SiTable& table) {
    feeder_.feed(table);
    inventory_.add(table);
  });
  TsPacket packet;
  while (reader.next(packet)) {
    demux.push(packet);
  }
  packets_ = reader.packets();
  if (packets_ == 0) {
    throw ToolError(path + " holds no transport stream: no packets of 188, 192 or 204 bytes");
  }
  if (feeder_.sent() == 0) {
    throw ToolError(path + " holds " + counted(packets_, "packet") + ", but no complete table");
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
