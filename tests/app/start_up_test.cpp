#include "app/start_up.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <initializer_list>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "control/si_control_handler.h"
#include "tests/app/arguments.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/allocation_hook.h"

// A started server lives until the process ends, so every test that starts one has an MPTS index
// of its own.

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::Not;
using testing::Pair;
using tevra::fake::LogLine;
using tevra::fake::platform;
using tevra::fake::PlatformTest;
using tevra::test::Arguments;

/** What the tests raise to leave the endless feeding of the watchdog. */
struct Leave {};

/** Lets the process kick `kicks` times and then raises Leave from inside the last kick. */
void leaveAtKick(size_t kicks) {
  platform().onKick = [kicks] {
    if (platform().kicks.size() >= kicks) {
      throw Leave();
    }
  };
}

int run(std::initializer_list<const char*> arguments) {
  Arguments all(arguments);
  return tevra::runTornel(all.count(), all.values());
}

/** Runs as main does: nothing catches what is raised. */
void runUncaught(std::initializer_list<const char*> arguments) noexcept {
  (void)run(arguments);
}

/** Where `line` was logged; fails when it was not. */
size_t positionOf(const LogLine& line) {
  const std::vector<LogLine> lines = tevra::fake::logLines();
  const auto found = std::find(lines.begin(), lines.end(), line);
  if (found == lines.end()) {
    ADD_FAILURE() << "not logged: " << line;
  }
  return static_cast<size_t>(found - lines.begin());
}

/** Those of `wanted` among the platform's calls and the lines logged, in their order. */
std::vector<std::string> orderOf(const std::set<std::string>& wanted) {
  std::vector<std::string> found;
  for (const std::string& call : tevra::fake::platformCalls()) {
    if (wanted.count(call) != 0) {
      found.push_back(call);
    }
  }
  return found;
}

using StartUp = PlatformTest;
using StartUpDeathTest = PlatformTest;

TEST_F(StartUp, ModuleTypeFiveAllowsFourMpts) {
  EXPECT_EQ(3, tevra::highestMptsIndex(5));
  EXPECT_THAT(tevra::fake::logLines(), IsEmpty());
}

TEST_F(StartUp, ModuleTypesSixAndZeroAllowTwoMpts) {
  EXPECT_EQ(1, tevra::highestMptsIndex(6));
  EXPECT_EQ(1, tevra::highestMptsIndex(0));
  EXPECT_THAT(tevra::fake::logLines(), IsEmpty());
}

TEST_F(StartUp, OtherModuleTypesAreLoggedAndAllowOnlyMptsZero) {
  for (const int type : {1, 2, 3, 4, 7, 255, -1}) {
    tevra::fake::clearLog();
    EXPECT_EQ(0, tevra::highestMptsIndex(type));
    const std::string text = "Tornel: Module type [" + std::to_string(type) + "] not supported!";
    EXPECT_THAT(tevra::fake::logLines(), ElementsAre(LogLine{3, "", text}));
  }
}

TEST_F(StartUp, VersionIsShownBeforeAnythingElseHappens) {
  EXPECT_THROW(run({"tornel", "-v", "-c", "-l", "7"}), tevra::fake::VersionShown);
  EXPECT_THAT(platform().versionsShown, ElementsAre(Pair(0, "0.9.1")));
  EXPECT_THAT(platform().logSetups, IsEmpty());
  EXPECT_THAT(tevra::fake::logLines(), IsEmpty());
}

TEST_F(StartUp, MptsAboveTheModulesLimitIsRefusedWithStatusZero) {
  platform().moduleType = 6;
  EXPECT_EQ(0, run({"tornel", "-s", "3"}));
  EXPECT_THAT(tevra::fake::logLines(),
              ElementsAre(LogLine{3, "", "Tornel: MPTSid [3] not supported."}));
  EXPECT_THAT(platform().unregistered, ElementsAre(7));
  EXPECT_THAT(platform().kicks, IsEmpty());
  EXPECT_EQ(0, platform().serviceStartedSignals);
}

TEST_F(StartUp, ModuleTypeIsWhatGetModuleIdReturnsAndItsArgumentIsPresetTo255) {
  platform().moduleType = 6;
  platform().moduleIdStored = 5;  // which would allow MPTS 3
  leaveAtKick(1);
  EXPECT_EQ(0, run({"tornel", "-s", "3"}));
  EXPECT_THAT(platform().moduleIdPresets, ElementsAre(255));
}

TEST_F(StartUp, UnknownModuleTypeRefusesMptsOneAfterItsOwnLine) {
  platform().moduleType = 255;
  EXPECT_EQ(0, run({"tornel", "-s", "1"}));
  EXPECT_THAT(tevra::fake::logLines(),
              ElementsAre(LogLine{3, "", "Tornel: Module type [255] not supported!"},
                          LogLine{3, "", "Tornel: MPTSid [1] not supported."}));
}

TEST_F(StartUp, FailureToUnregisterIsLoggedAndStillEndsWithZero) {
  platform().moduleType = 0;
  platform().watchdogUnregisterResult = -1;
  EXPECT_EQ(0, run({"tornel", "-s", "2"}));
  EXPECT_THAT(tevra::fake::logLines(),
              ElementsAre(LogLine{3, "", "Tornel: MPTSid [2] not supported."},
                          LogLine{4, "", "Couldn't unregister task for WD"}));
}

TEST_F(StartUp, FailedRegistrationIsLoggedAndZeroGoesToTheWatchdogFromThenOn) {
  platform().moduleType = 6;
  platform().watchdogTask = 0;
  EXPECT_EQ(0, run({"tornel", "-s", "2"}));
  EXPECT_THAT(tevra::fake::logLines(),
              ElementsAre(LogLine{3, "", "Couldn't register task for WD"},
                          LogLine{3, "", "Tornel: MPTSid [2] not supported."}));
  EXPECT_THAT(platform().unregistered, ElementsAre(0));
}

TEST_F(StartUp, LogIsSetUpOnceWithItsLevelAndWithConsoleIfAskedFor) {
  platform().moduleType = 6;
  (void)run({"tornel", "-s", "2"});
  (void)run({"tornel", "-s", "2", "-l", "7"});
  (void)run({"tornel", "-s", "2", "-c"});
  (void)run({"tornel", "-s", "2", "--console", "--level=3"});
  EXPECT_THAT(platform().logSetups, ElementsAre(Pair(5, 1), Pair(7, 1), Pair(5, 3), Pair(3, 3)));
}

TEST_F(StartUpDeathTest, RangeErrorsEndTheProcessAbnormallyWithoutTheirMessageOrUsageText) {
  const auto silent = Not(AnyOf(HasSubstr("parameter range error"), HasSubstr("Try")));
  EXPECT_EXIT(runUncaught({"tornel", "-s", "4"}), KilledBySignal(SIGABRT), silent);
  EXPECT_EXIT(runUncaught({"tornel", "-l", "much"}), KilledBySignal(SIGABRT), silent);
}

TEST_F(StartUp, UnknownModuleTypeStartsMptsZeroAllTheSame) {
  platform().moduleType = 9;
  leaveAtKick(1);
  EXPECT_THROW(run({"tornel"}), Leave);
  EXPECT_EQ(0U, positionOf({3, "", "Tornel: Module type [9] not supported!"}));
  EXPECT_TRUE(tevra::fake::logged(4, "Tornel 0 started ..."));
  EXPECT_THAT(platform().unregistered, IsEmpty());
}

TEST_F(StartUp, ServerStartsThenTheServiceIsSignalledThenTheWatchdogIsFed) {
  leaveAtKick(1);
  EXPECT_THROW(run({"tornel", "-s", "1"}), Leave);
  const size_t listening = positionOf({4, "", "[MPTS1] Tornel listening on port [9225]"});
  const size_t serving = positionOf({6, "", "Started threaded simple server, on port: 9225"});
  const size_t started = positionOf({4, "", "Tornel 1 started ..."});
  EXPECT_EQ(0U, listening);
  EXPECT_LT(listening, serving);
  EXPECT_EQ(serving + 1, started);
  EXPECT_THAT(platform().kicks, ElementsAre(7));
  EXPECT_THAT(orderOf({"log_setup", "watchdog_register_task", "SignalServiceIsStarted",
                       "Started threaded simple server, on port: 9225", "Tornel 1 started ...",
                       "watchdog_kick"}),
              ElementsAre("log_setup", "watchdog_register_task",
                          "Started threaded simple server, on port: 9225", "SignalServiceIsStarted",
                          "Tornel 1 started ...", "watchdog_kick"));
}

TEST_F(StartUp, ExceptionThroughTheFeedingLoopReleasesTheServer) {
  leaveAtKick(1);
  platform().watchdogTask = 0;
  EXPECT_THROW(run({"tornel", "-s", "2"}), Leave);
  EXPECT_EQ(0U, positionOf({3, "", "Couldn't register task for WD"}));
  EXPECT_THAT(platform().kicks, ElementsAre(0));
  EXPECT_EQ((LogLine{6, "", "Ended threaded simple server"}), tevra::fake::logLines().back());
}

TEST_F(StartUp, LackOfMemoryIsToldOfAndEndsIt) {
  const tevra::test::AllocationHook failing(sizeof(tevra::SIControlSrvHandler),
                                            [] { throw std::bad_alloc(); });
  EXPECT_THROW(run({"tornel", "-s", "3"}), std::bad_alloc);
  EXPECT_EQ((LogLine{3, "", "Tornel 3 cannot start. EXCEPTION: std::bad_alloc"}),
            tevra::fake::logLines().back());
  EXPECT_THAT(platform().kicks, IsEmpty());
}

TEST_F(StartUp, WatchdogIsKickedBeforeTheFirstSleepAndEveryFiveSecondsAfter) {
  std::vector<std::chrono::steady_clock::time_point> times;
  platform().onKick = [&] {
    times.push_back(std::chrono::steady_clock::now());
    if (times.size() == 2) {
      throw Leave();
    }
  };
  const auto before = std::chrono::steady_clock::now();
  EXPECT_THROW(run({"tornel", "-s", "3", "--port=9999"}), Leave);
  ASSERT_EQ(2U, times.size());
  EXPECT_LT(times[0] - before, std::chrono::seconds(5));
  EXPECT_GE(times[1] - times[0], std::chrono::milliseconds(4990));
  EXPECT_LT(times[1] - times[0], std::chrono::seconds(10));
  EXPECT_THAT(platform().kicks, ElementsAre(7, 7));
  EXPECT_EQ(1, platform().serviceStartedSignals);
  // The port option changes nothing.
  EXPECT_TRUE(tevra::fake::logged(6, "Started threaded simple server, on port: 9227"));
}

}  // namespace
