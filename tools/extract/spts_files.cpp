#include "tools/extract/spts_files.h"

#include <list>

#include "tools/extract/spts_output.h"
#include "tools/stream/files.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools {

void writeSptsFiles(const std::string& input, std::vector<SptsFile>& outputs) {
  InputFile file(input);
  std::list<SptsOutput> writers;
  for (SptsFile& output : outputs) {
    writers.emplace_back(output, SptsWriter::Timing::kExact);
  }
  TsPacketReader reader(file);
  TsPacket packet;
  while (reader.next(packet)) {
    for (SptsOutput& writer : writers) {
      writer.push(packet);
    }
  }
  for (SptsOutput& writer : writers) {
    writer.finish();
  }
}

}  // namespace tevra::tools
