#include "tests/control/tables.h"

namespace tevra::test {
namespace {

int64_t bcd(int value) {
  return (value / 10) * 16 + value % 10;
}

}  // namespace

int64_t dvbTime(int64_t mjd, int hours, int minutes, int seconds) {
  return mjd * 0x1000000 + bcd(hours) * 0x10000 + bcd(minutes) * 0x100 + bcd(seconds);
}

TOT totAt(int64_t time) {
  TOT tot;
  tot.tableId = 0x73;
  tot.currentNext = true;
  tot.utcTime = time;
  return tot;
}

EIT makeEIT(int32_t serviceId, int32_t tableId, int32_t version,
            const std::vector<int64_t>& startTimes) {
  EIT eit;
  eit.tableId = tableId;
  eit.serviceId = serviceId;
  eit.version = version;
  eit.currentNext = true;
  eit.transportStreamId = 0x0101;
  eit.originalNetworkId = 0x0202;
  eit.segmentLastSectionNumber = 3;
  eit.lastTableId = 0x5F;
  for (const int64_t startTime : startTimes) {
    EITEvent& event = eit.events.emplace_back();
    event.eventId = static_cast<int32_t>(eit.events.size());
    event.startTime = startTime;
    event.duration = 0x013000;
    event.runningStatus = 4;
    event.freeCA = true;
    Descriptor& descriptor = event.descriptors.emplace_back();
    descriptor.tag = 0x4D;
    descriptor.data = "engName";
  }
  return eit;
}

EITMap eitMap(const std::vector<EIT>& eits) {
  EITMap map;
  for (const EIT& eit : eits) {
    map[eit.serviceId][eit.tableId] = eit;
  }
  return map;
}

PMT makePMT(int32_t programNumber, int32_t firstPid) {
  PMT pmt;
  pmt.programNumber = programNumber;
  pmt.version = 5;
  pmt.currentNext = true;
  pmt.pcrPid = firstPid;
  PMTES video;
  video.streamType = 27;
  video.pid = firstPid;
  PMTES audio;
  audio.streamType = 4;
  audio.pid = firstPid + 1;
  pmt.esList = {video, audio};
  return pmt;
}

PAT makePAT(const std::vector<int32_t>& pmtPids) {
  PAT pat;
  pat.transportStreamId = 0x0101;
  pat.version = 2;
  pat.currentNext = true;
  for (const int32_t pid : pmtPids) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = static_cast<int32_t>(pat.programs.size());
    program.pid = pid;
  }
  return pat;
}

SDT makeSDT(int32_t serviceId) {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = 0x0101;
  sdt.version = 3;
  sdt.currentNext = true;
  sdt.originalNetworkId = 0x0202;
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = serviceId;
  service.runningStatus = 4;
  Descriptor& descriptor = service.descriptors.emplace_back();
  descriptor.tag = 0x48;
  descriptor.data = std::string("\x01\x01P\x01N", 5);
  return sdt;
}

SrvOutputRequest outputOf(int32_t inputSID, const std::string& name) {
  SrvOutputRequest request;
  request.inputSID = inputSID;
  OutputServiceDescription output;
  output.globalSID = kGlobalSID;
  output.outputSID = 1201;
  output.serviceName = name;
  output.transportStreamId = 0x0A0A;
  output.originalNetworkId = 0x0B0B;
  request.outputs[0] = output;
  LastNodeSettings node;
  node.globalSID = kGlobalSID;
  node.uniqueSID = 5;
  request.lastNodeSettings[kGlobalSID] = {node};
  return request;
}

}  // namespace tevra::test
