#include "tools/extract/spts_files.h"

#include <list>

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
          ++output_.pidPackets[packet.pid()];
        }) {}

  void push(const TsPacket& packet) { writer_.push(packet); }

  void finish() {
    writer_.finish();
    file_.close();
    output_.streamPackets = writer_.streamPackets();
    output_.tablePackets = writer_.tablePackets();
    output_.seconds = static_cast<double>(writer_.duration()) / static_cast<double>(kSystemClock);
    output_.warnings = writer_.warnings();
  }

 private:
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
