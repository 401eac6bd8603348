#include "tests/tools/support/sample_answer.h"

#include "tests/tools/support/ts_builder.h"
#include "tools/si/section.h"

namespace tevra::tools::test {
namespace {

constexpr int kPmtPid = 501;

template <class Table>
Table decoded(const Bytes& section) {
  return std::get<Table>(Section::parse(section.data(), section.size()).value().content);
}

}  // namespace

std::vector<std::string> packetStrings(int pid, const Bytes& section) {
  std::vector<std::string> list;
  for (const TsPacket& packet : PacketWriter().section(pid, section)) {
    list.emplace_back(reinterpret_cast<const char*>(packet.data()), kTsPacketSize);
  }
  return list;
}

PIDItem pidItem(int inputPid, int outputPid, int attributes) {
  PIDItem record;
  record.inputPid = inputPid;
  record.outputPid = outputPid;
  record.attributes = attributes;
  return record;
}

std::map<int32_t, SPTSConfiguration> sampleAnswer() {
  const Bytes pat = makePat(9, 3, {{1201, kPmtPid}});
  const Bytes sdt = makeSdt(9, 4, 1201, "Uno");
  const Bytes pmt =
      makePmt(1201, 5, 502, {{2, 502, {}}, {4, 503, descriptor(0x0A, {'e', 'n', 'g', 0})}});
  SPTSConfiguration configuration;
  configuration.pidItems = {pidItem(256, kPmtPid, 0x02), pidItem(512, 502, 0x0C),
                            pidItem(65535, 503, 0x08)};
  OutputTables& tables = configuration.outputTables;
  tables.outputParam1 = 77;
  tables.dvbTables.pat = decoded<PAT>(pat);
  tables.dvbTables.sdt = decoded<SDT>(sdt);
  tables.dvbTables.pmt = decoded<PMT>(pmt);
  tables.patPackets = packetStrings(0, pat);
  tables.sdtPackets = packetStrings(0x11, sdt);
  tables.pmtPackets = packetStrings(kPmtPid, pmt);
  return {{1201, configuration}};
}

}  // namespace tevra::tools::test
