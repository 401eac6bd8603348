#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "records/records.h"
#include "tools/outputs/output_request.h"

namespace tevra::tools {

/** One output that is written, and what became of it: zero or empty until it is. */
struct SptsFile {
  OutputOptions output;             ///< what was asked for; for account and warnings alone
  PMT input;                        ///< of the input service, to know what the output lacks
  std::string file;                 ///< where to, as openSink takes it
  SPTSConfiguration configuration;  ///< the daemon's answer: what goes into the file

  uint64_t streamPackets = 0;  ///< packets written that came from the input
  uint64_t tablePackets = 0;   ///< packets written of PAT, SDT and PMT
  uint64_t pcrs = 0;           ///< packets written with a PCR, on the PCR PID of the output's PMT
  /** Of stream time, from the input's first to its last packet; nothing without PCRs. */
  std::optional<double> seconds;
  std::map<int, uint64_t> pidPackets;    ///< packets of streams and tables, by output PID
  std::map<int, uint64_t> pidScrambled;  ///< those of them that are scrambled
  std::map<int, uint64_t> pidGaps;       ///< by output PID, gaps in the input's packets of streams
  std::vector<std::string> warnings;     ///< what a receiver would miss, a line each
};

/**
 * Writes all outputs of the multiplex `input`, which is read once; each is a stream of its own. A
 * file that is there is replaced. Where one is sent, all are written in real time, by the PCRs of
 * the input.
 *
 * Raises ToolError when the input or an answer cannot be used, or a file cannot be written. What is
 * there is touched only when nothing is known to be wrong; what is written by then stays.
 */
void writeSptsFiles(const std::string& input, std::vector<SptsFile>& outputs);

}  // namespace tevra::tools
