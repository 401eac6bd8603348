#include "tools/feed/table_feeder.h"

#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class TableFeederTest : public testing::Test {
 protected:
  std::string printed() const {
    std::ostringstream out;
    feeder_.print(out);
    return out.str();
  }

  test::RecordingDaemon daemon_;
  TableFeeder feeder_{daemon_};
};

EIT makeEit(int serviceId, int tableId, int version) {
  EIT eit;
  eit.serviceId = serviceId;
  eit.tableId = tableId;
  eit.version = version;
  return eit;
}

TEST_F(TableFeederTest, CallsTheSetterOfEachTable) {
  feeder_.feed(PAT(), 1);
  feeder_.feed(CAT(), 1);
  feeder_.feed(PMT(), 1);
  feeder_.feed(SDT(), 1);
  feeder_.feed(NIT(), 1);
  feeder_.feed(BAT(), 1);
  feeder_.feed(TOT(), 1);
  EXPECT_THAT(daemon_.calls,
              ElementsAre("setPAT PAT 0 v0", "setCAT CAT v0", "setPMT PMT 0 v0", "setSDT SDT 0 v0",
                          "setNIT NIT 0 v0", "setBAT BAT 0 v0", "setTOT TOT 0"));
  EXPECT_EQ(7U, feeder_.sent());
  EXPECT_EQ(0U, feeder_.refused());
}

TEST_F(TableFeederTest, HandsOverAnEitUnderItsServiceAndTableId) {
  const EIT present = makeEit(101, 0x4E, 3);
  const EIT schedule = makeEit(102, 0x5F, 4);
  feeder_.feed(present, 1);
  feeder_.feed(schedule, 1);
  EXPECT_THAT(daemon_.calls, ElementsAre("setEITPresentFollowing EIT 101/0x4E v3",
                                         "setEITSchedule EIT 102/0x5F v4"));
  const EITMap expected = {{102, {{0x5F, schedule}}}};
  EXPECT_EQ(expected, daemon_.eitMaps.at(1));
}

TEST_F(TableFeederTest, CountsWhatTheDaemonRefuses) {
  daemon_.takesNit = false;
  feeder_.feed(NIT(), 1);
  feeder_.feed(BAT(), 1);
  daemon_.takesBat = false;
  feeder_.feed(BAT(), 1);
  EXPECT_EQ(3U, feeder_.sent());
  EXPECT_EQ(2U, feeder_.refused());
}

TEST_F(TableFeederTest, PrintsOneLinePerTableWithItsLastVersion) {
  feeder_.feed(makeEit(1000, 0x50, 1), 1);
  feeder_.feed(makeEit(9, 0x50, 1), 1);
  PMT pmt;
  pmt.programNumber = 101;
  pmt.version = 31;
  feeder_.feed(pmt, 1);
  pmt.version = 0;
  feeder_.feed(pmt, 2);
  EXPECT_EQ(
      "  table         of                       last       sections  sent\n"
      "  PMT           service 101              version 0  2         2\n"
      "  EIT schedule  service 9 table 0x50     version 1  1         1\n"
      "  EIT schedule  service 1000 table 0x50  version 1  1         1\n",
      printed());
}

TEST_F(TableFeederTest, PassesOnWhatACallRaisesAndDoesNotCountIt) {
  daemon_.beforeCall = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(feeder_.feed(PAT(), 1), std::runtime_error);
  EXPECT_EQ(0U, feeder_.sent());
  EXPECT_THAT(printed(), testing::Not(HasSubstr("PAT")));
}

}  // namespace
}  // namespace tevra::tools
