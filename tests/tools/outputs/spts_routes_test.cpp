#include "tools/outputs/spts_routes.h"

#include <gmock/gmock.h>

#include "tests/tools/support/sample_answer.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {
namespace {

using test::pidItem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kOutputPmtPid = 501;

int outputPid(const SptsRoutes& routes, int inputPid) {
  const auto& route = routes.of(inputPid);
  return route ? route->outputPid : -1;
}

TEST(SptsRoutes, SendsListedPidsToTheirOutputPidsAndDropsTheOthers) {
  const SptsRoutes routes(
      {pidItem(256, 501, kPidPmt), pidItem(512, 502, kPidPcr | kPidEs), pidItem(513, 503, kPidEs),
       pidItem(600, 504, kPidEcm), pidItem(601, 505, kPidEmm)},
      kOutputPmtPid);
  EXPECT_EQ(502, outputPid(routes, 512));
  EXPECT_EQ(503, outputPid(routes, 513));
  EXPECT_EQ(504, outputPid(routes, 600));
  EXPECT_EQ(505, outputPid(routes, 601));
  EXPECT_EQ(-1, outputPid(routes, 256)) << "the input's PMT is replaced";
  for (const int pid : {0, 0x11, 0x12, 514, 8191}) {
    EXPECT_EQ(-1, outputPid(routes, pid)) << pid;
  }
  EXPECT_EQ(512, routes.pcrPid());
  EXPECT_FALSE(routes.of(512)->pcrOnly);
  EXPECT_FALSE(routes.of(512)->renumbers);
  EXPECT_THAT(routes.warnings(), IsEmpty());
}

TEST(SptsRoutes, SkipsWithAWarningWhatTheDaemonDoesNotKnow) {
  const SptsRoutes routes({pidItem(kUnknownPid, 502, kPidEs)}, kOutputPmtPid);
  EXPECT_THAT(
      routes.warnings(),
      ElementsAre("output PID 502 (ES) is left out: the daemon does not know its input PID"));
}

TEST(SptsRoutes, SkipsWithAWarningWhatCannotBeCarried) {
  const SptsRoutes routes(
      {pidItem(0, 502, kPidEs), pidItem(0x11, 503, kPidEs), pidItem(-1, 504, kPidEs),
       pidItem(9000, 505, kPidEs), pidItem(100, 0, kPidEs), pidItem(101, 0x11, kPidEs),
       pidItem(102, kOutputPmtPid, kPidEs), pidItem(103, 8191, kPidEs)},
      kOutputPmtPid);
  EXPECT_EQ(8U, routes.warnings().size());
  for (int pid = 0; pid < kPidCount; ++pid) {
    ASSERT_EQ(-1, outputPid(routes, pid)) << pid;
  }
}

TEST(SptsRoutes, SayWhetherATableHasThePidOrNoStreamCan) {
  const SptsRoutes routes({pidItem(512, kOutputPmtPid, kPidEs), pidItem(513, 64844, kPidEs)},
                          kOutputPmtPid);
  EXPECT_THAT(routes.warnings(),
              ElementsAre("output PID 501 (ES) is left out: a table has its PID",
                          "output PID 64844 (ES) is left out: streams have PIDs up to 8190"));
}

TEST(SptsRoutes, TakesTheNullPidForAProgrammeWithoutPcr) {
  const SptsRoutes routes({pidItem(kNullPid, 502, kPidPcr), pidItem(512, 503, kPidEs)},
                          kOutputPmtPid);
  EXPECT_EQ(kNullPid, routes.pcrPid());
  EXPECT_EQ(-1, outputPid(routes, kNullPid));
  EXPECT_THAT(routes.warnings(), IsEmpty());
}

TEST(SptsRoutes, CarriesOnlyThePcrsOfAPidThatHasThePmtToo) {
  const SptsRoutes routes({pidItem(256, kOutputPmtPid, kPidPmt | kPidPcr)}, kOutputPmtPid);
  ASSERT_TRUE(routes.of(256).has_value());
  EXPECT_TRUE(routes.of(256)->pcrOnly);
  EXPECT_EQ(256, routes.pcrPid());
  EXPECT_THAT(routes.warnings(), IsEmpty());
}

TEST(SptsRoutes, WarnsOfAStreamOnThePidOfThePmt) {
  const SptsRoutes routes({pidItem(256, kOutputPmtPid, kPidPmt | kPidEs)}, kOutputPmtPid);
  EXPECT_FALSE(routes.of(256).has_value());
  EXPECT_THAT(routes.warnings(), ElementsAre(HasSubstr("(PMT, ES) carries the PMT alone")));
}

TEST(SptsRoutes, RenumbersWhereInputPidsShareAnOutputPid) {
  const SptsRoutes routes(
      {pidItem(512, 502, kPidEs), pidItem(513, 502, kPidEs), pidItem(514, 503, kPidEs)},
      kOutputPmtPid);
  EXPECT_TRUE(routes.of(512)->renumbers);
  EXPECT_TRUE(routes.of(513)->renumbers);
  EXPECT_FALSE(routes.of(514)->renumbers);
}

TEST(SptsRoutes, SendsAnInputPidThatIsListedTwiceToTheFirst) {
  const SptsRoutes routes({pidItem(512, 502, kPidEs), pidItem(512, 503, kPidEs)}, kOutputPmtPid);
  EXPECT_EQ(502, outputPid(routes, 512));
  EXPECT_THAT(routes.warnings(), ElementsAre(HasSubstr("input PID 512 is listed twice")));
}

}  // namespace
}  // namespace tevra::tools
