#include "tools/outputs/output_text.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/stream_names.h"
#include "tools/outputs/language_codes.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

std::string heading(const std::string& table, int version, size_t packets) {
  return "  " + table + " version " + std::to_string(version) + ", " + counted(packets, "packet");
}

void printServices(std::ostream& out, const SDT& sdt) {
  for (const SDTService& service : sdt.services) {
    const ServiceNames names = serviceNames(service.descriptors);
    out << "    service " << service.serviceId << " \"" << names.name << "\", provider \""
        << names.provider << "\", type " << hex(names.type, 2) << "\n";
  }
}

void printStreams(std::ostream& out, const PMT& pmt) {
  TextTable table({"PID", "stream", "language", "descriptors"});
  for (const PMTES& stream : pmt.esList) {
    std::vector<std::string> tags;
    for (const Descriptor& descriptor : stream.descriptors) {
      tags.push_back(hex(descriptor.tag, 2));
    }
    std::vector<std::string> codes = languages(stream.descriptors);
    std::transform(codes.begin(), codes.end(), codes.begin(), languageText);
    table.addRow(
        {std::to_string(stream.pid), streamName(stream), joined(codes, "+"), joined(tags, " ")});
  }
  if (!table.empty()) {
    table.print(out, 4);
  }
}

void printPids(std::ostream& out, const SPTSConfiguration& configuration) {
  TextTable table({"input PID", "output PID", "carries"});
  for (const PIDItem& item : configuration.pidItems) {
    table.addRow({item.inputPid == kUnknownPid ? "unknown" : std::to_string(item.inputPid),
                  std::to_string(item.outputPid),
                  joined(pidAttributeNames(item.attributes), ", ")});
  }
  table.print(out, 4);
}

void printTables(std::ostream& out, const SPTSConfiguration& configuration) {
  const OutputTables& tables = configuration.outputTables;
  const PAT& pat = tables.dvbTables.pat;
  out << heading("PAT", pat.version, tables.patPackets.size()) << ", transport stream "
      << pat.transportStreamId << "\n";
  for (const PATProgram& program : pat.programs) {
    out << "    programme " << program.programNumber << " on PID " << program.pid << "\n";
  }
  const SDT& sdt = tables.dvbTables.sdt;
  out << heading("SDT", sdt.version, tables.sdtPackets.size()) << ", original network "
      << sdt.originalNetworkId << "\n";
  printServices(out, sdt);
  const PMT& pmt = tables.dvbTables.pmt;
  out << heading("PMT", pmt.version, tables.pmtPackets.size()) << ", programme "
      << pmt.programNumber << ", PCR on PID " << pmt.pcrPid << "\n";
  printStreams(out, pmt);
}

}  // namespace

void printOutput(std::ostream& out, int32_t globalSid, const SPTSConfiguration& configuration) {
  out << "output with global service id " << globalSid << ", unique service id "
      << configuration.outputTables.outputParam1 << "\n  PIDs\n";
  printPids(out, configuration);
  printTables(out, configuration);
}

}  // namespace tevra::tools
