#include "synth/output_data.h"

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

/** Outputs of which a last node has the same global service id. */
class DirectOutput : public OutputDataTest {
 protected:
  DirectOutput() {
    request_.outputs[1] = describe(50);
    request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  }
};

TEST_F(OutputDataTest, AnUnknownInputServiceHasAnEmptyAnswerAndNoLine) {
  request_.inputSID = 4711;
  request_.outputs[1] = describe(50);
  answer_[9] = SPTSConfiguration();
  ask();
  EXPECT_THAT(answer_, IsEmpty());
  EXPECT_THAT(fake::logLines(), IsEmpty());
  EXPECT_EQ(stores_.saves(), 0);
}

TEST_F(OutputDataTest, NoOutputsHaveAnEmptyAnswer) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  answer_[9] = SPTSConfiguration();
  ask();
  EXPECT_THAT(answer_, IsEmpty());
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "inputSID [003401] Match!!!"}));
  EXPECT_EQ(stores_.saves(), 0);
}

TEST_F(DirectOutput, HasOneAnswerWithInputPidsAndWithoutEcmPids) {
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_THAT(answer_[50].pidItems,
              ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C),
                          remapped(kSpanishIn, 0x08), remapped(kEnglishIn, 0x08)));
}

TEST_F(DirectOutput, CarriesTheTablesOfItsOutputService) {
  ask();
  const OutputTables& tables = answer_[50].outputTables;
  const DVBOutputTables& records = tables.dvbTables;
  EXPECT_EQ(records.pat.transportStreamId, 7);
  EXPECT_EQ(records.pat.programs, makePat(7, {{1201, outputPid(kPmtIn)}}).programs);
  EXPECT_EQ(records.sdt.originalNetworkId, 8);
  ASSERT_THAT(records.sdt.services, SizeIs(1));
  EXPECT_EQ(records.sdt.services[0].descriptors.at(0).data, "\x19\x08TEVRA SA\x06Uno HD");
  PMT pmt = makePmt(1201, outputPid(kVideoIn),
                    {makeStream(0x1B, outputPid(kVideoIn)),
                     makeStream(4, outputPid(kSpanishIn), {makeLanguageDescriptor({"spa"})}),
                     makeStream(4, outputPid(kEnglishIn), {makeLanguageDescriptor({"eng"})})});
  pmt.version = 1;
  pmt.currentNext = true;
  EXPECT_EQ(records.pmt, pmt);
  EXPECT_EQ(decodePat(tables.patPackets), records.pat);
  EXPECT_EQ(decodeSdt(tables.sdtPackets), records.sdt);
  EXPECT_EQ(decodePmt(tables.pmtPackets, 1201), records.pmt);
  EXPECT_THAT(sectionsOf(tables.pmtPackets, outputPid(kPmtIn)), SizeIs(1));
}

TEST_F(DirectOutput, IsStampedWithTheUniqueServiceIdAndNothingElse) {
  ask();
  const OutputTables& tables = answer_[50].outputTables;
  EXPECT_EQ(tables.outputParam1, 500);
  EXPECT_EQ(tables.outputParam2, 0);
  EXPECT_THAT(tables.otherPackets, IsEmpty());
  EXPECT_EQ(tables.dvbTables.nit, NIT());
  EXPECT_EQ(tables.dvbTables.cat, CAT());
  EXPECT_EQ(tables.dvbTables.sdtOther, SDT());
  EXPECT_FALSE(answer_[50].__isset.pidItems);
  EXPECT_FALSE(answer_[50].__isset.outputTables);
}

TEST_F(DirectOutput, LogsItsWayInOrder) {
  ask();
  EXPECT_THAT(
      debugTexts(),
      ElementsAre(
          "inputSID [003401] Match!!!",
          "Direct inputSID [003401] globalSID [000050] LN: globalSID [000050] uniqueSID[000500]",
          "Encuentro uno previamente insertado!!! PID [0x0067] ATTR [0x000c]", "Next node [0]",
          "Saves a new PAT in myTableStores struct",
          "Numero de paquetes necesarios para la sintesis [1]",
          "Saves a new SDT in myTableStores struct",
          "Numero de paquetes necesarios para la sintesis [1]",
          "Saves a new PMT in myTableStores struct",
          "Numero de paquetes necesarios para la sintesis [1]",
          "[MPTS2] has to save the new tables in a file",  //
          "iPID [01024] oPID [00101]", "iPID [00256] oPID [00103]", "iPID [00257] oPID [00106]",
          "iPID [00258] oPID [00107]"));
}

TEST_F(DirectOutput, IsServedByTheFirstElementOfThatGlobalIdAlone) {
  request_.lastNodeSettings[50] = {makeLastNode(60, 600), makeLastNode(50, 501),
                                   makeLastNode(50, 502), makeLastNode(70, 700)};
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_EQ(answer_[50].outputTables.outputParam1, 501);
  EXPECT_EQ(stores_.saves(), 1);
  EXPECT_FALSE(fake::logged(
      7, "inputSID [003401] globalSID [000050] LN: globalSID [000060] uniqueSID[000600]"));
}

TEST_F(DirectOutput, HasTheAudioOfItsLastNode) {
  LastNodeSettings& settings = request_.lastNodeSettings[50][0];
  settings.audioFilter = 1;
  settings.audioLanguages = makeLanguages({"eng", "fra"});
  ask();
  EXPECT_THAT(answer_[50].pidItems, ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C),
                                                remapped(kEnglishIn, 0x08)));
  EXPECT_THAT(answer_[50].outputTables.dvbTables.pmt.esList, SizeIs(2));
}

TEST_F(DirectOutput, IsFilteredByAnyNonzeroFlag) {
  for (const int32_t flag : {2, -1}) {
    request_.lastNodeSettings[50][0].audioFilter = flag;
    ask();
    EXPECT_THAT(answer_[50].outputTables.dvbTables.pmt.esList, SizeIs(1)) << flag;
  }
}

TEST_F(DirectOutput, HasAllAudioWhenItsLanguagesAreNotToBeFiltered) {
  request_.lastNodeSettings[50][0].audioLanguages = makeLanguages({"eng"});
  ask();
  EXPECT_THAT(answer_[50].outputTables.dvbTables.pmt.esList, SizeIs(3));
}

TEST_F(DirectOutput, NeverHasEmmPidsNorAsksForTheCat) {
  request_.outputs[1] = describe(50, 1);
  ask();
  EXPECT_THAT(fake::logLines(3), IsEmpty());
  const std::vector<PIDItem> withoutCat = answer_[50].pidItems;
  storeCat({kEmmIn});
  ask();
  EXPECT_EQ(answer_[50].pidItems, withoutCat);
}

TEST_F(DirectOutput, TakesTheEcmPidsFromTheFallbacksThatFollowIt) {
  request_.outputs[2] = describe(60);
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(50), Key(60)));
  EXPECT_THAT(answer_[60].pidItems,
              ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C),
                          remapped(kSpanishIn, 0x08), remapped(kEnglishIn, 0x08)));
}

TEST_F(DirectOutput, LeavesTheEcmPidsOfTheFallbacksBeforeIt) {
  request_.outputs[0] = describe(60);
  ask();
  EXPECT_THAT(answer_[60].pidItems, SizeIs(6));
  EXPECT_THAT(answer_[50].pidItems, SizeIs(4));
}

TEST_F(OutputDataTest, OutputsAreServedInTheOrderOfTheirKeys) {
  for (const int32_t key : {5, -3, 0}) {
    request_.outputs[key] = describe(100 - key);
  }
  ask();
  EXPECT_EQ(stores_.saves(), 3);
  EXPECT_THAT(answer_, ElementsAre(Key(95), Key(100), Key(103)));
  // All of them use the entry of the one input programme.
  EXPECT_THAT(stores_.saved(), ElementsAre(Key(kInputProgram)));
}

TEST_F(OutputDataTest, EachOutputMovesTheVersionsThatTheOneBeforeItLeft) {
  request_.outputs[5] = describe(50);
  request_.outputs[5].outputSID = 1205;
  request_.outputs[-3] = describe(60);
  request_.outputs[-3].outputSID = 1203;
  ask();
  EXPECT_EQ(answer_[60].outputTables.dvbTables.pat.version, 1);
  EXPECT_EQ(answer_[50].outputTables.dvbTables.pat.version, 2);
  EXPECT_EQ(stores_.tableStore(kInputProgram)->pat.programs.at(0).programNumber, 1205);
}

TEST_F(OutputDataTest, TheSecondOutputOfAGlobalIdIsNoFallbackWhenTheFirstAnswered) {
  request_.outputs[1] = describe(50);
  request_.outputs[2] = describe(50);
  request_.outputs[2].serviceName = "Dos";
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_EQ(stores_.saves(), 1);
  EXPECT_EQ(answer_[50].outputTables.dvbTables.sdt.services[0].descriptors[0].data,
            "\x19\x08TEVRA SA\x06Uno HD");
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings, kNoSettings));
}

TEST_F(DirectOutput, TheSecondOneOfAGlobalIdTakesThePlaceOfTheFirst) {
  request_.outputs[2] = describe(50);
  request_.outputs[2].serviceName = "Dos";
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_EQ(stores_.saves(), 2);
  EXPECT_EQ(answer_[50].outputTables.dvbTables.sdt.services[0].descriptors[0].data,
            "\x19\x08TEVRA SA\x03"
            "Dos");
}

TEST_F(DirectOutput, NumbersInTheLinesHaveSixDigitsOrMore) {
  request_.outputs[1] = describe(-50);
  request_.lastNodeSettings = {{-50, {makeLastNode(-50, 1234567)}}};
  ask();
  EXPECT_TRUE(fake::logged(
      7, "Direct inputSID [003401] globalSID [-00050] LN: globalSID [-00050] uniqueSID[1234567]"));
}

}  // namespace
}  // namespace tevra::test
