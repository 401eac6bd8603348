#include "tools/report/facts/output_facts.h"

#include <algorithm>

#include "tools/descriptors/descriptor_values.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/report/facts/stream_traits.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

/** The PID of a table that the daemon makes. */
OutputStream madeStream(int pid, const char* description) {
  return {std::nullopt, pid, StreamKind::kTables, description, {}, {}, /*made=*/true};
}

/** What the output's own PMT says of the stream, or else the attributes. */
StreamTraits traitsOf(const PIDItem& item, const PMT& pmt) {
  const auto has = [&item](int32_t attributes) { return (item.attributes & attributes) != 0; };
  if (has(kPidPmt)) {
    return {StreamKind::kTables, "PMT", {}};
  }
  for (const PMTES& stream : pmt.esList) {
    if (stream.pid == item.outputPid) {
      return report::traitsOf(stream);
    }
  }
  if (has(kPidEcm | kPidEmm)) {
    return {StreamKind::kConditionalAccess, has(kPidEcm) ? "ECM" : "EMM", {}};
  }
  return {StreamKind::kData, has(kPidPcr) ? "PCR alone" : "not in the PMT", {}};
}

OutputStream carriedStream(const PIDItem& item, const PMT& pmt) {
  const StreamTraits traits = traitsOf(item, pmt);
  const bool isKnown = item.inputPid != kUnknownPid;
  return {isKnown ? std::optional<int>(item.inputPid) : std::nullopt,
          item.outputPid,
          traits.kind,
          traits.description,
          traits.languages,
          pidAttributeNames(item.attributes),
          /*made=*/(item.attributes & kPidPmt) != 0};
}

int pmtPidOf(const PAT& pat) {
  const auto program =
      std::find_if(pat.programs.begin(), pat.programs.end(),
                   [](const PATProgram& candidate) { return candidate.programNumber != 0; });
  return program == pat.programs.end() ? kNullPid : program->pid;
}

std::vector<TableFact> madeTables(const OutputTables& tables) {
  const DVBOutputTables& made = tables.dvbTables;
  return {{made.pat, tables.patPackets.size(), kPatPid},
          {made.sdt, tables.sdtPackets.size(), kSdtPid},
          {made.pmt, tables.pmtPackets.size(), pmtPidOf(made.pat)}};
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
