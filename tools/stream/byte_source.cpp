#include "tools/stream/byte_source.h"

#include <sys/stat.h>

#include "tools/stream/files.h"
#include "tools/stream/udp_address.h"
#include "tools/stream/udp_source.h"
#include "tools/text/standard_streams.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {

std::string ByteSource::explainNothing(const std::string& name, uint64_t packets) const {
  const std::string called = sourceName(name);
  if (packets == 0 && isStopped()) {
    return "no packet came from " + called + " before it was stopped";
  }
  if (packets == 0) {
    return called + " holds no transport stream: no packets of 188, 192 or 204 bytes";
  }
  return called + " holds " + counted(packets, "packet") + ", but no complete table";
}

std::unique_ptr<ByteSource> openSource(const std::string& name, const LiveOptions& live) {
  if (isLiveSource(name)) {
    return std::make_unique<UdpSource>(parseUdpAddress(name), live);
  }
  if (hasUnknownScheme(name)) {
    throw ToolError("cannot open " + name + ": only udp:// and rtp:// are known, in small letters");
  }
  return std::make_unique<InputFile>(name, live);
}

bool LoopedSource::goesOn() {
  if (!source_.rewind()) {
    throw ToolError("the stream cannot be repeated: it is no file");
  }
  return true;
}

bool isLiveSource(const std::string& name) {
  return name.compare(0, kUdpScheme.size(), kUdpScheme) == 0 ||
         name.compare(0, kRtpScheme.size(), kRtpScheme) == 0;
}

bool isReadOnce(const std::string& name) {
  struct stat status {};
  return name == "-" || isLiveSource(name) || hasUnknownScheme(name) ||
         (stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode));
}

}  // namespace tevra::tools
