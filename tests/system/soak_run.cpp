#include "tests/system/soak_run.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/system/multiplex.h"

namespace tevra::test {

using fake::Notification;
using Call = SoakCalls::Call;

namespace {

/** All but the EIT, which only the model can compare. */
auto tablesOf(const Notification& notification) {
  return std::tie(notification.method, notification.value, notification.pat, notification.sdt,
                  notification.pmt, notification.nit, notification.tot, notification.bat,
                  notification.cat);
}

bool isEit(const Notification& notification) {
  return notification.method.rfind("notifyEIT", 0) == 0;
}

std::vector<std::string> methodsOf(const std::vector<Notification>& notifications) {
  std::vector<std::string> methods;
  for (const Notification& notification : notifications) {
    methods.push_back(notification.method);
  }
  return methods;
}

}  // namespace

SoakRun::SoakRun(uint32_t seed, fake::FakeMainTask& mainTask)
    : seed_(seed), mainTask_(mainTask), calls_(seed) {
  connect();
  expected_.emplace_back().method = "requestConfiguration";
  compareNotifications();
}

void SoakRun::connect() {
  client_.reset();  // the daemon serves one connection at a time
  client_.emplace();
  ++counts_.connections;
}

void SoakRun::daemonRestarted() {
  pids_.restart();
  outputs_.restart();
  eits_.restart();
  tables_ = SoakTables();
  connect();
  expected_.clear();
  expected_.emplace_back().method = "requestConfiguration";
  compareNotifications();
}

void SoakRun::call() {
  constexpr int32_t kCallsPerConnection = 300;
  if (calls_.onceIn(kCallsPerConnection)) {
    connect();
  }
  ++counts_.calls;
  call_ = calls_.next();
  expected_.clear();
  makeCall(call_);
  if (!testing::Test::HasFatalFailure()) {
    compareNotifications();
  }
}

void SoakRun::makeCall(Call call) {
  switch (call) {
    case Call::kPat:
      return setPat();
    case Call::kSdt:
      return setSdt();
    case Call::kPmt:
      return setPmt();
    case Call::kCat:
      return setCat();
    case Call::kNit:
      ASSERT_TRUE((*client_)->setNIT(calls_.nit())) << where();
      return;
    case Call::kBat:
      ASSERT_TRUE((*client_)->setBAT(calls_.bat())) << where();
      return;
    case Call::kTot:
      return setTot();
    case Call::kPresentFollowing:
      return setEits(SoakEits::kPresentFollowing);
    case Call::kSchedule:
      return setEits(SoakEits::kSchedule);
    case Call::kCommand:
      return sendCommand();
    case Call::kSetData:
      return setData();
    case Call::kGetData:
      return getData();
    case Call::kOutputs:
      return getOutputs();
  }
}

void SoakRun::setPat() {
  const PAT pat = calls_.pat();
  (*client_)->setPAT(pat);
  pids_.follow(pat.transportStreamId);
  tables_.pat = pids_.rewritten(pat);
  pids_.save();
  expect("notifyPAT", &Notification::pat, *tables_.pat);
}

void SoakRun::setSdt() {
  const SDT sdt = calls_.sdt();
  (*client_)->setSDT(sdt);
  tables_.sdt = sdt;
  expect("notifySDT", &Notification::sdt, sdt);
}

void SoakRun::setPmt() {
  const PMT pmt = calls_.pmt();
  (*client_)->setPMT(pmt);
  tables_.pmts[pmt.programNumber] = pids_.rewritten(pmt);
  pids_.save();
  expect("notifyPMT", &Notification::pmt, tables_.pmts[pmt.programNumber]);
}

void SoakRun::setCat() {
  const CAT cat = calls_.cat();
  (*client_)->setCAT(cat);
  tables_.cat = pids_.rewritten(cat);  // not saved before the next PAT or PMT
  expect("notifyCAT", &Notification::cat, *tables_.cat);
}

void SoakRun::setTot() {
  const std::time_t before = std::time(nullptr);
  const std::time_t utc = before + calls_.clockDifference();
  const TOT tot = totAt(utc);
  (*client_)->setTOT(tot);
  const SoakEits::Both due = eits_.setTot(utc, before, std::time(nullptr));
  expectEits(SoakEits::kPresentFollowing, due.presentFollowing);
  expectEits(SoakEits::kSchedule, due.schedule);
  expect("notifyTOT", &Notification::tot, tot);
}

void SoakRun::setEits(SoakEits::Kind kind) {
  if (kind == SoakEits::kSchedule) {
    const EITMap eits = calls_.schedule();
    (*client_)->setEITSchedule(eits);
    expectEits(kind, eits_.set(kind, eits));
  } else {
    const EITMap eits = calls_.presentFollowing();
    (*client_)->setEITPresentFollowing(eits);
    expectEits(kind, eits_.set(kind, eits));
  }
}

void SoakRun::sendCommand() {
  constexpr int32_t kReset = 0;
  const int32_t command = calls_.command();
  ASSERT_TRUE((*client_)->sendCmd(command)) << where();
  if (command == kReset) {
    tables_ = SoakTables();
    eits_.reset();
  }
}

void SoakRun::setData() {
  ASSERT_TRUE((*client_)->SISetData(calls_.data())) << where();
}

void SoakRun::getData() {
  thrift::in_module::SIService service;
  service.name = "overwritten by the answer";
  (*client_)->getSIData(service);
  ASSERT_EQ(service, thrift::in_module::SIService()) << where();
}

void SoakRun::getOutputs() {
  const SrvOutputRequest request = calls_.request();
  SoakOutputs::Answer answer;
  (*client_)->getSrvOutputData(answer, request);
  const SoakOutputs::Answer expected = outputs_.answerTo(request, tables_, pids_);
  ASSERT_EQ(answer, expected) << where() << ", " << testing::PrintToString(request);
  counts_.outputs += static_cast<int64_t>(answer.size());
}

template <class Table>
void SoakRun::expect(const char* method, Table Notification::*member, const Table& table) {
  Notification& notification = expected_.emplace_back();
  notification.method = method;
  notification.*member = table;
}

void SoakRun::expectEits(SoakEits::Kind kind, const SoakEits::Restamped& eits) {
  const char* method =
      kind == SoakEits::kPresentFollowing ? "notifyEITPresentFollowing" : "notifyEITSchedule";
  for (const EIT& eit : eits) {
    expect(method, &Notification::eit, eit);
  }
}

void SoakRun::compareNotifications() {
  const std::vector<Notification> got = mainTask_.take(expected_.size());
  ASSERT_EQ(methodsOf(got), methodsOf(expected_)) << where();
  for (size_t index = 0; index < got.size(); ++index) {
    ASSERT_TRUE(isExpected(expected_[index], got[index])) << where() << ", " << got[index].method;
    counts_.eits += isEit(got[index]) ? 1 : 0;
  }
  counts_.notifications += static_cast<int64_t>(got.size());
}

bool SoakRun::isExpected(const Notification& expected, const Notification& got) {
  return tablesOf(expected) == tablesOf(got) &&
         (!isEit(expected) || eits_.isMoved(expected.eit, got.eit));
}

std::string SoakRun::where() const {
  return "seed " + std::to_string(seed_) + ", call " + std::to_string(counts_.calls) + ", " +
         nameOf(call_);
}

}  // namespace tevra::test
