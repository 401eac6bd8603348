#include "tools/stream/packet_sink.h"

#include <gmock/gmock.h>

#include "tests/tools/support/temporary_file.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::TemporaryFile;

TEST(FileSink, ReplacesTheFileAndShowsWhatIsFlushed) {
  const TemporaryFile file("out");
  file.write(std::string(1000, 'x'));
  const std::unique_ptr<PacketSink> sink = openSink(file.path());
  EXPECT_EQ("", file.read());
  sink->write(TsPacket());
  sink->flush();
  EXPECT_EQ(188U, file.read().size());
  sink->write(TsPacket());
  sink->close();
  EXPECT_EQ(2U * 188, file.read().size());
  EXPECT_THAT(sink->faults(), testing::IsEmpty());
}

TEST(FileSink, FailsWhereTheFileCannotBeWritten) {
  EXPECT_THROW((void)openSink("/no/such/folder/out.ts"), ToolError);
  const std::unique_ptr<PacketSink> sink = openSink("/dev/full");
  sink->write(TsPacket());
  EXPECT_THROW(sink->flush(), ToolError);
}

/** Why nothing can be written there; empty if something can. */
std::string faultOf(const std::string& name) {
  try {
    requireSink(name);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST(PacketSink, CanBeToldToBeUsableWithoutTouchingIt) {
  const TemporaryFile file("out");
  EXPECT_EQ("", faultOf(file.path()));
  EXPECT_FALSE(std::filesystem::exists(file.path()));
  EXPECT_EQ("", faultOf("-"));
  EXPECT_EQ("", faultOf("udp://127.0.0.1:21047"));
  EXPECT_EQ("cannot write /no/such/file: there is no directory /no/such; make it first",
            faultOf("/no/such/file"));
  EXPECT_EQ("cannot send to rtp://127.0.0.1:1: packets are sent without RTP, to udp://ADDRESS:PORT",
            faultOf("rtp://127.0.0.1:1"));
  EXPECT_EQ("cannot send to srt://127.0.0.1:1: only udp:// is known, in small letters",
            faultOf("srt://127.0.0.1:1"));
  EXPECT_THAT(faultOf("udp://localhost:5000"),
              testing::StartsWith("'udp://localhost:5000' is not udp://ADDRESS:PORT"));
}

}  // namespace
}  // namespace tevra::tools
