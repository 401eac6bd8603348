#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/elementary_streams.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/pid_list_matchers.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

const Descriptor kSpanish = makeLanguageDescriptor({"spa"});
const Descriptor kEnglish = makeLanguageDescriptor({"eng"});

class FilterPmt : public fake::PlatformTest {
 protected:
  bool filter(const PMT& in, bool filterAudio = false,
              std::initializer_list<std::string> wanted = {}) {
    return filterPmt(out_, pids_, pat_, in, filterAudio, makeLanguages(wanted));
  }

  PAT pat_ = makePat(1001, {{kInputProgram, kPmtPid}});
  PMT out_;
  PidList pids_;
};

/** Video with the PCR, Spanish and English audio, subtitles. */
PMT television() {
  PMT pmt = makePmt(kInputProgram, 0x70,
                    {makeStream(0x1B, 0x70), makeStream(4, 0x71, {kSpanish}),
                     makeStream(6, 0x72, {makeDescriptor(0x6A, "x"), kEnglish}),
                     makeStream(6, 0x73, {makeDescriptor(0x59, "subtitles")})});
  pmt.version = 19;
  pmt.currentNext = true;
  pmt.descriptors = {makeDescriptor(0x0E, "abc"), makeDescriptor(0xA1, "")};
  return pmt;
}

std::vector<int32_t> streamPids(const PMT& pmt) {
  std::vector<int32_t> pids;
  for (const PMTES& stream : pmt.esList) {
    pids.push_back(stream.pid);
  }
  return pids;
}

TEST_F(FilterPmt, WithoutFilterThePmtComesBackWhole) {
  EXPECT_TRUE(filter(television()));
  EXPECT_EQ(out_, television());
}

TEST_F(FilterPmt, ThePidOfThePmtIsThatOfTheNumberAsItStands) {
  pat_ = makePat(1001, {{0x10001, 0x22}, {1, 0x11}});
  filter(makePmt(0x10001, 0x70));
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(0x22, 0x22, 0x02), pidItem(0x70, 0x70, 0x04)));
}

TEST_F(FilterPmt, FindsALanguageAmongAnyNumber) {
  for (const size_t count : {1U, 16U, 17U, 1000U}) {
    for (const size_t place : {size_t{0}, count / 2, count - 1}) {
      std::vector<AudioLanguage> wanted(count);
      for (size_t i = 0; i < count; ++i) {
        wanted[i].language = "x" + std::to_string(i);
      }
      filterPmt(out_, pids_, pat_, television(), true, wanted);
      EXPECT_THAT(streamPids(out_), ElementsAre(0x70, 0x73)) << count;
      wanted[place].language = "eng";
      filterPmt(out_, pids_, pat_, television(), true, wanted);
      EXPECT_THAT(streamPids(out_), ElementsAre(0x70, 0x72, 0x73)) << count << ", " << place;
    }
  }
}

TEST_F(FilterPmt, WithoutFilterNoLanguageMattersYetAllAreWorkedOut) {
  fake::platform().englishAudioCode = [](auto&...) { return false; };
  EXPECT_TRUE(filter(television(), false, {"fra"}));
  EXPECT_EQ(out_, television());
  const LogLine noCode{3, "", "Can't get the English audio code"};
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "",
                                  "Encuentro uno previamente insertado!!! PID [0x0070] ATTR "
                                  "[0x000c]"},
                          noCode, LogLine{7, "", "[0x6a] Audio found A52"}, noCode));
}

TEST_F(FilterPmt, WithFilterOnlyWantedAudioStays) {
  EXPECT_TRUE(filter(television(), true, {"eng"}));
  PMT expected = television();
  expected.esList.erase(expected.esList.begin() + 1);
  EXPECT_EQ(out_, expected);
}

TEST_F(FilterPmt, EveryNeededPidIsListedInOrderOfFirstUse) {
  EXPECT_TRUE(filter(television(), true, {"spa"}));
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x70, 0x0C),
                                         pidItem(0x71, 0x08), pidItem(0x73, 0x08)));
}

TEST_F(FilterPmt, APcrPidOfItsOwnIsListedAloneAndWithoutALine) {
  filter(makePmt(kInputProgram, 0x80, {makeStream(0x1B, 0x70)}));
  EXPECT_THAT(pids_.items(),
              ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x80, 0x04), pidItem(0x70, 0x08)));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(FilterPmt, ThePcrOnADroppedStreamIsStillListed) {
  filter(makePmt(kInputProgram, 0x71, {makeStream(4, 0x71, {kSpanish})}), true, {});
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x71, 0x04)));
}

TEST_F(FilterPmt, TheFirstMatchingProgrammeOfThePatGivesThePmtPid) {
  pat_ = makePat(1001, {{1, 0x11}, {kInputProgram, 0x22}, {kInputProgram, 0x33}});
  filter(television());
  EXPECT_THAT(pids_.items().at(0), pidItem(0x22, 0x02));
}

TEST_F(FilterPmt, WithoutTheProgrammeInThePatTheDefaultPidIsListedSilently) {
  const PMT pmt = makePmt(kInputProgram, 0x70);
  for (const PAT& pat : {PAT(), makePat(1001, {{1, 0x11}})}) {
    pids_ = {};
    pat_ = pat;
    EXPECT_TRUE(filter(pmt));
    EXPECT_THAT(pids_.items(), ElementsAre(pidItem(0x666, 0x02), pidItem(0x70, 0x04)));
  }
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(FilterPmt, EcmPidsComeFromTheProgrammeAndFromKeptStreams) {
  PMT pmt = makePmt(kInputProgram, 0x70,
                    {makeStream(0x1B, 0x70, {makeCaDescriptor(0x0100, 0x91)}),
                     makeStream(4, 0x71, {kSpanish, makeCaDescriptor(0x0100, 0x92, "private")})});
  pmt.descriptors = {makeCaDescriptor(0x0500, 0x90), makeDescriptor(0x0E, "abc")};
  filter(pmt, true, {"spa"});
  EXPECT_EQ(out_, pmt);
  EXPECT_THAT(pids_.items(),
              ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x70, 0x0C), pidItem(0x90, 0x10),
                          pidItem(0x91, 0x10), pidItem(0x71, 0x08), pidItem(0x92, 0x10)));
}

TEST_F(FilterPmt, TheEcmPidOfADroppedStreamIsNotListed) {
  filter(makePmt(kInputProgram, 0x70,
                 {makeStream(0x1B, 0x70), makeStream(4, 0x71, {makeCaDescriptor(0x0100, 0x92)})}),
         true, {"spa"});
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x70, 0x0C)));
}

TEST_F(FilterPmt, AnEcmPidSharedByAllStreamsIsListedOnce) {
  const Descriptor ca = makeCaDescriptor(0x0100, 0x90);
  PMT pmt = makePmt(kInputProgram, 0x80, {makeStream(0x1B, 0x70, {ca}), makeStream(4, 0x71, {ca})});
  pmt.descriptors = {ca};
  filter(pmt);
  EXPECT_THAT(pids_.items(),
              ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x80, 0x04), pidItem(0x90, 0x10),
                          pidItem(0x70, 0x08), pidItem(0x71, 0x08)));
  EXPECT_EQ(
      fake::timesLogged(7, "Encuentro uno previamente insertado!!! PID [0x0090] ATTR [0x0010]"), 2);
}

TEST_F(FilterPmt, ACaDescriptorThatCannotBeDecodedIsCopiedAndAddsNoPid) {
  PMT pmt = makePmt(kInputProgram, 0x80, {makeStream(0x1B, 0x70, {makeDescriptor(0x09, "abc")})});
  pmt.descriptors = {makeDescriptor(0x09, "")};
  EXPECT_TRUE(filter(pmt));
  EXPECT_EQ(out_, pmt);
  EXPECT_THAT(pids_.items(),
              ElementsAre(pidItem(kPmtPid, 0x02), pidItem(0x80, 0x04), pidItem(0x70, 0x08)));
}

TEST_F(FilterPmt, PidsAreAddedToWhatTheListHolds) {
  addPidItem(pids_, 0x70, PidAttribute::Emm);
  filter(makePmt(kInputProgram, 0x70));
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(0x70, 0x24), pidItem(kPmtPid, 0x02)));
}

TEST_F(FilterPmt, WhatTheOutputHeldBeforeIsGone) {
  out_ = television();
  EXPECT_TRUE(filter(PMT()));
  EXPECT_EQ(out_, PMT());
  EXPECT_THAT(pids_.items(), ElementsAre(pidItem(0x666, 0x02), pidItem(0, 0x04)));
}

TEST_F(FilterPmt, ADescriptorTooLongForItsLengthByteIsLeftOut) {
  PMT pmt = makePmt(kInputProgram, 0x80, {makeStream(0x1B, 0x70, {kSpanish})});
  pmt.descriptors = {makeDescriptor(0xA0, std::string(255, 'x'))};
  PMT tooLong = pmt;
  tooLong.esList[0].descriptors.push_back(makeDescriptor(0xA1, std::string(256, 'x')));
  EXPECT_TRUE(filter(tooLong));
  EXPECT_EQ(out_, pmt);
  EXPECT_THAT(fake::logLines(4),
              ElementsAre(LogLine{4, "", "Descriptor [0xa1] of [256] bytes left out"}));
}

TEST_F(FilterPmt, ThousandsOfStreamsAreFilteredInTheirOrder) {
  PMT pmt = makePmt(kInputProgram, 0x1FFF);
  for (int32_t pid = 0; pid < 0x1FF0; ++pid) {
    pmt.esList.push_back(makeStream(0x1B, pid));
  }
  EXPECT_TRUE(filter(pmt));
  EXPECT_EQ(out_, pmt);
  EXPECT_EQ(pids_.items().size(), 0x1FF1U);  // the PMT's PID is one of them
}

}  // namespace
}  // namespace tevra::test
