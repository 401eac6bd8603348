#include "tools/extract/spts_files.h"

#include <list>

#include "tools/extract/output_warnings.h"
#include "tools/extract/spts_writer.h"
#include "tools/stream/files.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools {
namespace {

/** The writer of one output and the file that it writes. */
class OpenSpts {
 public:
  explicit OpenSpts(SptsFile& output)
      : output_(output), file_(output.file), writer_(output.configuration, [this](auto& packet) {
          file_.write(packet.data(), kTsPacketSize);
          count(packet);
        }) {}

  void push(const TsPacket& packet) { writer_.push(packet); }

  void finish() {
    writer_.finish();
    file_.close();
    output_.streamPackets = writer_.streamPackets();
    output_.tablePackets = writer_.tablePackets();
    if (const std::optional<int64_t> duration = writer_.duration()) {
      output_.seconds = ticksToSeconds(*duration);
    }
    output_.warnings = outputWarnings(output_);
    output_.warnings.insert(output_.warnings.begin(), writer_.warnings().begin(),
                            writer_.warnings().end());
  }

 private:
  void count(const TsPacket& packet) {
    const int pid = packet.pid();
    ++output_.pidPackets[pid];
    if (packet.scrambled()) {
      ++output_.pidScrambled[pid];
    }
    const bool isClock = pid == output_.configuration.outputTables.dvbTables.pmt.pcrPid;
    output_.pcrs += isClock && packet.pcr() ? 1 : 0;
  }

  SptsFile& output_;
  OutputFile file_;
  SptsWriter writer_;
};

}  // namespace

void writeSptsFiles(const std::string& input, std::vector<SptsFile>& outputs) {
  InputFile file(input);
  std::list<OpenSpts> writers(outputs.begin(), outputs.end());
  TsPacketReader reader(file);
  TsPacket packet;
  while (reader.next(packet)) {
    for (OpenSpts& writer : writers) {
      writer.push(packet);
    }
  }
  for (OpenSpts& writer : writers) {
    writer.finish();
  }
}

}  // namespace tevra::tools
