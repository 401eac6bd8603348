#include "tools/si/stream_faults.h"

#include <algorithm>

#include "tools/si/section.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

void noteIncomplete(std::vector<std::string>& faults, const std::vector<IncompleteTable>& tables,
                    const std::string& loss) {
  const auto schedules = static_cast<uint64_t>(
      std::count_if(tables.begin(), tables.end(),
                    [](const IncompleteTable& table) { return isEitSchedule(table.tableId); }));
  if (schedules != 0) {
    faults.push_back(counted(schedules, "EIT schedule table") + " not complete, " + loss);
  }
  for (const IncompleteTable& table : tables) {
    if (!isEitSchedule(table.tableId)) {
      faults.push_back("table " + hex(table.tableId, 2) + " of " + std::to_string(table.extension) +
                       " not complete, " + loss + ": " + counted(table.sections, "section") +
                       " came");
    }
  }
}

}  // namespace

std::vector<std::string> streamFaults(const ByteSource& source, const TsPacketReader& reader,
                                      const TableDemux& demux, const std::string& loss) {
  return streamFaults(source, reader, demux, sumOf(demux.faults()), loss);
}

std::vector<std::string> streamFaults(const ByteSource& source, const TsPacketReader& reader,
                                      const TableDemux& demux, const SectionFaults& sections,
                                      const std::string& loss) {
  std::vector<std::string> faults = source.faults();
  const auto note = [&faults](uint64_t count, const std::string& what, const std::string& rest) {
    if (count != 0) {
      faults.push_back(counted(count, what) + rest);
    }
  };
  note(reader.syncLosses(), "time", " packet synchronisation was lost");
  note(reader.skippedBytes(), "byte", " outside of packets");
  note(sections.discontinuities, "gap", " in the packets of tables");
  note(sections.truncatedSections, "section", " cut short, dropped");
  note(sections.crcErrors, "section", " with a wrong CRC, dropped");
  note(sections.malformedSections, "section", " with lengths that do not add up, dropped");
  noteIncomplete(faults, demux.incompleteTables(), loss);
  return faults;
}

}  // namespace tevra::tools
