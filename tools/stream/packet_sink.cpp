#include "tools/stream/packet_sink.h"

#include "tools/stream/byte_source.h"
#include "tools/stream/files.h"
#include "tools/stream/udp_address.h"
#include "tools/stream/udp_sink.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

class FileSink : public PacketSink {
 public:
  explicit FileSink(const std::string& path) : file_(path) {}

  void write(const TsPacket& packet) override { file_.write(packet.data(), kTsPacketSize); }
  void flush() override { file_.close(); }  // which lets it be written on
  void close() override { file_.close(); }

 private:
  OutputFile file_;
};

}  // namespace

std::unique_ptr<PacketSink> openSink(const std::string& name) {
  if (isLiveSink(name)) {
    return std::make_unique<UdpSink>(name);
  }
  return std::make_unique<FileSink>(name);
}

void requireSink(const std::string& name) {
  if (isLiveSink(name)) {
    (void)openSink(name);  // sends nothing
  } else if (hasUnknownScheme(name)) {
    throw ToolError("cannot send to " + name + ": only udp:// is known, in small letters");
  } else {
    requireWritable(name);
  }
}

bool isLiveSink(const std::string& name) {
  return isLiveSource(name);
}

}  // namespace tevra::tools
