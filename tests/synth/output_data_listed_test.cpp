#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/output_data_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

const LogLine kNoCat{3, "", "[Tornel] Asked for a CAT and not in DB."};

/** Outputs whose last nodes all have other global service ids: listed, then the fallback. */
class ListedOutput : public OutputDataTest {
 protected:
  ListedOutput() {
    request_.outputs[1] = describe(50);
    request_.lastNodeSettings[50] = {makeLastNode(60, 600), makeLastNode(40, 400)};
  }

  /** The remapped PIDs that a fallback carries, ECM PIDs included. */
  auto allPids() {
    return ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C),
                       remapped(kProgramEcmIn, 0x10), remapped(kVideoEcmIn, 0x10),
                       remapped(kSpanishIn, 0x08), remapped(kEnglishIn, 0x08));
  }

  [[nodiscard]] std::vector<std::string> audioOf(int32_t key) {
    std::vector<std::string> languages;
    for (const PMTES& stream : answer_.at(key).outputTables.dvbTables.pmt.esList) {
      if (stream.streamType == 4) {
        languages.push_back(stream.descriptors.at(0).data.substr(0, 3));
      }
    }
    return languages;
  }
};

/** Outputs without last nodes. */
class FallbackOutput : public ListedOutput {
 protected:
  FallbackOutput() { request_.lastNodeSettings.clear(); }
};

TEST_F(ListedOutput, HasAnAnswerForEachLastNodeAndOneForItself) {
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(40), Key(50), Key(60)));
  const auto listed = ElementsAre(unmapped(kPmtIn, 0x02), unmapped(kVideoIn, 0x0C),
                                  unmapped(kSpanishIn, 0x08), unmapped(kEnglishIn, 0x08));
  EXPECT_THAT(answer_[40].pidItems, listed);
  EXPECT_THAT(answer_[60].pidItems, listed);
  EXPECT_THAT(answer_[50].pidItems, allPids());
  EXPECT_EQ(answer_[40].outputTables.outputParam1, 400);
  EXPECT_EQ(answer_[60].outputTables.outputParam1, 600);
  EXPECT_EQ(answer_[50].outputTables.outputParam1, 50);
  EXPECT_EQ(stores_.saves(), 3);
}

TEST_F(ListedOutput, IsServedInTheOrderOfItsListThenByTheFallback) {
  ask();
  std::vector<std::string> roads;
  for (const std::string& text : debugTexts()) {
    if (text.find("inputSID") != std::string::npos || text.find("MPTS") != std::string::npos) {
      roads.push_back(text);
    }
  }
  const std::string saved = "[MPTS2] has to save the new tables in a file";
  EXPECT_THAT(
      roads,
      ElementsAre("inputSID [003401] Match!!!",
                  "inputSID [003401] globalSID [000050] LN: globalSID [000060] uniqueSID[000600]",
                  saved,
                  "inputSID [003401] globalSID [000050] LN: globalSID [000040] uniqueSID[000400]",
                  saved, saved));
}

TEST_F(ListedOutput, LogsEqualPidsWhereTheyAreNotRemapped) {
  ask();
  EXPECT_EQ(fake::timesLogged(7, "iPID [00101] oPID [00101]"), 2);
  EXPECT_EQ(fake::timesLogged(7, "iPID [01024] oPID [00101]"), 1);
}

TEST_F(ListedOutput, OnlyTheFallbacksPmtHasCaDescriptors) {
  ask();
  EXPECT_THAT(answer_[60].outputTables.dvbTables.pmt.descriptors, IsEmpty());
  EXPECT_THAT(answer_[60].outputTables.dvbTables.pmt.esList.at(0).descriptors, IsEmpty());
  EXPECT_THAT(
      answer_[50].outputTables.dvbTables.pmt.descriptors,
      ElementsAre(makeCaDescriptor(0x0500, static_cast<uint16_t>(outputPid(kProgramEcmIn)))));
  EXPECT_THAT(answer_[50].outputTables.dvbTables.pmt.esList.at(0).descriptors,
              ElementsAre(makeCaDescriptor(0x0500, static_cast<uint16_t>(outputPid(kVideoEcmIn)))));
}

TEST_F(ListedOutput, AllAnswersMoveTheVersionsOfOneEntry) {
  ask();
  EXPECT_EQ(answer_[60].outputTables.dvbTables.pmt.version, 1);
  EXPECT_EQ(answer_[40].outputTables.dvbTables.pmt.version, 1);
  EXPECT_EQ(answer_[50].outputTables.dvbTables.pmt.version, 2);  // CA descriptors came back
  EXPECT_EQ(answer_[50].outputTables.dvbTables.pat.version, 1);
}

TEST_F(ListedOutput, OfTwoElementsOfOneGlobalIdTheLastAnswers) {
  request_.lastNodeSettings[50] = {makeLastNode(60, 600), makeLastNode(60, 601)};
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(50), Key(60)));
  EXPECT_EQ(answer_[60].outputTables.outputParam1, 601);
  EXPECT_EQ(stores_.saves(), 3);
}

TEST_F(ListedOutput, EachElementFiltersForItselfAndTheFallbackForAll) {
  request_.lastNodeSettings[50][0] = makeFilter(true, {"eng"});
  request_.lastNodeSettings[50][0].globalSID = 60;
  request_.lastNodeSettings[50][1] = makeFilter(true, {"spa"});
  request_.lastNodeSettings[50][1].globalSID = 40;
  ask();
  EXPECT_THAT(audioOf(60), ElementsAre("eng"));
  EXPECT_THAT(audioOf(40), ElementsAre("spa"));
  EXPECT_THAT(audioOf(50), ElementsAre("spa", "eng"));
  EXPECT_TRUE(fake::logged(7, "Adding new lang to list [eng]"));
  EXPECT_TRUE(fake::logged(7, "Adding new lang to list [spa]"));
}

TEST_F(ListedOutput, TheFallbackFiltersByWhatAllElementsWant) {
  request_.lastNodeSettings[50] = {makeFilter(true, {"eng"}), makeFilter(true, {"fra", "eng"})};
  ask();
  EXPECT_THAT(audioOf(50), ElementsAre("eng"));
}

TEST_F(ListedOutput, OfItsAnswersOnlyTheFallbacksHasEmmPids) {
  request_.outputs[1] = describe(50, 1);
  storeCat({kEmmIn});
  ask();
  EXPECT_THAT(answer_[40].pidItems, SizeIs(4));
  EXPECT_THAT(answer_[60].pidItems, SizeIs(4));
  ASSERT_THAT(answer_[50].pidItems, SizeIs(7));
  EXPECT_THAT(answer_[50].pidItems.back(), remapped(kEmmIn, 0x20));
}

TEST_F(ListedOutput, AnElementsAnswerSparesAnotherOutputItsFallback) {
  request_.outputs[2] = describe(60);
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(40), Key(50), Key(60)));
  EXPECT_EQ(answer_[60].outputTables.outputParam1, 600);
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings));
  EXPECT_EQ(stores_.saves(), 3);
}

TEST_F(FallbackOutput, IsReportedAndAnsweredWithAllPids) {
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_THAT(answer_[50].pidItems, allPids());
  EXPECT_EQ(answer_[50].outputTables.outputParam1, 50);
  EXPECT_THAT(audioOf(50), ElementsAre("spa", "eng"));
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings));
  EXPECT_EQ(fake::logLines().at(1), kNoSettings);
}

TEST_F(FallbackOutput, WithAnEmptyListIsNotReported) {
  request_.lastNodeSettings[50] = {};
  ask();
  EXPECT_THAT(answer_[50].pidItems, allPids());
  EXPECT_THAT(fake::logLines(4), IsEmpty());
}

TEST_F(FallbackOutput, SettingsOfOtherOutputsDoNotMatter) {
  request_.lastNodeSettings[51] = {makeFilter(true, {})};
  ask();
  EXPECT_THAT(audioOf(50), ElementsAre("spa", "eng"));
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings));
}

TEST_F(FallbackOutput, WithNextNodeOneHasTheEmmPidsOfTheCatLast) {
  request_.outputs[1] = describe(50, 1);
  storeCat({kEmmIn, 0x301, kEmmIn, kVideoEcmIn});
  ask();
  EXPECT_THAT(
      answer_[50].pidItems,
      ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C), remapped(kProgramEcmIn, 0x10),
                  remapped(kVideoEcmIn, 0x30), remapped(kSpanishIn, 0x08),
                  remapped(kEnglishIn, 0x08), remapped(kEmmIn, 0x20), remapped(0x301, 0x20)));
}

TEST_F(FallbackOutput, WithNextNodeOneAndNoCatIsReportedAndAnsweredWithoutEmmPids) {
  request_.outputs[1] = describe(50, 1);
  ask();
  EXPECT_THAT(answer_[50].pidItems, allPids());
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings, kNoCat));
}

TEST_F(FallbackOutput, WithOtherNextNodesConsultsNoCat) {
  storeCat({kEmmIn});
  for (const int32_t nextNode : {0, 2, -1, 100}) {
    request_.outputs[1] = describe(50, nextNode);
    ask();
    EXPECT_THAT(answer_[50].pidItems, allPids()) << nextNode;
  }
  database_.clearConflictFreeDB();
  storePmt();
  request_.outputs[1] = describe(50, 2);
  ask();
  EXPECT_FALSE(fake::logged(3, kNoCat.text));
}

TEST_F(FallbackOutput, WithoutPatAndSdtAnswersWithWhatThePmtGives) {
  database_.clearConflictFreeDB();
  storePmt();
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_THAT(answer_[50].pidItems.at(0), pidItem(65535, 0x666, 0x02));
  EXPECT_TRUE(fake::logged(7, "iPID [65535] oPID [01638]"));
  EXPECT_EQ(answer_[50].outputTables.dvbTables.pat.programs.at(0).pid, 65535);
  EXPECT_THAT(sectionsOf(answer_[50].outputTables.pmtPackets, 0x1FFF), SizeIs(1));
  const LogLine noProgram{3, "", "ProgramNumber not found."};
  EXPECT_THAT(
      fake::logLines(4),
      ElementsAre(kNoSettings, noProgram, LogLine{4, "", "Service not found in STD!!"}, noProgram));
}

}  // namespace
}  // namespace tevra::test
