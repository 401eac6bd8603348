#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>
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
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

using Answer = std::map<int32_t, SPTSConfiguration>;

// Why a PID is carried.
constexpr int32_t kPmt = 0x02;
constexpr int32_t kPcr = 0x04;
constexpr int32_t kEs = 0x08;
constexpr int32_t kEcm = 0x10;
constexpr int32_t kEmm = 0x20;

/** Input PID, output PID, attributes. */
using Item = std::tuple<int32_t, int32_t, int32_t>;

std::vector<Item> itemsOf(const SPTSConfiguration& output) {
  std::vector<Item> items;
  for (const auto& item : output.pidItems) {
    items.emplace_back(item.inputPid, item.outputPid, item.attributes);
  }
  return items;
}

std::vector<int32_t> streamPidsOf(const SPTSConfiguration& output) {
  std::vector<int32_t> pids;
  for (const auto& stream : output.outputTables.dvbTables.pmt.esList) {
    pids.push_back(stream.pid);
  }
  return pids;
}

class DaemonOutputData : public testing::Test {
 protected:
  DaemonOutputData() { giveMultiplex(client_); }

  Answer ask(const SrvOutputRequest& request) {
    Answer answer;
    client_->getSrvOutputData(answer, request);
    return answer;
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
  ControlClient client_;
};

TEST_F(DaemonOutputData, LogsADirectRequestStepByStep) {
  Answer answer;
  EXPECT_THAT(daemon_.linesOf([&] { answer = ask(televisionRequest()); }),
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
  EXPECT_THAT(answer, ElementsAre(Key(7)));
}

TEST_F(DaemonOutputData, LogsAnUnchangedRequestWithoutSavingTables) {
  (void)ask(televisionRequest());
  const Lines lines = daemon_.linesOf([&] { (void)ask(televisionRequest()); });
  EXPECT_THAT(lines, SizeIs(12));
  EXPECT_THAT(lines, testing::Not(testing::Contains(testing::HasSubstr("Saves a new"))));
  EXPECT_EQ(timesIn(lines, "7 [MPTS0] has to save the new tables in a file"), 1);
}

TEST_F(DaemonOutputData, ADirectAnswerHasThePidsOfItsSourceAndNoneOfConditionalAccess) {
  const SPTSConfiguration output = ask(televisionRequest())[7];
  EXPECT_THAT(itemsOf(output), ElementsAre(Item{kTelevisionPmtPid, kOutTelevisionPmt, kPmt},
                                           Item{kVideoPid, kOutVideo, kPcr | kEs},
                                           Item{kEnglishPid, kOutEnglish, kEs},
                                           Item{kSubtitlesPid, kOutSubtitles, kEs}));
}

TEST_F(DaemonOutputData, ADirectAnswerHasTheTablesOfTheOutputService) {
  const auto tables = ask(televisionRequest())[7].outputTables;
  EXPECT_EQ(tables.outputParam1, 9);
  EXPECT_EQ(tables.outputParam2, 0);
  EXPECT_THAT(tables.otherPackets, IsEmpty());
  const PAT& pat = tables.dvbTables.pat;
  EXPECT_EQ(pat.transportStreamId, 5);
  EXPECT_EQ(pat.version, 1);
  EXPECT_TRUE(pat.currentNext);
  ASSERT_THAT(pat.programs, SizeIs(1));
  EXPECT_EQ(pat.programs[0].programNumber, 1201);
  EXPECT_EQ(pat.programs[0].pid, kOutTelevisionPmt);
  const SDT& sdt = tables.dvbTables.sdt;
  EXPECT_EQ(sdt.tableId, 0x42);
  EXPECT_EQ(sdt.transportStreamId, 5);
  EXPECT_EQ(sdt.originalNetworkId, 6);
  EXPECT_EQ(sdt.version, 1);
  ASSERT_THAT(sdt.services, SizeIs(1));
  EXPECT_EQ(sdt.services[0].serviceId, 1201);
  EXPECT_EQ(sdt.services[0].runningStatus, 4);
  EXPECT_EQ(sdt.services[0].descriptors,
            std::vector{descriptor(0x48, "\x19\x08TEVRA SA\x06Uno HD")});
  const PMT& pmt = tables.dvbTables.pmt;
  EXPECT_EQ(pmt.programNumber, 1201);
  EXPECT_EQ(pmt.version, 1);
  EXPECT_EQ(pmt.pcrPid, kOutVideo);
  EXPECT_THAT(pmt.descriptors, IsEmpty());
}

TEST_F(DaemonOutputData, TheAudioFilterKeepsOnlyTheWantedLanguages) {
  EXPECT_THAT(streamPidsOf(ask(televisionRequest())[7]),
              ElementsAre(kOutVideo, kOutEnglish, kOutSubtitles));
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings[7] = {lastNode(7, 9, {"spa", "eng"})};
  EXPECT_THAT(streamPidsOf(ask(request)[7]),
              ElementsAre(kOutVideo, kOutEnglish, kOutSpanish, kOutSubtitles));
  request.lastNodeSettings[7] = {lastNode(7, 9, {"fra"})};
  EXPECT_THAT(streamPidsOf(ask(request)[7]), ElementsAre(kOutVideo, kOutSubtitles));
  request.lastNodeSettings[7] = {lastNode(7, 9, {})};  // filter off
  EXPECT_THAT(streamPidsOf(ask(request)[7]),
              ElementsAre(kOutVideo, kOutEnglish, kOutSpanish, kOutSubtitles));
}

TEST_F(DaemonOutputData, PacketsCarryTheTablesOnTheirPids) {
  const auto tables = ask(televisionRequest())[7].outputTables;
  const auto headerOf = [](const std::vector<std::string>& packets) {
    return packets.size() == 1 && packets[0].size() == 188 ? packets[0].substr(0, 5) : "";
  };
  EXPECT_EQ(headerOf(tables.patPackets), std::string("\x47\x40\x00\x10\x00", 5));
  EXPECT_EQ(headerOf(tables.sdtPackets), std::string("\x47\x40\x11\x10\x00", 5));
  EXPECT_EQ(headerOf(tables.pmtPackets), std::string("\x47\x40\x66\x10\x00", 5));  // PID 102
}

TEST_F(DaemonOutputData, AnUnknownServiceGetsAnEmptyAnswerAndNoLine) {
  SrvOutputRequest request = televisionRequest();
  request.inputSID = 999;
  Answer answer;
  EXPECT_THAT(daemon_.linesOf([&] { answer = ask(request); }), IsEmpty());
  EXPECT_THAT(answer, IsEmpty());
}

TEST_F(DaemonOutputData, ARequestWithoutOutputsGetsAnEmptyAnswer) {
  SrvOutputRequest request = televisionRequest();
  request.outputs.clear();
  Answer answer;
  EXPECT_THAT(daemon_.linesOf([&] { answer = ask(request); }),
              ElementsAre("7 inputSID [000100] Match!!!"));
  EXPECT_THAT(answer, IsEmpty());
}

TEST_F(DaemonOutputData, AnOutputWithoutLastNodesFallsBackToItself) {
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings.clear();
  request.outputs[0].nextNode = 1;
  Answer answer;
  const Lines lines = daemon_.linesOf([&] { answer = ask(request); });
  EXPECT_EQ(timesIn(lines, "3 Output SPTS has no LastNodeSettings"), 1);
  EXPECT_EQ(timesIn(lines, "7 EMM PID found [0x006d]."), 1);
  ASSERT_THAT(answer, ElementsAre(Key(7)));
  EXPECT_EQ(answer[7].outputTables.outputParam1, 7);
  EXPECT_THAT(itemsOf(answer[7]),
              ElementsAre(Item{kTelevisionPmtPid, kOutTelevisionPmt, kPmt},
                          Item{kVideoPid, kOutVideo, kPcr | kEs}, Item{kEcmPid, kOutEcm, kEcm},
                          Item{kEnglishPid, kOutEnglish, kEs}, Item{kSpanishPid, kOutSpanish, kEs},
                          Item{kSubtitlesPid, kOutSubtitles, kEs}, Item{kEmmPid, kOutEmm, kEmm}));
  EXPECT_EQ(answer[7].outputTables.dvbTables.pat.programs[0].programNumber, 0);
}

TEST_F(DaemonOutputData, TheFallbackAsksForACatThatIsNotThere) {
  EXPECT_TRUE(client_->sendCmd(0));
  client_->setPAT(multiplexPat());
  client_->setPMT(televisionPmt());
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings.clear();
  request.outputs[0].nextNode = 1;
  const Lines lines = daemon_.linesOf([&] { (void)ask(request); });
  EXPECT_EQ(timesIn(lines, "3 [Tornel] Asked for a CAT and not in DB."), 1);
  EXPECT_EQ(timesIn(lines, "4 Service not found in STD!!"), 1);  // no SDT either
}

TEST_F(DaemonOutputData, LastNodesOfOthersGetAnAnswerEachBesidesTheOutputsOwn) {
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings[7] = {lastNode(21, 31, {"eng"}), lastNode(22, 32, {"spa"})};
  Answer answer;
  const Lines lines = daemon_.linesOf([&] { answer = ask(request); });
  EXPECT_EQ(timesIn(lines,
                    "7 inputSID [000100] globalSID [000007] LN: globalSID [000021] "
                    "uniqueSID[000031]"),
            1);
  EXPECT_THAT(answer, ElementsAre(Key(7), Key(21), Key(22)));
  EXPECT_EQ(answer[21].outputTables.outputParam1, 31);
  EXPECT_THAT(
      itemsOf(answer[22]),  // not resolved to input PIDs
      ElementsAre(Item{kOutTelevisionPmt, kOutTelevisionPmt, kPmt},
                  Item{kOutVideo, kOutVideo, kPcr | kEs}, Item{kOutSpanish, kOutSpanish, kEs},
                  Item{kOutSubtitles, kOutSubtitles, kEs}));
  EXPECT_THAT(streamPidsOf(answer[7]),
              ElementsAre(kOutVideo, kOutEnglish, kOutSpanish, kOutSubtitles));
}

TEST_F(DaemonOutputData, WithoutAPatTheProgramIsMissed) {
  EXPECT_TRUE(client_->sendCmd(0));
  client_->setPMT(televisionPmt());
  Answer answer;
  const Lines lines = daemon_.linesOf([&] { answer = ask(televisionRequest()); });
  EXPECT_EQ(timesIn(lines, "3 ProgramNumber not found."), 2);  // for PAT and PMT
  ASSERT_THAT(answer[7].outputTables.pmtPackets, SizeIs(1));
  EXPECT_EQ(answer[7].outputTables.pmtPackets[0].substr(0, 3), "\x47\x5F\xFF");
}

TEST_F(DaemonOutputData, ANameThatIsNoUtf8GivesWayToTheServiceId) {
  Answer answer;
  const Lines lines = daemon_.linesOf([&] { answer = ask(televisionRequest("Uno \xC3\x28")); });
  EXPECT_EQ(timesIn(lines, "4 [synthSDT] Service name cannot be encoded."), 1);
  EXPECT_EQ(answer[7].outputTables.dvbTables.sdt.services[0].descriptors[0].data,
            "\x19\x08TEVRA SA\x0ANoname1201");
}

TEST_F(DaemonOutputData, ANameOfAnyLengthIsCutToItsDescriptor) {
  const auto sdt = ask(televisionRequest(std::string(1000, 'x')))[7].outputTables.dvbTables.sdt;
  EXPECT_EQ(sdt.services[0].descriptors[0].data, "\x19\x08TEVRA SA\xF4" + std::string(244, 'x'));
}

TEST_F(DaemonOutputData, APmtOfManySectionsIsSplitWithAWarning) {
  PMT pmt = televisionPmt();
  for (int32_t pid = 0x400; pid < 0x400 + 300; ++pid) {
    pmt.esList.emplace_back().streamType = 27;
    pmt.esList.back().pid = pid;
  }
  client_->setPMT(pmt);
  Answer answer;
  const Lines lines = daemon_.linesOf([&] { answer = ask(televisionRequest()); });
  EXPECT_EQ(timesIn(lines, "4 [synthPMT] PMT of service [1201] needs [2] sections."), 1);
  EXPECT_THAT(answer[7].outputTables.dvbTables.pmt.esList, SizeIs(303));
  EXPECT_GT(answer[7].outputTables.pmtPackets.size(), 8U);
}

TEST_F(DaemonOutputData, TheTableStoreFileHoldsWhatWasHandedOut) {
  const SPTSConfiguration output = ask(televisionRequest())[7];
  const auto file = readRecord<thrift::in_module::TableStoreFile>(root_ / tableStoreFile(0));
  ASSERT_THAT(file.tableStores, ElementsAre(Key(kTelevision)));
  const auto& stored = file.tableStores.at(kTelevision);
  EXPECT_EQ(stored.restartCounter, 0);
  EXPECT_EQ(stored.pat, output.outputTables.dvbTables.pat);
  EXPECT_EQ(stored.sdt, output.outputTables.dvbTables.sdt);
  EXPECT_EQ(stored.pmt, output.outputTables.dvbTables.pmt);
}

}  // namespace
}  // namespace tevra::test
