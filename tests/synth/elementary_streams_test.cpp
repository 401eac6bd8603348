#include "synth/elementary_streams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int32_t kAc3 = 0x6A;
constexpr int32_t kAtscAc3 = 0x81;
constexpr int32_t kEnhancedAc3 = 0x7A;
constexpr int32_t kDts = 0x73;

class ElementaryStreams : public fake::PlatformTest {
 protected:
  static PMTES stream(int32_t type, std::vector<Descriptor> descriptors) {
    return makeStream(type, 0x67, std::move(descriptors));
  }

  bool detected(std::vector<Descriptor> descriptors) {
    bool isAudio = false;
    detectPrivateAudio(stream(6, std::move(descriptors)), isAudio);
    return isAudio;
  }

  bool kept(int32_t type, std::vector<Descriptor> descriptors,
            std::initializer_list<std::string> wanted) {
    return keepElementaryStream(stream(type, std::move(descriptors)),
                                WantedLanguages(makeLanguages(wanted)));
  }

  /** Whether MPEG-2 audio with these language entries has exactly this language. */
  bool audioIs(std::initializer_list<std::string> codes, const std::string& language) {
    return kept(4, {makeLanguageDescriptor(codes)}, {language});
  }
};

Descriptor codec(int32_t tag) {
  return makeDescriptor(tag, std::string(1, '\0'));
}

TEST_F(ElementaryStreams, EveryCodecDescriptorMakesAPrivateStreamAudio) {
  EXPECT_TRUE(detected({codec(kAc3)}));
  EXPECT_TRUE(detected({codec(kEnhancedAc3)}));
  EXPECT_TRUE(detected({codec(kDts)}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "[0x6a] Audio found A52"},
                                            LogLine{7, "", "[0x7a] Audio found EAC3"},
                                            LogLine{7, "", "[0x73] Audio found DTS"}));
}

TEST_F(ElementaryStreams, AtscAc3IsReportedUnderTheOtherTag) {
  EXPECT_TRUE(detected({codec(kAtscAc3)}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "[0x6a] Audio found A52"}));
}

TEST_F(ElementaryStreams, CodecsHaveAnOrderOfPriorityNotOfAppearance) {
  EXPECT_TRUE(detected({codec(kDts), codec(kEnhancedAc3), codec(kAtscAc3), codec(kAc3)}));
  EXPECT_TRUE(detected({codec(kDts), codec(kEnhancedAc3), codec(kAtscAc3)}));
  EXPECT_TRUE(detected({codec(kDts), codec(kEnhancedAc3)}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "[0x6a] Audio found A52"},
                                            LogLine{7, "", "[0x6a] Audio found A52"},
                                            LogLine{7, "", "[0x7a] Audio found EAC3"}));
}

TEST_F(ElementaryStreams, ACodecTwiceIsReportedOnce) {
  EXPECT_TRUE(detected({codec(kAc3), codec(kAc3)}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "[0x6a] Audio found A52"}));
}

TEST_F(ElementaryStreams, WithoutACodecTheFlagStaysAsItIs) {
  EXPECT_FALSE(detected({}));
  EXPECT_FALSE(detected({makeDescriptor(0x59, "subtitles"), makeDescriptor(0x56, "teletext")}));
  bool isAudio = true;
  detectPrivateAudio(stream(6, {}), isAudio);
  EXPECT_TRUE(isAudio);
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ElementaryStreams, MpegAudioIsAudioWithoutFurtherTest) {
  EXPECT_FALSE(kept(3, {}, {}));
  EXPECT_FALSE(kept(4, {}, {}));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ElementaryStreams, OtherTypesAreNeverAudioWhateverTheyCarry) {
  for (const int type : {1, 2, 5, 0x0F, 0x11, 0x1B, 0x24, 0x81, 0xFF}) {
    EXPECT_TRUE(kept(type, {codec(kAc3), makeLanguageDescriptor({"spa"})}, {})) << type;
  }
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ElementaryStreams, APrivateStreamIsAudioOnlyWithACodec) {
  EXPECT_TRUE(kept(6, {makeDescriptor(0x59, "subtitles")}, {}));
  EXPECT_TRUE(kept(6, {makeDescriptor(0x56, "teletext")}, {}));
  EXPECT_TRUE(kept(6, {}, {}));
  EXPECT_FALSE(kept(6, {codec(kEnhancedAc3)}, {}));
  EXPECT_FALSE(kept(6, {codec(kEnhancedAc3), makeLanguageDescriptor({"spa"})}, {"eng"}));
  EXPECT_TRUE(kept(6, {codec(kEnhancedAc3), makeLanguageDescriptor({"spa"})}, {"spa"}));
}

TEST_F(ElementaryStreams, AudioWithoutLanguageIsCalledNdl) {
  EXPECT_FALSE(kept(4, {}, {"spa", "eng"}));
  EXPECT_TRUE(kept(4, {}, {"spa", "ndl"}));
  EXPECT_TRUE(kept(4, {makeDescriptor(0x52, "\x01")}, {"ndl"}));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(ElementaryStreams, AudioIsKeptWhenAnyWantedLanguageMatches) {
  EXPECT_TRUE(kept(4, {makeLanguageDescriptor({"spa"})}, {"eng", "fra", "spa"}));
  EXPECT_TRUE(kept(3, {makeLanguageDescriptor({"spa"})}, {"spa", "spa"}));
  EXPECT_FALSE(kept(4, {makeLanguageDescriptor({"spa"})}, {"eng", "fra"}));
}

TEST_F(ElementaryStreams, LanguagesAreComparedWholeAndInTheirCase) {
  EXPECT_FALSE(audioIs({"spa"}, "SPA"));
  EXPECT_FALSE(audioIs({"spa"}, "sp"));
  EXPECT_FALSE(audioIs({"spa"}, "spa "));
  EXPECT_FALSE(audioIs({"spa"}, ""));
}

TEST_F(ElementaryStreams, OfOneDescriptorOnlyTheFirstEntryCounts) {
  EXPECT_TRUE(audioIs({"spa", "eng"}, "spa"));
  EXPECT_FALSE(audioIs({"spa", "eng"}, "eng"));
}

TEST_F(ElementaryStreams, OfTwoDescriptorsTheLastCounts) {
  const std::vector<Descriptor> both = {makeLanguageDescriptor({"spa"}), codec(kAc3),
                                        makeLanguageDescriptor({"eng"})};
  EXPECT_TRUE(kept(4, both, {"eng"}));
  EXPECT_FALSE(kept(4, both, {"spa"}));
}

TEST_F(ElementaryStreams, ALanguageThatCannotBeDecodedIsNdlAndLogged) {
  for (const std::string& payload :
       {std::string(), std::string("sp"), std::string("spa"), std::string("spa\0e", 5)}) {
    fake::clearLog();
    EXPECT_TRUE(kept(4, {makeDescriptor(0x0A, payload)}, {"ndl"})) << payload;
    EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "Can't decode language code"}));
  }
}

TEST_F(ElementaryStreams, ABrokenLastDescriptorOverwritesAGoodLanguage) {
  EXPECT_TRUE(kept(4, {makeLanguageDescriptor({"spa"}), makeDescriptor(0x0A, "x")}, {"ndl"}));
  EXPECT_TRUE(kept(4, {makeDescriptor(0x0A, "x"), makeLanguageDescriptor({"spa"})}, {"spa"}));
}

TEST_F(ElementaryStreams, TheLanguageIsWorkedOutForOtherStreamsTooAndItsTroubleLogged) {
  EXPECT_TRUE(kept(0x1B, {makeDescriptor(0x0A, "")}, {}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "Can't decode language code"}));
}

TEST_F(ElementaryStreams, TheCodecIsReportedBeforeTheLanguage) {
  EXPECT_FALSE(kept(6, {makeDescriptor(0x0A, ""), codec(kDts)}, {"spa"}));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "", "[0x73] Audio found DTS"},
                                            LogLine{7, "", "Can't decode language code"}));
}

/** The platform's conversion to English codes, under the test's control. */
class EnglishCodes : public ElementaryStreams {
 protected:
  void answer(bool result, const std::string& english) {
    fake::platform().englishAudioCode = [=](const std::string& code, std::string& out,
                                            std::string& other) {
      asked_.push_back(code);
      out = english;
      other = "oth";
      return result;
    };
  }

  std::vector<std::string> asked_;
};

TEST_F(EnglishCodes, TheEnglishCodeIsWhatIsCompared) {
  answer(true, "ger");
  EXPECT_TRUE(audioIs({"deu"}, "ger"));
  EXPECT_FALSE(audioIs({"deu"}, "deu"));
  EXPECT_FALSE(audioIs({"deu"}, "oth"));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(EnglishCodes, ThePlatformIsAskedForTheThreeBytesOfEveryFirstEntry) {
  answer(true, "ger");
  (void)kept(4, {makeLanguageDescriptor({"deu", "fra"}), makeLanguageDescriptor({"SPA"})}, {});
  EXPECT_THAT(asked_, ElementsAre("deu", "SPA"));
}

TEST_F(EnglishCodes, AFailureKeepsTheThreeBytesAndIsAnError) {
  answer(false, "xxx");
  EXPECT_TRUE(audioIs({"deu"}, "deu"));
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{3, "", "Can't get the English audio code"}));
  EXPECT_FALSE(audioIs({"deu"}, "xxx"));
}

TEST_F(EnglishCodes, AShorterCodeIsTakenAsItIs) {
  answer(true, "de");
  EXPECT_TRUE(audioIs({"deu"}, "de"));
  EXPECT_FALSE(audioIs({"deu"}, "deu"));
  EXPECT_FALSE(audioIs({"deu"}, "deu\0"));
}

TEST_F(EnglishCodes, AnEmptyCodeIsALanguageLikeAnyOther) {
  answer(true, "");
  EXPECT_TRUE(audioIs({"deu"}, ""));
  EXPECT_FALSE(audioIs({"deu"}, "deu"));
  EXPECT_FALSE(audioIs({"deu"}, "ndl"));
}

TEST_F(EnglishCodes, AFourLetterCodeIsTakenWhole) {
  answer(true, "germ");
  EXPECT_TRUE(audioIs({"deu"}, "germ"));
  EXPECT_FALSE(audioIs({"deu"}, "ger"));
}

TEST_F(EnglishCodes, OfALongerCodeFourLettersAreTaken) {
  answer(true, "0123456789");
  EXPECT_TRUE(audioIs({"deu"}, "0123"));
  EXPECT_FALSE(audioIs({"deu"}, "0123456789"));
  EXPECT_FALSE(audioIs({"deu"}, "012"));
}

TEST_F(EnglishCodes, ACodeEndsAtItsFirstZeroByte) {
  answer(true, std::string("d\0eu", 4));
  EXPECT_TRUE(audioIs({"deu"}, "d"));
  answer(false, "");
  EXPECT_TRUE(audioIs({std::string("e\0g", 3)}, "e"));
}

TEST_F(EnglishCodes, TheDefaultLanguageIsNotConverted) {
  answer(true, "ger");
  EXPECT_TRUE(kept(4, {}, {"ndl"}));
  EXPECT_TRUE(kept(4, {makeDescriptor(0x0A, "")}, {"ndl"}));
  EXPECT_THAT(asked_, IsEmpty());
}

}  // namespace
}  // namespace tevra::test
