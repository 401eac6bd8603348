#include "synth/pid_items.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/pid_list_matchers.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class PidItems : public fake::PlatformTest {
 protected:
  PidList list_;
};

TEST_F(PidItems, AttributesHaveTheirBits) {
  EXPECT_EQ(static_cast<int>(PidAttribute::Pmt), 0x02);
  EXPECT_EQ(static_cast<int>(PidAttribute::Pcr), 0x04);
  EXPECT_EQ(static_cast<int>(PidAttribute::Es), 0x08);
  EXPECT_EQ(static_cast<int>(PidAttribute::Ecm), 0x10);
  EXPECT_EQ(static_cast<int>(PidAttribute::Emm), 0x20);
}

TEST_F(PidItems, ANewPidIsAppendedWithBothPidsEqualAndNoFlagSet) {
  EXPECT_TRUE(addPidItem(list_, 300, PidAttribute::Pmt));
  EXPECT_TRUE(addPidItem(list_, 200, PidAttribute::Es));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(300, 300, 0x02), pidItem(200, 200, 0x08)));
  EXPECT_FALSE(list_.items()[0].__isset.inputPid);
  EXPECT_FALSE(list_.items()[0].__isset.outputPid);
  EXPECT_FALSE(list_.items()[0].__isset.attributes);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(PidItems, AKnownPidGetsTheAttributeAndALine) {
  addPidItem(list_, 0x66, PidAttribute::Pcr);
  EXPECT_TRUE(addPidItem(list_, 0x66, PidAttribute::Es));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x66, 0x66, 0x0C)));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{
                  7, "", "Encuentro uno previamente insertado!!! PID [0x0066] ATTR [0x000c]"}));
}

TEST_F(PidItems, TheSameAttributeTwiceIsOneBitAndALineAllTheSame) {
  addPidItem(list_, 0x1FFF, PidAttribute::Ecm);
  addPidItem(list_, 0x1FFF, PidAttribute::Ecm);
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1FFF, 0x1FFF, 0x10)));
  EXPECT_TRUE(fake::logged(7, "Encuentro uno previamente insertado!!! PID [0x1fff] ATTR [0x0010]"));
}

TEST_F(PidItems, TheSearchLooksAtInputPids) {
  addPidItem(list_, 300, PidAttribute::Pmt);
  list_.find(300)->inputPid = 17;
  addPidItem(list_, 300, PidAttribute::Es);
  addPidItem(list_, 17, PidAttribute::Ecm);
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(17, 300, 0x12), pidItem(300, 300, 0x08)));
}

/** Few items are looked through, many are indexed: the border must not show. */
TEST_F(PidItems, APidOccursOnceHoweverManyThereAre) {
  constexpr int32_t kPids = 200;
  for (int32_t pid = 0; pid < kPids; ++pid) {
    addPidItem(list_, pid, PidAttribute::Es);
    addPidItem(list_, pid / 2, PidAttribute::Ecm);
    addPidItem(list_, pid, PidAttribute::Pcr);
  }
  ASSERT_EQ(list_.items().size(), static_cast<size_t>(kPids));
  for (int32_t pid = 0; pid < kPids; ++pid) {
    EXPECT_THAT(list_.items()[static_cast<size_t>(pid)],
                pidItem(pid, pid, pid < kPids / 2 ? 0x1C : 0x0C));
  }
}

TEST_F(PidItems, WhatIsTakenLeavesAnEmptyList) {
  for (int32_t pid = 0; pid < 100; ++pid) {
    addPidItem(list_, pid, PidAttribute::Es);
  }
  EXPECT_EQ(list_.take().size(), 100U);
  EXPECT_THAT(list_.items(), IsEmpty());
  EXPECT_EQ(list_.find(99), nullptr);
  addPidItem(list_, 99, PidAttribute::Ecm);
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(99, 99, 0x10)));
}

TEST_F(PidItems, AllPidsThereAreAreFoundAgainWithoutDelay) {
  for (int32_t round = 0; round < 8; ++round) {
    for (int32_t pid = 0; pid <= 0xFFFF; ++pid) {
      addPidItem(list_, pid, PidAttribute::Es);
    }
  }
  EXPECT_EQ(list_.items().size(), 0x10000U);
}

TEST_F(PidItems, EmmPidsComeInTheOrderOfTheCat) {
  const CAT cat = makeCat({makeCaDescriptor(0x0100, 0x1F2), makeDescriptor(0x42, "private"),
                           makeCaDescriptor(0x0500, 0x0A1, "more")});
  EXPECT_TRUE(collectEmmPids(list_, cat));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1F2, 0x1F2, 0x20), pidItem(0x0A1, 0x0A1, 0x20)));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "EMM PID found [0x01f2]."},
                                            LogLine{7, "", "EMM PID found [0x00a1]."}));
}

TEST_F(PidItems, ThreeCaDescriptorsOfOnePidGiveOneItem) {
  EXPECT_TRUE(collectEmmPids(
      list_, makeCat({makeCaDescriptor(0x0100, 0x1F2), makeCaDescriptor(0x0500, 0x1F2),
                      makeCaDescriptor(0x0B00, 0x1F2)})));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1F2, 0x1F2, 0x20)));
  const LogLine found{7, "", "EMM PID found [0x01f2]."};
  const LogLine known{7, "", "Encuentro uno previamente insertado!!! PID [0x01f2] ATTR [0x0020]"};
  EXPECT_THAT(fake::logLines(), ElementsAre(found, found, known, found, known));
}

TEST_F(PidItems, AnEmmPidThatIsCarriedAlreadyGetsTheAttribute) {
  addPidItem(list_, 0x1F2, PidAttribute::Ecm);
  collectEmmPids(list_, makeCat({makeCaDescriptor(0x0100, 0x1F2)}));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1F2, 0x1F2, 0x30)));
}

TEST_F(PidItems, ACatWithoutCaDescriptorsAddsNothing) {
  EXPECT_TRUE(collectEmmPids(list_, CAT()));
  EXPECT_TRUE(collectEmmPids(list_, makeCat({makeDescriptor(0x0A, "spa")})));
  EXPECT_THAT(list_.items(), IsEmpty());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(PidItems, ACaDescriptorThatCannotBeDecodedAddsNothing) {
  const CAT cat = makeCat({makeDescriptor(0x09, ""), makeDescriptor(0x09, "\x01\x02\x03"),
                           makeCaDescriptor(0x0100, 0x1F2)});
  EXPECT_TRUE(collectEmmPids(list_, cat));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1F2, 0x1F2, 0x20)));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "EMM PID found [0x01f2]."}));
}

TEST_F(PidItems, ReservedBitsOfACaDescriptorAreNoPartOfThePid) {
  const std::string clear("\x01\x00\x01\xF2", 4);
  const std::string set("\x01\x00\xE1\xF2", 4);
  collectEmmPids(list_, makeCat({makeDescriptor(0x09, clear), makeDescriptor(0x09, set)}));
  EXPECT_THAT(list_.items(), ElementsAre(pidItem(0x1F2, 0x1F2, 0x20)));
}

}  // namespace
}  // namespace tevra::test
