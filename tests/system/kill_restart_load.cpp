#include "tests/system/kill_restart_load.h"

#include <ctime>
#include <iterator>

namespace tevra::test {
namespace {

using Kind = LoadCall::Kind;

constexpr int32_t kFirstService = 100;
constexpr int32_t kLastService = 111;
constexpr int32_t kFirstPid = 0x400;  // of streams and CA messages
constexpr int32_t kLastPid = 0x7FF;
constexpr int32_t kCarriedType = 4;
constexpr int32_t kPresentFollowingTable = 0x4E;
constexpr int32_t kFirstScheduleTable = 0x50;

int32_t pmtPid(int32_t service) {
  return 0x100 + service - kFirstService;
}

LoadCall ofKind(Kind kind) {
  LoadCall call;
  call.kind = kind;
  return call;
}

}  // namespace

int32_t RunningLoad::anyOf(int32_t first, int32_t last) {
  return std::uniform_int_distribution<int32_t>(first, last)(random_);
}

void RunningLoad::restart(const std::string& pids, const std::string& tables,
                          const std::string& eits) {
  pids_.restart(pids);
  tables_.restart(tables);
  eits_.restart(eits);
  inputs_.clear();
  handedOut_.clear();
  calls_ = 0;
}

void RunningLoad::run(int calls) {
  call_.reset();
  try {
    ControlClient client;
    for (int call = 0; call < calls; ++call) {
      callOnce(*client);
    }
  } catch (const apache::thrift::TException&) {
    // The daemon has been killed.
  }
}

void RunningLoad::callOnce(Service& service) {
  call_ = nextCall();
  make(service, *call_);
  call_.reset();
  ++calls_;
  ++answered_;
}

LoadCall RunningLoad::nextCall() {
  switch (calls_) {
    case 0:
      return ofKind(Kind::kTot);
    case 1:
      return anyPat();
    case 2:
      return ofKind(Kind::kSdt);
    case 3:
      return anyPmt();
    default:
      break;
  }
  if (inputs_.empty()) {
    return anyPmt();
  }
  const int32_t dice = anyOf(0, 99);
  if (dice < 2) {
    return anyPat();
  }
  if (dice < 5) {
    return anyCat();
  }
  if (dice < 30) {
    return anyPmt();
  }
  return dice < 65 ? anyOutput() : anyEits();
}

LoadCall RunningLoad::anyPat() {
  if (anyOf(0, 9) == 0) {
    ++transportStreamId_;
  }
  LoadCall call = ofKind(Kind::kPat);
  call.pat.transportStreamId = transportStreamId_;
  call.pat.currentNext = true;
  for (int32_t service = kFirstService; service <= kLastService; ++service) {
    auto& program = call.pat.programs.emplace_back();
    program.programNumber = service;
    program.pid = pmtPid(service);
  }
  return call;
}

LoadCall RunningLoad::anyPmt() {
  LoadCall call = ofKind(Kind::kPmt);
  call.pmt.programNumber = anyOf(kFirstService, kLastService);
  call.pmt.currentNext = true;
  call.pmt.descriptors = {caDescriptor(anyOf(kFirstPid, kLastPid))};
  for (int32_t streams = anyOf(1, 4); streams > 0; --streams) {
    auto& stream = call.pmt.esList.emplace_back();
    stream.streamType = kCarriedType;
    stream.pid = anyOf(kFirstPid, kLastPid);
  }
  call.pmt.pcrPid = call.pmt.esList.front().pid;
  return call;
}

LoadCall RunningLoad::anyCat() {
  LoadCall call = ofKind(Kind::kCat);
  call.cat.currentNext = true;
  call.cat.descriptors = {caDescriptor(anyOf(kFirstPid, kLastPid))};
  return call;
}

LoadCall RunningLoad::anyEits() {
  const bool schedule = anyOf(0, 1) == 1;
  LoadCall call = ofKind(schedule ? Kind::kSchedule : Kind::kPresentFollowing);
  for (int32_t services = anyOf(1, 3); services > 0; --services) {
    const int32_t service = anyOf(kFirstService, kLastService);
    const int32_t tableId = schedule ? kFirstScheduleTable + anyOf(0, 2) : kPresentFollowingTable;
    call.eits[service][tableId] = eit(service, tableId, anyOf(0, 1'000'000));
  }
  return call;
}

LoadCall RunningLoad::anyOutput() {
  LoadCall call = ofKind(Kind::kOutput);
  const auto input = std::next(inputs_.begin(), anyOf(0, static_cast<int32_t>(inputs_.size()) - 1));
  call.request = radioRequest();
  call.request.inputSID = input->first;
  call.request.outputs[0].outputSID = 1000 + input->first;
  call.request.outputs[0].serviceName = "Name " + std::to_string(anyOf(1, 3));
  return call;
}

void RunningLoad::make(Service& service, const LoadCall& call) {
  switch (call.kind) {
    case Kind::kPat:
      service.setPAT(call.pat);
      if (call.pat.transportStreamId != givenTransportStreamId_) {
        inputs_.clear();  // the PMTs that the daemon has are of PIDs that it has forgotten
        givenTransportStreamId_ = call.pat.transportStreamId;
      }
      break;
    case Kind::kSdt:
      service.setSDT(multiplexSdt());
      break;
    case Kind::kPmt:
      service.setPMT(call.pmt);
      inputs_[call.pmt.programNumber] = call.pmt;
      break;
    case Kind::kCat:
      service.setCAT(call.cat);
      break;
    case Kind::kTot:
      service.setTOT(totAt(std::time(nullptr)));
      break;
    case Kind::kPresentFollowing:
      service.setEITPresentFollowing(call.eits);
      break;
    case Kind::kSchedule:
      service.setEITSchedule(call.eits);
      break;
    case Kind::kOutput:
      check(call, onlyOutput(service, call.request));
      break;
  }
  pids_.apply(call);
  const auto versions = eits_.apply(call);
  handedOut_.insert(handedOut_.end(), versions.begin(), versions.end());
}

void RunningLoad::check(const LoadCall& call, const SPTSConfiguration& output) {
  const int32_t service = call.request.inputSID;
  const auto& tables = output.outputTables.dvbTables;
  TableStore answer;
  answer.pat = tables.pat;
  answer.sdt = tables.sdt;
  answer.pmt = tables.pmt;
  const std::string wrong = tables_.apply(service, answer);
  if (!wrong.empty()) {
    complain("service " + std::to_string(service) + ": " + wrong);
  }
  checkPids(service, output);
}

void RunningLoad::checkPids(int32_t service, const SPTSConfiguration& output) {
  const auto& tables = output.outputTables.dvbTables;
  if (tables.pat.programs.at(0).pid != pids_.outputPid(pmtPid(service))) {
    complain("the PMT is on PID " + std::to_string(tables.pat.programs[0].pid));
  }
  const PMT& input = inputs_.at(service);
  for (size_t stream = 0; stream < input.esList.size(); ++stream) {
    if (tables.pmt.esList.at(stream).pid != pids_.outputPid(input.esList[stream].pid)) {
      complain("input PID " + std::to_string(input.esList[stream].pid) + " is output as " +
               std::to_string(tables.pmt.esList[stream].pid));
    }
  }
  for (const auto& item : output.pidItems) {
    if (item.inputPid != pids_.inputPid(item.outputPid)) {
      complain("output PID " + std::to_string(item.outputPid) + " is said to be input PID " +
               std::to_string(item.inputPid));
    }
  }
}

}  // namespace tevra::test
