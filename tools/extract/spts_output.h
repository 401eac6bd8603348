#pragma once

#include <memory>

#include "records/records.h"
#include "tools/extract/spts_files.h"
#include "tools/extract/spts_writer.h"
#include "tools/stream/packet_sink.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/** One output while it is written, and its account. */
class SptsOutput {
 public:
  /**
   * `output` must outlive it. Raises ToolError when the answer cannot be used, or the sink that it
   * names, as far as that can be told without touching anything.
   */
  SptsOutput(SptsFile& output, SptsWriter::Timing timing);
  SptsOutput(const SptsOutput&) = delete;  // the writer refers to it
  SptsOutput& operator=(const SptsOutput&) = delete;

  /** Opens the sink, before all else. Raises ToolError when that fails. */
  void open() { sink_ = openSink(output_.file); }
  /** The next packet of the input multiplex. Raises ToolError when writing fails, as all below. */
  void push(const TsPacket& packet) { writer_.push(packet); }
  /**
   * From now on as output.configuration says. When that cannot be used, it is set to what it was,
   * and the output goes on.
   */
  void configure();
  /** As SptsWriter has it. */
  void skip() { writer_.skip(); }
  /** What the sink holds back goes out. */
  void flush() { sink_->flush(); }
  /** Writes what is held back, and completes the account and the warnings. */
  void finish();

 private:
  void write(const TsPacket& packet);

  SptsFile& output_;
  SPTSConfiguration configuration_;  // in use
  std::unique_ptr<PacketSink> sink_;
  SptsWriter writer_;
};

}  // namespace tevra::tools
