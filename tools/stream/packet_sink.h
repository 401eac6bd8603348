#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/** Where a transport stream goes, packet after packet. */
class PacketSink {
 public:
  virtual ~PacketSink() = default;

  /** The packet may be held back. Raises ToolError when writing fails for good. */
  virtual void write(const TsPacket& packet) = 0;
  /** What is held back goes out now; raises as write does. */
  virtual void flush() = 0;
  /** Makes sure that everything is out; raises as write does. Nothing may be written after it. */
  virtual void close() = 0;
  /** For people: what was lost on the way, a line each. */
  [[nodiscard]] virtual std::vector<std::string> faults() const { return {}; }
};

/**
 * A file, "-" for standard output, or "udp://ADDRESS:PORT" for datagrams that are sent there. A
 * file that is there is replaced. Raises ToolError when it cannot be opened.
 */
[[nodiscard]] std::unique_ptr<PacketSink> openSink(const std::string& name);

/**
 * Raises ToolError where openSink or writing would fail, as far as that can be told without
 * touching anything.
 */
void requireSink(const std::string& name);

/** Whether openSink would send to it, were its address right. */
[[nodiscard]] bool isLiveSink(const std::string& name);

}  // namespace tevra::tools
