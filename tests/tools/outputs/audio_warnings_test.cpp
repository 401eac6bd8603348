#include "tools/outputs/audio_warnings.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using test::languageDescriptor;
using test::pmtRecord;
using test::streamRecord;
using testing::ElementsAre;
using testing::IsEmpty;

using Languages = std::vector<std::string>;

/** Video, Italian and English audio, and English AAC. */
PMT samplePmt() {
  return pmtRecord({streamRecord(0x1B, 512, {languageDescriptor("spa")}),
                    streamRecord(0x04, 513, {languageDescriptor("ita")}),
                    streamRecord(0x04, 514, {languageDescriptor("ENG")}),
                    streamRecord(0x0F, 515, {languageDescriptor("eng")})});
}

TEST(AudioWarnings, AreNoneWithoutAFilterOrWhenAllIsAsWanted) {
  EXPECT_THAT(audioWarnings(std::nullopt, samplePmt(), "input"), IsEmpty());
  EXPECT_THAT(audioWarnings(Languages{"eng"}, samplePmt(), "input"), IsEmpty());
  const PMT french = pmtRecord({streamRecord(0x04, 513, {languageDescriptor("FRE")})});
  EXPECT_THAT(audioWarnings(Languages{"fra"}, french, "input"), IsEmpty());
}

TEST(AudioWarnings, NameTheAudioThatThereIs) {
  EXPECT_THAT(audioWarnings(Languages{"fra", "eng", "FRE", "spa"}, samplePmt(), "input"),
              ElementsAre("there is no audio in fra/fre, spa: the input's is in ENG, eng, ita"));
  EXPECT_THAT(audioWarnings(Languages{"spa"}, pmtRecord({streamRecord(0x02, 512)}), "output"),
              ElementsAre("there is no audio in spa: the output has no audio"));
}

TEST(AudioWarnings, NameTheAudioThatStaysInAnotherLanguage) {
  EXPECT_THAT(audioWarnings(Languages{"ita"}, samplePmt(), "input"),
              ElementsAre("input PID 515 (AAC audio in ADTS, eng) is kept: audio of this type is "
                          "not filtered by language"));
  EXPECT_THAT(audioWarnings(Languages{}, samplePmt(), "input").size(), 1U) << "none is wanted";
  const PMT uncarried = pmtRecord({streamRecord(0x81, 515, {languageDescriptor("eng")})});
  EXPECT_THAT(audioWarnings(Languages{}, uncarried, "input"), IsEmpty());
}

}  // namespace
}  // namespace tevra::tools
