#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/extract/spts_files.h"

namespace tevra::tools {

/**
 * What was extracted as indented JSON, for programs: member names and their order do not change.
 *
 *   { "source": "...", "packets": n, "tablesSent": n, "outputs": [
 *     { "globalSID": n, "inputSID": n, "outputSID": n, "serviceName": "...", "file": "...",
 *       "streamPackets": n, "tablePackets": n, "seconds": 9.41 or null,
 *       "pidItems": as in outputJson,
 *       "pids": [ { "pid": n, "packets": n, "gaps": n } ],
 *       "warnings": [ "..." ] } ] }
 *
 * pidItems is what the daemon answered, pids what the file holds, in ascending order, gaps being
 * those of the input's packets; seconds is null without PCRs; a warning is a line about what a
 * receiver would miss. Texts are UTF-8, what is not becomes U+FFFD.
 */
[[nodiscard]] std::string extractJson(const std::string& source, uint64_t packets,
                                      uint64_t tablesSent, const std::vector<SptsFile>& outputs);

}  // namespace tevra::tools
