#include "inputdb/input_table_db.h"

#include <chrono>
#include <future>
#include <new>

#include <gtest/gtest.h>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/sample_records.h"
#include "tests/records/wire.h"
#include "tests/support/allocation_hook.h"

// PMTs, of which there is one per programme, and clear; single_table_kinds_test.cpp has the others.

namespace tevra::test {
namespace {

class InputTableDBTest : public fake::PlatformTest {
 protected:
  static PMT pmt(int32_t programNumber, int32_t version) {
    PMT record = sample<PMT>();
    record.programNumber = programNumber;
    record.version = version;
    return record;
  }

  std::vector<int32_t> programNumbers() {
    std::vector<PMT> pmts;
    const bool found = db_.getInputPMTs(pmts);
    EXPECT_EQ(found, !pmts.empty());
    std::vector<int32_t> numbers;
    numbers.reserve(pmts.size());
    for (const PMT& record : pmts) {
      numbers.push_back(record.programNumber);
    }
    return numbers;
  }

  InputTableDB db_;
};

TEST_F(InputTableDBTest, ANewDatabaseLogsNothing) {
  EXPECT_TRUE(fake::logLines().empty());
}

TEST_F(InputTableDBTest, AnAbsentProgrammeIsAMissThatLeavesTheOutputUntouched) {
  db_.setInputPMT(pmt(1, 1));
  for (const int32_t inputSID : {0, 2, -1, INT32_MAX}) {
    PMT out = pmt(77, 7);
    EXPECT_NO_THROW(EXPECT_FALSE(db_.getInputPMT(out, inputSID)));
    EXPECT_EQ(out, pmt(77, 7));
  }
}

TEST_F(InputTableDBTest, AMissCreatesNoEntry) {
  PMT out;
  EXPECT_FALSE(db_.getInputPMT(out, 5));
  EXPECT_TRUE(programNumbers().empty());
}

TEST_F(InputTableDBTest, EveryProgrammeHasItsOwnPMT) {
  EXPECT_TRUE(db_.setInputPMT(pmt(1, 11)));
  EXPECT_TRUE(db_.setInputPMT(pmt(2, 12)));
  PMT out;
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out, pmt(1, 11));
  ASSERT_TRUE(db_.getInputPMT(out, 2));
  EXPECT_EQ(out, pmt(2, 12));
}

TEST_F(InputTableDBTest, ANewPMTReplacesEveryMemberOfItsProgramme) {
  db_.setInputPMT(pmt(1, 30));
  PMT smaller;
  smaller.programNumber = 1;
  db_.setInputPMT(smaller);
  PMT out;
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out, smaller);
  EXPECT_EQ(programNumbers(), std::vector<int32_t>{1});
}

TEST_F(InputTableDBTest, TheFlagsOfAPMTAreStoredToo) {
  const auto received = fromBinary<PMT>(binaryOf(pmt(1, 1)));
  db_.setInputPMT(received);
  PMT out;
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(flagsOf(out), std::vector<bool>(6, true));
  db_.setInputPMT(pmt(1, 1));
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(flagsOf(out), std::vector<bool>(6, false));
}

TEST_F(InputTableDBTest, ThePMTSetterLogsTheProgrammeNumber) {
  for (const int32_t programNumber : {0x0D49, 0, 0x12345, -1}) {
    db_.setInputPMT(pmt(programNumber, 1));
  }
  const std::string line = "Guardo PMT en DB local! inputSID ";
  EXPECT_EQ(fake::logLines(), (std::vector<fake::LogLine>{{kLogDebug, "", line + "[0x0d49]"},
                                                          {kLogDebug, "", line + "[0x0000]"},
                                                          {kLogDebug, "", line + "[0x12345]"},
                                                          {kLogDebug, "", line + "[0xffffffff]"}}));
}

TEST_F(InputTableDBTest, PMTsComeInAscendingProgrammeNumber) {
  for (const int32_t programNumber : {0x0010, 0x0002, 0xFFFF, -1, 0x0009}) {
    db_.setInputPMT(pmt(programNumber, 1));
  }
  EXPECT_EQ(programNumbers(), (std::vector<int32_t>{-1, 0x0002, 0x0009, 0x0010, 0xFFFF}));
}

TEST_F(InputTableDBTest, PMTsAreAppendedToWhatTheOutputHolds) {
  db_.setInputPMT(pmt(4, 1));
  db_.setInputPMT(pmt(3, 1));
  std::vector<PMT> out = {pmt(9, 9)};
  EXPECT_TRUE(db_.getInputPMTs(out));
  EXPECT_EQ(out, (std::vector<PMT>{pmt(9, 9), pmt(3, 1), pmt(4, 1)}));
  EXPECT_TRUE(db_.getInputPMTs(out));
  EXPECT_EQ(out.size(), 5U);
}

TEST_F(InputTableDBTest, WithoutPMTsTheOutputListStaysAsItIs) {
  std::vector<PMT> out = {pmt(9, 9)};
  EXPECT_FALSE(db_.getInputPMTs(out));
  EXPECT_EQ(out, std::vector<PMT>{pmt(9, 9)});
}

TEST_F(InputTableDBTest, PMTsOfProgrammesThatLeaveThePATStay) {
  db_.setInputPMT(pmt(1, 1));
  db_.setInputPAT(PAT());
  EXPECT_EQ(programNumbers(), std::vector<int32_t>{1});
}

TEST_F(InputTableDBTest, TheDatabaseSharesNoPMTWithItsCallers) {
  PMT given = pmt(1, 1);
  db_.setInputPMT(given);
  given.esList.clear();
  std::vector<PMT> taken;
  ASSERT_TRUE(db_.getInputPMTs(taken));
  taken[0].esList[0].descriptors.clear();
  PMT out;
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out, pmt(1, 1));
}

TEST_F(InputTableDBTest, APMTCopyThatFailsLeavesThePartAssignedAndTheLockFree) {
  db_.setInputPMT(pmt(1, 30));
  PMT large = pmt(1, 5);
  large.esList.resize(50000);
  fake::clearLog();
  {
    const AllocationHook failing(1024 * 1024, [] { throw std::bad_alloc(); });
    EXPECT_THROW(db_.setInputPMT(large), std::bad_alloc);
  }
  EXPECT_EQ(
      fake::logLines(),
      (std::vector<fake::LogLine>{{kLogDebug, "", "Guardo PMT en DB local! inputSID [0x0001]"}}));
  PMT out;
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out.version, 5);
  EXPECT_EQ(out.descriptors, large.descriptors);
  EXPECT_EQ(out.esList, pmt(1, 30).esList);
  EXPECT_TRUE(db_.setInputPMT(pmt(1, 6)));
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out, pmt(1, 6));
}

TEST_F(InputTableDBTest, ClearWaitsForAPMTSetter) {
  PMT large = pmt(1, 5);
  large.esList.resize(50000);
  std::future<void> clearing;
  {
    const AllocationHook copying(1024 * 1024, [&] {
      clearing = std::async(std::launch::async, [this] { db_.clear(); });
      EXPECT_EQ(clearing.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    });
    db_.setInputPMT(large);
    ASSERT_TRUE(copying.triggered());
  }
  clearing.get();
  EXPECT_TRUE(programNumbers().empty());
}

TEST_F(InputTableDBTest, APMTGetterThatFailsRaisesAndLeavesTheLockFree) {
  PMT large = pmt(1, 5);
  large.esList.resize(50000);
  db_.setInputPMT(large);
  PMT out;
  {
    const AllocationHook failing(1024 * 1024, [] { throw std::bad_alloc(); });
    EXPECT_THROW((void)db_.getInputPMT(out, 1), std::bad_alloc);
  }
  ASSERT_TRUE(db_.getInputPMT(out, 1));
  EXPECT_EQ(out, large);
}

}  // namespace
}  // namespace tevra::test
