#include "tools/descriptors/descriptor_values.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using test::descriptorRecord;
using testing::ElementsAre;
using testing::IsEmpty;

PMTES stream(int type, const std::vector<int>& tags) {
  PMTES es;
  es.streamType = type;
  for (const int tag : tags) {
    es.descriptors.push_back(descriptorRecord(tag, ""));
  }
  return es;
}

TEST(DescriptorValues, ReadsTheFirstServiceDescriptor) {
  const ServiceNames names =
      serviceNames({descriptorRecord(0x40, "x"), descriptorRecord(0x48, "\x16\x03RTV\x04Name"),
                    descriptorRecord(0x48,
                                     "\x01\x01"
                                     "A\x01"
                                     "B")});
  EXPECT_EQ(0x16, names.type);
  EXPECT_EQ("RTV", names.provider);
  EXPECT_EQ("Name", names.name);
}

TEST(DescriptorValues, HasNoNamesWithoutAServiceDescriptor) {
  EXPECT_EQ("", serviceNames({}).name);
  EXPECT_EQ(0, serviceNames({descriptorRecord(0x48, "\x01\x01")}).type) << "too short to be one";
}

TEST(DescriptorValues, ReadsAServiceDescriptorThatIsCutShortAsFarAsItGoes) {
  EXPECT_EQ("RT", serviceNames({descriptorRecord(0x48, "\x01\x09RT")}).provider);
  EXPECT_EQ("", serviceNames({descriptorRecord(0x48, "\x01\x09RT")}).name);
  EXPECT_EQ("Na", serviceNames({descriptorRecord(0x48, "\x01\x01R\x09Na")}).name);
}

TEST(DescriptorValues, ReadsTheLanguagesOfAllIso639Descriptors) {
  EXPECT_THAT(
      languages({descriptorRecord(0x0A, std::string("ita\0eng\x03", 8)),
                 descriptorRecord(0x52, "x"), descriptorRecord(0x0A, std::string("fra\0ge", 6))}),
      ElementsAre("ita", "eng", "fra"));
  EXPECT_THAT(languages({}), IsEmpty());
}

TEST(DescriptorValues, ReadsTheLanguagesOfTeletextAndSubtitles) {
  const std::string teletext =
      std::string("ita\x09\x00", 5) + std::string("ita\x10\x01", 5) + std::string("eng\x10\x02", 5);
  const std::string subtitles = "deu" + std::string(5, '\x10') + "fr";  // the second is cut short
  EXPECT_THAT(textLanguages({descriptorRecord(0x59, subtitles), descriptorRecord(0x56, teletext)}),
              ElementsAre("ita", "ita", "eng", "deu"));
}

TEST(DescriptorValues, ReadsNamesOfEventsAndNetworksAsFarAsTheyGo) {
  EXPECT_EQ("Name", eventName({descriptorRecord(0x4E, "eng"),
                               descriptorRecord(0x4D, std::string("eng\x04Name\0", 9))}));
  EXPECT_EQ("Na", eventName({descriptorRecord(0x4D, "eng\x09Na")}));
  EXPECT_EQ("", eventName({descriptorRecord(0x4D, "en")}));
  EXPECT_EQ("", eventName({}));
  EXPECT_EQ("Net", networkName({descriptorRecord(0x41, "x"), descriptorRecord(0x40, "Net")}));
  EXPECT_EQ("", networkName({}));
}

TEST(DescriptorValues, FindsThePidsOfCaDescriptors) {
  const auto found = caReferences({descriptorRecord(0x09, std::string("\x00\x71\xE1\xF0", 4)),
                                   descriptorRecord(0x09, std::string("\x00\x72\xE1", 3)),
                                   descriptorRecord(0x0A, "spa ")});
  ASSERT_EQ(1U, found.size());
  EXPECT_EQ(0x71, found[0].systemId);
  EXPECT_EQ(0x1F0, found[0].pid);
}

TEST(DescriptorValues, KnowsAudioByTypeOrCodecDescriptor) {
  for (const int type : {0x03, 0x04, 0x0F, 0x11, 0x1C, 0x2D, 0x81, 0x87}) {
    EXPECT_TRUE(isAudio(stream(type, {}))) << type;
  }
  EXPECT_TRUE(isAudio(stream(0x06, {0x52, 0x6A})));
  EXPECT_TRUE(isAudio(stream(0x06, {0x7A})));
  EXPECT_FALSE(isAudio(stream(0x06, {0x56})));
  EXPECT_FALSE(isAudio(stream(0x1B, {0x6A})));
  EXPECT_FALSE(isAudio(stream(0x02, {})));
}

}  // namespace
}  // namespace tevra::tools
