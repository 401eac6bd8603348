#include "cfdb/ca_descriptors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "records/dvbpsi.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/tables.h"

namespace {

bool encoderLacksMemory = false;

}  // namespace

// The linker sends every call of the encoder here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

dvbpsi_descriptor_t* __real_dvbpsi_GenCADr(dvbpsi_ca_dr_t* decoded, bool duplicate);

dvbpsi_descriptor_t* __wrap_dvbpsi_GenCADr(dvbpsi_ca_dr_t* decoded, bool duplicate) {
  return encoderLacksMemory ? nullptr : __real_dvbpsi_GenCADr(decoded, duplicate);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using fake::platform;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

const LogLine kCorrupted{3, "", "[cfDescriptors] corrupted ca descriptor."};

/** Every byte value, over and over. */
std::string bytes(size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) {
    result.push_back(static_cast<char>(i & 0xFF));
  }
  return result;
}

class CaDescriptorsTest : public fake::PlatformTest {
 protected:
  CaDescriptorsTest() { fake::clearLog(); }

  std::vector<Descriptor> remap(const std::vector<Descriptor>& descriptors) {
    return cfDescriptors(descriptors, pids_);
  }

  /** True when no PID has been handed out yet. */
  bool nothingAllocated() { return pids_.getConflictFreePID(-1) == 101; }

  PidAllocator pids_{0};  ///< 100 to 299
};

TEST_F(CaDescriptorsTest, AnEmptyLoopStaysEmpty) {
  EXPECT_THAT(remap({}), IsEmpty());
  EXPECT_THAT(withoutCaDescriptors({}), IsEmpty());
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(CaDescriptorsTest, DescriptorsOfOtherTagsAreCopied) {
  const std::vector<Descriptor> others = {
      makeDescriptor(0, bytes(4)),
      makeDescriptor(8, bytes(300)),
      makeDescriptor(10, ""),
      makeDescriptor(0xFF, bytes(1)),
      makeDescriptor(0x109, bytes(8)),
      makeDescriptor(-9, bytes(8)),
      makeDescriptor(0x10009, bytes(5)),
  };
  EXPECT_EQ(remap(others), others);
  EXPECT_EQ(withoutCaDescriptors(others), others);
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_TRUE(nothingAllocated());
}

TEST_F(CaDescriptorsTest, TheInputStaysAsItIs) {
  const std::vector<Descriptor> input = {makeCaDescriptor(0x0B00, 0x100, "key")};
  const std::vector<Descriptor> before = input;
  (void)remap(input);
  EXPECT_EQ(input, before);
}

TEST_F(CaDescriptorsTest, SystemIdAndPrivateDataAreKept) {
  for (const uint16_t systemId : std::vector<uint16_t>{0, 0x0B00, 0x1801, 0xFFFF}) {
    for (const size_t length : std::vector<size_t>{0, 1, 2, 100, 250, 251}) {
      EXPECT_THAT(remap({makeCaDescriptor(systemId, 0x100, bytes(length))}),
                  ElementsAre(makeCaDescriptor(systemId, 101, bytes(length))))
          << systemId << ", " << length;
    }
  }
}

TEST_F(CaDescriptorsTest, ReservedBitsOfTheInputAreIgnoredAndThoseOfTheOutputSet) {
  EXPECT_THAT(remap({makeDescriptor(9, std::string("\x0B\x00\x01\x23", 4)),
                     makeDescriptor(9, std::string("\x0B\x00\xE1\x23", 4)),
                     makeDescriptor(9, std::string("\x0B\x00\x81\x23", 4))}),
              Each(makeCaDescriptor(0x0B00, 101)));
  EXPECT_EQ(pids_.getInputPID(101), 0x123);
}

TEST_F(CaDescriptorsTest, NoCaPidIsSpecial) {
  EXPECT_THAT(remap({makeCaDescriptor(1, 0), makeCaDescriptor(1, 0x1FFF)}),
              ElementsAre(makeCaDescriptor(1, 101), makeCaDescriptor(1, 102)));
  EXPECT_EQ(pids_.getInputPID(101), 0);
  EXPECT_EQ(pids_.getInputPID(102), 0x1FFF);
}

TEST_F(CaDescriptorsTest, ASharedPidGetsOneOutputPid) {
  EXPECT_THAT(remap({makeCaDescriptor(1, 0x100), makeCaDescriptor(2, 0x100, "x")}),
              ElementsAre(makeCaDescriptor(1, 101), makeCaDescriptor(2, 101, "x")));
  EXPECT_THAT(remap({makeCaDescriptor(3, 0x100)}), ElementsAre(makeCaDescriptor(3, 101)));
}

TEST_F(CaDescriptorsTest, OrderIsKept) {
  EXPECT_THAT(
      remap({makeDescriptor(0x52, "a"), makeCaDescriptor(1, 0x200), makeDescriptor(0x0A, "eng"),
             makeCaDescriptor(2, 0x100), makeDescriptor(0x52, "b")}),
      ElementsAre(makeDescriptor(0x52, "a"), makeCaDescriptor(1, 101), makeDescriptor(0x0A, "eng"),
                  makeCaDescriptor(2, 102), makeDescriptor(0x52, "b")));
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [00512/0200] oDesc PID [00101/0065]"},
                          LogLine{7, "", "iDesc PID [00256/0100] oDesc PID [00102/0066]"}));
}

TEST_F(CaDescriptorsTest, ManyDescriptorsAreAllRemapped) {
  std::vector<Descriptor> input;
  std::vector<Descriptor> expected;
  for (uint16_t i = 0; i < 2000; ++i) {
    input.push_back(makeCaDescriptor(i, static_cast<uint16_t>(0x1FFF - i)));
    expected.push_back(makeCaDescriptor(i, static_cast<uint16_t>(101 + i)));
  }
  EXPECT_EQ(remap(input), expected);
}

TEST_F(CaDescriptorsTest, LackOfMemoryIsRaised) {
  encoderLacksMemory = true;
  EXPECT_THROW((void)remap({makeCaDescriptor(1, 0x100)}), std::bad_alloc);
  encoderLacksMemory = false;
  EXPECT_THAT(remap({makeCaDescriptor(1, 0x100)}), ElementsAre(makeCaDescriptor(1, 101)));
}

TEST_F(CaDescriptorsTest, DroppingLeavesOutCaDescriptorsSilently) {
  EXPECT_THAT(withoutCaDescriptors({makeCaDescriptor(1, 0x100), makeDescriptor(0x52, "a"),
                                    makeDescriptor(9, ""), makeCaDescriptor(2, 0x200, "x"),
                                    makeDescriptor(0x0A, "eng")}),
              ElementsAre(makeDescriptor(0x52, "a"), makeDescriptor(0x0A, "eng")));
  EXPECT_THAT(logLines(), IsEmpty());
}

// Lengths. The length of a descriptor has 8 bits (ISO/IEC 13818-1, 2.6.1).

class UndecodableLength : public CaDescriptorsTest, public testing::WithParamInterface<size_t> {};

TEST_P(UndecodableLength, LeavesAnEmptyCaDescriptorAndLogsAnError) {
  EXPECT_THAT(remap({makeDescriptor(9, bytes(GetParam()))}), ElementsAre(makeDescriptor(9, "")));
  EXPECT_THAT(logLines(), ElementsAre(kCorrupted));
  EXPECT_TRUE(nothingAllocated());
}

INSTANTIATE_TEST_SUITE_P(CaDescriptors, UndecodableLength,
                         testing::Values(0, 1, 2, 3, 256, 257, 258, 259, 512, 65536, 65539),
                         testing::PrintToStringParamName());

struct Lengths {
  size_t input;
  size_t output;
};

class DecodableLength : public CaDescriptorsTest, public testing::WithParamInterface<Lengths> {};

TEST_P(DecodableLength, CountsInItsLow8Bits) {
  const std::string input = bytes(GetParam().input);
  // The bytes 02 03 hold PID 0x203; its output PID is 101, below the reserved bits E0.
  std::string expected = bytes(GetParam().output);
  expected[2] = static_cast<char>(0xE0);
  expected[3] = 101;
  EXPECT_THAT(remap({makeDescriptor(9, input)}), ElementsAre(makeDescriptor(9, expected)));
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [00515/0203] oDesc PID [00101/0065]"}));
}

INSTANTIATE_TEST_SUITE_P(CaDescriptors, DecodableLength,
                         testing::Values(Lengths{4, 4}, Lengths{5, 5}, Lengths{254, 254},
                                         Lengths{255, 255}, Lengths{260, 4}, Lengths{300, 44},
                                         Lengths{511, 255}, Lengths{65540, 4}),
                         [](const auto& tested) { return std::to_string(tested.param.input); });

TEST_F(CaDescriptorsTest, ACorruptedDescriptorDoesNotStopTheOthers) {
  EXPECT_THAT(remap({makeDescriptor(9, "abc"), makeCaDescriptor(1, 0x100), makeDescriptor(9, ""),
                     makeDescriptor(0x52, "a")}),
              ElementsAre(makeDescriptor(9, ""), makeCaDescriptor(1, 101), makeDescriptor(9, ""),
                          makeDescriptor(0x52, "a")));
  EXPECT_THAT(
      logLines(),
      ElementsAre(kCorrupted, LogLine{7, "", "iDesc PID [00256/0100] oDesc PID [00101/0065]"},
                  kCorrupted));
}

// Output PIDs that do not fit the 13 bits of a CA_PID

TEST_F(CaDescriptorsTest, AnOutputPidAbove13BitsIsCutInThePayloadAlone) {
  platform().moduleSlot = 14;  // 8900 to 9099
  PidAllocator pids(0);
  fake::clearLog();
  EXPECT_THAT(cfDescriptors({makeCaDescriptor(1, 0x100, "x")}, pids),
              ElementsAre(makeCaDescriptor(1, 8901 - 8192, "x")));
  EXPECT_EQ(pids.getInputPID(8901), 0x100);
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [00256/0100] oDesc PID [08901/22c5]"}));
}

TEST_F(CaDescriptorsTest, AnOutputPidBelowZeroIsCutToo) {
  platform().moduleSlot = 2;  // -700 to -501
  PidAllocator pids(0);
  fake::clearLog();
  EXPECT_THAT(cfDescriptors({makeCaDescriptor(1, 0x100)}, pids),
              ElementsAre(makeCaDescriptor(1, (65536 - 699) & 0x1FFF)));
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [00256/0100] oDesc PID [64837/fd45]"}));
}

}  // namespace
}  // namespace tevra::test
