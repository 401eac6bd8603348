#include "bench/sample_tables.h"

#include <cstddef>
#include <string>

namespace tevra::bench {
namespace {

constexpr int32_t kTransportStreamId = 7;
constexpr int32_t kOriginalNetworkId = 8916;
constexpr int32_t kH264 = 0x1B;
constexpr int32_t kMpeg1Audio = 0x03;
constexpr int32_t kLanguageTag = 0x0A;
constexpr int32_t kStreamIdentifierTag = 0x52;
constexpr int32_t kServiceTag = 0x48;
constexpr int32_t kFirstScheduleTableId = 0x50;
constexpr int64_t kSomeDay = 61000;  // Modified Julian Date
constexpr int64_t kDateShift = 24;
constexpr int64_t kHourShift = 16;
constexpr int64_t kMinuteShift = 8;

Descriptor makeDescriptor(int32_t tag, std::string data) {
  Descriptor descriptor;
  descriptor.tag = tag;
  descriptor.data = std::move(data);
  return descriptor;
}

bool isAudio(int stream) {
  return stream % 3 == 1;
}

int64_t bcd(int64_t value) {
  return value / 10 * 16 + value % 10;
}

int64_t timeAfterMidnight(int64_t minutes) {
  constexpr int64_t kDay = int64_t{24} * 60;
  const int64_t ofDay = minutes % kDay;
  return (kSomeDay + minutes / kDay) << kDateShift | bcd(ofDay / 60) << kHourShift |
         bcd(ofDay % 60) << kMinuteShift;
}

EITEvent sampleEvent(int number) {
  constexpr size_t kPayload = 100;
  constexpr int kMinutesPerEvent = 30;
  EITEvent event;
  event.eventId = number;
  event.startTime = timeAfterMidnight(int64_t{number} * kMinutesPerEvent);
  event.duration = 0x003000;  // half an hour
  event.runningStatus = 1;
  event.descriptors.push_back(makeDescriptor(0x4D, std::string(kPayload, 's')));
  event.descriptors.push_back(makeDescriptor(0x4E, std::string(kPayload, 'e')));
  return event;
}

EIT sampleEit(int32_t serviceId, int32_t tableId, int events) {
  EIT eit;
  eit.tableId = tableId;
  eit.serviceId = serviceId;
  eit.version = 3;
  eit.currentNext = true;
  eit.transportStreamId = kTransportStreamId;
  eit.originalNetworkId = kOriginalNetworkId;
  eit.lastTableId = tableId;
  eit.events.reserve(static_cast<size_t>(events));
  for (int number = 0; number < events; ++number) {
    eit.events.push_back(sampleEvent(number));
  }
  return eit;
}

}  // namespace

PMT samplePmt(int streams, int descriptors, int32_t serviceId) {
  constexpr int32_t kFirstPid = 0x101;
  PMT pmt;
  pmt.programNumber = serviceId;
  pmt.version = 1;
  pmt.currentNext = true;
  pmt.pcrPid = kFirstPid;
  for (int number = 0; number < streams; ++number) {
    PMTES& stream = pmt.esList.emplace_back();
    stream.streamType = isAudio(number) ? kMpeg1Audio : kH264;
    stream.pid = kFirstPid + number;
  }
  for (int number = 0; number < descriptors; ++number) {
    const int stream = number % streams;
    const bool language = isAudio(stream) && number < streams;
    pmt.esList[static_cast<size_t>(stream)].descriptors.push_back(
        language ? makeDescriptor(kLanguageTag, std::string("eng\0", 4))
                 : makeDescriptor(kStreamIdentifierTag, "tag"));
  }
  return pmt;
}

PAT samplePat(int services) {
  constexpr int32_t kPidsOfService = 0x10;
  PAT pat;
  pat.transportStreamId = kTransportStreamId;
  pat.currentNext = true;
  for (int service = 0; service < services; ++service) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = kServiceId + service;
    program.pid = kPmtPid + kPidsOfService * service;
  }
  return pat;
}

SDT sampleSdt() {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = kTransportStreamId;
  sdt.currentNext = true;
  sdt.originalNetworkId = kOriginalNetworkId;
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = kServiceId;
  service.runningStatus = 4;
  service.descriptors.push_back(
      makeDescriptor(kServiceTag, std::string("\x19\x08Provider\x04Name", 15)));
  return sdt;
}

EITMap sampleSchedule(ScheduleSize size) {
  EITMap eits;
  for (int service = 0; service < size.services; ++service) {
    const int32_t serviceId = kServiceId + service;
    for (int table = 0; table < size.tables; ++table) {
      const int32_t tableId = kFirstScheduleTableId + table;
      eits[serviceId][tableId] = sampleEit(serviceId, tableId, size.events);
    }
  }
  return eits;
}

EITMap samplePresentFollowing() {
  constexpr int32_t kTableId = 0x4E;
  EITMap eits;
  eits[kServiceId][kTableId] = sampleEit(kServiceId, kTableId, 2);
  return eits;
}

TOT sampleTot(int minutes) {
  TOT tot;
  tot.utcTime = timeAfterMidnight(minutes);
  return tot;
}

SrvOutputRequest sampleRequest(int32_t serviceId, int32_t outputSID) {
  SrvOutputRequest request;
  request.inputSID = serviceId;
  OutputServiceDescription& output = request.outputs[kServiceId];
  output.globalSID = kServiceId;
  output.outputSID = outputSID;
  output.serviceName = "Service name";
  output.transportStreamId = kTransportStreamId;
  output.originalNetworkId = kOriginalNetworkId;
  LastNodeSettings& node = request.lastNodeSettings[kServiceId].emplace_back();
  node.globalSID = kServiceId;
  node.uniqueSID = kServiceId;
  return request;
}

TableStoreFile sampleStores(int services) {
  TableStoreFile file;
  for (int32_t serviceId = kServiceId; serviceId < kServiceId + services; ++serviceId) {
    TableStore& store = file.tableStores[serviceId];
    store.pat = samplePat();
    store.sdt = sampleSdt();
    store.pmt = samplePmt(10, 17, serviceId);
  }
  return file;
}

EITTableVersionStoreFile sampleVersions(int services) {
  constexpr int32_t kTables = 8;
  EITTableVersionStoreFile file;
  for (int32_t serviceId = kServiceId; serviceId < kServiceId + services; ++serviceId) {
    for (int32_t table = 0; table < kTables; ++table) {
      file.versionStores[serviceId].versions[kFirstScheduleTableId + table] = table;
    }
  }
  return file;
}

}  // namespace tevra::bench
