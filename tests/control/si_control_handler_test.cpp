#include "control/si_control_handler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <string>
#include <vector>

#include "tests/control/handler_fixture.h"
#include "tests/fakes/fake_main_task.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using fake::Notification;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Handler : public HandlerTest {
 protected:
  Handler() : handler_(0) { fake::clearLog(); }

  std::map<int32_t, SPTSConfiguration> ask(int32_t inputSID, const std::string& name = "Uno") {
    std::map<int32_t, SPTSConfiguration> answer;
    handler_.getSrvOutputData(answer, outputOf(inputSID, name));
    return answer;
  }

  void feedService() {
    handler_.setPAT(patOf({0x100}));
    handler_.setSDT(sdtOf(1));
    handler_.setPMT(pmtOf(1, 0x101));
  }

  SIControlSrvHandler handler_;
};

/** With MainTask from before the handler's construction on; its request for configuration comes
 * first. */
class NotifyingHandler : public HandlerTest {
 protected:
  NotifyingHandler() : handler_(0) { fake::clearLog(); }

  /** The notification after `earlier` others and the request for configuration. */
  Notification notification(size_t earlier = 0) {
    if (!mainTask_.waitFor(earlier + 2)) {
      ADD_FAILURE() << "no notification";
      return {};
    }
    return mainTask_.received()[earlier + 1];
  }

  FakeMainTask mainTask_;
  SIControlSrvHandler handler_;
};

TEST_F(Handler, SIDataIsAlwaysTheInitialOne) {
  SIService data;
  data.name = "Centro";
  EXPECT_TRUE(handler_.SISetData(data));
  SIService result = data;
  handler_.getSIData(result);
  EXPECT_EQ(SIService(), result);
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "SISetData string: Centro"), Pair(7, "getSIData")));
}

TEST_F(Handler, SISetDataPrintsPercentSignsAsTheyAre) {
  SIService data;
  data.name = "%s%n";
  EXPECT_TRUE(handler_.SISetData(data));
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "SISetData string: %s%n")));
}

TEST_F(Handler, CommandsOneToFourAreNotImplemented) {
  for (const int32_t command : {1, 2, 3, 4}) {
    fake::clearLog();
    EXPECT_TRUE(handler_.sendCmd(command));
    EXPECT_THAT(lines(), ElementsAre(Pair(7, "SI sendCmd"), Pair(3, "Comando no implementado.")));
  }
}

TEST_F(Handler, OtherCommandsAreTakenSilently) {
  for (const int32_t command : {5, 7, -1, INT_MIN, INT_MAX}) {
    fake::clearLog();
    EXPECT_TRUE(handler_.sendCmd(command));
    EXPECT_THAT(lines(), ElementsAre(Pair(7, "SI sendCmd")));
  }
}

TEST_F(Handler, ResetEmptiesTheDatabases) {
  feedService();
  ASSERT_EQ(1U, ask(1).size());
  fake::clearLog();
  EXPECT_TRUE(handler_.sendCmd(0));
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "SI sendCmd")));
  EXPECT_THAT(ask(1), IsEmpty());
}

TEST_F(Handler, OtherCommandsKeepTheDatabases) {
  feedService();
  EXPECT_TRUE(handler_.sendCmd(1));
  EXPECT_TRUE(handler_.sendCmd(-1));
  EXPECT_EQ(1U, ask(1).size());
}

TEST_F(Handler, ResetKeepsTableStoresAndPidMapping) {
  feedService();
  const SPTSConfiguration before = ask(1, "Uno").at(kGlobalSID);
  EXPECT_EQ(1, before.outputTables.dvbTables.sdt.version);
  EXPECT_TRUE(handler_.sendCmd(0));
  handler_.setPMT(pmtOf(1, 0x101));
  handler_.setPAT(patOf({0x100}));
  handler_.setSDT(sdtOf(1));
  const SPTSConfiguration same = ask(1, "Uno").at(kGlobalSID);
  EXPECT_EQ(before, same);
  EXPECT_EQ(2, ask(1, "Dos").at(kGlobalSID).outputTables.dvbTables.sdt.version);
}

TEST_F(Handler, WithoutMainTaskTablesAreDerivedAllTheSame) {
  feedService();
  EXPECT_EQ(3U, fake::logLines(3).size());  // one line per notification
  const auto answer = ask(1);
  ASSERT_EQ(1U, answer.count(kGlobalSID));
  EXPECT_EQ(3U, answer.at(kGlobalSID).pidItems.size());
}

TEST_F(Handler, NimIsNotifiedToTheStartupTargetAndAlwaysTrue) {
  EXPECT_TRUE(handler_.notifyNIM(42));
  EXPECT_THAT(lines(), ElementsAre(Pair(3, kRefused)));
}

TEST_F(Handler, TableVersionsContinueInTheNextProcess) {
  feedService();
  EXPECT_EQ(1, ask(1).at(kGlobalSID).outputTables.dvbTables.sdt.version);
  SIControlSrvHandler next(0);
  next.setPAT(patOf({0x100}));
  next.setSDT(sdtOf(1));
  next.setPMT(pmtOf(1, 0x101));
  std::map<int32_t, SPTSConfiguration> answer;
  next.getSrvOutputData(answer, outputOf(1, "Uno"));
  EXPECT_EQ(1, answer.at(kGlobalSID).outputTables.dvbTables.sdt.version);
  next.getSrvOutputData(answer, outputOf(1, "Dos"));
  EXPECT_EQ(2, answer.at(kGlobalSID).outputTables.dvbTables.sdt.version);
  EXPECT_EQ(1, answer.at(kGlobalSID).outputTables.dvbTables.pmt.version);
  EXPECT_EQ(2, savedTableStores().at(1).sdt.version);
}

TEST_F(NotifyingHandler, PatIsNotifiedConflictFreeAndAtLevelFour) {
  const PAT pat = patOf({0x100, 0x110});
  handler_.setPAT(pat);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo PAT en DB local!"), Pair(7, "Guardo PAT en DB local!"),
                          Pair(4, "MainTask notified from SI (new cf PAT)!!!")));
  const Notification notified = notification();
  EXPECT_EQ("notifyPAT", notified.method);
  PAT expected = pat;
  expected.programs[0].pid = 101;
  expected.programs[1].pid = 102;
  EXPECT_EQ(expected, notified.pat);
}

TEST_F(NotifyingHandler, SdtIsNotifiedUnchanged) {
  handler_.setSDT(sdtOf(1));
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo SDT en DB local!"), Pair(7, "Guardo SDT en DB local!"),
                          Pair(7, "MainTask notified from SI (new SDT)!!!")));
  EXPECT_EQ("notifySDT", notification().method);
  EXPECT_EQ(sdtOf(1), notification().sdt);
}

TEST_F(NotifyingHandler, PmtIsNotifiedConflictFree) {
  PMT pmt = pmtOf(1, 0x101);
  pmt.esList.emplace_back().streamType = 0x86;
  handler_.setPMT(pmt);
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "Guardo PMT en DB local! inputSID [0x0001]"),
                                   Pair(7, "iES  PID [00257/0101] oES  PID [00101/0065]"),
                                   Pair(7, "iES  PID [00258/0102] oES  PID [00102/0066]"),
                                   Pair(7, "Guardo PMT en DB local! inputSID [0x0001]"),
                                   Pair(7, "MainTask notified from SI (new PMT)!!!")));
  EXPECT_EQ("notifyPMT", notification().method);
  EXPECT_EQ(pmtOf(1, 101), notification().pmt);
}

TEST_F(NotifyingHandler, CatIsNotifiedConflictFree) {
  CAT cat = makeCat({makeCaDescriptor(0x0100, 0x0123)});
  cat.version = 4;
  handler_.setCAT(cat);
  EXPECT_THAT(lines(), ElementsAre(Pair(7, "Guardo CAT en DB local!"),
                                   Pair(7, "iDesc PID [00291/0123] oDesc PID [00101/0065]"),
                                   Pair(7, "Guardo CAT en DB local!"),
                                   Pair(7, "MainTask notified from SI (new CAT)!!!")));
  EXPECT_EQ("notifyCAT", notification().method);
  cat.descriptors = {makeCaDescriptor(0x0100, 101)};
  EXPECT_EQ(cat, notification().cat);
}

TEST_F(NotifyingHandler, NitAndBatAreNeverNotifiedNorMadeConflictFree) {
  EXPECT_TRUE(handler_.setNIT(NIT()));
  EXPECT_TRUE(handler_.setBAT(BAT()));
  EXPECT_THAT(lines(), ElementsAre(Pair(3, "setNIT"), Pair(7, "Guardo NIT en DB local!"),
                                   Pair(3, "setBAT"), Pair(7, "Guardo BAT en DB local!")));
  handler_.setSDT(sdtOf(1));
  ASSERT_TRUE(mainTask_.waitFor(2));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifySDT"));
}

TEST_F(NotifyingHandler, TotIsNotifiedUnchanged) {
  TOT tot = makeTot(dvbTime(60000, 12, 0, 0));
  tot.descriptors.emplace_back().tag = 0x58;
  handler_.setTOT(tot);
  EXPECT_THAT(lines().back(), Pair(7, "MainTask notified from SI (new TOT)!!!"));
  EXPECT_EQ("notifyTOT", notification().method);
  EXPECT_EQ(tot, notification().tot);
}

TEST_F(NotifyingHandler, NimCarriesItsValueAndIsLoggedAtLevelFour) {
  EXPECT_TRUE(handler_.notifyNIM(-7));
  EXPECT_THAT(lines(), ElementsAre(Pair(4, "MainTask notified from NIM!!!")));
  EXPECT_EQ("notifyNIM", notification().method);
  EXPECT_EQ(-7, notification().value);
}

TEST_F(NotifyingHandler, CommandsAndRequestsNotifyNothing) {
  EXPECT_TRUE(handler_.sendCmd(0));
  EXPECT_TRUE(handler_.sendCmd(2));
  handler_.setPMT(pmtOf(1, 0x101));
  std::map<int32_t, SPTSConfiguration> answer;
  handler_.getSrvOutputData(answer, outputOf(1, "Uno"));
  handler_.setEITSchedule(mapOf({makeEit(1, 0x50, 0, {})}));
  handler_.setCAT(CAT());
  ASSERT_TRUE(mainTask_.waitFor(3));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyPMT", "notifyCAT"));
}

TEST_F(NotifyingHandler, PortsSurviveAReset) {
  EXPECT_TRUE(handler_.sendCmd(0));
  handler_.setSDT(sdtOf(1));
  EXPECT_TRUE(handler_.notifyNIM(1));
  ASSERT_TRUE(mainTask_.waitFor(3));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifySDT", "notifyNIM"));
}

TEST_F(NotifyingHandler, SameTableTwiceIsNotifiedTwice) {
  handler_.setPAT(patOf({}));
  handler_.setPAT(patOf({}));
  ASSERT_TRUE(mainTask_.waitFor(3));
  EXPECT_THAT(mainTask_.methods(), ElementsAre("requestConfiguration", "notifyPAT", "notifyPAT"));
}

}  // namespace
}  // namespace tevra::test
