#include "tests/tools/support/table_makers.h"

#include "tests/support/tables.h"

namespace tevra::tools::test {
namespace {

constexpr int kVersion = 3;
constexpr int kService = 101;

std::string counted(const std::string& text) {
  return static_cast<char>(text.size()) + text;
}

}  // namespace

Descriptor descriptorRecord(int tag, const std::string& data) {
  return tevra::test::makeDescriptor(tag, data);
}

Descriptor serviceDescriptor(int type, const std::string& name) {
  return descriptorRecord(0x48, static_cast<char>(type) + counted("Maker") + counted(name));
}

Descriptor languageDescriptor(const std::string& code) {
  return descriptorRecord(0x0A, code + '\0');
}

Descriptor caDescriptor(int caSystemId, int pid) {
  return tevra::test::makeCaDescriptor(static_cast<uint16_t>(caSystemId),
                                       static_cast<uint16_t>(pid));
}

Descriptor shortEventDescriptor(const std::string& name) {
  return descriptorRecord(0x4D, "eng" + counted(name) + counted(""));
}

PMTES streamRecord(int type, int pid, const std::vector<Descriptor>& descriptors) {
  return tevra::test::makeStream(type, pid, descriptors);
}

SDTService serviceRecord(int id, const std::string& name) {
  SDTService record = tevra::test::makeService(id, {serviceDescriptor(0x01, name)});
  record.runningStatus = 4;
  return record;
}

EITEvent eventRecord(int id, int64_t startTime, const std::string& name) {
  EITEvent record;
  record.eventId = id;
  record.startTime = startTime;
  record.duration = 0x003000;
  record.descriptors = {shortEventDescriptor(name)};
  return record;
}

PAT patRecord(const std::vector<std::pair<int, int>>& programs) {
  PAT record;
  record.transportStreamId = 1;
  record.version = kVersion;
  record.currentNext = true;
  for (const auto& [number, pid] : programs) {
    PATProgram& program = record.programs.emplace_back();
    program.programNumber = number;
    program.pid = pid;
  }
  return record;
}

PMT pmtRecord(const std::vector<PMTES>& streams) {
  PMT record = tevra::test::makePmt(kService, 502, streams);
  record.version = kVersion;
  record.currentNext = true;
  return record;
}

SDT sdtRecord(const std::vector<SDTService>& services) {
  SDT record = tevra::test::makeSdt(services);
  record.transportStreamId = 1;
  record.originalNetworkId = 2;
  record.version = kVersion;
  return record;
}

EIT eitRecord(const std::vector<EITEvent>& events) {
  EIT record;
  record.tableId = 0x50;
  record.lastTableId = 0x50;
  record.serviceId = kService;
  record.version = kVersion;
  record.currentNext = true;
  record.events = events;
  return record;
}

CAT catRecord(const std::vector<Descriptor>& descriptors) {
  CAT record = tevra::test::makeCat(descriptors);
  record.version = kVersion;
  record.currentNext = true;
  return record;
}

TOT totRecord(int64_t utcTime) {
  return tevra::test::makeTot(static_cast<uint64_t>(utcTime));
}

int64_t timeAt(int64_t clock) {
  constexpr int64_t kDay = 0xC079;  // the example of EN 300 468 annex C
  return (kDay << 24) | clock;
}

}  // namespace tevra::tools::test
