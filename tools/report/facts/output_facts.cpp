#include "tools/report/facts/output_facts.h"

#include <algorithm>
#include <string>

#include "tools/descriptors/descriptor_values.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/report/facts/stream_traits.h"
#include "tools/report/facts/table_journal.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

OutputStream madeStream(int pid, const char* description) {
  OutputStream stream;
  stream.outputPid = pid;
  stream.kind = StreamKind::kTables;
  stream.description = description;
  stream.made = true;
  return stream;
}

/** What the output's own PMT says of the stream, or else the attributes. */
void describe(const PIDItem& item, const PMT& pmt, OutputStream& stream) {
  const auto listed = std::find_if(pmt.esList.begin(), pmt.esList.end(),
                                   [&](const PMTES& entry) { return entry.pid == item.outputPid; });
  if ((item.attributes & kPidPmt) != 0) {
    stream.kind = StreamKind::kTables;
    stream.description = "PMT";
    stream.made = true;
  } else if (listed != pmt.esList.end()) {
    StreamTraits traits = traitsOf(*listed);
    stream.kind = traits.kind;
    stream.description = std::move(traits.description);
    stream.languages = std::move(traits.languages);
  } else if ((item.attributes & (kPidEcm | kPidEmm)) != 0) {
    stream.kind = StreamKind::kConditionalAccess;
    stream.description = (item.attributes & kPidEcm) != 0 ? "ECM" : "EMM";
  } else {
    stream.kind = StreamKind::kData;
    stream.description = (item.attributes & kPidPcr) != 0 ? "PCR alone" : "not in the PMT";
  }
}

OutputStream carriedStream(const PIDItem& item, const PMT& pmt) {
  OutputStream stream;
  if (item.inputPid != kUnknownPid) {
    stream.inputPid = item.inputPid;
  }
  stream.outputPid = item.outputPid;
  stream.attributes = pidAttributeNames(item.attributes);
  describe(item, pmt, stream);
  return stream;
}

int pmtPidOf(const PAT& pat) {
  const auto program =
      std::find_if(pat.programs.begin(), pat.programs.end(),
                   [](const PATProgram& candidate) { return candidate.programNumber != 0; });
  return program == pat.programs.end() ? kNullPid : program->pid;
}

std::vector<TableFact> madeTables(const OutputTables& tables) {
  const DVBOutputTables& made = tables.dvbTables;
  return {tableFact(made.pat, tables.patPackets.size(), kPatPid),
          tableFact(made.sdt, tables.sdtPackets.size(), kSdtPid),
          tableFact(made.pmt, tables.pmtPackets.size(), pmtPidOf(made.pat))};
}

}  // namespace

Output outputFacts(int serviceId, const SPTSConfiguration& configuration) {
  const DVBOutputTables& made = configuration.outputTables.dvbTables;
  Output output;
  output.serviceId = serviceId;
  if (!made.sdt.services.empty()) {
    output.name = serviceNames(made.sdt.services.front().descriptors).name;
  }
  output.transportStreamId = made.pat.transportStreamId;
  output.originalNetworkId = made.sdt.originalNetworkId;
  output.tables = madeTables(configuration.outputTables);
  output.streams = {madeStream(kPatPid, "PAT"), madeStream(kSdtPid, "SDT")};
  for (const PIDItem& item : configuration.pidItems) {
    if (item.inputPid != kNullPid) {  // the PCR PID of a programme without a clock
      output.streams.push_back(carriedStream(item, made.pmt));
    }
  }
  std::stable_sort(output.streams.begin(), output.streams.end(),
                   [](const auto& a, const auto& b) { return a.outputPid < b.outputPid; });
  return output;
}

}  // namespace tevra::tools::report
