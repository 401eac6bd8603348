#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cfdb/pid_allocator.h"
#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/files.h"

// Whatever lies where the mapping is kept, the task starts and hands out PIDs.

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using fake::platform;
using testing::ElementsAre;

constexpr int32_t kNewInput = -12345;  // in none of the files

/** A file of slot 3 whose mapping holds 256 -> 101 and whose counter is `counter`. */
std::string fileWithCounter(const std::string& counter) {
  return R"({"1":{"i32":7},"2":{"map":["i32","i32",1,{"256":101}]},)"
         R"("3":{"map":["i32","i32",1,{"101":256}]},"4":{"i32":)" +
         counter + R"(},"5":{"i32":3}})";
}

class HostilePidRemapFile : public fake::PlatformTest {
 protected:
  static std::string file() { return path("PIDRemap0"); }

  static int readingGives(const std::string& text) {
    writeText(file(), text);
    PIDRemap record;
    return readRecordFromFile(file(), record);
  }

  /** A mapping made from what lies there is a fresh one, and only the pool was logged. */
  static void expectFreshMapping() {
    fake::clearLog();
    PidAllocator pids(0);
    EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [3] PID poll [100/299]"}));
    EXPECT_EQ(pids.getInputPID(101), kUnknownPid);
    EXPECT_EQ(pids.getConflictFreePID(kNewInput), 101);
  }
};

// Content

TEST_F(HostilePidRemapFile, WithoutAnyMemberBelongsToNoInputSlot) {
  EXPECT_EQ(readingGives("{}"), 0);
  expectFreshMapping();
}

// Values

struct Counter {
  const char* text;
  uint16_t firstPid;
  uint16_t secondPid;
};

class HostileCounter : public HostilePidRemapFile, public testing::WithParamInterface<Counter> {};

TEST_P(HostileCounter, WrapsInsteadOfOverflowing) {
  ASSERT_EQ(readingGives(fileWithCounter(GetParam().text)), 0);
  PidAllocator pids(0);
  EXPECT_EQ(pids.getConflictFreePID(256), 101);
  EXPECT_EQ(pids.getConflictFreePID(kNewInput), GetParam().firstPid);
  EXPECT_EQ(pids.getInputPID(GetParam().firstPid), kNewInput);
  EXPECT_EQ(pids.getConflictFreePID(kNewInput + 1), GetParam().secondPid);
  pids.saveConflictFreeDB();
  PIDRemap stored;
  EXPECT_EQ(readRecordFromFile(file(), stored), 0);
  EXPECT_EQ(stored.inputToOutput.at(kNewInput + 1), GetParam().secondPid);
}

INSTANTIATE_TEST_SUITE_P(PidRemapFile, HostileCounter,
                         testing::Values(Counter{"2147483647", 1, 2}, Counter{"2147483646", 0, 1},
                                         Counter{"2147483645", 65535, 0},
                                         Counter{"-2147483648", 2, 3}, Counter{"-1", 1, 2},
                                         Counter{"-2", 0, 1}, Counter{"65535", 1, 2}));

TEST_F(HostilePidRemapFile, ACounterPastThePoolIsReportedByItsFirstNewPid) {
  ASSERT_EQ(readingGives(fileWithCounter("2147483646")), 0);
  PidAllocator pids(0);
  fake::clearLog();
  EXPECT_EQ(pids.getConflictFreePID(256), 101);
  EXPECT_EQ(pids.getConflictFreePID(kNewInput), 0);
  EXPECT_EQ(pids.getConflictFreePID(kNewInput + 1), 1);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{
                              4, "", "[ModChain0] PID pool exhausted, PID [0] is beyond [299]"}));
}

TEST_F(HostilePidRemapFile, AMappedPidIsCutTo16Bits) {
  writeText(file(), R"({"2":{"map":["i32","i32",2,{"1":65637,"2":-1}]},"5":{"i32":3}})");
  PidAllocator pids(0);
  EXPECT_EQ(pids.getConflictFreePID(1), 101);
  EXPECT_EQ(pids.getConflictFreePID(2), 65535);
}

TEST_F(HostilePidRemapFile, MapsThatAreNotEachOthersReverseAreTakenAsTheyAre) {
  writeText(file(), R"({"2":{"map":["i32","i32",1,{"1":101}]},)"
                    R"("3":{"map":["i32","i32",1,{"101":2}]},"4":{"i32":500},"5":{"i32":3}})");
  PidAllocator pids(0);
  EXPECT_EQ(pids.getConflictFreePID(1), 101);
  EXPECT_EQ(pids.getInputPID(101), 2);
  EXPECT_EQ(pids.getConflictFreePID(2), 502);
}

}  // namespace
}  // namespace tevra::test
