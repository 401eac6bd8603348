#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

// A call of each kind by its whole road; the cases are those of tests/control, tests/cfdb and
// tests/synth.

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::Notification;
using testing::ElementsAre;
using testing::Key;

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

TEST_F(DaemonCalls, AnOutputIsAnsweredAndLoggedStepByStep) {
  giveMultiplex(client_);
  std::map<int32_t, SPTSConfiguration> answer;
  EXPECT_THAT(daemon_.linesOf([&] { client_->getSrvOutputData(answer, televisionRequest()); }),
              ElementsAre("7 inputSID [000100] Match!!!",
                          "7 Direct inputSID [000100] globalSID [000007] LN: globalSID "
                          "[000007] "
                          "uniqueSID[000009]",
                          "7 Encuentro uno previamente insertado!!! PID [0x0068] ATTR [0x000c]",
                          "7 Next node [0]",  //
                          "7 Saves a new PAT in myTableStores struct",
                          "7 Numero de paquetes necesarios para la sintesis [1]",
                          "7 Saves a new SDT in myTableStores struct",
                          "7 Numero de paquetes necesarios para la sintesis [1]",
                          "7 Saves a new PMT in myTableStores struct",
                          "7 Numero de paquetes necesarios para la sintesis [1]",
                          "7 [MPTS0] has to save the new tables in a file",
                          "7 iPID [00256] oPID [00102]",  //
                          "7 iPID [00257] oPID [00104]",  //
                          "7 iPID [00258] oPID [00106]",  //
                          "7 iPID [00260] oPID [00108]"));
  ASSERT_THAT(answer, ElementsAre(Key(7)));
  std::vector<std::tuple<int32_t, int32_t, int32_t>> items;
  for (const auto& item : answer[7].pidItems) {
    items.emplace_back(item.inputPid, item.outputPid, item.attributes);
  }
  using Item = std::tuple<int32_t, int32_t, int32_t>;
  EXPECT_THAT(items, ElementsAre(Item{kTelevisionPmtPid, kOutTelevisionPmt, 0x02},
                                 Item{kVideoPid, kOutVideo, 0x0C},  // PCR and stream
                                 Item{kEnglishPid, kOutEnglish, 0x08},
                                 Item{kSubtitlesPid, kOutSubtitles, 0x08}));
}

}  // namespace
}  // namespace tevra::test
