#include "tools/extract/spts_output.h"

#include "tools/extract/output_warnings.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {

SptsOutput::SptsOutput(SptsFile& output, SptsWriter::Timing timing)
    : output_(output),
      configuration_(output.configuration),
      writer_(
          configuration_, [this](const TsPacket& packet) { write(packet); }, timing) {
  requireSink(output.file);
}

void SptsOutput::configure() {
  try {
    writer_.configure(output_.configuration);
  } catch (const ToolError&) {
    output_.configuration = configuration_;
    throw;
  }
  configuration_ = output_.configuration;
}

void SptsOutput::finish() {
  writer_.finish();
  sink_->close();
  output_.streamPackets = writer_.streamPackets();
  output_.tablePackets = writer_.tablePackets();
  output_.pidGaps = writer_.gaps();
  if (const std::optional<int64_t> duration = writer_.duration()) {
    output_.seconds = ticksToSeconds(*duration);
  }
  output_.warnings = writer_.warnings();
  for (const auto& lines : {outputWarnings(output_), sink_->faults()}) {
    output_.warnings.insert(output_.warnings.end(), lines.begin(), lines.end());
  }
}

void SptsOutput::write(const TsPacket& packet) {
  sink_->write(packet);
  const int pid = packet.pid();
  ++output_.pidPackets[pid];
  if (packet.scrambled()) {
    ++output_.pidScrambled[pid];
  }
  const bool isClock = pid == configuration_.outputTables.dvbTables.pmt.pcrPid;
  output_.pcrs += isClock && packet.pcr() ? 1 : 0;
}

}  // namespace tevra::tools
