#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#include "tests/control/handler_fixture.h"
#include "tests/fakes/fake_main_task.h"

namespace tevra::test {
namespace {

using fake::logged;
using fake::platform;
using fake::timesLogged;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::Pair;
using testing::StartsWith;

constexpr int64_t kMjd = 60000;
constexpr int64_t kDay = 86400;

constexpr const char* kNoClock = "System time not set. Time offset not calculated!";
constexpr const char* kApplyingPrefix = "[getConflictFreeEITpf] Ready to apply offset ";

std::string offsetLine(int64_t offset) {
  return "DVB to System Time offset set to [" + std::to_string(offset) + "] secs";
}

/** A handler whose system clock stands at noon of day kMjd and which never finds MainTask. */
class TimeOffset : public HandlerTest {
 protected:
  TimeOffset() : handler_(0) {
    platform().utcTime = dvbTime(kMjd, 12, 0, 0);
    fake::clearLog();
  }

  /** A TOT `seconds` ahead of the system clock. */
  void setTOTAhead(int64_t seconds) {
    const int64_t ofDay = 12 * 3600 + seconds;
    const int64_t days = ofDay >= 0 ? ofDay / kDay : (ofDay - kDay + 1) / kDay;
    const auto rest = static_cast<int>(ofDay - days * kDay);
    handler_.setTOT(makeTot(
        dvbTime(static_cast<uint64_t>(kMjd + days), rest / 3600, rest / 60 % 60, rest % 60)));
  }

  /** What an EIT that comes now is told about the offset; "" when it is not restamped. */
  std::string applied() {
    fake::clearLog();
    handler_.setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
    for (const auto& [level, text] : lines()) {
      if (level == 7 && text.rfind(kApplyingPrefix, 0) == 0) {
        return text.substr(std::string(kApplyingPrefix).size());
      }
    }
    return "";
  }

  SIControlSrvHandler handler_;
};

TEST_F(TimeOffset, NoEITIsRestampedBeforeTheFirstTOT) {
  EXPECT_EQ("", applied());
}

TEST_F(TimeOffset, OfOneMinuteIsTakenAndLogged) {
  setTOTAhead(60);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo TOT en DB local!"), Pair(7, "Guardo TOT en DB local!"),
                          Pair(4, offsetLine(60)), Pair(3, kRefused)));
  EXPECT_EQ("[yes] [60]", applied());
}

TEST_F(TimeOffset, OfOneMinuteBehindIsTakenAndLogged) {
  setTOTAhead(-60);
  EXPECT_TRUE(logged(4, offsetLine(-60)));
  EXPECT_EQ("[yes] [-60]", applied());
}

TEST_F(TimeOffset, UnderAMinuteIsIgnoredButValid) {
  for (const int64_t seconds : {59, -59, 1, 0}) {
    fake::clearLog();
    setTOTAhead(seconds);
    EXPECT_THAT(lines(), ElementsAre(Pair(7, "Guardo TOT en DB local!"),
                                     Pair(7, "Guardo TOT en DB local!"), Pair(3, kRefused)));
    EXPECT_EQ("[yes] [0]", applied());
  }
}

TEST_F(TimeOffset, IsComparedWithTheStoredOneAndNotWithTheLastSeen) {
  for (const int64_t seconds : {30, 59, 30, 59}) {
    setTOTAhead(seconds);
  }
  EXPECT_EQ("[yes] [0]", applied());
  setTOTAhead(60);
  EXPECT_EQ("[yes] [60]", applied());
  setTOTAhead(119);
  EXPECT_EQ("[yes] [60]", applied());
  setTOTAhead(1);
  EXPECT_EQ("[yes] [60]", applied());
  setTOTAhead(120);
  EXPECT_EQ("[yes] [120]", applied());
  setTOTAhead(60);
  EXPECT_EQ("[yes] [60]", applied());
  setTOTAhead(0);
  EXPECT_EQ("[yes] [0]", applied());
}

TEST_F(TimeOffset, OfADayAndMoreCrossesDates) {
  setTOTAhead(2 * kDay + 1);
  EXPECT_TRUE(logged(4, offsetLine(172801)));
  setTOTAhead(-kDay - 1);
  EXPECT_TRUE(logged(4, offsetLine(-86401)));
}

TEST_F(TimeOffset, OnlyTheLowThirtyTwoBitsAreCompared) {
  constexpr int64_t kTwoTo32 = int64_t{1} << 32;
  setTOTAhead(kTwoTo32 + 59);
  EXPECT_FALSE(logged(4, offsetLine(kTwoTo32 + 59)));
  EXPECT_EQ("[yes] [0]", applied());
  setTOTAhead(kTwoTo32 + 60);
  EXPECT_TRUE(logged(4, offsetLine(kTwoTo32 + 60)));
  EXPECT_EQ("[yes] [4294967356]", applied());
  setTOTAhead(1);
  EXPECT_EQ("[yes] [4294967356]", applied());
}

TEST_F(TimeOffset, HalfOfTheThirtyTwoBitRangeIsADifference) {
  constexpr int64_t kTwoTo31 = int64_t{1} << 31;
  setTOTAhead(kTwoTo31);
  EXPECT_TRUE(logged(4, offsetLine(kTwoTo31)));
  setTOTAhead(0);
  EXPECT_TRUE(logged(4, offsetLine(0)));
}

TEST_F(TimeOffset, ExtremeTimesAreTaken) {
  handler_.setTOT(makeTot(UINT64_MAX));
  handler_.setTOT(makeTot(uint64_t{1} << 63));
  handler_.setTOT(makeTot(INT64_MAX));
  handler_.setTOT(makeTot(0));
  EXPECT_TRUE(logged(4, offsetLine(-kMjd * kDay - 12 * 3600)));
}

TEST_F(TimeOffset, IsNotCalculatedWhileTheClockIsUnset) {
  platform().isSystemTimeSetResult = 1;
  setTOTAhead(600);
  EXPECT_THAT(lines(),
              ElementsAre(Pair(7, "Guardo TOT en DB local!"), Pair(7, "Guardo TOT en DB local!"),
                          Pair(4, kNoClock), Pair(3, kRefused)));
  EXPECT_EQ("", applied());
}

TEST_F(TimeOffset, AnyNonZeroResultMeansAnUnsetClock) {
  platform().isSystemTimeSetResult = -1;
  setTOTAhead(600);
  EXPECT_TRUE(logged(4, kNoClock));
}

TEST_F(TimeOffset, StaysValidWhenTheClockIsLostLater) {
  setTOTAhead(600);
  platform().isSystemTimeSetResult = 1;
  setTOTAhead(1200);
  EXPECT_TRUE(logged(4, kNoClock));
  EXPECT_EQ("[yes] [600]", applied());
}

TEST_F(TimeOffset, ResetForgetsTheOffsetAndItsValidity) {
  setTOTAhead(600);
  EXPECT_TRUE(handler_.sendCmd(0));
  EXPECT_EQ("", applied());
  setTOTAhead(59);
  EXPECT_FALSE(logged(4, offsetLine(59)));
  EXPECT_EQ("[yes] [0]", applied());
}

TEST_F(TimeOffset, OtherCommandsKeepIt) {
  setTOTAhead(600);
  EXPECT_TRUE(handler_.sendCmd(3));
  EXPECT_TRUE(handler_.sendCmd(7));
  EXPECT_EQ("[yes] [600]", applied());
}

TEST_F(TimeOffset, SameTOTTwiceChangesNothing) {
  setTOTAhead(600);
  setTOTAhead(600);
  EXPECT_EQ(1, timesLogged(4, offsetLine(600)));
}

class TimeOffsetWithEITs : public TimeOffset {
 protected:
  /** How often the stored EITs have been restamped since the last clearLog. */
  static int restamps() {
    int count = 0;
    for (const auto& [level, text] : lines()) {
      count += level == 7 && text.rfind("restampEIT: ", 0) == 0 ? 1 : 0;
    }
    return count;
  }

  void storeEIT() { handler_.setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})})); }
};

TEST_F(TimeOffsetWithEITs, FirstTOTRestampsThemEvenWhenTheOffsetStaysZero) {
  storeEIT();
  EXPECT_EQ(0, restamps());
  setTOTAhead(59);
  EXPECT_EQ(1, restamps());
  EXPECT_TRUE(logged(7, "[getConflictFreeEITpf] Ready to apply offset [yes] [0]"));
  EXPECT_EQ(1, savedEITVersions().at(1).versions.at(0x4E));
}

TEST_F(TimeOffsetWithEITs, SteadyTOTsRestampThemOnlyOnce) {
  storeEIT();
  for (int i = 0; i < 5; ++i) {
    setTOTAhead(i * 10);
  }
  EXPECT_EQ(1, restamps());
  EXPECT_EQ(1, timesLogged(7, "[MPTS0] has to save the new tables in a file"));
}

TEST_F(TimeOffsetWithEITs, EveryChangeOfTheOffsetRestampsThem) {
  storeEIT();
  setTOTAhead(0);
  setTOTAhead(60);
  setTOTAhead(120);
  EXPECT_EQ(3, restamps());
  EXPECT_EQ(3, savedEITVersions().at(1).versions.at(0x4E));
}

TEST_F(TimeOffsetWithEITs, TOTsWithoutClockLeaveTheRestampPending) {
  storeEIT();
  platform().isSystemTimeSetResult = 1;
  setTOTAhead(0);
  setTOTAhead(600);
  EXPECT_EQ(0, restamps());
  platform().isSystemTimeSetResult = 0;
  setTOTAhead(0);
  EXPECT_EQ(1, restamps());
}

TEST_F(TimeOffsetWithEITs, PendingRestampIsSpentEvenWithNothingToRestamp) {
  setTOTAhead(0);
  EXPECT_FALSE(logged(7, "[MPTS0] has to save the new tables in a file"));
  storeEIT();
  EXPECT_EQ(1, restamps());
  setTOTAhead(0);
  EXPECT_EQ(1, restamps());
}

TEST_F(TimeOffsetWithEITs, AfterAResetTheNextTOTRestampsWhatCameInBetween) {
  storeEIT();
  setTOTAhead(600);
  EXPECT_TRUE(handler_.sendCmd(0));
  handler_.setEITSchedule(mapOf({makeEit(2, 0x50, 0, {})}));
  fake::clearLog();
  setTOTAhead(0);
  EXPECT_EQ(1, restamps());
  EXPECT_TRUE(logged(7, "restampEIT: SID [0x0002] tid [0x50] v[0] nevents [0]"));
  EXPECT_FALSE(logged(4, offsetLine(0)));  // the reset has set it to 0 already
}

TEST_F(TimeOffsetWithEITs, ResetForgetsThem) {
  storeEIT();
  EXPECT_TRUE(handler_.sendCmd(0));
  setTOTAhead(600);
  EXPECT_EQ(0, restamps());
  EXPECT_FALSE(logged(7, "[MPTS0] has to save the new tables in a file"));
}

TEST_F(TimeOffsetWithEITs, LostClockKeepsThemAsTheyWere) {
  storeEIT();
  setTOTAhead(0);
  platform().isSystemTimeSetResult = 1;
  fake::clearLog();
  setTOTAhead(600);
  EXPECT_EQ(0, restamps());
}

}  // namespace
}  // namespace tevra::test
