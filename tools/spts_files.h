#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/records.h"
#include "tools/output_request.h"

namespace tevra::tools {

/** One output that is written to a file. */
struct SptsFile {
  OutputOptions output;
  std::string file;  // "-" is standard output
  SPTSConfiguration configuration;

  // What became of it, once it is written.
  uint64_t streamPackets = 0;
  uint64_t tablePackets = 0;
  double seconds = 0;                  // of stream time
  std::map<int, uint64_t> pidPackets;  // by output PID
  std::vector<std::string> warnings;   // one line for every PID that is left out
};

/**
 * Writes all outputs of the multiplex `input`, which is read once; each is a stream of its own. A
 * file that is there is replaced.
 *
 * Raises ToolError when the input or an answer cannot be used, or a file cannot be written; what is
 * written by then stays.
 */
void writeSptsFiles(const std::string& input, std::vector<SptsFile>& outputs);

}  // namespace tevra::tools
