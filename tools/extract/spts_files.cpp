#include "tools/extract/spts_files.h"

#include <algorithm>
#include <list>

#include "tools/extract/spts_output.h"
#include "tools/stream/files.h"
#include "tools/stream/pacer.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools {

void writeSptsFiles(const std::string& input, std::vector<SptsFile>& outputs) {
  InputFile file(input);
  std::list<SptsOutput> writers;
  for (SptsFile& output : outputs) {
    writers.emplace_back(output, SptsWriter::Timing::kExact);
  }
  for (SptsOutput& writer : writers) {
    writer.open();
  }
  const bool isPaced = std::any_of(outputs.begin(), outputs.end(),
                                   [](const SptsFile& output) { return isLiveSink(output.file); });
  Pacer pacer;
  TsPacketReader reader(file);
  TsPacket packet;
  while (reader.next(packet)) {
    if (isPaced) {
      pacer.pace(packet);
    }
    for (SptsOutput& writer : writers) {
      writer.push(packet);
    }
  }
  for (SptsOutput& writer : writers) {
    writer.finish();
  }
}

}  // namespace tevra::tools
