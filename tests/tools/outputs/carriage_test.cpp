#include "tools/outputs/carriage.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using test::descriptorRecord;
using test::languageDescriptor;
using test::streamRecord;
using testing::ElementsAre;

TEST(Carriage, IsOfTenStreamTypes) {
  std::vector<int> carried;
  for (int type = 0; type < 0x100; ++type) {
    if (isCarried(type)) {
      carried.push_back(type);
    }
  }
  EXPECT_THAT(carried, ElementsAre(1, 2, 3, 4, 6, 15, 16, 17, 27, 36));
}

TEST(Carriage, FiltersMpegAudioAndSomePrivateStreams) {
  for (const int type : {0x03, 0x04}) {
    EXPECT_TRUE(isFiltered(streamRecord(type, 512))) << type;
  }
  for (const int tag : {0x6A, 0x81, 0x7A, 0x73}) {
    EXPECT_TRUE(isFiltered(streamRecord(0x06, 512, {descriptorRecord(tag, "x")}))) << tag;
  }
  for (const int tag : {0x56, 0x7B, 0x7C}) {
    EXPECT_FALSE(isFiltered(streamRecord(0x06, 512, {descriptorRecord(tag, "x")}))) << tag;
  }
  for (const int type : {0x02, 0x0F, 0x11, 0x1B}) {
    EXPECT_FALSE(isFiltered(streamRecord(type, 512, {descriptorRecord(0x6A, "x")}))) << type;
  }
}

TEST(Carriage, GoesByTheFirstLanguageOfTheLastDescriptor) {
  const Descriptor two = descriptorRecord(0x0A, std::string("SPA\0ita\0", 8));
  EXPECT_EQ("SPA", filterLanguage(streamRecord(4, 512, {languageDescriptor("eng"), two})));
  EXPECT_EQ("ndl", filterLanguage(streamRecord(4, 512, {descriptorRecord(0x52, "x")})));
  EXPECT_EQ("ndl", filterLanguage(streamRecord(4, 512, {two, descriptorRecord(0x0A, "eng")})));
  EXPECT_EQ("ndl", filterLanguage(streamRecord(4, 512, {descriptorRecord(0x0A, "")})));
}

TEST(Carriage, HasTheLanguagesOfFilteredStreamsOnce) {
  EXPECT_THAT(filterLanguages(test::pmtRecord({streamRecord(4, 1, {languageDescriptor("ita")}),
                                               streamRecord(4, 2, {languageDescriptor("eng")}),
                                               streamRecord(3, 3, {languageDescriptor("ita")}),
                                               streamRecord(15, 4, {languageDescriptor("fre")}),
                                               streamRecord(4, 5)})),
              ElementsAre("ita", "eng", "ndl"));
}

}  // namespace
}  // namespace tevra::tools
