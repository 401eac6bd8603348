#include "tests/system/multiplex.h"

#include <stdexcept>
#include <utility>

#include "tests/support/control_client.h"

namespace tevra::test {
namespace {

constexpr int32_t kLanguageTag = 0x0A;
constexpr int32_t kServiceTag = 0x48;
constexpr int32_t kSubtitlingTag = 0x59;

Descriptor language(const std::string& code) {
  return makeDescriptor(kLanguageTag, code + '\0');
}

SDTService service(int32_t id, char type, const std::string& name) {
  const std::string header = {type, 0, static_cast<char>(name.size())};
  SDTService entry = makeService(id, {makeDescriptor(kServiceTag, header + name)});
  entry.eitSchedule = true;
  entry.eitPresentFollowing = true;
  entry.runningStatus = 4;
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

}  // namespace

Descriptor caDescriptor(int32_t pid) {
  return makeCaDescriptor(0x0500, static_cast<uint16_t>(pid), "\x12\x34");
}

PAT multiplexPat(int32_t transportStreamId) {
  PAT pat = makePat(transportStreamId,
                    {{0, kNitPid}, {kTelevision, kTelevisionPmtPid}, {kRadio, kRadioPmtPid}});
  pat.version = 3;
  pat.currentNext = true;
  return pat;
}

SDT multiplexSdt() {
  SDT sdt = makeSdt({service(kTelevision, 0x19, "Uno"), service(kRadio, 0x02, "Radio Dos")});
  sdt.transportStreamId = kTransportStreamId;
  sdt.version = 4;
  sdt.originalNetworkId = 2;
  return sdt;
}

CAT multiplexCat() {
  CAT cat = makeCat({caDescriptor(kEmmPid)});
  cat.version = 1;
  cat.currentNext = true;
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
  PMT pmt =
      makePmt(kTelevision, kVideoPid,
              {makeStream(27, kVideoPid), makeStream(3, kEnglishPid, {language("eng")}),
               makeStream(3, kSpanishPid, {language("spa")}),
               makeStream(6, kSubtitlesPid,
                          {makeDescriptor(kSubtitlingTag, {'s', 'p', 'a', 0x10, 0, 1, 0, 1})}),
               makeStream(0x86, kSplicePid)});
  pmt.version = 7;
  pmt.currentNext = true;
  pmt.descriptors = {caDescriptor(kEcmPid)};
  return pmt;
}

PMT radioPmt() {
  PMT pmt = makePmt(kRadio, kRadioAudioPid, {makeStream(4, kRadioAudioPid, {language("eng")})});
  pmt.version = 1;
  pmt.currentNext = true;
  return pmt;
}

int64_t dvbTime(std::time_t utc) {
  constexpr int64_t kSecondsPerDay = 86400;
  constexpr int64_t kMjdOf1970 = 40587;
  const int64_t seconds = utc + kMjdOf1970 * kSecondsPerDay;  // never negative, before 1970 either
  const auto second = static_cast<int>(seconds % kSecondsPerDay);
  return static_cast<int64_t>(dvbTime(static_cast<uint64_t>(seconds / kSecondsPerDay),
                                      second / 3600, second / 60 % 60, second % 60));
}

TOT totAt(std::time_t utc) {
  return makeTot(static_cast<uint64_t>(dvbTime(utc)));
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
  event.descriptors = {makeDescriptor(0x4D, "eng")};
  return table;
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
