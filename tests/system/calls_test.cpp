#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::Notification;
using testing::ElementsAre;
using testing::IsEmpty;

/** A daemon, its MainTask, which has had the start-up request, and a client. */
class DaemonCalls : public testing::Test {
 protected:
  DaemonCalls() { EXPECT_TRUE(mainTask_.waitFor(1)); }

  /** The notification that comes after `earlier` others; one without a method when none does. */
  Notification notificationAfter(size_t earlier) {
    return mainTask_.waitFor(earlier + 1) ? mainTask_.received()[earlier] : Notification();
  }

  TemporaryDirectory root_;
  FakeMainTask mainTask_;
  Daemon daemon_{root_.path()};
  ControlClient client_;
};

TEST_F(DaemonCalls, GetSIDataGivesAnEmptyRecord) {
  thrift::in_module::SIService service;
  service.name = "before";
  EXPECT_THAT(daemon_.linesOf([&] { client_->getSIData(service); }), ElementsAre("7 getSIData"));
  EXPECT_EQ(service.name, "");
}

TEST_F(DaemonCalls, SISetDataOnlyLogs) {
  thrift::in_module::SIService service;
  service.name = "Uno";
  EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->SISetData(service)); }),
              ElementsAre("7 SISetData string: Uno"));
  client_->getSIData(service);
  EXPECT_EQ(service.name, "");
}

TEST_F(DaemonCalls, SendCmdOfAnUnknownCommandIsSilentlyTrue) {
  for (const int32_t command : {-2147483647 - 1, -1, 5, 7, 2147483647}) {
    EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->sendCmd(command)); }),
                ElementsAre("7 SI sendCmd"))
        << command;
  }
}

TEST_F(DaemonCalls, SendCmdOfAnUnimplementedCommandSaysSo) {
  for (const int32_t command : {1, 2, 3, 4}) {
    EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->sendCmd(command)); }),
                ElementsAre("7 SI sendCmd", "3 Comando no implementado."))
        << command;
  }
}

TEST_F(DaemonCalls, SendCmdOfTheResetCommandLogsNoMore) {
  EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->sendCmd(0)); }),
              ElementsAre("7 SI sendCmd"));
}

TEST_F(DaemonCalls, SetPATNotifiesTheConflictFreePat) {
  EXPECT_THAT(daemon_.linesOf([&] { client_->setPAT(multiplexPat()); }),
              ElementsAre("7 Guardo PAT en DB local!",  // as received
                          "7 Guardo PAT en DB local!",  // conflict-free
                          "4 MainTask notified from SI (new cf PAT)!!!"));
  const Notification notification = notificationAfter(1);
  EXPECT_EQ(notification.method, "notifyPAT");
  PAT expected = multiplexPat();
  expected.programs[0].pid = kOutNit;
  expected.programs[1].pid = kOutTelevisionPmt;
  expected.programs[2].pid = kOutRadioPmt;
  EXPECT_EQ(notification.pat, expected);
}

TEST_F(DaemonCalls, SetSDTNotifiesTheSdtAsItCame) {
  EXPECT_THAT(daemon_.linesOf([&] { client_->setSDT(multiplexSdt()); }),
              ElementsAre("7 Guardo SDT en DB local!",  //
                          "7 Guardo SDT en DB local!", "7 MainTask notified from SI (new SDT)!!!"));
  const Notification notification = notificationAfter(1);
  EXPECT_EQ(notification.method, "notifySDT");
  EXPECT_EQ(notification.sdt, multiplexSdt());
}

TEST_F(DaemonCalls, SetPMTNotifiesTheConflictFreePmt) {
  client_->setPAT(multiplexPat());
  EXPECT_THAT(daemon_.linesOf([&] { client_->setPMT(televisionPmt()); }),
              ElementsAre("7 Guardo PMT en DB local! inputSID [0x0064]",
                          "7 iDesc PID [00510/01fe] oDesc PID [00105/0069]",
                          "7 iES  PID [00257/0101] oES  PID [00104/0068]",
                          "7 iES  PID [00258/0102] oES  PID [00106/006a]",
                          "7 iES  PID [00259/0103] oES  PID [00107/006b]",
                          "7 iES  PID [00260/0104] oES  PID [00108/006c]",
                          "7 Guardo PMT en DB local! inputSID [0x0064]",
                          "7 MainTask notified from SI (new PMT)!!!"));
  const Notification notification = notificationAfter(2);
  EXPECT_EQ(notification.method, "notifyPMT");
  PMT expected = televisionPmt();
  expected.pcrPid = kOutVideo;
  expected.descriptors = {caDescriptor(kOutEcm)};
  expected.esList.pop_back();
  expected.esList[0].pid = kOutVideo;
  expected.esList[1].pid = kOutEnglish;
  expected.esList[2].pid = kOutSpanish;
  expected.esList[3].pid = kOutSubtitles;
  EXPECT_EQ(notification.pmt, expected);
}

TEST_F(DaemonCalls, SetCATNotifiesTheConflictFreeCat) {
  EXPECT_THAT(
      daemon_.linesOf([&] { client_->setCAT(multiplexCat()); }),
      ElementsAre("7 Guardo CAT en DB local!", "7 iDesc PID [00496/01f0] oDesc PID [00101/0065]",
                  "7 Guardo CAT en DB local!", "7 MainTask notified from SI (new CAT)!!!"));
  const Notification notification = notificationAfter(1);
  EXPECT_EQ(notification.method, "notifyCAT");
  CAT expected = multiplexCat();
  expected.descriptors = {caDescriptor(101)};
  EXPECT_EQ(notification.cat, expected);
}

TEST_F(DaemonCalls, ACaDescriptorThatIsTooShortLosesItsPayload) {
  CAT cat = multiplexCat();
  cat.descriptors[0].data.resize(3);
  EXPECT_EQ(timesIn(daemon_.linesOf([&] { client_->setCAT(cat); }),
                    "3 [cfDescriptors] corrupted ca descriptor."),
            1);
  EXPECT_EQ(notificationAfter(1).cat.descriptors, std::vector{descriptor(9, "")});
}

TEST_F(DaemonCalls, SetNITOnlyStores) {
  EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->setNIT(multiplexNit())); }),
              ElementsAre("3 setNIT", "7 Guardo NIT en DB local!"));
  client_->setSDT(multiplexSdt());
  EXPECT_EQ(notificationAfter(1).method, "notifySDT");  // nothing came before it
}

TEST_F(DaemonCalls, SetBATOnlyStores) {
  EXPECT_THAT(daemon_.linesOf([&] { EXPECT_TRUE(client_->setBAT(multiplexBat())); }),
              ElementsAre("3 setBAT", "7 Guardo BAT en DB local!"));
  client_->setSDT(multiplexSdt());
  EXPECT_EQ(notificationAfter(1).method, "notifySDT");
}

TEST_F(DaemonCalls, EmptyTablesAreTablesToo) {
  client_->setPAT(PAT());
  client_->setSDT(SDT());
  client_->setPMT(PMT());
  client_->setCAT(CAT());
  EXPECT_TRUE(client_->setNIT(NIT()));
  EXPECT_TRUE(client_->setBAT(BAT()));
  client_->setEITPresentFollowing({});
  client_->setEITSchedule({});
  ASSERT_TRUE(mainTask_.waitFor(5));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyPAT", "notifySDT",
                                               "notifyPMT", "notifyCAT"));
}

TEST_F(DaemonCalls, ATableIsNotifiedEachTimeItIsSet) {
  client_->setPAT(multiplexPat());
  client_->setPAT(multiplexPat());
  ASSERT_TRUE(mainTask_.waitFor(3));
  EXPECT_EQ(mainTask_.received()[1].pat, mainTask_.received()[2].pat);
}

TEST_F(DaemonCalls, APatOfAnotherTransportStreamRestartsThePids) {
  client_->setPAT(multiplexPat(1));
  client_->setPMT(televisionPmt());
  client_->setPAT(multiplexPat(2));
  EXPECT_EQ(notificationAfter(3).pat.programs[0].pid, 101);
  client_->setPMT(radioPmt());
  EXPECT_EQ(notificationAfter(4).pmt.pcrPid, 104);
  EXPECT_EQ(readRecord<thrift::in_module::PIDRemap>(root_ / pidRemapFile(0)).transportStreamId, 2);
}

TEST_F(DaemonCalls, ThePidPoolsEndIsToldOnceAndPassed) {
  PAT pat = multiplexPat();
  pat.programs.clear();
  for (int32_t program = 1; program <= 201; ++program) {
    pat.programs.emplace_back().programNumber = program;
    pat.programs.back().pid = 0x1000 + program;
  }
  const Lines lines = daemon_.linesOf([&] { client_->setPAT(pat); });
  EXPECT_THAT(upToLevel(lines, '4'),
              ElementsAre("4 [ModChain0] PID pool exhausted, PID [300] is beyond [299]",
                          "4 MainTask notified from SI (new cf PAT)!!!"));
  const PAT notified = notificationAfter(1).pat;
  ASSERT_EQ(notified.programs.size(), 201U);
  EXPECT_EQ(notified.programs[198].pid, 299);
  EXPECT_EQ(notified.programs[199].pid, 300);
  EXPECT_EQ(notified.programs[200].pid, 301);
}

TEST_F(DaemonCalls, ResetForgetsTheTables) {
  giveMultiplex(client_);
  EXPECT_TRUE(client_->sendCmd(0));
  std::map<int32_t, SPTSConfiguration> answer;
  EXPECT_THAT(daemon_.linesOf([&] { client_->getSrvOutputData(answer, televisionRequest()); }),
              IsEmpty());
  EXPECT_THAT(answer, IsEmpty());
}

TEST_F(DaemonCalls, ResetKeepsPidsAndTableVersions) {
  giveMultiplex(client_);
  const SPTSConfiguration before = onlyOutput(client_, televisionRequest());
  EXPECT_TRUE(client_->sendCmd(0));
  client_->setPMT(televisionPmt());  // in another order than at first
  client_->setSDT(multiplexSdt());
  client_->setPAT(multiplexPat());
  EXPECT_EQ(onlyOutput(client_, televisionRequest()), before);
}

TEST_F(DaemonCalls, CallsInTheOrderOfADeviceNotifyInThatOrder) {
  giveMultiplex(client_);
  ASSERT_TRUE(mainTask_.waitFor(6));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyPAT", "notifySDT",
                                               "notifyPMT", "notifyCAT", "notifyPMT"));
}

}  // namespace
}  // namespace tevra::test
