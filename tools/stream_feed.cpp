#include "tools/stream_feed.h"

#include <algorithm>

#include "tools/files.h"
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
  noteFaults(reader, demux);
}

void StreamFeed::printFaults(std::ostream& out) const {
  for (const std::string& fault : faults_) {
    out << fault << "\n";
  }
}

void StreamFeed::noteFaults(const TsPacketReader& reader, const TableDemux& demux) {
  const auto note = [this](uint64_t count, const std::string& what, const std::string& rest) {
    if (count != 0) {
      faults_.push_back(counted(count, what) + rest);
    }
  };
  note(reader.syncLosses(), "time", " packet synchronisation was lost");
  note(reader.skippedBytes(), "byte", " outside of packets");
  const DemuxStatistics statistics = demux.statistics();
  note(statistics.discontinuities, "gap", " in the packets of tables");
  note(statistics.truncatedSections, "section", " cut short, dropped");
  note(statistics.crcErrors, "section", " with a wrong CRC, dropped");
  note(statistics.malformedSections, "section", " with lengths that do not add up, dropped");
  note(feeder_.refused(), "table", " refused by the daemon");
  noteIncomplete(demux.incompleteTables());
}

void StreamFeed::noteIncomplete(const std::vector<IncompleteTable>& tables) {
  const auto schedules = static_cast<uint64_t>(
      std::count_if(tables.begin(), tables.end(),
                    [](const IncompleteTable& table) { return isEitSchedule(table.tableId); }));
  if (schedules != 0) {
    faults_.push_back(counted(schedules, "EIT schedule table") + " not complete, not sent");
  }
  for (const IncompleteTable& table : tables) {
    if (!isEitSchedule(table.tableId)) {
      faults_.push_back("table " + hex(table.tableId, 2) + " of " +
                        std::to_string(table.extension) +
                        " not complete, not sent: " + counted(table.sections, "section") + " came");
    }
  }
}

}  // namespace tevra::tools
