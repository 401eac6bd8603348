#include "tests/system/multiplex.h"

#include <stdexcept>
#include <utility>

#include "tests/support/control_client.h"

namespace tevra::test {
namespace {

using thrift::dvb_tables::NITTS;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMTES;
using thrift::dvb_tables::SDTService;
using thrift::in_module::OutputServiceDescription;

constexpr int32_t kLanguageTag = 0x0A;
constexpr int32_t kServiceTag = 0x48;
constexpr int32_t kSubtitlingTag = 0x59;

PATProgram program(int32_t number, int32_t pid) {
  PATProgram entry;
  entry.programNumber = number;
  entry.pid = pid;
  return entry;
}

PMTES stream(int32_t type, int32_t pid, const std::vector<Descriptor>& descriptors) {
  PMTES entry;
  entry.streamType = type;
  entry.pid = pid;
  entry.descriptors = descriptors;
  return entry;
}

Descriptor language(const std::string& code) {
  return descriptor(kLanguageTag, code + '\0');
}

SDTService service(int32_t id, char type, const std::string& name) {
  SDTService entry;
  entry.serviceId = id;
  entry.eitSchedule = true;
  entry.eitPresentFollowing = true;
  entry.runningStatus = 4;
  const std::string header = {type, 0, static_cast<char>(name.size())};
  entry.descriptors = {descriptor(kServiceTag, header + name)};
  return entry;
}

OutputServiceDescription output(int32_t globalSID, int32_t outputSID, const std::string& name) {
  OutputServiceDescription description;
  description.globalSID = globalSID;
  description.outputSID = outputSID;
  description.serviceName = name;
  description.transportStreamId = 5;
  description.originalNetworkId = 6;
  return description;
}

int64_t twoDigits(int64_t value) {
  return (value / 10) << 4 | value % 10;
}

}  // namespace

Descriptor descriptor(int32_t tag, const std::string& data) {
  Descriptor made;
  made.tag = tag;
  made.data = data;
  return made;
}

Descriptor caDescriptor(int32_t pid) {
  constexpr int32_t kCaTag = 0x09;
  return descriptor(kCaTag, {0x05, 0x00, static_cast<char>(0xE0 | (pid >> 8)),
                             static_cast<char>(pid & 0xFF), 0x12, 0x34});
}

PAT multiplexPat(int32_t transportStreamId) {
  PAT pat;
  pat.transportStreamId = transportStreamId;
  pat.version = 3;
  pat.currentNext = true;
  pat.programs = {program(0, kNitPid), program(kTelevision, kTelevisionPmtPid),
                  program(kRadio, kRadioPmtPid)};
  return pat;
}

SDT multiplexSdt() {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = kTransportStreamId;
  sdt.version = 4;
  sdt.currentNext = true;
  sdt.originalNetworkId = 2;
  sdt.services = {service(kTelevision, 0x19, "Uno"), service(kRadio, 0x02, "Radio Dos")};
  return sdt;
}

CAT multiplexCat() {
  CAT cat;
  cat.version = 1;
  cat.currentNext = true;
  cat.descriptors = {caDescriptor(kEmmPid)};
  return cat;
}

NIT multiplexNit() {
  NIT nit;
  nit.tableId = 0x40;
  nit.extension = 2;
  nit.networkId = 2;
  nit.currentNext = true;
  nit.transportStreams.emplace_back().transportStreamId = kTransportStreamId;
  return nit;
}

BAT multiplexBat() {
  BAT bat;
  bat.tableId = 0x4A;
  bat.bouquetId = 9;
  bat.currentNext = true;
  return bat;
}

PMT televisionPmt() {
  PMT pmt;
  pmt.programNumber = kTelevision;
  pmt.version = 7;
  pmt.currentNext = true;
  pmt.pcrPid = kVideoPid;
  pmt.descriptors = {caDescriptor(kEcmPid)};
  pmt.esList = {
      stream(27, kVideoPid, {}), stream(3, kEnglishPid, {language("eng")}),
      stream(3, kSpanishPid, {language("spa")}),
      stream(6, kSubtitlesPid, {descriptor(kSubtitlingTag, {'s', 'p', 'a', 0x10, 0, 1, 0, 1})}),
      stream(0x86, kSplicePid, {})};
  return pmt;
}

PMT radioPmt() {
  PMT pmt;
  pmt.programNumber = kRadio;
  pmt.version = 1;
  pmt.currentNext = true;
  pmt.pcrPid = kRadioAudioPid;
  pmt.esList = {stream(4, kRadioAudioPid, {language("eng")})};
  return pmt;
}

int64_t dvbTime(std::time_t utc) {
  constexpr int64_t kSecondsPerDay = 86400;
  constexpr int64_t kMjdOf1970 = 40587;
  const int64_t seconds = utc + kMjdOf1970 * kSecondsPerDay;  // never negative, before 1970 either
  const int64_t second = seconds % kSecondsPerDay;
  return (seconds / kSecondsPerDay) << 24 | twoDigits(second / 3600) << 16 |
         twoDigits(second / 60 % 60) << 8 | twoDigits(second % 60);
}

TOT totAt(std::time_t utc) {
  TOT tot;
  tot.tableId = 0x73;
  tot.utcTime = dvbTime(utc);
  return tot;
}

EIT eit(int32_t serviceId, int32_t tableId, std::time_t start) {
  EIT table;
  table.tableId = tableId;
  table.serviceId = serviceId;
  table.version = 17;
  table.currentNext = true;
  table.transportStreamId = kTransportStreamId;
  table.originalNetworkId = 2;
  table.lastTableId = tableId;
  EITEvent& event = table.events.emplace_back();
  event.eventId = 77;
  event.startTime = dvbTime(start);
  event.duration = 0x003000;
  event.runningStatus = 4;
  event.descriptors = {descriptor(0x4D, "eng")};
  return table;
}

EITMap eitMap(const std::vector<EIT>& eits) {
  EITMap map;
  for (const EIT& table : eits) {
    map[table.serviceId][table.tableId] = table;
  }
  return map;
}

void giveMultiplex(ControlClient& client) {
  client->setPAT(multiplexPat());
  client->setSDT(multiplexSdt());
  client->setPMT(televisionPmt());
  client->setCAT(multiplexCat());
  client->setPMT(radioPmt());
}

LastNodeSettings lastNode(int32_t globalSID, int32_t uniqueSID,
                          const std::vector<std::string>& languages) {
  LastNodeSettings settings;
  settings.globalSID = globalSID;
  settings.uniqueSID = uniqueSID;
  settings.audioFilter = languages.empty() ? 0 : 1;
  for (const std::string& code : languages) {
    settings.audioLanguages.emplace_back().language = code;
  }
  return settings;
}

SrvOutputRequest televisionRequest(const std::string& name) {
  SrvOutputRequest request;
  request.inputSID = kTelevision;
  request.outputs[0] = output(7, 1201, name);
  request.lastNodeSettings[7] = {lastNode(7, 9, {"eng"})};
  return request;
}

SrvOutputRequest radioRequest() {
  SrvOutputRequest request;
  request.inputSID = kRadio;
  request.outputs[0] = output(8, 1202, "Radio");
  request.lastNodeSettings[8] = {lastNode(8, 8, {})};
  return request;
}

SPTSConfiguration onlyOutput(ControlClient& client, const SrvOutputRequest& request) {
  return onlyOutput(*client, request);
}

SPTSConfiguration onlyOutput(thrift::in_module::im_SIControlSrvIf& service,
                             const SrvOutputRequest& request) {
  std::map<int32_t, SPTSConfiguration> answer;
  service.getSrvOutputData(answer, request);
  if (answer.size() != 1) {
    throw std::runtime_error("an answer with " + std::to_string(answer.size()) + " outputs");
  }
  return answer.begin()->second;
}

}  // namespace tevra::test
