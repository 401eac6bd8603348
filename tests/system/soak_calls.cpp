#include "tests/system/soak_calls.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "tests/system/multiplex.h"
#include "tests/system/soak_outputs.h"
#include "tests/system/soak_streams.h"

namespace tevra::test {

using thrift::dvb_tables::PMTES;
using thrift::dvb_tables::SDTService;
using thrift::in_module::OutputServiceDescription;
using thrift::in_module::SIService;

namespace {

constexpr int32_t kServices = 8;
constexpr int32_t kFirstService = 100;
constexpr int32_t kUnknownService = 999;
constexpr int32_t kSharedAudioPid = 0x300;
constexpr int32_t kFirstEcmPid = 0x700;
constexpr int32_t kFirstEmmPid = 0x780;
constexpr int32_t kNoPcr = 0x1FFF;
constexpr int32_t kServiceTag = 0x48;
constexpr int32_t kMaxVersion = 31;

const std::vector<int32_t> kGlobalSids = {7, 8, 9, 21, 22};

struct Weight {
  SoakCalls::Call call;
  const char* name;
  int32_t weight;
};

constexpr std::array<Weight, 13> kWeights = {{
    {SoakCalls::Call::kPat, "setPAT", 7},
    {SoakCalls::Call::kSdt, "setSDT", 6},
    {SoakCalls::Call::kPmt, "setPMT", 22},
    {SoakCalls::Call::kCat, "setCAT", 6},
    {SoakCalls::Call::kNit, "setNIT", 2},
    {SoakCalls::Call::kBat, "setBAT", 2},
    {SoakCalls::Call::kTot, "setTOT", 4},
    {SoakCalls::Call::kPresentFollowing, "setEITPresentFollowing", 6},
    {SoakCalls::Call::kSchedule, "setEITSchedule", 5},
    {SoakCalls::Call::kCommand, "sendCmd", 3},
    {SoakCalls::Call::kSetData, "SISetData", 2},
    {SoakCalls::Call::kGetData, "getSIData", 2},
    {SoakCalls::Call::kOutputs, "getSrvOutputData", 33},
}};

int32_t firstPidOf(int32_t serviceId) {
  return 0x100 + (serviceId - kFirstService) * 0x10;
}

PMTES streamOf(int32_t type, int32_t pid) {
  PMTES made;
  made.streamType = type;
  made.pid = pid;
  return made;
}

}  // namespace

const char* nameOf(SoakCalls::Call call) {
  const auto* const found = std::find_if(kWeights.begin(), kWeights.end(),
                                         [&](const Weight& entry) { return entry.call == call; });
  return found->name;
}

SoakCalls::Call SoakCalls::next() {
  static const int32_t kSum =
      std::accumulate(kWeights.begin(), kWeights.end(), 0,
                      [](int32_t sum, const Weight& entry) { return sum + entry.weight; });
  int32_t rest = dice_.below(kSum);
  const auto* entry = kWeights.begin();
  while (rest >= entry->weight) {
    rest -= entry->weight;
    ++entry;
  }
  return entry->call;
}

int32_t SoakCalls::service() {
  return kFirstService + dice_.below(kServices);
}

PAT SoakCalls::pat() {
  const bool mayBeNew = dice_.percent(5);
  if (mayBeNew) {
    transportStreamId_ = dice_.between(1, 3);
  }
  PAT pat;
  pat.transportStreamId = transportStreamId_;
  pat.version = dice_.between(0, kMaxVersion);
  pat.currentNext = dice_.percent(95);
  const bool isEmpty = dice_.percent(mayBeNew ? 25 : 1);  // a new map without a PID in it
  for (int32_t entry = 0; entry < kServices && !isEmpty; ++entry) {
    const int32_t serviceId = dice_.percent(97) ? kFirstService + entry : service();
    if (dice_.percent(92)) {
      pat.programs.emplace_back().programNumber = serviceId;
      pat.programs.back().pid = firstPidOf(serviceId) + (dice_.percent(5) ? 1 : 0);
    }
  }
  if (dice_.percent(50) && !isEmpty) {
    pat.programs.emplace_back().pid = 0x10;  // the network's
  }
  return pat;
}

SDT SoakCalls::sdt() {
  SDT sdt = multiplexSdt();
  sdt.version = dice_.between(0, kMaxVersion);
  sdt.currentNext = dice_.percent(95);
  sdt.services.clear();
  for (int32_t entry = 0; entry < kServices; ++entry) {
    if (dice_.percent(8)) {
      continue;
    }
    SDTService& made = sdt.services.emplace_back();
    made.serviceId = dice_.percent(95) ? kFirstService + entry : service();
    if (dice_.percent(30)) {
      made.descriptors.push_back(makeDescriptor(0x5F, std::string(4, 'p')));
    }
    if (dice_.percent(90)) {
      const char type = dice_.percent(90) ? '\x01' : '\x19';
      made.descriptors.push_back(
          makeDescriptor(kServiceTag, std::string(1, type) + "\x01p\x03Uno"));
    }
  }
  return sdt;
}

PMT SoakCalls::pmt() {
  const int32_t serviceId = service();
  PMT& last = lastPmts_[serviceId];
  if (last.esList.empty() || dice_.percent(60)) {
    last = freshPmt(serviceId);
  }
  last.version = dice_.between(0, kMaxVersion);
  last.currentNext = dice_.percent(95);
  return last;
}

PMT SoakCalls::freshPmt(int32_t serviceId) {
  static const std::vector<int32_t> kVideoTypes = {1, 2, 16, 27, 36};
  const int32_t first = firstPidOf(serviceId) + 2;
  PMT pmt;
  pmt.programNumber = serviceId;
  pmt.pcrPid = dice_.oneOf(std::vector<int32_t>{first, first, first + 1, kNoPcr});
  addCa(pmt.descriptors, kFirstEcmPid, 40);
  if (dice_.percent(30)) {
    pmt.descriptors.push_back(makeDescriptor(0x0E, std::string("\xC0\x10\x20", 3)));
  }
  pmt.esList.push_back(streamOf(dice_.oneOf(kVideoTypes), first));
  addCa(pmt.esList.back().descriptors, kFirstEcmPid, 20);
  for (int32_t pid = first + 2; pid < first + 6; ++pid) {
    if (dice_.percent(60)) {
      pmt.esList.push_back(audio(dice_.percent(90) ? pid : kSharedAudioPid));
    }
  }
  for (int32_t pid = first + 6; pid < first + 10; ++pid) {
    if (dice_.percent(50)) {
      pmt.esList.push_back(companion(pid));
    }
  }
  return pmt;
}

PMTES SoakCalls::audio(int32_t pid) {
  static const std::vector<int32_t> kTypes = {3, 4, 6, 6, 15, 17};
  static const std::vector<int32_t> kCodecTags = {0x6A, 0x7A, 0x73, 0x81};
  PMTES made = streamOf(dice_.oneOf(kTypes), pid);
  if (made.streamType == 6) {
    made.descriptors.push_back(makeDescriptor(dice_.oneOf(kCodecTags), std::string(1, '\0')));
  }
  const int32_t languages = dice_.oneOf(std::vector<int32_t>{0, 1, 1, 1, 2});
  for (int32_t language = 0; language < languages; ++language) {
    const std::string type = dice_.percent(95) ? std::string(1, '\0') : "";  // cut short without
    made.descriptors.push_back(makeDescriptor(kLanguageTag, dice_.oneOf(soakLanguages()) + type));
  }
  addCa(made.descriptors, kFirstEcmPid, 15);
  return made;
}

/** Subtitles, teletext, or a stream of a type that is not carried. */
PMTES SoakCalls::companion(int32_t pid) {
  static const std::vector<int32_t> kUncarried = {5, 11, 0x80, 0x86};
  if (dice_.percent(40)) {
    PMTES made = streamOf(dice_.oneOf(kUncarried), pid);
    addCa(made.descriptors, kFirstEcmPid, 20);
    return made;
  }
  PMTES made = streamOf(6, pid);
  const bool subtitles = dice_.percent(50);
  made.descriptors.push_back(subtitles ? makeDescriptor(0x59, std::string("spa\x10\0\1\0\1", 8))
                                       : makeDescriptor(0x56, std::string("spa\x09\x00", 5)));
  return made;
}

void SoakCalls::addCa(std::vector<Descriptor>& descriptors, int32_t firstPid, int32_t chance) {
  while (dice_.percent(chance)) {
    Descriptor ca = caDescriptor(firstPid + dice_.below(12));
    if (dice_.percent(3)) {
      ca.data.resize(3);  // too short for a PID
    }
    descriptors.push_back(ca);
    chance /= 2;
  }
}

CAT SoakCalls::cat() {
  CAT cat;
  cat.version = dice_.between(0, kMaxVersion);
  cat.currentNext = true;
  addCa(cat.descriptors, kFirstEmmPid, 90);
  if (dice_.percent(30)) {
    cat.descriptors.push_back(makeDescriptor(0x65, std::string(1, '\x02')));
  }
  return cat;
}

NIT SoakCalls::nit() {
  NIT nit = multiplexNit();
  nit.version = dice_.between(0, kMaxVersion);
  return nit;
}

BAT SoakCalls::bat() {
  BAT bat = multiplexBat();
  bat.version = dice_.between(0, kMaxVersion);
  return bat;
}

std::time_t SoakCalls::clockDifference() {
  static const std::vector<std::time_t> kSteps = {0, 120, -3600, 86400};
  if (dice_.percent(25)) {
    clockStep_ = dice_.oneOf(kSteps);
  }
  return clockStep_ + dice_.between(-20, 20);
}

EIT SoakCalls::eitOf(int32_t serviceId, int32_t tableId) {
  constexpr std::time_t kFirstStart = 1700000000;
  constexpr int32_t kTenDays = 864000;
  EIT table = eit(serviceId, tableId, kFirstStart + dice_.below(kTenDays));
  table.version = dice_.between(0, kMaxVersion);
  const int32_t events = dice_.below(4);
  table.events.resize(1);
  for (int32_t event = 1; event < events; ++event) {
    table.events.push_back(table.events.front());
    table.events.back().eventId += event;
    table.events.back().startTime = dvbTime(kFirstStart + dice_.below(kTenDays));
  }
  if (events == 0) {
    table.events.clear();
  }
  return table;
}

EITMap SoakCalls::presentFollowing() {
  EITMap eits;
  for (int32_t services = dice_.below(4); services > 0; --services) {
    const int32_t serviceId = service();
    const int32_t tableId = dice_.percent(90) ? 0x4E : 0x4F;
    eits[serviceId][tableId] = eitOf(serviceId, tableId);
  }
  return eits;
}

EITMap SoakCalls::schedule() {
  EITMap eits;
  for (int32_t tables = dice_.below(5); tables > 0; --tables) {
    const int32_t serviceId = service();
    const int32_t tableId = dice_.between(0x50, 0x52);
    eits[serviceId][tableId] = eitOf(serviceId, tableId);
  }
  return eits;
}

int32_t SoakCalls::command() {
  static const std::vector<int32_t> kOthers = {-1, 1, 2, 3, 4, 5, 7};
  return dice_.percent(10) ? 0 : dice_.oneOf(kOthers);
}

SIService SoakCalls::data() {
  SIService service;
  service.name = std::string(static_cast<size_t>(dice_.below(100)), 's');
  return service;
}

SrvOutputRequest SoakCalls::request() {
  const int32_t inputSID = dice_.percent(98) ? service() : kUnknownService;
  SrvOutputRequest& last = lastRequests_[inputSID];
  if (last.inputSID == 0 || dice_.percent(50)) {
    last = freshRequest(inputSID);
  }
  return last;
}

SrvOutputRequest SoakCalls::freshRequest(int32_t inputSID) {
  SrvOutputRequest request;
  request.inputSID = inputSID;
  const int32_t outputs = dice_.oneOf(std::vector<int32_t>{0, 1, 1, 1, 1, 1, 2, 2, 3});
  for (int32_t key = 0; key < outputs; ++key) {
    request.outputs[key] = output();
    const int32_t globalSID = request.outputs[key].globalSID;
    if (dice_.percent(85)) {
      request.lastNodeSettings[globalSID] = lastNodes(globalSID);
    }
  }
  return request;
}

OutputServiceDescription SoakCalls::output() {
  static const std::vector<int32_t> kNextNodes = {0, 0, 0, 0, 1, 1, 2};
  OutputServiceDescription description;
  description.globalSID = dice_.oneOf(kGlobalSids);
  description.nextNode = dice_.oneOf(kNextNodes);
  description.outputSID = dice_.between(1201, 1203);
  description.serviceName = dice_.oneOf(soakNames()).utf8;
  description.transportStreamId = dice_.between(5, 6);
  description.originalNetworkId = dice_.between(8, 9);
  description.outputParam = dice_.below(3);
  return description;
}

std::vector<LastNodeSettings> SoakCalls::lastNodes(int32_t globalSID) {
  std::vector<LastNodeSettings> nodes;
  for (int32_t node = dice_.below(4); node > 0; --node) {
    nodes.push_back(lastNodeOf(dice_.percent(30) ? globalSID : dice_.oneOf(kGlobalSids)));
  }
  return nodes;
}

LastNodeSettings SoakCalls::lastNodeOf(int32_t globalSID) {
  LastNodeSettings settings = lastNode(globalSID, dice_.between(30, 40), {});
  settings.audioFilter = dice_.oneOf(std::vector<int32_t>{0, 1, 1, 1, 2});
  for (int32_t language = dice_.below(4); language > 0; --language) {
    settings.audioLanguages.emplace_back().language =
        dice_.percent(80) ? dice_.oneOf(soakLanguages()) : "ndl";
  }
  return settings;
}

}  // namespace tevra::test
