#include "tools/descriptors/descriptor_values.h"

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Descriptor make(int tag, const std::string& data) {
  Descriptor descriptor;
  descriptor.tag = tag;
  descriptor.data = data;
  return descriptor;
}

PMTES stream(int type, const std::vector<int>& tags) {
  PMTES es;
  es.streamType = type;
  for (const int tag : tags) {
    es.descriptors.push_back(make(tag, ""));
  }
  return es;
}

TEST(Descriptors, ReadsTheFirstServiceDescriptor) {
  const ServiceNames names = serviceNames({make(0x40, "x"), make(0x48, "\x16\x03RTV\x04Name"),
                                           make(0x48,
                                                "\x01\x01"
                                                "A\x01"
                                                "B")});
  EXPECT_EQ(0x16, names.type);
  EXPECT_EQ("RTV", names.provider);
  EXPECT_EQ("Name", names.name);
}

TEST(Descriptors, HasNoNamesWithoutAServiceDescriptor) {
  EXPECT_EQ("", serviceNames({}).name);
  EXPECT_EQ(0, serviceNames({make(0x48, "\x01\x01")}).type) << "too short to be one";
}

TEST(Descriptors, ReadsAServiceDescriptorThatIsCutShortAsFarAsItGoes) {
  EXPECT_EQ("RT", serviceNames({make(0x48, "\x01\x09RT")}).provider);
  EXPECT_EQ("", serviceNames({make(0x48, "\x01\x09RT")}).name);
  EXPECT_EQ("Na", serviceNames({make(0x48, "\x01\x01R\x09Na")}).name);
}

TEST(Descriptors, ReadsTheLanguagesOfAllIso639Descriptors) {
  EXPECT_THAT(languages({make(0x0A, std::string("ita\0eng\x03", 8)), make(0x52, "x"),
                         make(0x0A, std::string("fra\0ge", 6))}),
              ElementsAre("ita", "eng", "fra"));
  EXPECT_THAT(languages({}), IsEmpty());
}

TEST(Descriptors, KnowsAudioByTypeOrCodecDescriptor) {
  for (const int type : {0x03, 0x04, 0x0F, 0x11}) {
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
