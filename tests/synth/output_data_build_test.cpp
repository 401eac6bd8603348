#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/output_data_fixture.h"

namespace tevra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

/** One output from tables of the test's own. */
class BuildOutput : public OutputDataTest {
 protected:
  BuildOutput() {
    EXPECT_TRUE(database_.getConflictFreePMT(pmt_, kInputProgram));
    EXPECT_TRUE(database_.getConflictFreePAT(service_.pat));
    EXPECT_TRUE(database_.getConflictFreeSDT(service_.sdt));
    service_.inputSID = kInputProgram;
  }

  SPTSConfiguration build(OutputData::BuildOptions options, int32_t nextNode = 0) {
    fake::clearLog();
    return data_.buildOutput(service_, pmt_, describe(50, nextNode), makeLastNode(50, 500),
                             options);
  }

  ServiceTables service_;
  PMT pmt_;
};

TEST_F(BuildOutput, RemapsWhenTold) {
  EXPECT_THAT(build({true, true}).pidItems.at(1), remapped(kVideoIn, 0x0C));
  EXPECT_THAT(build({false, true}).pidItems.at(1), unmapped(kVideoIn, 0x0C));
  EXPECT_THAT(build({true, false}).pidItems.at(1), remapped(kVideoIn, 0x0C));
  EXPECT_THAT(build({false, false}).pidItems.at(1), unmapped(kVideoIn, 0x0C));
}

TEST_F(BuildOutput, AddsEmmPidsOnlyWithoutLastNodeAndTowardsNodeOne) {
  storeCat({kEmmIn});
  EXPECT_THAT(build({true, false}, 1).pidItems, SizeIs(7));
  EXPECT_THAT(build({true, true}, 1).pidItems, SizeIs(6));
  EXPECT_THAT(build({true, false}, 0).pidItems, SizeIs(6));
  EXPECT_THAT(build({true, false}, 2).pidItems, SizeIs(6));
}

TEST_F(BuildOutput, FiltersThenNamesTheNextNodeThenCollectsEmmPidsThenSynthesises) {
  storeCat({kEmmIn});
  (void)build({false, false}, 1);
  const std::vector<std::string> texts = debugTexts();
  ASSERT_THAT(texts, SizeIs(17));
  const std::vector<std::string> untilSynthesis(texts.begin(), texts.begin() + 4);
  EXPECT_THAT(untilSynthesis,
              ElementsAre("Encuentro uno previamente insertado!!! PID [0x0067] ATTR [0x000c]",
                          "Next node [1]", "EMM PID found [0x006c].",
                          "Saves a new PAT in myTableStores struct"));
  EXPECT_EQ(texts[8], "Numero de paquetes necesarios para la sintesis [1]");
  EXPECT_EQ(texts[9], "[MPTS2] has to save the new tables in a file");
  EXPECT_EQ(texts[16], "iPID [00108] oPID [00108]");
}

TEST_F(BuildOutput, NamesAnyNextNode) {
  for (const int32_t nextNode : {0, 1, 2, -7}) {
    (void)build({true, true}, nextNode);
    EXPECT_EQ(fake::timesLogged(7, "Next node [" + std::to_string(nextNode) + "]"), 1);
  }
}

TEST_F(BuildOutput, HasTheIdentityThatIsDescribedOnlyWhereItLeavesTheChain) {
  for (const int32_t nextNode : {1, 2, -1}) {
    const DVBOutputTables towards = build({true, true}, nextNode).outputTables.dvbTables;
    EXPECT_EQ(towards.pat.transportStreamId, 0);
    EXPECT_EQ(towards.pat.programs, makePat(0, {{0, outputPid(kPmtIn)}}).programs);
    EXPECT_EQ(towards.sdt.transportStreamId, 0);
    EXPECT_EQ(towards.sdt.originalNetworkId, 0);
    EXPECT_EQ(towards.sdt.services.at(0).serviceId, 0);
    EXPECT_EQ(towards.sdt.services[0].descriptors.at(0).data,
              std::string("\x19\x08TEVRA SA\x00", 11));
    EXPECT_EQ(towards.pmt.programNumber, 0);
  }
  const DVBOutputTables leaving = build({true, true}, 0).outputTables.dvbTables;
  EXPECT_EQ(leaving.pmt.programNumber, 1201);
  EXPECT_EQ(leaving.pat.transportStreamId, 7);
  EXPECT_EQ(leaving.sdt.originalNetworkId, 8);
}

TEST_F(BuildOutput, AnUnknownPidIs65535WhenRemapped) {
  pmt_.esList.push_back(makeStream(6, 0x1ABC));
  EXPECT_THAT(build({true, true}).pidItems.back(), pidItem(65535, 0x1ABC, 0x08));
  EXPECT_TRUE(fake::logged(7, "iPID [65535] oPID [06844]"));
  EXPECT_THAT(build({false, true}).pidItems.back(), pidItem(0x1ABC, 0x08));
  EXPECT_TRUE(fake::logged(7, "iPID [06844] oPID [06844]"));
}

TEST_F(BuildOutput, TwoUnknownPidsStayTwoItems) {
  pmt_.esList.push_back(makeStream(6, 0x1ABC));
  pmt_.esList.push_back(makeStream(6, 0x1ABD));
  EXPECT_THAT(build({true, true}).pidItems, SizeIs(8));
}

TEST_F(BuildOutput, EmptyTablesGiveAnEmptyOutput) {
  service_ = ServiceTables();
  pmt_ = PMT();
  const SPTSConfiguration built = build({true, true}, 1);
  EXPECT_THAT(built.pidItems, ElementsAre(pidItem(65535, 0x666, 0x02), pidItem(65535, 0, 0x04)));
  EXPECT_THAT(built.outputTables.dvbTables.pmt.esList, IsEmpty());
  EXPECT_THAT(stores_.saved(), ElementsAre(Key(0)));
}

}  // namespace
}  // namespace tevra::test
