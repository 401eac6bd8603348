#include "cfdb/pid_allocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/lacks_memory.h"

namespace tevra::test {
namespace {

using fake::logged;
using fake::LogLine;
using fake::logLines;
using fake::platform;
using testing::ElementsAre;
using testing::IsEmpty;

class PidAllocatorTest : public fake::PlatformTest {
 protected:
  /** What chain 0 has saved; default values if nothing. */
  static PIDRemap saved() {
    PIDRemap record;
    (void)readRecordFromFile(path("PIDRemap0"), record);  // a missing file shows in the record
    return record;
  }

  /** A type-0 module's chain 1 in slot 3: 500 to 899. */
  static PidAllocator poolFrom500() {
    platform().moduleType = 0;
    return PidAllocator(1);
  }
};

// Pool size

struct PoolSize {
  int moduleType;
  int32_t size;
};

class KnownModuleType : public fake::PlatformTest, public testing::WithParamInterface<PoolSize> {};

TEST_P(KnownModuleType, HasAPoolSizeAndLogsNothing) {
  platform().moduleType = GetParam().moduleType;
  EXPECT_EQ(getPIDPollSizePerMPTS(), GetParam().size);
  EXPECT_THAT(logLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(PidPool, KnownModuleType,
                         testing::Values(PoolSize{0, 400}, PoolSize{5, 200}, PoolSize{6, 400}),
                         [](const auto& tested) {
                           return "Type" + std::to_string(tested.param.moduleType);
                         });

TEST_F(PidAllocatorTest, AnUnknownModuleTypeHasNoPoolAndLogsAnError) {
  for (const int type : {-1, 1, 2, 3, 4, 7, 99, std::numeric_limits<int>::max()}) {
    fake::clearLog();
    platform().moduleType = type;
    EXPECT_EQ(getPIDPollSizePerMPTS(), 0);
    EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "",
                                                "[getPIDPollSizePerMPTS] Module type [" +
                                                    std::to_string(type) + "] not supported!"}));
  }
}

// Pool limits

struct Pool {
  int moduleType;
  int slot;
  int32_t chain;
  int32_t first;
  int32_t last;
};

std::ostream& operator<<(std::ostream& out, const Pool& pool) {
  return out << "type " << pool.moduleType << ", slot " << pool.slot << ", chain " << pool.chain;
}

class PidPoolOf : public fake::PlatformTest, public testing::WithParamInterface<Pool> {};

TEST_P(PidPoolOf, TypeSlotAndChainIsFixedAndLogged) {
  const Pool& pool = GetParam();
  platform().moduleType = pool.moduleType;
  platform().moduleSlot = pool.slot;
  const PidAllocator pids(pool.chain);
  EXPECT_EQ(pids.pidPoolFirst(), pool.first);
  EXPECT_EQ(pids.pidPoolLast(), pool.last);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "",
                                              "IN mod slot [" + std::to_string(pool.slot) +
                                                  "] PID poll [" + std::to_string(pool.first) +
                                                  "/" + std::to_string(pool.last) + "]"}));
}

INSTANTIATE_TEST_SUITE_P(
    PidPool, PidPoolOf,
    testing::Values(Pool{5, 3, 0, 100, 299}, Pool{5, 3, 1, 300, 499}, Pool{5, 3, 2, 500, 699},
                    Pool{5, 3, 3, 700, 899}, Pool{0, 3, 0, 100, 499}, Pool{0, 3, 1, 500, 899},
                    Pool{6, 3, 0, 100, 499}, Pool{6, 3, 1, 500, 899}, Pool{5, 4, 0, 900, 1099},
                    Pool{5, 4, 3, 1500, 1699}, Pool{0, 4, 1, 1300, 1699}, Pool{6, 5, 0, 1700, 2099},
                    Pool{5, 5, 2, 2100, 2299}, Pool{5, 2, 0, -700, -501}, Pool{0, 2, 1, -300, 99}));

TEST_F(PidAllocatorTest, ASlotThatNoRackHasIsCountedWithAllTheSame) {
  for (const int slot : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    platform().moduleSlot = slot;
    PidAllocator pids(3);
    EXPECT_EQ(pids.pidPoolLast() - int64_t{pids.pidPoolFirst()}, 199);
    EXPECT_EQ(pids.getInputPID(pids.getConflictFreePID(0x100)), 0x100);
  }
}

TEST_F(PidAllocatorTest, EveryChainOfAnUnknownModuleTypeStartsAtTheSlotsFirstPid) {
  platform().moduleType = 2;
  platform().moduleSlot = 4;
  for (const int32_t chain : {0, 1, 2, 3}) {
    fake::clearLog();
    PidAllocator pids(chain);
    EXPECT_THAT(
        logLines(),
        ElementsAre(LogLine{3, "", "[getPIDPollSizePerMPTS] Module type [2] not supported!"},
                    LogLine{4, "", "IN mod slot [4] PID poll [900/899]"}));
    EXPECT_EQ(pids.getConflictFreePID(0x100), 901);
  }
}

// Allocation

TEST_F(PidAllocatorTest, FirstPidAfterResetIsPoolFirstPlusOne) {
  PidAllocator pids = poolFrom500();
  EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
  EXPECT_EQ(pids.getConflictFreePID(0x200), 502);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
}

TEST_F(PidAllocatorTest, AnOutputPidNeverHandedOutHasNoInputPidAndAllocatesNothing) {
  PidAllocator pids = poolFrom500();
  for (const int32_t unknown : {500, 501, 0, -1, 0x1FFF, 65535, 65536}) {
    EXPECT_EQ(pids.getInputPID(unknown), 65535) << unknown;
  }
  EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
  EXPECT_EQ(pids.getInputPID(500), 65535);
  EXPECT_EQ(pids.getInputPID(0x100), 65535);
}

TEST_F(PidAllocatorTest, NoInputPidIsSpecial) {
  PidAllocator pids = poolFrom500();
  uint16_t expected = 501;
  for (const int32_t input :
       {0, 1, 0x10, 0x11, 0x1FFE, 0x1FFF, 0x2000, 0xFFFF, 0x10000, -1,
        std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    EXPECT_EQ(pids.getConflictFreePID(input), expected) << input;
    EXPECT_EQ(pids.getInputPID(expected), input);
    ++expected;
  }
}

TEST_F(PidAllocatorTest, AnOutputPidAsInputIsRemappedLikeAnyOther) {
  PidAllocator pids = poolFrom500();
  EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
  EXPECT_EQ(pids.getConflictFreePID(501), 502);
  EXPECT_EQ(pids.getInputPID(502), 501);
}

TEST_F(PidAllocatorTest, LackOfMemoryLeavesBothDirectionsAndTheNextPidAsTheyWere) {
  size_t allowed = 0;
  bool lacking = true;
  while (lacking) {
    PidAllocator pids = poolFrom500();
    EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
    lacking = lacksMemory(allowed, [&] { (void)pids.getConflictFreePID(0x200); });
    EXPECT_EQ(pids.getInputPID(502), lacking ? kUnknownPid : 0x200) << allowed;
    EXPECT_EQ(pids.getConflictFreePID(0x200), 502) << allowed;
    EXPECT_EQ(pids.getInputPID(502), 0x200) << allowed;
    ++allowed;
  }
  EXPECT_EQ(allowed, 3U);  // a node of either map, then none
}

TEST_F(PidAllocatorTest, APoolBelowZeroGivesTheLow16Bits) {
  platform().moduleSlot = 2;  // -700 to -501
  PidAllocator pids(0);
  fake::clearLog();
  EXPECT_EQ(pids.getConflictFreePID(0x100), 65536 - 699);
  EXPECT_EQ(pids.getInputPID(65536 - 699), 0x100);
  EXPECT_EQ(pids.getInputPID(-699), 65535);
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(PidAllocatorTest, PidsAbove65535WrapToZero) {
  platform().moduleSlot = 84;  // 64900 to 65099
  PidAllocator pids(0);
  for (int32_t input = 0; input < 65535 - 64900; ++input) {
    ASSERT_EQ(pids.getConflictFreePID(input), 64901 + input);
  }
  EXPECT_EQ(pids.getConflictFreePID(5000), 0);
  EXPECT_EQ(pids.getConflictFreePID(5001), 1);
  EXPECT_EQ(pids.getInputPID(0), 5000);
  EXPECT_TRUE(logged(4, "[ModChain0] PID pool exhausted, PID [65100] is beyond [65099]"));
}

// Past the pool's end

/** Allocates `count` PIDs for input PIDs from `firstInput` on; the last of them. */
uint16_t allocate(PidAllocator& pids, int32_t firstInput, int32_t count) {
  uint16_t last = 0;
  for (int32_t input = firstInput; input < firstInput + count; ++input) {
    last = pids.getConflictFreePID(input);
  }
  return last;
}

TEST_F(PidAllocatorTest, CountsOnPastThePoolAndSaysSoOnce) {
  PidAllocator pids(0);
  fake::clearLog();
  EXPECT_EQ(allocate(pids, 0, 199), 299);
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_EQ(pids.getConflictFreePID(1000), 300);
  const LogLine exhausted{4, "", "[ModChain0] PID pool exhausted, PID [300] is beyond [299]"};
  EXPECT_THAT(logLines(), ElementsAre(exhausted));
  EXPECT_EQ(allocate(pids, 2000, 300), 600);
  EXPECT_EQ(pids.getConflictFreePID(1000), 300);
  EXPECT_THAT(logLines(), ElementsAre(exhausted));
}

TEST_F(PidAllocatorTest, SaysThatThePoolIsExhaustedOncePerReset) {
  PidAllocator pids(2);  // 500 to 699
  const std::string exhausted = "[ModChain2] PID pool exhausted, PID [700] is beyond [699]";
  EXPECT_EQ(allocate(pids, 0, 250), 750);
  EXPECT_EQ(fake::timesLogged(4, exhausted), 1);
  pids.resetPIDRemap();
  EXPECT_EQ(allocate(pids, 0, 199), 699);
  EXPECT_EQ(fake::timesLogged(4, exhausted), 1);
  EXPECT_EQ(allocate(pids, 199, 51), 750);
  EXPECT_EQ(fake::timesLogged(4, exhausted), 2);
  pids.followTransportStream(7);
  EXPECT_EQ(allocate(pids, 0, 250), 750);
  EXPECT_EQ(fake::timesLogged(4, exhausted), 3);
}

TEST_F(PidAllocatorTest, AnEmptyPoolIsNotSaidToBeExhausted) {
  platform().moduleType = 1;
  PidAllocator pids(3);
  fake::clearLog();
  EXPECT_EQ(pids.getConflictFreePID(0x100), 101);
  EXPECT_EQ(pids.getConflictFreePID(0x101), 102);
  EXPECT_THAT(logLines(), IsEmpty());
}

// Reset and transport streams

TEST_F(PidAllocatorTest, ResetForgetsBothDirectionsAndRestartsThePool) {
  PidAllocator pids = poolFrom500();
  EXPECT_EQ(allocate(pids, 0x100, 3), 503);
  pids.resetPIDRemap();
  for (const int32_t output : {501, 502, 503}) {
    EXPECT_EQ(pids.getInputPID(output), 65535);
  }
  EXPECT_EQ(pids.getConflictFreePID(0x102), 501);
}

TEST_F(PidAllocatorTest, ResetTakesTheSlotOfTheMomentAndKeepsThePool) {
  PidAllocator pids(0);
  platform().moduleSlot = 4;
  pids.resetPIDRemap();
  EXPECT_EQ(pids.pidPoolFirst(), 100);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 101);
  pids.saveConflictFreeDB();
  EXPECT_EQ(saved().moduleSlot, 4);
}

TEST_F(PidAllocatorTest, ResetLeavesWhatIsUnsavedUnsaved) {
  PidAllocator pids(0);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 101);
  pids.resetPIDRemap();
  pids.saveConflictFreeDB();
  PIDRemap fresh;
  fresh.transportStreamId = 0xFFFF;
  fresh.nextPIDCounter = 99;
  fresh.moduleSlot = 3;
  EXPECT_EQ(saved(), fresh);
}

TEST_F(PidAllocatorTest, ResetDoesNotMakeTheMappingUnsaved) {
  PidAllocator pids(0);
  pids.resetPIDRemap();
  pids.saveConflictFreeDB();
  EXPECT_FALSE(std::filesystem::exists(path("PIDRemap0")));
}

TEST_F(PidAllocatorTest, TheSameTransportStreamKeepsTheMapping) {
  PidAllocator pids = poolFrom500();
  pids.followTransportStream(7);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 501);
  pids.followTransportStream(7);
  EXPECT_EQ(pids.getInputPID(501), 0x100);
  EXPECT_EQ(pids.getConflictFreePID(0x200), 502);
}

TEST_F(PidAllocatorTest, AnotherTransportStreamRestartsTheMapping) {
  PidAllocator pids = poolFrom500();
  pids.followTransportStream(7);
  EXPECT_EQ(allocate(pids, 0x100, 2), 502);
  pids.followTransportStream(8);
  EXPECT_EQ(pids.getInputPID(502), 65535);
  EXPECT_EQ(pids.getConflictFreePID(0x101), 501);
}

TEST_F(PidAllocatorTest, AFreshMappingBelongsToTransportStream65535) {
  PidAllocator pids(0);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 101);
  pids.followTransportStream(0xFFFF);
  EXPECT_EQ(pids.getInputPID(101), 0x100);
}

TEST_F(PidAllocatorTest, TheTransportStreamIdIsComparedWhole) {
  PidAllocator pids(0);
  pids.followTransportStream(7);
  EXPECT_EQ(pids.getConflictFreePID(0x100), 101);
  pids.followTransportStream(7 + 0x10000);
  EXPECT_EQ(pids.getInputPID(101), 65535);
}

}  // namespace
}  // namespace tevra::test
