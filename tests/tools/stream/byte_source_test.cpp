#include "tools/stream/byte_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <fstream>
#include <string>

#include "tests/tools/support/temporary_file.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

std::string readAll(ByteSource& source, size_t most) {
  std::string all;
  std::array<uint8_t, 4> buffer{};
  while (all.size() < most) {
    const size_t count = source.read(buffer.data(), buffer.size());
    if (count == 0) {
      break;
    }
    all.append(buffer.begin(), buffer.begin() + count);
  }
  return all;
}

TEST(ByteSource, OfAFileKnowsItsSizeAndBeginsAgain) {
  const test::TemporaryFile file("ts");
  std::ofstream(file.path()) << "abcdefghij";
  const auto source = openSource(file.path());
  EXPECT_EQ(10U, source->size());
  EXPECT_EQ("abcdefghij", readAll(*source, 100));
  EXPECT_TRUE(source->rewind());
  EXPECT_EQ("abcdefghij", readAll(*source, 100));
}

TEST(ByteSource, ThatIsLoopedGoesOnFromTheFront) {
  const test::TemporaryFile file("ts");
  std::ofstream(file.path()) << "abc";
  const auto source = openSource(file.path());
  EXPECT_FALSE(source->goesOn());
  LoopedSource looped(*source);
  EXPECT_EQ("abc", readAll(looped, 100));
  EXPECT_TRUE(looped.goesOn());
  EXPECT_EQ("abc", readAll(looped, 100));
}

/** Has ended and cannot begin again. */
class SpentSource : public ByteSource {
 public:
  size_t read(uint8_t* /*buffer*/, size_t /*size*/) override { return 0; }
};

TEST(ByteSource, ThatCannotBeginAgainCannotBeLooped) {
  SpentSource spent;
  LoopedSource looped(spent);
  EXPECT_THROW((void)looped.goesOn(), ToolError);
}

TEST(ByteSource, OfStandardInputIsCalledSoWhereItHoldsNothing) {
  SpentSource spent;
  EXPECT_EQ("standard input holds no transport stream: no packets of 188, 192 or 204 bytes",
            spent.explainNothing("-", 0));
  EXPECT_EQ("standard input holds 1 packet, but no complete table", spent.explainNothing("-", 1));
  EXPECT_EQ("a.ts holds 1 packet, but no complete table", spent.explainNothing("a.ts", 1));
}

TEST(ByteSource, OfWhatIsNoRegularFileKnowsNoSize) {
  EXPECT_FALSE(openSource("/dev/null")->size().has_value());
}

TEST(ByteSource, EndsWhenStoppedAlsoIfItIsAFile) {
  const test::TemporaryFile file("ts");
  file.write(std::string("abcdefghij"));
  LiveOptions live;
  int asked = 0;
  live.stopped = [&asked] { return ++asked > 2; };
  EXPECT_EQ("abcdefgh", readAll(*openSource(file.path(), live), 100)) << "two times four bytes";
}

TEST(ByteSource, OfAMissingFileFails) {
  EXPECT_THROW((void)openSource("/no/such/file.ts"), ToolError);
  EXPECT_THROW((void)openSource("udp://nonsense"), ToolError);
}

TEST(ByteSource, OfAnotherSchemeIsRefusedWithThoseThatThereAre) {
  try {
    (void)openSource("UDP://239.1.1.1:5000");
    ADD_FAILURE() << "no error";
  } catch (const ToolError& error) {
    EXPECT_STREQ(
        "cannot open UDP://239.1.1.1:5000: only udp:// and rtp:// are known, in small letters",
        error.what());
  }
}

TEST(ByteSource, IsLiveByItsName) {
  EXPECT_TRUE(isLiveSource("udp://239.1.1.1:5000"));
  EXPECT_TRUE(isLiveSource("rtp://239.1.1.1:5000"));
  EXPECT_FALSE(isLiveSource("udp.ts"));
  EXPECT_FALSE(isLiveSource("-"));
}

TEST(ByteSource, IsReadAgainOnlyIfItIsAFile) {
  const test::TemporaryFile file("ts");
  EXPECT_FALSE(isReadOnce(file.path())) << "what is not there is told of when it is opened";
  ASSERT_EQ(0, mkfifo(file.path().c_str(), 0600));
  EXPECT_TRUE(isReadOnce(file.path()));
  EXPECT_FALSE(isReadOnce(test::sample()));
  EXPECT_FALSE(isReadOnce(testing::TempDir()));
  for (const char* name :
       {"-", "/dev/null", "udp://239.1.1.1:5000", "rtp://239.1.1.1:5000", "srt://a:1"}) {
    EXPECT_TRUE(isReadOnce(name)) << name;
  }
}

}  // namespace
}  // namespace tevra::tools
